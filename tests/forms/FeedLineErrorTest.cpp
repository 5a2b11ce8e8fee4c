// What the operator learns of a serial port's events: errors beep and go to the history, line changes leave
// no trace.

#include <gtest/gtest.h>

#include "platform/Clock.h"
#include "support/FeedWindows.h"

namespace vorda::test {
namespace {

struct ErrorCase {
  std::int16_t event;
  const char* words;
};

void PrintTo(const ErrorCase& test, std::ostream* out) {
  *out << test.words;
}

class FeedLineError : public FeedWindows {
 protected:
  FeedLineError() {
    Record(2).CapturePort = 1;
    Start(2);
  }

  int beeps = 0;
  std::int16_t linesAtBeep = -1;
  platform::ScopedHook<void()> beep{platform::BeepHook(), [this] {
                                      ++beeps;
                                      linesAtBeep = gHistoryCount;
                                    }};
  platform::ScopedClock clock{platform::Moment{platform::DayNumber(2026, 11, 21), 3661.99}};
};

class FeedLineErrorWords : public FeedLineError, public ::testing::WithParamInterface<ErrorCase> {};

TEST_P(FeedLineErrorWords, BeepThenOneLineOfHistory) {
  Port(1)->RaiseEvent(GetParam().event);
  EXPECT_EQ(beeps, 1);
  EXPECT_EQ(linesAtBeep, 0);
  ASSERT_EQ(gHistoryCount, 1);
  EXPECT_EQ(gHistoryLines[0], std::string("21/11/2026 01:01:01 Feed 2 : ") + GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FeedLineErrorWords,
    ::testing::Values(ErrorCase{1001, "Break Received"}, ErrorCase{1002, "CTS Timeout"},
                      ErrorCase{1003, "DSR Timeout"}, ErrorCase{1004, "Framing Error"},
                      ErrorCase{1006, "Overrun Error"}, ErrorCase{1007, "Carrier Detect Timeout"},
                      ErrorCase{1008, "Receive Buffer Overflow"}, ErrorCase{1009, "Parity Error"},
                      ErrorCase{1010, "Transmit Buffer Full"}, ErrorCase{1011, "Error retrieving DCB"}),
    [](const auto& test) { return "Event" + std::to_string(test.param.event); });

INSTANTIATE_TEST_SUITE_P(
    NotInTheTable, FeedLineErrorWords,
    ::testing::Values(ErrorCase{0, "Unknown error or event"}, ErrorCase{8, "Unknown error or event"},
                      ErrorCase{1000, "Unknown error or event"}, ErrorCase{1005, "Unknown error or event"},
                      ErrorCase{1012, "Unknown error or event"}, ErrorCase{32767, "Unknown error or event"}),
    [](const auto& test) { return "Event" + std::to_string(test.param.event); });

TEST_F(FeedLineError, LineChangesLeaveNoTrace) {
  for (const std::int16_t event : std::vector<std::int16_t>{1, 3, 4, 5, 6, 7}) Port(1)->RaiseEvent(event);
  EXPECT_EQ(beeps, 0);
  EXPECT_EQ(gHistoryCount, 0);
  EXPECT_EQ(FeedForm(2).txtCapture()->Text(), "");
}

TEST_F(FeedLineError, ErrorDoesNotTouchAnOpenStory) {
  Port(1)->Arrive("\x01half ");
  const std::string story = Record(2).StoryFileName;
  Port(1)->RaiseEvent(1009);
  EXPECT_EQ(Record(2).StoryFileName, story);
  Port(1)->Arrive("done");
  EXPECT_EQ(ReadWholeFile(story), "half done");
  EXPECT_TRUE(processes.started.empty());
  Port(1)->Arrive("\x04");
  EXPECT_EQ(processes.started.size(), 1u);
}

}  // namespace
}  // namespace vorda::test
