// Seconds as text, in every layout.

#include <gtest/gtest.h>

#include <ostream>

#include "shell/TimeText.h"

namespace vorda {
namespace {

struct Layout {
  double seconds;
  std::int32_t style;
  const char* text;
};

void PrintTo(const Layout& layout, std::ostream* out) {
  *out << layout.seconds << " in style " << layout.style;
}

class FormatSecondsTest : public ::testing::TestWithParam<Layout> {};

TEST_P(FormatSecondsTest, LayoutOfAMoment) {
  EXPECT_EQ(FormatSeconds(GetParam().seconds, GetParam().style), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(RunningTime, FormatSecondsTest,
                         ::testing::Values(Layout{0, 2, "00:00:00"}, Layout{3599.5, 2, "01:00:00"},
                                           Layout{3599.4, 2, "00:59:59"}, Layout{86400, 2, "24:00:00"},
                                           Layout{86401, 2, "--:--:--"}, Layout{-1, 2, "--:--:--"},
                                           Layout{0.5, 2, "00:00:00"}, Layout{1.5, 2, "00:00:02"}));

INSTANTIATE_TEST_SUITE_P(CartLength, FormatSecondsTest,
                         ::testing::Values(Layout{75.26, 3, "01:15"}, Layout{3725, 3, "02:05"},
                                           Layout{0, 3, "00:00"}, Layout{59.5, 3, "01:00"},
                                           Layout{-0.001, 3, "--:--"}));

INSTANTIATE_TEST_SUITE_P(TimeLeft, FormatSecondsTest,
                         ::testing::Values(Layout{75.01, 22, "00:01:16"}, Layout{75, 22, "00:01:15"},
                                           Layout{59.001, 22, "00:01:00"}, Layout{86400.5, 22, "--:--:--"}));

INSTANTIATE_TEST_SUITE_P(FractionIsCut, FormatSecondsTest,
                         ::testing::Values(Layout{75.99, 12, "00:01:15"}, Layout{75.99, 32, "00:01:15"},
                                           Layout{75.99, 13, "01:15"}));

INSTANTIATE_TEST_SUITE_P(Hundredths, FormatSecondsTest,
                         ::testing::Values(Layout{75.25, 0, "01:15.25"}, Layout{3675.5, 1, "01:01:15.50"},
                                           Layout{3675.5, 0, "01:15.50"}, Layout{-1, 0, "--:--.--"},
                                           Layout{-1, 1, "--:--:--.--"}));

INSTANTIATE_TEST_SUITE_P(BlanksForLargerUnits, FormatSecondsTest,
                         ::testing::Values(Layout{45, 102, "  :  :  "}, Layout{75, 102, "  :  :15"},
                                           Layout{3675, 102, " 1:01:15"}, Layout{36000, 102, "10:00:00"},
                                           Layout{0.5, 101, "  :  :  .  "}, Layout{1.25, 101, "  :  :  .25"},
                                           Layout{75.25, 100, "  :  .  "}));

INSTANTIATE_TEST_SUITE_P(BlanksLeftOut, FormatSecondsTest,
                         ::testing::Values(Layout{45, 202, "  "}, Layout{75, 202, "  :15"},
                                           Layout{3675, 202, " 1:01:15"}, Layout{75, 203, "  :15"},
                                           Layout{30, 203, "  "}));

}  // namespace
}  // namespace vorda
