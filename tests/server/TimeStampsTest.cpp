#include <gtest/gtest.h>

#include <ostream>

#include "platform/Clock.h"
#include "shell/GeneralFunctions.h"

namespace vorda {
namespace {

using platform::Moment;
using platform::ScopedClock;

TEST(NowStampTest, IsTheClocksDayAndSeconds) {
  const ScopedClock clock(Moment{46347, 12345.25});
  EXPECT_EQ(NowStamp().Day, 46347);
  EXPECT_EQ(NowStamp().Seconds, 12345.25F);
}

TEST(NowStampTest, SecondsAreSinglePrecision) {
  const ScopedClock clock(Moment{46347, 86399.999});
  EXPECT_EQ(NowStamp().Seconds, 86400.0F);
}

struct HourRow {
  double seconds;
  float wholeHour;
};
void PrintTo(const HourRow& row, std::ostream* out) {
  *out << row.seconds;
}
class NowStampHourTest : public ::testing::TestWithParam<HourRow> {};

TEST_P(NowStampHourTest, StartOfTheHour) {
  const ScopedClock clock(Moment{46347, GetParam().seconds});
  EXPECT_EQ(NowStamp(true).Day, 46347);
  EXPECT_EQ(NowStamp(true).Seconds, GetParam().wholeHour);
}

constexpr HourRow kHourRows[] = {
    {0, 0},
    {0.4, 0},
    {1, 0},
    {3599, 0},
    {3599.4, 0},
    // Rounded, the next hour has begun: nothing is taken off, and what is left rounds up.
    {3599.6, 3600},
    {3600, 3600},
    {3600.4, 3600},
    {50399.2, 46800},
    {50400.25, 50400},
    {86399.4, 82800},
    {86399.6, 86400},
};
INSTANTIATE_TEST_SUITE_P(Times, NowStampHourTest, ::testing::ValuesIn(kHourRows));

struct SinceRow {
  TimeStamp stamp;
  Moment now;
  double seconds;
};
void PrintTo(const SinceRow& row, std::ostream* out) {
  *out << row.stamp.Day << " " << row.stamp.Seconds << " until " << row.now.day << " " << row.now.seconds;
}
class SecondsSinceTest : public ::testing::TestWithParam<SinceRow> {};

TEST_P(SecondsSinceTest, SecondsFromTheStampUntilNow) {
  const ScopedClock clock(GetParam().now);
  EXPECT_DOUBLE_EQ(SecondsSince(GetParam().stamp), GetParam().seconds);
}

const SinceRow kSinceRows[] = {
    {{46347, 100.0F}, {46347, 100.0}, 0},
    {{46347, 100.0F}, {46347, 160.5}, 60.5},
    {{46347, 86390.0F}, {46348, 5.0}, 15},
    {{46347, 86399.5F}, {46348, 0.0}, 0.5},
    {{46347, 10.0F}, {46350, 10.0}, 3 * 86400.0},
    // A stamp that lies ahead: the clock was set back.
    {{46347, 160.0F}, {46347, 100.0}, -60},
    {{46348, 5.0F}, {46347, 86390.0}, -15},
    // A stamp that was never set is as old as the day count.
    {{0, 0.0F}, {46347, 1.0}, 46347 * 86400.0 + 1},
    // Far apart, where 32 bits would not hold the seconds.
    {{-2147483647, 0.0F}, {2147483647, 0.0}, 4294967294.0 * 86400.0},
};
INSTANTIATE_TEST_SUITE_P(Stamps, SecondsSinceTest, ::testing::ValuesIn(kSinceRows));

TEST(SecondsSinceNowTest, StampOfNowIsNoTimeAgoUpToItsResolution) {
  const ScopedClock clock(Moment{46347, 86399.123});
  EXPECT_NEAR(SecondsSince(NowStamp()), 0.0, 1.0 / 128);
}

}  // namespace
}  // namespace vorda
