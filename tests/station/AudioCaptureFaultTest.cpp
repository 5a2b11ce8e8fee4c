// Unattended recording by the real program when something is killed or pulled out in the midst of it.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "station/AudioCaptureFixture.h"
#include "station/ServerProcess.h"

namespace vorda::test {
namespace {

// From now on no file of the server's grows beyond so many bytes: the disk as it is when it is full.
bool FillDiskBehind(std::size_t bytes) {
  const pid_t server = ServerProcess();
  rlimit limit{};
  if (::prlimit(server, RLIMIT_FSIZE, nullptr, &limit) != 0) return false;
  limit.rlim_cur = bytes;
  return ::prlimit(server, RLIMIT_FSIZE, &limit, nullptr) == 0;
}

// Each start goes on behind the carts that the kills have left, and those stay as they were.
TEST_F(AudioCapture, KillsLeaveTheSoundUpToThereInTheCarts) {
  constexpr int kFeeds = 2;
  constexpr int kKills = 10;
  constexpr unsigned kSeed = 20261121;
  std::mt19937 random(kSeed);
  Prepare(kFeeds, "AudioStartDuration=0\r\nClearCartCount=0\r\n");
  std::vector<Samples> sounds;
  std::vector<std::unique_ptr<Program>> players;
  for (int feed = 1; feed <= kFeeds; ++feed) {
    sounds.push_back(MarkedSound(static_cast<unsigned>(feed), 240 * kSecond));
    players.push_back(sound_->Play(feed, sounds.back()));
  }
  for (int kill = 0; kill < kKills; ++kill) {
    Start();
    // More and more of it is in the file, long before it is closed.
    const std::size_t most = random() % (2 * kSecond / 3);
    for (std::size_t samples = 8; samples <= most; samples += kSecond / 8)
      ASSERT_TRUE(WaitForSound(FirstCart(1 + kill % kFeeds) + kill, samples));
    for (int feed = 1; feed <= kFeeds; ++feed) ASSERT_TRUE(WaitForSound(FirstCart(feed) + kill, 8));
    station_.Server().Signal(SIGKILL);
    ASSERT_EQ(station_.Server().ExitCode(), 1000 + SIGKILL);
    for (int feed = 1; feed <= kFeeds; ++feed)
      EXPECT_EQ(Key(feed, "CurrentlyRecordingCartNumber"), std::to_string(FirstCart(feed) + kill));
  }
  Start();
  for (int feed = 1; feed <= kFeeds; ++feed) {
    ASSERT_TRUE(WaitForRecording(feed, FirstCart(feed) + kKills));
    for (std::int32_t cart = FirstCart(feed); cart < FirstCart(feed) + kKills; ++cart) {
      EXPECT_TRUE(IsUnfinished(cart)) << cart;
      const Samples recorded = Recorded(cart);
      EXPECT_TRUE(PlaceOf(WithoutSilence(recorded), sounds[static_cast<std::size_t>(feed - 1)])) << cart;
      EXPECT_NE(recorded.back(), 0) << cart;
      EXPECT_EQ(Title(cart), "Vorda Server is recording into this cart");
    }
  }
}

TEST_F(AudioCapture, GoesOnByItselfWhenTheSoundServerIsBack) {
  Prepare(1, "AudioStartDuration=0\r\n");
  Start();
  const Samples before = MarkedSound(1, 30 * kSecond);
  auto player = sound_->Play(1, before);
  ASSERT_TRUE(WaitForSound(9001, kSecond / 4));
  sound_->Kill();
  ASSERT_TRUE(WaitForRecorded(1, 9001));
  EXPECT_TRUE(IsWhole(9001));
  EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(9001)), before));
  EXPECT_TRUE(IsQuiet(ServerProcess()));

  ASSERT_TRUE(sound_->Start()) << sound_->log();
  ASSERT_TRUE(WaitForStreams(1));
  const Samples behind = MarkedSound(2, kSecond);
  player = sound_->Play(1, behind);
  ASSERT_TRUE(WaitForRecorded(1, 9002));
  EXPECT_TRUE(IsWhole(9002));
  EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(9002)), behind));
  EXPECT_EQ(station_.Server().output(), "");
}

TEST_F(AudioCapture, InputThatIsPulledOutEndsItsCartAloneAndFillsTheNextWhenItIsBack) {
  Prepare(2, "AudioStartDuration=0\r\n");
  Start();
  const Samples one = MarkedSound(1, 30 * kSecond);
  const Samples two = MarkedSound(2, 60 * kSecond);
  const auto other = sound_->Play(2, two);
  auto player = sound_->Play(1, one);
  ASSERT_TRUE(WaitForSound(9001, kSecond / 4));
  ASSERT_TRUE(WaitForSound(9101, kSecond / 4));
  player.reset();
  ASSERT_TRUE(sound_->Unplug(1));
  ASSERT_TRUE(WaitForRecorded(1, 9001));
  EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(9001)), one));

  ASSERT_TRUE(sound_->Plug(1));
  ASSERT_TRUE(WaitForStreams(2));
  const Samples behind = MarkedSound(3, kSecond);
  player = sound_->Play(1, behind);
  ASSERT_TRUE(WaitForRecorded(1, 9002));
  EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(9002)), behind));
  // All the while the other feed's recording went on.
  EXPECT_EQ(Key(2, "CurrentlyRecordingCartNumber"), "9101");
  station_.Server().Signal(SIGTERM);
  EXPECT_EQ(station_.Server().ExitCode(), 0);
  EXPECT_TRUE(IsWhole(9101));
  EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(9101)), two));
  EXPECT_EQ(Wave(9102), "");
}

