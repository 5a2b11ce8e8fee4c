// Unattended recording by the real program when something is killed or pulled out in the midst of it.

#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <string>
#include <vector>

#include "station/AudioCaptureFixture.h"
#include "station/ServerProcess.h"

namespace vorda::test {
namespace {

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

}  // namespace
}  // namespace vorda::test
