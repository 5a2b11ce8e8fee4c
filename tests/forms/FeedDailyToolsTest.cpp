// The daily tools as a feed window's timer starts them. Each tick of that timer on a window with a feed reads
// the clock once, which is how these tests see it; the level's timer reads it too, and is stopped.

#include <gtest/gtest.h>

#include "platform/Clock.h"
#include "support/FeedWindows.h"

namespace vorda::test {
namespace {

using Programs = std::vector<std::string>;

class FeedDailyTools : public FeedWindows {
 protected:
  void Start(int number, const std::string& path) {
    frmWireFeed& form = FeedWindows::Start(number, path);
    Timer(form, "tmrAudioLevel")->SetEnabled(false);
  }
  void Start(int number) { Start(number, WriteConfig(number)); }

  Programs Started() const {
    Programs names;
    for (const platform::ProcessStart& start : processes.started)
      names.push_back(start.program.substr(start.program.rfind('/') + 1));
    return names;
  }
  bool WaitForTicks(int more) {
    const int until = ticks + more;
    return WaitUntil([&] { return ticks >= until; }, 20000);
  }

  platform::Moment now{platform::DayNumber(2026, 11, 21), 10 * 3600 + 600.0};
  int ticks = 0;
  platform::ScopedClock clock{[this] {
    ++ticks;
    return now;
  }};
};

TEST_F(FeedDailyTools, ExpiryRunsOnceADateOnTheFeedsFileAtTheLowestPriority) {
  const std::string config = WriteConfig(1);
  Start(1, config);
  ASSERT_TRUE(WaitForTicks(2));
  ASSERT_EQ(Started(), Programs{"ItemDrop.exe"});
  EXPECT_EQ(processes.started[0].arguments, std::vector<std::string>{config});
  EXPECT_TRUE(processes.started[0].lowestPriority);
  now.day += 1;
  ASSERT_TRUE(WaitForTicks(1));
  EXPECT_EQ(Started(), (Programs{"ItemDrop.exe", "ItemDrop.exe"}));
}

TEST_F(FeedDailyTools, FailedStartMarksTheDayAllTheSame) {
  now.seconds = 10 * 3600 + 1801.0;
  processes.canStart = false;
  Start(1);
  ASSERT_TRUE(WaitForTicks(2));
  EXPECT_EQ(Started(), Programs{"ItemRoll.exe"});
  now.seconds = 11 * 3600;
  ASSERT_TRUE(WaitForTicks(1));
  EXPECT_EQ(Started(), (Programs{"ItemRoll.exe", "ItemDrop.exe"}));
}

// The blank window's timer runs beside that of feed 2 and was started before it.
TEST_F(FeedDailyTools, BlankWindowAndNoIndexProcessingRunNone) {
  const std::string missing = directory / "missing.ini";
  boxes.Expect("Warning : No Vorda information was found in the specifed news directory: " + missing);
  Start(1, missing);
  Record(3).NoIndexProcessing = 1;
  Start(3);
  const std::string config = WriteConfig(2);
  Start(2, config);
  ASSERT_TRUE(WaitForTicks(2));
  EXPECT_EQ(Started(), Programs{"ItemDrop.exe"});
  now.seconds = 10 * 3600 + 1801.0;
  ASSERT_TRUE(WaitForTicks(2));
  EXPECT_EQ(Started(), (Programs{"ItemDrop.exe", "ItemRoll.exe"}));
  for (const platform::ProcessStart& start : processes.started)
    EXPECT_EQ(start.arguments, std::vector<std::string>{config});
}

TEST_F(FeedDailyTools, FeedWithoutACapturePortRunsBothEachInItsHalfOfTheHour) {
  const std::string config = WriteConfig(1);
  Record(1).CapturePort = 0;
  Start(1, config);
  EXPECT_TRUE(ports->openingsTried().empty());
  ASSERT_TRUE(WaitForTicks(1));
  EXPECT_EQ(Started(), Programs{"ItemDrop.exe"});
  now.seconds = 10 * 3600 + 1800.0;
  ASSERT_TRUE(WaitForTicks(1));
  EXPECT_EQ(Started(), Programs{"ItemDrop.exe"});
  now.seconds = 10 * 3600 + 1801.0;
  ASSERT_TRUE(WaitForTicks(2));
  EXPECT_EQ(Started(), (Programs{"ItemDrop.exe", "ItemRoll.exe"}));
  EXPECT_EQ(processes.started[1].arguments, std::vector<std::string>{config});
  EXPECT_TRUE(processes.started[1].lowestPriority);
}

TEST_F(FeedDailyTools, EachFeedHasItsOwnDay) {
  const std::string first = WriteConfig(1);
  const std::string second = WriteConfig(2);
  Start(1, first);
  Start(2, second);
  ASSERT_TRUE(WaitForTicks(4));
  ASSERT_EQ(processes.started.size(), 2u);
  EXPECT_EQ(processes.started[0].arguments[0], first);
  EXPECT_EQ(processes.started[1].arguments[0], second);
}

TEST_F(FeedDailyTools, TimerOfAClosedWindowIsSilent) {
  now.seconds = 10 * 3600 + 1600.0;
  Start(1);
  Start(2);
  ChildWindowOf(FeedForm(1).lblConfigFile())->close();
  now.seconds = 10 * 3600;
  ASSERT_TRUE(WaitForTicks(2));
  ASSERT_EQ(processes.started.size(), 1u);
  EXPECT_EQ(processes.started[0].arguments[0], directory / "feed2.ini");
}

// Nothing guards against it: the day is marked only behind the start.
TEST_F(FeedDailyTools, WaitBehindATickLetsTheNextTickIn) {
  int depth = 0;
  int deepest = 0;
  processes.atStart = [&](const platform::ProcessStart&) {
    deepest = std::max(deepest, ++depth);
    if (depth == 1) {
      EXPECT_TRUE(WaitUntil([&] { return deepest == 2; }, 20000));
    }
    --depth;
  };
  Start(1);
  ASSERT_TRUE(WaitUntil([&] { return deepest == 2; }, 20000));
  EXPECT_EQ(Started(), (Programs{"ItemDrop.exe", "ItemDrop.exe"}));
}

}  // namespace
}  // namespace vorda::test