// Two feeds that record until the server is told to end.
class AudioCaptureFull : public AudioCapture {
 protected:
  static constexpr int kFeeds = 2;

  void Record(std::size_t samples) {
    Prepare(kFeeds, "AudioStartDuration=0\r\n");
    Start();
    for (int feed = 1; feed <= kFeeds; ++feed) {
      sounds_.push_back(MarkedSound(static_cast<unsigned>(feed), 60 * kSecond));
      players_.push_back(sound_->Play(feed, sounds_.back()));
    }
    for (int feed = 1; feed <= kFeeds; ++feed) ASSERT_TRUE(WaitForSound(FirstCart(feed), samples));
  }
  void Terminate() {
    station_.Server().Signal(SIGTERM);
    ASSERT_EQ(station_.Server().ExitCode(), 0);
  }
  // Whether the first so many samples of a feed's recording are a piece of its sound.
  bool Holds(int feed, std::size_t samples) const {
    Samples piece = WithoutSilence(Recorded(FirstCart(feed)));
    if (piece.size() < samples) return false;
    piece.resize(samples);
    return PlaceOf(piece, sounds_[static_cast<std::size_t>(feed - 1)]).has_value();
  }

 private:
  std::vector<Samples> sounds_;
  std::vector<std::unique_ptr<Program>> players_;
};

// As many boxes are up as there may be, and nobody answers them.
TEST_F(AudioCaptureFull, TerminationBehindTheBoxesOfAFullDiskFilesWhatHasFitted) {
  constexpr std::size_t kFitted = 5 * kSecond / 2;
  ASSERT_NO_FATAL_FAILURE(Record(kFitted));
  const std::size_t most = std::max(Wave(FirstCart(1)).size(), Wave(FirstCart(2)).size());
  ASSERT_TRUE(FillDiskBehind(most));
  ASSERT_TRUE(WaitUntil(
      [&] {
        return station_.Server().output().find("Failed to write data during 'WriteAudioData'\n") !=
               std::string::npos;
      },
      kPatience))
      << station_.Server().output();
  ASSERT_NO_FATAL_FAILURE(Terminate());
  for (int feed = 1; feed <= kFeeds; ++feed) {
    const std::int32_t cart = FirstCart(feed);
    EXPECT_TRUE(IsWhole(cart)) << cart;
    EXPECT_LE(Wave(cart).size(), most);
    EXPECT_TRUE(Holds(feed, kFitted)) << cart;
    EXPECT_TRUE(Title(cart).starts_with("Recorded by Vorda Server ")) << Title(cart);
    EXPECT_EQ(Key(feed, "LastRecordedCartNumber"), std::to_string(cart));
    EXPECT_EQ(Key(feed, "CurrentlyRecordingCartNumber"), "0");
  }
}

// Not even the lengths can be written: what is there stays as it is.
TEST_F(AudioCaptureFull, TerminationWithADiskThatTakesNothingEndsAndSpoilsNothing) {
  ASSERT_NO_FATAL_FAILURE(Record(kSecond / 2));
  const auto whatStands = [&] {
    std::string all = ReadWholeFile(station_.Home() + "/vdServer.INI");
    for (const char* list : {"/Carts9.lst", "/Carts10.lst"}) all += ReadWholeFile(station_.Wall() + list);
    for (int feed = 1; feed <= kFeeds; ++feed) all += ReadWholeFile(station_.News(feed) + "/vorda.ini");
    return all;
  };
  const std::string before = whatStands();
  ASSERT_TRUE(FillDiskBehind(0));
  ASSERT_NO_FATAL_FAILURE(Terminate());
  EXPECT_TRUE(whatStands() == before);
  for (int feed = 1; feed <= kFeeds; ++feed) {
    const std::int32_t cart = FirstCart(feed);
    EXPECT_TRUE(IsUnfinished(cart)) << cart;
    EXPECT_TRUE(Holds(feed, kSecond / 2)) << cart;
    EXPECT_EQ(Title(cart), "Vorda Server is recording into this cart");
    EXPECT_EQ(Key(feed, "CurrentlyRecordingCartNumber"), std::to_string(cart));
  }
}

}  // namespace
}  // namespace vorda::test
