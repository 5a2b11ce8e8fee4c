#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include "feed/DailyTools.h"
#include "platform/Settings.h"
#include "support/FakeDesktop.h"

namespace vorda {
namespace {

constexpr std::int32_t kToday = 46347;

struct Row {
  double seconds;
  bool expiry;
  bool index;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.seconds;
}

class DailyToolsHourTest : public ::testing::TestWithParam<Row> {};

TEST_P(DailyToolsHourTest, WhichToolsAnHourAllows) {
  const Row& row = GetParam();
  // It is the same in every hour of the day.
  for (int hour = 0; hour < 24; ++hour) {
    const DailyToolsDue due = DueDailyTools({}, {kToday, hour * 3600.0 + row.seconds});
    EXPECT_EQ(due.expiry, row.expiry) << hour << " h and " << row.seconds << " s";
    EXPECT_EQ(due.index, row.index) << hour << " h and " << row.seconds << " s";
  }
}

constexpr Row kRows[] = {
    {0, true, false},       {0.5, true, false},     {1, true, false},
    {750, true, false},     {1498.5, true, false},  // the half goes to the even 1498
    {1499, true, false},    {1499.4, true, false},  {1499.49, true, false},
    {1499.5, false, false},  // the half goes to the even 1500
    {1500, false, false},   {1500.4, false, false}, {1600, false, false},
    {1799.6, false, false}, {1800, false, false},   {1800.4, false, false},
    {1800.5, false, false},  // the half goes to the even 1800
    {1800.51, false, true}, {1801, false, true},    {2700, false, true},
    {3599, false, true},    {3599.4, false, true},  {3599.5, true, false},  // 3600: the next hour has begun
    {3599.6, true, false},
};
INSTANTIATE_TEST_SUITE_P(Seconds, DailyToolsHourTest, ::testing::ValuesIn(kRows));

TEST(DailyToolsTest, ToolRunsOnceADay) {
  EXPECT_FALSE(DueDailyTools({kToday, 0}, {kToday, 10}).expiry);
  EXPECT_FALSE(DueDailyTools({0, kToday}, {kToday, 1900}).index);
}

TEST(DailyToolsTest, EachToolHasADayOfItsOwn) {
  EXPECT_TRUE(DueDailyTools({0, kToday}, {kToday, 10}).expiry);
  EXPECT_TRUE(DueDailyTools({kToday, 0}, {kToday, 1900}).index);
}

TEST(DailyToolsTest, AnyOtherDateIsANewDay) {
  for (const std::int32_t day : {kToday - 400, kToday - 1, kToday + 1, kToday + 400}) {
    EXPECT_TRUE(DueDailyTools({kToday, kToday}, {day, 10}).expiry) << day;
    EXPECT_TRUE(DueDailyTools({kToday, kToday}, {day, 1900}).index) << day;
  }
}

// The feed's timer through a stretch of time: a tick every two seconds, each due tool started and its day
// noted.
class DailyToolsScenarioTest : public ::testing::Test {
 protected:
  struct Run {
    std::string tool;
    std::int32_t day;
    double seconds;
    bool operator==(const Run&) const = default;
    friend void PrintTo(const Run& run, std::ostream* out) {
      *out << run.tool << " on day " << run.day << " at " << run.seconds;
    }
  };

  // Ticks from `begin` to `end`, both in seconds past midnight of today.
  void Tick(double begin, double end) {
    for (double seconds = begin; seconds <= end; seconds += 2) {
      const platform::Moment now{kToday + static_cast<std::int32_t>(std::floor(seconds / 86400)),
                                 seconds - std::floor(seconds / 86400) * 86400};
      const DailyToolsDue due = DueDailyTools(state_, now);
      if (due.expiry) {
        runs_.push_back({"expiry", now.day, now.seconds});
        state_.LastExpiryDay = now.day;
      }
      if (due.index) {
        runs_.push_back({"index", now.day, now.seconds});
        state_.LastIndexDay = now.day;
      }
    }
  }
  static double At(int hour, int minute, int second) { return hour * 3600 + minute * 60 + second; }

