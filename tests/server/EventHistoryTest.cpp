#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/Settings.h"
#include "shell/EventHistory.h"

namespace vorda {
namespace {

platform::Settings WithShortDate(const std::string& format) {
  platform::Settings settings;
  settings.shortDate = format;
  return settings;
}

class EventHistoryTest : public ::testing::Test {
 protected:
  EventHistoryTest() { Clear(); }
  ~EventHistoryTest() override { Clear(); }

  static void Clear() {
    gHistoryCount = 0;
    gHistoryLines = {};
  }
  static std::vector<std::string> Lines() { return {gHistoryLines.begin(), gHistoryLines.end()}; }

  platform::ScopedSettings settings_{WithShortDate("dd/MM/yyyy")};
  platform::ScopedClock clock_{platform::Moment{platform::DayNumber(2026, 1, 2), 3 * 3600 + 4 * 60 + 5.6}};
};

TEST_F(EventHistoryTest, LineBeginsWithDateAndTime) {
  AddHistoryEvent("Feed 2 : Parity Error");
  EXPECT_EQ(gHistoryCount, 1);
  EXPECT_EQ(Lines(),
            (std::vector<std::string>{"02/01/2026 03:04:05 Feed 2 : Parity Error", "", "", "", "", ""}));
}

TEST_F(EventHistoryTest, SixLinesFillItFromTheOldestToTheNewest) {
  for (const char* message : {"1", "2", "3", "4", "5", "6"}) AddHistoryEvent(message);
  EXPECT_EQ(gHistoryCount, 6);
  const std::string stamp = "02/01/2026 03:04:05 ";
  EXPECT_EQ(Lines(), (std::vector<std::string>{stamp + "1", stamp + "2", stamp + "3", stamp + "4",
                                               stamp + "5", stamp + "6"}));
}

TEST_F(EventHistoryTest, SeventhLinePushesTheOldestOut) {
  for (const char* message : {"1", "2", "3", "4", "5", "6", "7"}) AddHistoryEvent(message);
  EXPECT_EQ(gHistoryCount, 6);
  const std::string stamp = "02/01/2026 03:04:05 ";
  EXPECT_EQ(Lines(), (std::vector<std::string>{stamp + "2", stamp + "3", stamp + "4", stamp + "5",
                                               stamp + "6", stamp + "7"}));
}

TEST_F(EventHistoryTest, EachLineKeepsItsOwnTime) {
  AddHistoryEvent("early");
  const platform::ScopedClock later(platform::Moment{platform::DayNumber(2026, 1, 3), 0.0});
  AddHistoryEvent("late");
  EXPECT_EQ(gHistoryLines[0], "02/01/2026 03:04:05 early");
  EXPECT_EQ(gHistoryLines[1], "03/01/2026 00:00:00 late");
}

TEST_F(EventHistoryTest, EmptyMessageIsALineToo) {
  AddHistoryEvent("");
  EXPECT_EQ(gHistoryLines[0], "02/01/2026 03:04:05 ");
  EXPECT_EQ(gHistoryCount, 1);
}

TEST_F(EventHistoryTest, WindowHearsOfEachLineOnceItIsThere) {
  std::vector<std::int16_t> counts;
  const platform::ScopedHook noting(HistoryChangedHook(), [&] { counts.push_back(gHistoryCount); });
  AddHistoryEvent("1");
  AddHistoryEvent("2");
  EXPECT_EQ(counts, (std::vector<std::int16_t>{1, 2}));
}

}  // namespace
}  // namespace vorda
