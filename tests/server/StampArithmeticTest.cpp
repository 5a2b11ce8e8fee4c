// Moments before a moment, and numbers of 64 bits in halves.

#include <gtest/gtest.h>

#include "shell/GeneralFunctions.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

void ExpectStamp(const TimeStamp& stamp, std::int32_t day, float seconds) {
  EXPECT_EQ(stamp.Day, day);
  EXPECT_FLOAT_EQ(stamp.Seconds, seconds);
}

TEST(SubtractFromStampTest, WithinTheDay) {
  ExpectStamp(SubtractFromStamp(10.5F, {100, 60.75F}), 100, 50.25F);
}

TEST(SubtractFromStampTest, AcrossMidnight) {
  ExpectStamp(SubtractFromStamp(100.0F, {100, 60.0F}), 99, 86360.0F);
}

TEST(SubtractFromStampTest, WholeDaysAndTheRest) {
  ExpectStamp(SubtractFromStamp(2.0F * 86400.0F + 30.0F, {100, 60.0F}), 98, 30.0F);
}

TEST(SubtractFromStampTest, ExactlyADayLeavesTheSeconds) {
  ExpectStamp(SubtractFromStamp(86400.0F, {100, 60.0F}), 99, 60.0F);
}

TEST(SubtractFromStampTest, DurationIsTakenInHundredths) {
  ExpectStamp(SubtractFromStamp(0.004F, {100, 60.0F}), 100, 60.0F);
  ExpectStamp(SubtractFromStamp(0.01F, {100, 60.0F}), 100, 59.99F);
}

TEST(SubtractFromStampTest, NegativeDurationGoesForwardAcrossMidnight) {
  ExpectStamp(SubtractFromStamp(-100.0F, {100, 86350.0F}), 101, 50.0F);
}

TEST(SubtractFromStampTest, MomentThatRoundsUpToMidnightIsTheNextDaysFirst) {
  ExpectStamp(SubtractFromStamp(0.01F, {100, 0.0065F}), 100, 0.0F);
}

// The whole days come from the rounded duration and the rest from the duration itself. Late in the day the
// seconds go in steps of 1/128.
TEST(SubtractFromStampTest, DurationJustBelowADayTakesNearlyTwo) {
  ExpectStamp(SubtractFromStamp(86399.7F, {100, 60.0F}), 98, 60.296875F);
}

TEST(LargeToDoubleTest, NegativeHalvesCountUpFromTwoToThe31) {
  EXPECT_EQ(LargeToDouble(0, 0), 0.0);
  EXPECT_EQ(LargeToDouble(7, 0), 7.0);
  EXPECT_EQ(LargeToDouble(-1, 0), 4294967295.0);
  EXPECT_EQ(LargeToDouble(0, 1), 4294967296.0);
  EXPECT_EQ(LargeToDouble(-2147483647 - 1, 2), 2.0 * 4294967296.0 + 2147483648.0);
  EXPECT_EQ(LargeToDouble(-1, -1), 18446744073709551615.0);
}

TEST(DiskFreeBytesTest, OfAPathThatDoesNotExistIsThatOfItsDeepestDirectory) {
  const test::TempDirectory directory;
  EXPECT_GT(DiskFreeBytes(directory.path()), 0U);
  EXPECT_GT(DiskFreeBytes(directory / "no/such/file.wav"), 0U);
}

TEST(DiskFreeBytesTest, OfWhatHasNoPathIsZero) {
  EXPECT_EQ(DiskFreeBytes(""), 0U);
  EXPECT_EQ(DiskFreeBytes("Q:\\nowhere"), 0U);
}

}  // namespace
}  // namespace vorda
