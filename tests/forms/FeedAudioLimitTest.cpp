// What ends a feed's recording when its sound doesn't: the longest cut, the disk, and a clock that is set.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "support/FeedAudioFixture.h"
#include "support/StatusClient.h"

namespace vorda::test {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::uint64_t kBytesPerSecond = 32000;  // of the feed's format

class FeedAudioLimit : public FeedAudioFixture {
 protected:
  std::string CartShown() { return Caption(FeedForm(1), "pnlCartNo"); }
  bool WaitForCart(const std::string& cart) {
    return WaitUntil([&] { return CartShown() == cart; }, kLimit);
  }
  void SetTime(double seconds) { now_.seconds = kNoon + seconds; }

  std::uint64_t room_ = 4000000000;
  int checks_ = 0;  // of the room for the cut that is being recorded
  platform::ScopedHook<std::uint64_t(const std::string&)> freeBytes_{platform::FreeBytesHook(),
                                                                     [this](const std::string& path) {
                                                                       if (path == directory / "wall")
                                                                         ++checks_;
                                                                       return room_;
                                                                     }};
};

TEST_F(FeedAudioLimit, DiskIsLookedAtOnTheFirstTickAndThenBehindMoreThanTwentySeconds) {
  StartFeed();
  Record5SecondsOfSound(0);
  ASSERT_TRUE(WaitUntil([&] { return checks_ == 1; }, kLimit));
  MonitorTicks(1);
  SetTime(25);
  MonitorTicks(2);
  EXPECT_EQ(checks_, 1) << "twenty seconds are no more than twenty";
  SetTime(25.0625);
  ASSERT_TRUE(WaitUntil([&] { return checks_ == 2; }, kLimit));
  SetTime(45.0625);
  MonitorTicks(2);
  EXPECT_EQ(checks_, 2);
}

TEST_F(FeedAudioLimit, NewRecordingGoesOnWithTheSpacingOfTheFormerOnesChecks) {
  frmWireFeed& form = StartFeed();
  Record5SecondsOfSound(0);
  ASSERT_TRUE(WaitUntil([&] { return checks_ == 1; }, kLimit));
  SetTime(15);
  Click(form, "cmdEject");
  ASSERT_TRUE(WaitForCart("9002"));
  room_ = 100 * kBytesPerSecond;
  SetTime(25);
  MonitorTicks(2);
  EXPECT_EQ(checks_, 1);
  EXPECT_EQ(Record(1).ThisItemMaxLength, 3600);
  SetTime(25.0625);
  ASSERT_TRUE(WaitUntil([&] { return checks_ == 2; }, kLimit));
  EXPECT_EQ(Record(1).ThisItemMaxLength, 100);
}

TEST_F(FeedAudioLimit, FirstCheckComesAtOnceWhereTheFormerRecordingsIsLongAgo) {
  frmWireFeed& form = StartFeed();
  Click(form, "cmdRecord");
  ASSERT_TRUE(WaitUntil([&] { return checks_ == 1; }, kLimit));
  Click(form, "cmdEject");
  Tick(100, 10);
  // More than the monitor's second goes by, with nothing to watch over.
  const int until = Stream().asked + 30;
  ASSERT_TRUE(WaitUntil([&] { return Stream().asked >= until; }, kLimit));
  EXPECT_EQ(checks_, 1);
  Click(form, "cmdRecord");
  EXPECT_TRUE(WaitUntil([&] { return checks_ == 2; }, kLimit));
}

// The room left is compared with the whole length of the cut: thirty seconds are more than the twenty that
// are left.
TEST_F(FeedAudioLimit, CutThatTheDiskEndsIsFiledAndSaysClosedAndNotStopped) {
  StartFeed();
  StatusClient client;
  ASSERT_TRUE(WaitUntil([&] { return client.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
  ASSERT_TRUE(client.WaitFor("Current Recording : 0"));
  Record5SecondsOfSound(0);
  ASSERT_TRUE(WaitUntil([&] { return checks_ == 1; }, kLimit));
  Stream().Play(std::string(kBytesPerSecond, 'a'));
  room_ = 20 * kBytesPerSecond;
  Tick(35, 10);
  EXPECT_TRUE(WaitForCart(""));
  EXPECT_EQ(checks_, 2);
  ASSERT_TRUE(client.WaitFor("Closed Audio File\r\n"));
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_EQ(Info(9001).AudioLength, 1.0F);
  // Quiet behind it: nothing begins, and nothing more is said.
  Tick(100, 10);
  EXPECT_THAT(client.Text(), Not(HasSubstr("Stopped Recording")));
  EXPECT_EQ(CartShown(), "");
}

TEST_F(FeedAudioLimit, DiskThatIsFullNowEndsTheCutAndTheNextIsNotBegun) {
  StartFeed();
  Record5SecondsOfSound(0);
  ASSERT_TRUE(WaitUntil([&] { return checks_ == 1; }, kLimit));
  Stream().Play(std::string(kBytesPerSecond, 'a'));
  room_ = 0;
  SetTime(25.0625);
  EXPECT_TRUE(WaitForCart(""));
  EXPECT_EQ(Info(9001).AudioLength, 1.0F);
  Tick(26, 80);
  EXPECT_EQ(CartShown(), "");
  EXPECT_EQ(Audio(9002), "");
  EXPECT_TRUE(IsEmptyCart(Info(9002)));
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("LastRecordedCartNumber=9001\r\n"));
  // Room again: it goes on by itself.
  room_ = 10 * kBytesPerSecond;
  Tick(40, 80);
  Tick(45, 80);
  EXPECT_EQ(CartShown(), "9002");
}

TEST_F(FeedAudioLimit, FlickerRoundTheThresholdGoesOnUntilTheLongestCutAndTheNextCartFollows) {
  StartFeed("MaxCutLength=3600\r\n");
  Record5SecondsOfSound(0);
  // Low for 24 of each minute's seconds, one less than would end it.
  const auto tick = [this](double seconds, std::int16_t level) {
    SetTime(seconds);
    Stream().level = level;
    const int until = Stream().asked + 1;
    ASSERT_TRUE(WaitUntil([&] { return Stream().asked >= until; }, kLimit));
    ASSERT_EQ(CartShown(), "9001") << seconds;
  };
  for (double minute = 5; minute < 3605; minute += 60) {
    ASSERT_NO_FATAL_FAILURE(tick(minute + 18, 50));
    ASSERT_NO_FATAL_FAILURE(tick(minute + 42, 51));
  }
  Tick(3605, 50);
  MonitorTicks(2);
  EXPECT_EQ(CartShown(), "9001") << "as long as the longest, and no longer";
  SetTime(3605.5);
  EXPECT_TRUE(WaitForCart(""));
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  // It flickers on: the run up to the start is counted anew at most.
  Tick(3606, 51);
  Tick(3608, 50);
  Tick(3611, 51);
  EXPECT_EQ(CartShown(), "9002");
}

TEST_F(FeedAudioLimit, ClockSetBackAnHourMakesTheCutLongerAndADayForwardEndsIt) {
  StartFeed("MaxCutLength=60\r\n");
  Record5SecondsOfSound(0);
  ASSERT_TRUE(WaitUntil([&] { return checks_ == 1; }, kLimit));
  SetTime(30 - 3600);
  MonitorTicks(2);
  EXPECT_EQ(CartShown(), "9001");
  EXPECT_EQ(checks_, 1) << "the disk waits for the clock as well";
  SetTime(65);
  MonitorTicks(2);
  EXPECT_EQ(CartShown(), "9001");
  ++now_.day;
  EXPECT_TRUE(WaitForCart(""));
  Tick(66, 80);
  Tick(71, 80);
  EXPECT_EQ(CartShown(), "9002");
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  Tick(72, 10);
  --now_.day;
  Tick(72, 10);
  MonitorTicks(2);
  EXPECT_EQ(CartShown(), "9002") << "back by the day";
}

TEST_F(FeedAudioLimit, SilenceEndsByTheClockAsItIsSet) {
  StartFeed();
  Record5SecondsOfSound(0);
  Tick(6, 10);
  Tick(6 - 3600, 10);
  EXPECT_EQ(CartShown(), "9001");
  Tick(30.5, 10);
  EXPECT_EQ(CartShown(), "9001");
  ++now_.day;
  Tick(0, 10);
  EXPECT_EQ(CartShown(), "");
}

class FeedAudioRange : public FeedAudioFixture, public ::testing::WithParamInterface<const char*> {};

TEST_P(FeedAudioRange, WithoutACartToTakeNothingIsRecordedAndNothingIsSaid) {
  frmWireFeed& form = StartFeed(GetParam());
  const std::string ini = ReadWholeFile(config_);
  StatusClient client;
  ASSERT_TRUE(WaitUntil([&] { return client.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
  ASSERT_TRUE(client.WaitFor("Current Recording : 0"));
  Record5SecondsOfSound(0);
  Click(form, "cmdRecord");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  EXPECT_TRUE(Enabled(form, "cmdRecord"));
  form.sendWinSockMessage("The end");
  ASSERT_TRUE(client.WaitFor("The end\r\n"));
  EXPECT_THAT(client.Text(), Not(AnyOf(HasSubstr("Opened"), HasSubstr("Started"))));
  for (const auto& entry : std::filesystem::directory_iterator(directory / "wall"))
    EXPECT_EQ(entry.path().extension(), ".lst") << entry.path();
  EXPECT_EQ(ReadWholeFile(config_), ini);
}

INSTANTIATE_TEST_SUITE_P(
    Ranges, FeedAudioRange,
    ::testing::Values("StartCartNumber=0\r\nEndCartNumber=0\r\n",
                      "StartCartNumber=9010\r\nEndCartNumber=9001\r\n",
                      "StartCartNumber=10000\r\nEndCartNumber=10010\r\n",
                      "StartCartNumber=9005\r\nEndCartNumber=9005\r\nLastRecordedCartNumber=9005\r\n"));

}  // namespace
}  // namespace vorda::test
