// Sound files that can't be believed, and what stands in a sound file's place.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/FileSourceFixture.h"

namespace vorda::platform {
namespace {

class FileSourceFaultTest : public FileSourceFixture {};

// Nobody opens it: a writer that waits for a reader waits on.
TEST_F(FileSourceFaultTest, PipeIsNoSoundAndGivesWayToAFile) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  const auto reads = std::make_shared<std::atomic<int>>(0);
  const ScopedHook<FileSound(const std::string&)> hook(
      FileSoundHook(), [reads, read = FileSoundHook()](const std::string& path) {
        FileSound sound = read(path);
        ++*reads;
        return sound;
      });
  SampleIntake intake({1, kRate}, [] {});
  const auto source = MakeFileSource(path_, intake);
  ASSERT_TRUE(test::WaitUntil([&] { return *reads > 0; }, kPatience));
  // A writer that doesn't wait is refused.
  EXPECT_EQ(::open(path_.c_str(), O_WRONLY | O_NONBLOCK), -1);
  EXPECT_EQ(errno, ENXIO);
  EXPECT_FALSE(intake.Running());
  const std::string sound = directory_ / "other.wav";
  test::WriteWholeFile(sound, WaveOf(Ramp(300), 1, kRate));
  ASSERT_EQ(::rename(sound.c_str(), path_.c_str()), 0);
  EXPECT_TRUE(test::WaitUntil([&] { return intake.Running(); }, kPatience));
}

// Two gigabytes by its header, of which nothing is there.
TEST_F(FileSourceFaultTest, HeaderThatPromisesMoreThanTheFileHolds) {
  std::string wave = WaveOf(Ramp(300), 1, kRate);
  wave.replace(40, 4, test::Number(0x7FFFFF00, 4));
  test::WriteWholeFile(path_, wave);
  SampleIntake intake({1, kRate}, [] {});
  const auto source = MakeFileSource(path_, intake);
  const Samples played = Collect(intake, 700);
  for (std::size_t i = 0; i < played.size(); ++i) ASSERT_EQ(played[i], static_cast<int>(i % 300)) << i;
}

// Brought to the intake's rate it would be 96 gigabytes.
TEST_F(FileSourceFaultTest, RateOfOneHertzIsPlayedAsItStands) {
  test::WriteWholeFile(path_, WaveOf(Samples(1'000'000, 7), 1, 1));
  SampleIntake intake({1, 48000}, [] {});
  const auto source = MakeFileSource(path_, intake);
  for (const std::int16_t sample : Collect(intake, 48000)) ASSERT_EQ(sample, 7);
}

// A file on a share that hangs: the read is held until the test lets it on.
class HangingFileTest : public FileSourceFixture {
 protected:
  struct Gate {
    std::mutex mutex;
    std::condition_variable opened;
    bool open = false;
    int inside = 0;
    int through = 0;
  };
  ~HangingFileTest() override {
    Open();
    EXPECT_TRUE(Eventually([](const Gate& gate) { return gate.through == gate.inside; }));
  }
  void Open() {
    const std::lock_guard lock(gate_->mutex);
    gate_->open = true;
    gate_->opened.notify_all();
  }
  bool Eventually(const std::function<bool(const Gate&)>& condition) {
    return test::WaitUntil(
        [&] {
          const std::lock_guard lock(gate_->mutex);
          return condition(*gate_);
        },
        kPatience);
  }
  bool WaitUntilItHangs() {
    return Eventually([](const Gate& gate) { return gate.inside > gate.through; });
  }

  // The threads' own too: they may still run when the test is over.
  const std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
  const ScopedHook<FileSound(const std::string&)> hook_{FileSoundHook(), [gate = gate_](const std::string&) {
                                                          std::unique_lock lock(gate->mutex);
                                                          ++gate->inside;
                                                          gate->opened.wait(lock, [&] { return gate->open; });
                                                          ++gate->through;
                                                          return FileSound{1, kRate, Ramp(300)};
                                                        }};
};

TEST_F(HangingFileTest, EndOfTheSourceIsNotHeldUp) {
  auto intake = std::make_unique<SampleIntake>(SampleFormat{1, kRate}, [] {});
  auto source = MakeFileSource(path_, *intake);
  ASSERT_TRUE(WaitUntilItHangs());
  source.reset();
  intake.reset();
}

TEST_F(HangingFileTest, SourceThatHasEndedDeliversNothingWhenTheReadGoesOn) {
  SampleIntake intake({1, kRate}, [] {});
  auto source = MakeFileSource(path_, intake);
  ASSERT_TRUE(WaitUntilItHangs());
  source.reset();
  const auto next = MakeFileSource(path_, intake);
  ASSERT_TRUE(Eventually([](const Gate& gate) { return gate.inside == 2; }));
  EXPECT_FALSE(intake.Running());
  Open();
  // What comes is the second one's alone.
  const Samples played = Collect(intake, 700);
  for (std::size_t i = 0; i < played.size(); ++i) ASSERT_EQ(played[i], static_cast<int>(i % 300)) << i;
}

TEST_F(HangingFileTest, IsPlayedWhenTheReadGoesOn) {
  SampleIntake intake({1, kRate}, [] {});
  const auto source = MakeFileSource(path_, intake);
  ASSERT_TRUE(WaitUntilItHangs());
  EXPECT_FALSE(intake.Running());
  Open();
  EXPECT_TRUE(test::WaitUntil([&] { return intake.Running(); }, kPatience));
  EXPECT_EQ(Collect(intake, 10)[9], 9);
}

}  // namespace
}  // namespace vorda::platform
