// The counts in the strip of a feed's window, and what a start by hand makes of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileFault.h"
#include "support/FeedAudioFixture.h"

namespace vorda::test {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::Contains;
using ::testing::Not;
using ::testing::StartsWith;

class FeedAudioCount : public FeedAudioFixture {
 protected:
  // Each tick reads the clock, and finds what the one before it left on the screen.
  void Watch(frmWireFeed& form) {
    watch_.emplace([this, &form] {
      See(countsIn_, Caption(form, "pnlTimeIn"));
      See(countsOut_, Caption(form, "pnlTimeOut"));
      return now_;
    });
  }
  std::vector<std::string> countsIn_, countsOut_;  // what was seen, each once for as long as it stood

 private:
  static void See(std::vector<std::string>& counts, const std::string& count) {
    if (counts.empty() || counts.back() != count) counts.push_back(count);
  }
  std::optional<platform::ScopedClock> watch_;
};

// Not even for the tick in which the count passes its end is it shown.
TEST_F(FeedAudioCount, CountAboveIsBlankForATickBehindFiveStartDurations) {
  frmWireFeed& form = StartFeed();
  Watch(form);
  Record5SecondsOfSound(0);
  Tick(25, 80);
  Tick(25.5, 80);
  Tick(27.5, 80);
  EXPECT_EQ(countsIn_, (std::vector<std::string>{"", "0.0", "5.0", "25.0", "", "0.0", "2.0"}));
}

TEST_F(FeedAudioCount, CountBelowIsBlankBehindFiveEndDurations) {
  frmWireFeed& form = StartFeed();
  Watch(form);
  Tick(0, 10);
  Tick(125, 10);
  Tick(125.5, 10);
  Tick(127.5, 10);
  EXPECT_EQ(countsOut_, (std::vector<std::string>{"", "125.0", "", "2.0"}));
}

// The end of a recording can't be written. While that is told the sound comes back and is counted anew; the
// tick that waited goes on with the time by then.
TEST_F(FeedAudioCount, TickThatWaitedBehindABoxShowsNoCountBelowNothing) {
  frmWireFeed& form = StartFeed();
  Watch(form);
  Record5SecondsOfSound(0);
  Tick(8, 10);
  const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09001.WAV");
  boxes.Expect("The Windows Multimedia Sub-System has returned with an unknown error, the code was: 262",
               platform::BoxAnswer::Ok, [&] {
                 Tick(40, 10);
                 EXPECT_EQ(Caption(form, "pnlTimeIn"), "") << "the run was broken";
                 Tick(45, 80);
                 Tick(47, 80);
                 EXPECT_EQ(Caption(form, "pnlTimeIn"), "2.0");
               });
  Tick(33, 10);
  Tick(48, 80);
  EXPECT_EQ(Caption(form, "pnlTimeIn"), "3.0");
  EXPECT_THAT(countsIn_, Not(Contains(StartsWith("-"))));
  EXPECT_THAT(countsOut_, Not(Contains(StartsWith("-"))));
}

TEST_F(FeedAudioCount, RecordByHandThatIsAcceptedCountsTheSilenceAnew) {
  frmWireFeed& form = StartFeed();
  Tick(0, 10);
  Tick(20, 10);
  EXPECT_EQ(Caption(form, "pnlTimeOut"), "20.0");
  Click(form, "cmdRecord");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  Tick(20.5, 10);
  EXPECT_EQ(Caption(form, "pnlTimeOut"), "");
  Tick(22.5, 10);
  EXPECT_EQ(Caption(form, "pnlTimeOut"), "2.0");
}

TEST_F(FeedAudioCount, RecordByHandWithoutRoomLeavesTheCountOfSilenceAlone) {
  frmWireFeed& form = StartFeed();
  const platform::ScopedHook<std::uint64_t(const std::string&)> room(
      platform::FreeBytesHook(), [](const std::string&) { return std::uint64_t{1000}; });
  Tick(0, 10);
  Tick(20, 10);
  Click(form, "cmdRecord");
  Tick(21, 10);
  EXPECT_EQ(Caption(form, "pnlTimeOut"), "21.0");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
}

TEST_F(FeedAudioCount, RecordByHandWithoutACartLeavesTheCountOfSilenceAlone) {
  frmWireFeed& form = StartFeed("EndCartNumber=9001\r\nLastRecordedCartNumber=9001\r\n");
  Tick(0, 10);
  Tick(20, 10);
  Click(form, "cmdRecord");
  Tick(21, 10);
  EXPECT_EQ(Caption(form, "pnlTimeOut"), "21.0");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
}

}  // namespace
}  // namespace vorda::test
