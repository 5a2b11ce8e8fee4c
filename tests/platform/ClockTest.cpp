#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "ScopedVariable.h"
#include "platform/Clock.h"
#include "platform/Settings.h"

namespace vorda::platform {
namespace {

constexpr int kDayOf1970 = 25569;

// Seconds since 1970 of a moment, as a wall clock in a zone that far east of Greenwich shows it.
double SecondsSince1970(const Moment& moment, double east) {
  return (moment.day - kDayOf1970) * 86400.0 + moment.seconds - east;
}

double SystemSeconds() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

TEST(ClockTest, DayZeroIsThe30thOfDecember1899) {
  EXPECT_EQ(DayNumber(1899, 12, 30), 0);
  EXPECT_EQ(DayNumber(1899, 12, 31), 1);
  EXPECT_EQ(DayNumber(1900, 1, 1), 2);
  EXPECT_EQ(DayNumber(1899, 12, 29), -1);
  EXPECT_EQ(DayNumber(1970, 1, 1), kDayOf1970);
  EXPECT_EQ(DayNumber(2000, 3, 1) - DayNumber(2000, 2, 28), 2);
  EXPECT_EQ(DayNumber(1900, 3, 1) - DayNumber(1900, 2, 28), 1);
  EXPECT_EQ(DayNumber(2024, 2, 29), 45351);
}

TEST(ClockTest, TellsLocalTimeWithItsFraction) {
  const test::ScopedVariable zone("TZ", "EAST-13:30");
  ::tzset();
  constexpr double kEast = 13.5 * 3600;
  bool fraction = false;
  for (int i = 0; i < 1000; ++i) {
    const double before = SystemSeconds();
    const Moment moment = ReadClock();
    const double after = SystemSeconds();
    // A double holds times of today to a quarter of a microsecond.
    ASSERT_GE(SecondsSince1970(moment, kEast), before - 1e-6);
    ASSERT_LE(SecondsSince1970(moment, kEast), after + 1e-6);
    ASSERT_GE(moment.seconds, 0.0);
    ASSERT_LT(moment.seconds, 86400.0);
    fraction = fraction || moment.seconds != static_cast<int>(moment.seconds);
  }
  EXPECT_TRUE(fraction);
}

TEST(ClockTest, ScopedClocksNestAndPutTheOldOneBack) {
  {
    const ScopedClock outer(Moment{100, 1.5});
    EXPECT_EQ(ReadClock().day, 100);
    {
      int calls = 0;
      const ScopedClock inner([&calls] { return Moment{++calls, 0.0}; });
      EXPECT_EQ(ReadClock().day, 1);
      EXPECT_EQ(ReadClock().day, 2);
    }
    EXPECT_EQ(ReadClock().day, 100);
    EXPECT_EQ(ReadClock().seconds, 1.5);
  }
  EXPECT_GT(ReadClock().day, 40000);
}

TEST(ClockTest, SettingGivesTheShortDate) {
  Settings settings;
  settings.shortDate = "dd.MM.yyyy";
  const ScopedSettings scoped(settings);
  EXPECT_EQ(FormatShortDate(DayNumber(2024, 2, 9)), "09.02.2024");
  EXPECT_EQ(FormatShortDate(0), "30.12.1899");
}

TEST(ClockTest, StampCutsTheFractionAndShows24Hours) {
  Settings settings;
  settings.shortDate = "yyyy/MM/dd";
  const ScopedSettings scoped(settings);
  const int day = DayNumber(1996, 7, 4);
  EXPECT_EQ(FormatDateTimeStamp({day, 0.0}), "1996/07/04 00:00:00 ");
  EXPECT_EQ(FormatDateTimeStamp({day, 59.999}), "1996/07/04 00:00:59 ");
  EXPECT_EQ(FormatDateTimeStamp({day, 13 * 3600.0 + 5 * 60 + 9.5}), "1996/07/04 13:05:09 ");
  EXPECT_EQ(FormatDateTimeStamp({day, 86399.999999}), "1996/07/04 23:59:59 ");
}

// The locale is read once a process, so each of these looks in a process of its own, which starts with the
// variable set.
class ClockDeathTest : public ::testing::Test {
 protected:
  ClockDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  ~ClockDeathTest() override { GTEST_FLAG_SET(death_test_style, "fast"); }

  [[noreturn]] static void TellDate(int year, int month, int day) {
    std::fprintf(stderr, "<%s>", FormatShortDate(DayNumber(year, month, day)).c_str());
    std::exit(0);
  }
};

TEST_F(ClockDeathTest, LocaleWithoutADateFormIsToldByIso) {
  const test::ScopedVariable locale("LC_ALL", "C");
  EXPECT_EXIT(TellDate(2024, 2, 9), ::testing::ExitedWithCode(0), "<2024-02-09>");
}

TEST_F(ClockDeathTest, YearOfTwoDigitsBecomesFour) {
  const test::ScopedVariable locale("LC_ALL", "en_US.UTF-8");
  EXPECT_EXIT(TellDate(2024, 2, 9), ::testing::ExitedWithCode(0), "<2/9/2024>");
}

TEST_F(ClockDeathTest, LocaleGivesOrderAndSeparator) {
  const test::ScopedVariable locale("LC_ALL", "de_DE.UTF-8");
  EXPECT_EXIT(TellDate(2024, 2, 9), ::testing::ExitedWithCode(0), "<09.02.2024>");
}

TEST_F(ClockDeathTest, DigitsOutsideTheCodePageFallBackToIso) {
  const test::ScopedVariable locale("LC_ALL", "fa_IR.UTF-8");
  EXPECT_EXIT(TellDate(2024, 2, 9), ::testing::ExitedWithCode(0), "<2024-02-09>");
}

}  // namespace
}  // namespace vorda::platform
