// Sound files that stand for inputs, by themselves and as a stream's device.

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ScopedVariable.h"
#include "platform/Descriptor.h"
#include "platform/FileSourceFixture.h"
#include "platform/StreamControl.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"
#include "support/WaveBytes.h"

namespace vorda::platform {
namespace {

class FileSourceTest : public FileSourceFixture {};

TEST_F(FileSourceTest, VerySamplesOverAndOver) {
  const Samples ramp = Ramp(300);
  EXPECT_EQ(Play(ramp, 1, kRate, {1, kRate}, 600), Twice(ramp));
}

TEST_F(FileSourceTest, VerySamplesOfBothChannels) {
  const Samples ramp = Ramp(300, 2);
  EXPECT_EQ(Play(ramp, 2, kRate, {2, kRate}, 1200), Twice(ramp));
}

TEST_F(FileSourceTest, MonoFileIsOnBothChannels) {
  const Samples both = Play(Ramp(300), 1, kRate, {2, kRate}, 600);
  for (std::size_t i = 0; i < both.size(); ++i) ASSERT_EQ(both[i], static_cast<std::int16_t>(i / 2)) << i;
}

TEST_F(FileSourceTest, StereoFileGivesItsFirstChannelToMono) {
  EXPECT_EQ(Play(Ramp(300, 2), 2, kRate, {1, kRate}, 600), Twice(Ramp(300)));
}

TEST_F(FileSourceTest, LowerRateIsStretched) {
  const Samples played = Play(Ramp(150), 1, kRate / 2, {1, kRate}, 600);
  for (std::size_t i = 0; i < played.size(); ++i)
    ASSERT_NEAR(played[i], static_cast<double>(i % 300) / 2, 1) << i;
}

TEST_F(FileSourceTest, HigherRateIsThinnedOut) {
  const Samples played = Play(Ramp(600), 1, kRate * 2, {1, kRate}, 600);
  for (std::size_t i = 0; i < played.size(); ++i)
    ASSERT_NEAR(played[i], static_cast<int>(i % 300) * 2, 1) << i;
}

TEST_F(FileSourceTest, NeverAheadOfTheClock) {
  test::WriteWholeFile(path_, WaveOf(Ramp(300), 1, kRate));
  SampleIntake intake({1, kRate}, [] {});
  const Clock::time_point start = Clock::now();
  const auto source = MakeFileSource(path_, intake);
  double played = 0;
  EXPECT_TRUE(test::WaitUntil(
      [&] {
        for (SampleBlock block = intake.Fetch(); !block.empty(); block = intake.Fetch())
          played += static_cast<double>(block.size());
        const std::chrono::duration<double> passed = Clock::now() - start;
        EXPECT_LE(played, passed.count() * kRate);
        return played >= kRate / 2.0;
      },
      kPatience));
}

TEST_F(FileSourceTest, MissingFileIsWaitedFor) {
  SampleIntake intake({1, kRate}, [] {});
  const auto source = MakeFileSource(path_, intake);
  EXPECT_FALSE(intake.Running());
  test::WriteWholeFile(path_, WaveOf(Ramp(300), 1, kRate));
  EXPECT_TRUE(test::WaitUntil([&] { return intake.Running(); }, kPatience));
  EXPECT_EQ(Collect(intake, 10)[9], 9);
}

TEST_F(FileSourceTest, FileThatWasNoSoundIsLookedAtAgain) {
  test::WriteWholeFile(path_, "not yet");
  const Descriptor notices(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  ASSERT_GE(::inotify_add_watch(notices.number(), path_.c_str(), IN_CLOSE_NOWRITE), 0);
  SampleIntake intake({1, kRate}, [] {});
  const auto source = MakeFileSource(path_, intake);
  ASSERT_TRUE(test::WaitUntil(
      [&] {
        inotify_event notice{};
        return ::read(notices.number(), &notice, sizeof notice) > 0;
      },
      kPatience));
  test::WriteWholeFile(path_, WaveOf(Ramp(300), 1, kRate));
  EXPECT_TRUE(test::WaitUntil([&] { return intake.Running(); }, kPatience));
  EXPECT_EQ(Collect(intake, 10)[9], 9);
}

TEST_F(FileSourceTest, FilesThatAreNoSoundOnlyWait) {
  for (const std::string& bytes : {std::string("no sound at all"), std::string(), test::Riff(""),
                                   WaveOf({}, 1, kRate), WaveOf(Ramp(300), 1, kRate).substr(0, 40)}) {
    test::WriteWholeFile(path_, bytes);
    SampleIntake intake({1, kRate}, [] {});
    { const auto source = MakeFileSource(path_, intake); }
    EXPECT_FALSE(intake.Running());
    EXPECT_TRUE(intake.Fetch().empty());
  }
}

TEST_F(FileSourceTest, NothingComesBehindItsEnd) {
  test::WriteWholeFile(path_, WaveOf(Ramp(300), 1, kRate));
  SampleIntake intake({1, kRate}, [] {});
  auto source = MakeFileSource(path_, intake);
  Collect(intake, 1);
  EXPECT_TRUE(intake.Running());
  source.reset();
  EXPECT_FALSE(intake.Running());
}

// A stream on the station's first input, which is a file.
class FileStreamTest : public FileSourceFixture {
 protected:
  FileStreamTest() {
    test::WriteWholeFile(home_ / "platform.ini", "[WaveIn]\n1=file:" + path_ + "\n");
    Make();
  }

  void Make() {
    stream_ = MakeStreamControl();
    stream_->numberchannels = 1;
    stream_->samplerate = kRate;
    stream_->wavedevicenumber = 1;
    stream_->AudioData = [this](const char* bytes, std::int32_t length) {
      blocks_.emplace_back(static_cast<std::size_t>(length) / sizeof(std::int16_t));
      std::memcpy(blocks_.back().data(), bytes, static_cast<std::size_t>(length));
      if (meanwhile_) meanwhile_();
    };
  }
  void GiveFile(const Samples& samples) { test::WriteWholeFile(path_, WaveOf(samples, 1, kRate)); }
  bool WaitForBlocks(std::size_t count) {
    return test::WaitUntil([&] { return blocks_.size() >= count; }, kPatience);
  }
  // Waits until sound was taken in, and runs no events meanwhile: blocks wait to be handed over.
  bool WaitForLevel() const {
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(kPatience);
    while (stream_->StreamLevel() == 0) {
      if (Clock::now() > end) return false;
    }
    return true;
  }
  Samples Received() const {
    Samples all;
    for (const Samples& block : blocks_) all.insert(all.end(), block.begin(), block.end());
    return all;
  }
  void ExpectRamp(std::size_t length) const {
    const Samples all = Received();
    for (std::size_t i = 0; i < all.size(); ++i) ASSERT_EQ(all[i], static_cast<int>(i % length)) << i;
  }

  test::TempDirectory home_;
  test::ScopedVariable variable_{"VORDA_HOME", home_.path().c_str()};
  std::vector<Samples> blocks_;
  std::function<void()> meanwhile_;
  std::unique_ptr<StreamControl> stream_;
};

TEST_F(FileStreamTest, DeliversTheFilesSamplesWithoutAGap) {
  GiveFile(Ramp(300));
  stream_->StartStream();
  EXPECT_TRUE(test::WaitUntil([&] { return Received().size() > 700; }, kPatience));
  ExpectRamp(300);
}

TEST_F(FileStreamTest, StateTellsStoppedWaitingAndRunning) {
  EXPECT_EQ(stream_->StreamState(), kStreamStopped);
  stream_->StartStream();
  EXPECT_EQ(stream_->StreamState(), kStreamWaiting);
  GiveFile(Ramp(300));
  EXPECT_TRUE(test::WaitUntil([&] { return stream_->StreamState() == 2; }, kPatience));
  stream_->StopStream();
  EXPECT_EQ(stream_->StreamState(), kStreamStopped);
}

TEST_F(FileStreamTest, LevelIsThatOfTheFileAndNoneOnceStopped) {
  EXPECT_EQ(stream_->StreamLevel(), 0);
  GiveFile(Samples(300, -16384));
  stream_->StartStream();
  EXPECT_TRUE(test::WaitUntil([&] { return stream_->StreamLevel() == 50; }, kPatience));
  stream_->StopStream();
  EXPECT_EQ(stream_->StreamLevel(), 0);
}

TEST_F(FileStreamTest, NoInputOrNoFormatStartsNothing) {
  GiveFile(Ramp(300));
  stream_->wavedevicenumber = 0;
  stream_->StartStream();
  EXPECT_EQ(stream_->StreamState(), kStreamStopped);
  stream_->wavedevicenumber = 1;
  for (const int channels : {0, -1, 33}) {
    stream_->numberchannels = static_cast<std::int16_t>(channels);
    stream_->StartStream();
    EXPECT_EQ(stream_->StreamState(), kStreamStopped) << channels;
  }
  stream_->numberchannels = 1;
  for (const std::int32_t rate : {0, -8000}) {
    stream_->samplerate = rate;
    stream_->StartStream();
    EXPECT_EQ(stream_->StreamState(), kStreamStopped) << rate;
  }
}

TEST_F(FileStreamTest, NoBlockBehindStopStream) {
  GiveFile(Samples(300, 32767));
  stream_->StartStream();
  ASSERT_TRUE(WaitForLevel());
  stream_->StopStream();
  test::RunPendingEvents();
  EXPECT_TRUE(blocks_.empty());
  stream_->EndOfCut();
  EXPECT_TRUE(blocks_.empty());
}

TEST_F(FileStreamTest, EndOfCutHandsOverAtOnceWhatWasTakenIn) {
  GiveFile(Samples(300, 32767));
  stream_->StartStream();
  ASSERT_TRUE(WaitForLevel());
  EXPECT_TRUE(blocks_.empty());
  stream_->EndOfCut();
  EXPECT_FALSE(blocks_.empty());
}

TEST_F(FileStreamTest, StreamThatWasStoppedStartsAfresh) {
  GiveFile(Ramp(300));
  stream_->StartStream();
  ASSERT_TRUE(WaitForBlocks(1));
  stream_->StopStream();
  blocks_.clear();
  stream_->StartStream();
  ASSERT_TRUE(WaitForBlocks(2));
  ExpectRamp(300);
}

// A file of ten samples: dozens of blocks wait by the time the first one is delivered.
TEST_F(FileStreamTest, BoxBehindABlockLetsTheNextThroughInOrder) {
  Samples loud = Ramp(10);
  loud.back() = 32767;
  GiveFile(loud);
  int boxes = 0;
  int open = 0;
  int deepest = 0;
  meanwhile_ = [&] {
    if (boxes == 2) return;
    ++boxes;
    deepest = std::max(deepest, ++open);
    EXPECT_TRUE(WaitForBlocks(blocks_.size() + 20)) << "nothing came behind the box";
    --open;
  };
  stream_->StartStream();
  ASSERT_TRUE(WaitForLevel());
  ASSERT_TRUE(WaitForBlocks(1));
  EXPECT_EQ(deepest, 2);
  const Samples all = Received();
  for (std::size_t i = 0; i < all.size(); ++i) ASSERT_EQ(all[i], loud[i % 10]) << i;
}

TEST_F(FileStreamTest, BlockThatStopsTheStreamIsTheLast) {
  GiveFile(Ramp(10));
  meanwhile_ = [this] { stream_->StopStream(); };
  stream_->StartStream();
  ASSERT_TRUE(WaitForBlocks(1));
  test::RunPendingEvents();
  EXPECT_EQ(blocks_.size(), 1U);
}

TEST_F(FileStreamTest, BlockMayTakeTheStreamAway) {
  GiveFile(Ramp(10));
  meanwhile_ = [this] { stream_.reset(); };
  stream_->StartStream();
  ASSERT_TRUE(WaitForBlocks(1));
  test::RunPendingEvents();
  EXPECT_EQ(blocks_.size(), 1U);
}

TEST_F(FileStreamTest, StreamWithoutAListenerGoesOn) {
  GiveFile(Ramp(300));
  stream_->AudioData = {};
  stream_->StartStream();
  EXPECT_TRUE(test::WaitUntil([&] { return stream_->StreamLevel() > 0; }, kPatience));
  test::RunPendingEvents();
  EXPECT_EQ(stream_->StreamState(), kStreamRunning);
}

}  // namespace
}  // namespace vorda::platform
