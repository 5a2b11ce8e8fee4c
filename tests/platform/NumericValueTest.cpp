#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "platform/NumericValue.h"

namespace vorda::platform {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(NumericValueTest, ReadsTheLeadingNumber) {
  EXPECT_EQ(NumericValue("12"), 12.0);
  EXPECT_EQ(NumericValue("007"), 7.0);
  EXPECT_EQ(NumericValue("12abc"), 12.0);
  EXPECT_EQ(NumericValue("12,5"), 12.0);
  EXPECT_EQ(NumericValue("1.2.3"), 1.2);
  EXPECT_EQ(NumericValue("00012.WAV"), 12.0);
  EXPECT_EQ(NumericValue("5."), 5.0);
  EXPECT_EQ(NumericValue(".5"), 0.5);
}

TEST(NumericValueTest, ZeroWhenThereIsNone) {
  for (const char* text : {"", " ", "abc", "-", "+", ".", "-.", "e5", ".e5", "inf", "nan", "--1", "$1"}) {
    EXPECT_EQ(NumericValue(text), 0.0) << text;
  }
}

TEST(NumericValueTest, BlanksAheadAreSkippedAndOthersEndTheNumber) {
  EXPECT_EQ(NumericValue(" \t\n 12"), 12.0);
  EXPECT_EQ(NumericValue(" - 12"), -12.0);
  EXPECT_EQ(NumericValue("12 34"), 12.0);
  EXPECT_EQ(NumericValue("\r12"), 0.0);
  EXPECT_EQ(NumericValue("\xA0"
                         "12"),
            0.0);
}

TEST(NumericValueTest, SignsAndExponents) {
  EXPECT_EQ(NumericValue("+3"), 3.0);
  EXPECT_EQ(NumericValue("-3.5"), -3.5);
  EXPECT_EQ(NumericValue("1e3"), 1000.0);
  EXPECT_EQ(NumericValue("1E+3"), 1000.0);
  EXPECT_EQ(NumericValue("25e-1"), 2.5);
  EXPECT_EQ(NumericValue("7e"), 7.0);
  EXPECT_EQ(NumericValue("7e-"), 7.0);
  EXPECT_EQ(NumericValue("0x10"), 0.0);
}

TEST(NumericValueTest, ZeroHasNoSign) {
  EXPECT_FALSE(std::signbit(NumericValue("-0")));
}

TEST(NumericValueTest, TooLargeIsInfinityAndTooSmallIsZero) {
  EXPECT_EQ(NumericValue("1e999"), kInfinity);
  EXPECT_EQ(NumericValue("-1e999"), -kInfinity);
  EXPECT_EQ(NumericValue("1e99999999999999999999"), kInfinity);
  EXPECT_EQ(NumericValue(std::string(400, '9')), kInfinity);
  EXPECT_EQ(NumericValue("1e-999"), 0.0);
  EXPECT_EQ(NumericValue("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(NumericValue("0e999"), 0.0);
  EXPECT_EQ(NumericValue("0." + std::string(400, '0') + "1e401"), 1.0);
}

TEST(NumericValueTest, IntegersRoundHalfToEven) {
  EXPECT_EQ(NumericInteger("0.5"), 0);
  EXPECT_EQ(NumericInteger("1.5"), 2);
  EXPECT_EQ(NumericInteger("2.5"), 2);
  EXPECT_EQ(NumericInteger("-1.5"), -2);
  EXPECT_EQ(NumericInteger("2.4999"), 2);
  EXPECT_EQ(NumericInteger("abc"), 0);
}

TEST(NumericValueTest, IntegersEndAt32Bits) {
  EXPECT_EQ(NumericInteger("2147483647"), 2147483647);
  EXPECT_EQ(NumericInteger("2147483647.4"), 2147483647);
  EXPECT_EQ(NumericInteger("2147483647.5"), std::nullopt);
  EXPECT_EQ(NumericInteger("-2147483648.5"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(NumericInteger("-2147483649"), std::nullopt);
  EXPECT_EQ(NumericInteger("1e999"), std::nullopt);
}

TEST(NumericValueTest, LeadingIntegerTakesDigitsAndAMinusOnly) {
  EXPECT_EQ(LeadingInteger("12"), 12);
  EXPECT_EQ(LeadingInteger("-12x"), -12);
  EXPECT_EQ(LeadingInteger("12.9"), 12);
  EXPECT_EQ(LeadingInteger("1e3"), 1);
  for (const char* text : {"", "x1", " 1", "+1", "-", "--1", "- 1", ".5"}) {
    EXPECT_EQ(LeadingInteger(text), std::nullopt) << text;
  }
}

TEST(NumericValueTest, LeadingIntegerWrapsAt32Bits) {
  EXPECT_EQ(LeadingInteger("2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(LeadingInteger("4294967295"), -1);
  EXPECT_EQ(LeadingInteger("4294967296"), 0);
  EXPECT_EQ(LeadingInteger("-4294967295"), 1);
  EXPECT_EQ(LeadingInteger("-2147483648"), std::numeric_limits<std::int32_t>::min());
}

}  // namespace
}  // namespace vorda::platform