  DailyToolsState state_;
  std::vector<Run> runs_;
};

TEST_F(DailyToolsScenarioTest, StartAtTenPastTenRunsExpiryAtOnceAndTheIndexAtHalfPast) {
  Tick(At(10, 10, 0), At(23, 59, 58));
  EXPECT_EQ(runs_, (std::vector<Run>{{"expiry", kToday, At(10, 10, 0)}, {"index", kToday, At(10, 30, 2)}}));
}

TEST_F(DailyToolsScenarioTest, OddTickMeetsTheFirstSecondOfTheIndexWindow) {
  Tick(At(10, 10, 1), At(10, 59, 59));
  EXPECT_EQ(runs_, (std::vector<Run>{{"expiry", kToday, At(10, 10, 1)}, {"index", kToday, At(10, 30, 1)}}));
}

TEST_F(DailyToolsScenarioTest, StartBetweenTheWindowsRunsTheIndexFirst) {
  Tick(At(10, 26, 1), At(23, 59, 59));
  EXPECT_EQ(runs_, (std::vector<Run>{{"index", kToday, At(10, 30, 1)}, {"expiry", kToday, At(11, 0, 1)}}));
}

// A timer doesn't keep to whole seconds: a tick comes on the first one of the index's window.
TEST_F(DailyToolsScenarioTest, StartAtTwentySixPastRunsNeitherUntilTheFirstSecondBehindHalfPast) {
  Tick(At(10, 26, 0), At(10, 30, 0));
  EXPECT_EQ(runs_, std::vector<Run>{});
  Tick(At(10, 30, 1), At(10, 59, 59));
  EXPECT_EQ(runs_, (std::vector<Run>{{"index", kToday, At(10, 30, 1)}}));
  Tick(At(11, 0, 0), At(23, 59, 58));
  EXPECT_EQ(runs_, (std::vector<Run>{{"index", kToday, At(10, 30, 1)}, {"expiry", kToday, At(11, 0, 0)}}));
}

TEST_F(DailyToolsScenarioTest, StartAtTwentyToThreeRunsTheIndexAtOnceAndExpiryOnTheHour) {
  Tick(At(14, 40, 0), At(23, 59, 58));
  EXPECT_EQ(runs_, (std::vector<Run>{{"index", kToday, At(14, 40, 0)}, {"expiry", kToday, At(15, 0, 0)}}));
}

TEST_F(DailyToolsScenarioTest, SteadyRunningStartsExpiryAtMidnightAndTheIndexHalfAnHourLater) {
  state_ = {kToday, kToday};
  Tick(At(23, 0, 0), At(23, 59, 58) + 2 * 86400);
  EXPECT_EQ(runs_, (std::vector<Run>{{"expiry", kToday + 1, 0},
                                     {"index", kToday + 1, At(0, 30, 2)},
                                     {"expiry", kToday + 2, 0},
                                     {"index", kToday + 2, At(0, 30, 2)}}));
}

TEST_F(DailyToolsScenarioTest, ClockSetBackADayRunsBothOnceMore) {
  state_ = {kToday, kToday};
  Tick(At(12, 0, 0) - 86400, At(12, 59, 58) - 86400);
  EXPECT_EQ(runs_,
            (std::vector<Run>{{"expiry", kToday - 1, At(12, 0, 0)}, {"index", kToday - 1, At(12, 30, 2)}}));
}

TEST(StartDailyToolTest, RunsAtTheLowestPriorityOnTheConfigurationFile) {
  platform::Settings settings;
  settings.programDirectory = "/opt/my tools";
  settings.drives['N'] = "/no/such/place";
  const platform::ScopedSettings scoped(settings);
  test::FakeProcesses processes;
  StartDailyTool("ItemDrop.exe", "N:\\sport\\vorda.ini");
  StartDailyTool("ItemRoll.exe", "/no/such/place/vorda.ini");
  ASSERT_EQ(processes.started.size(), 2U);
  EXPECT_EQ(processes.started[0].program, "/opt/my tools/ItemDrop.exe");
  EXPECT_EQ(processes.started[0].arguments, std::vector<std::string>{"/no/such/place/sport/vorda.ini"});
  EXPECT_TRUE(processes.started[0].lowestPriority);
  EXPECT_EQ(processes.started[1].program, "/opt/my tools/ItemRoll.exe");
  EXPECT_EQ(processes.started[1].arguments, std::vector<std::string>{"/no/such/place/vorda.ini"});
  EXPECT_TRUE(processes.started[1].lowestPriority);
}

TEST(StartDailyToolTest, MissingToolIsSilent) {
  test::FakeBoxes boxes;
  test::FakeProcesses processes;
  processes.canStart = false;
  StartDailyTool("ItemDrop.exe", "/no/such/place/vorda.ini");
  EXPECT_EQ(processes.started.size(), 1U);
}

}  // namespace
}  // namespace vorda
