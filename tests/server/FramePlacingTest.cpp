#include <gtest/gtest.h>

#include "shell/FramePlacing.h"

namespace vorda {
namespace {

TEST(FramePlacingTest, HistoryStandsAlongTheBottomLeftAndKeepsItsHeight) {
  const TwipRect place = HistoryPlace(11000, 9000, 1500);
  EXPECT_DOUBLE_EQ(place.left, 30);
  EXPECT_DOUBLE_EQ(place.top, 7440);
  EXPECT_DOUBLE_EQ(place.width, 5000);
  EXPECT_DOUBLE_EQ(place.height, 1500);
}

TEST(FramePlacingTest, FeedLoadsAboveTheHistory) {
  const TwipRect place = FeedPlaceOnLoad({11000, 9000, 7440});
  EXPECT_DOUBLE_EQ(place.left, 30);
  EXPECT_DOUBLE_EQ(place.top, 30);
  EXPECT_DOUBLE_EQ(place.width, 5000);
  EXPECT_DOUBLE_EQ(place.height, 7380);
}

TEST(FramePlacingTest, FeedsStandSideBySideBeginningAtTheLeftEdge) {
  EXPECT_DOUBLE_EQ(FeedLeft(5000, 0), 0);
  EXPECT_DOUBLE_EQ(FeedLeft(5000, 1), 5060);
  EXPECT_DOUBLE_EQ(FeedLeft(5000, 3), 15180);
}

}  // namespace
}  // namespace vorda
