// What boxes leave on standard error where nobody answers them, for months.

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <set>
#include <string>

#include "platform/Clock.h"
#include "platform/StandardError.h"
#include "support/BoxOperator.h"

namespace vorda::test {
namespace {

using platform::Moment;
using platform::RepeatedTexts;

constexpr Moment kNoon{46000, 43200.0};

Moment After(double seconds) {
  return {kNoon.day, kNoon.seconds + seconds};
}

TEST(BoxRepeats, SameTextIsToldOnceAMinuteWithHowOftenItWasLeftOut) {
  RepeatedTexts texts;
  EXPECT_EQ(texts.Take("Disk trouble", kNoon), "Disk trouble");
  EXPECT_EQ(texts.Take("Disk trouble", kNoon), std::nullopt);
  EXPECT_EQ(texts.Take("Disk trouble", After(30)), std::nullopt);
  EXPECT_EQ(texts.Take("Disk trouble", After(59.9)), std::nullopt);
  EXPECT_EQ(texts.Take("Disk trouble", After(60)), "Disk trouble (left out since the last time: 3)");
  EXPECT_EQ(texts.Take("Disk trouble", After(119)), std::nullopt);
  EXPECT_EQ(texts.Take("Disk trouble", After(120)), "Disk trouble (left out since the last time: 1)");
  EXPECT_EQ(texts.Take("Disk trouble", After(180)), "Disk trouble");
}

TEST(BoxRepeats, EachTextHasAMinuteOfItsOwn) {
  RepeatedTexts texts;
  EXPECT_EQ(texts.Take("one", kNoon), "one");
  EXPECT_EQ(texts.Take("two", After(50)), "two");
  EXPECT_EQ(texts.Take("one", After(70)), "one");
  EXPECT_EQ(texts.Take("two", After(70)), std::nullopt);
}

TEST(BoxRepeats, MinuteRunsAcrossMidnight) {
  RepeatedTexts texts;
  EXPECT_EQ(texts.Take("text", {46000, 86370.0}), "text");
  EXPECT_EQ(texts.Take("text", {46001, 29.0}), std::nullopt);
  EXPECT_EQ(texts.Take("text", {46001, 30.0}), "text (left out since the last time: 1)");
}

TEST(BoxRepeats, ClockThatWasSetBackSilencesNothing) {
  RepeatedTexts texts;
  EXPECT_EQ(texts.Take("text", kNoon), "text");
  EXPECT_EQ(texts.Take("text", After(-3600)), "text");
  EXPECT_EQ(texts.Take("text", After(-3590)), std::nullopt);
}

TEST(BoxRepeats, HourOfTwentyASecondIsSixtyLines) {
  RepeatedTexts texts;
  int told = 0;
  for (int i = 0; i < 3600 * 20; ++i)
    if (texts.Take("twenty times a second", After(i / 20.0))) ++told;
  EXPECT_EQ(told, 60);
}

TEST(BoxRepeats, TextsThatDifferEachTimeAreToldAsOneFromTheHundredthOn) {
  RepeatedTexts texts;
  std::set<std::string> told;
  for (int i = 0; i < 1000; ++i)
    if (const auto line = texts.Take("file " + std::to_string(i), kNoon)) told.insert(*line);
  EXPECT_EQ(told.size(), RepeatedTexts::kMostTexts + 1);
  EXPECT_TRUE(told.contains("file 99"));
  EXPECT_TRUE(told.contains("Too many different messages: the others are left out"));
  // The known ones keep their place, and in a minute there is room again.
  EXPECT_EQ(texts.Take("file 5", After(60)), "file 5");
  EXPECT_EQ(texts.Take("file 5000", After(60)), "file 5000");
}

TEST(BoxRepeats, UnattendedBoxIsAnsweredEachTimeAndToldOnceAMinute) {
  const DesktopScope desktop(controls::Operator::Absent);
  Moment now = kNoon;
  const platform::ScopedClock clock([&] { return now; });
  ::testing::internal::CaptureStderr();
  for (int i = 0; i < 100; ++i)
    EXPECT_EQ(platform::ShowMessageBox({"Again?", platform::BoxIcon::Question, platform::BoxButtons::YesNo}),
              platform::BoxAnswer::No);
  now.seconds += 60;
  platform::ShowMessageBox("Again?");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "vdserver: Again?\nvdserver: Again? (left out since the last time: 99)\n");
}

TEST(BoxRepeats, TitleOfItsOwnIsToldToo) {
  const DesktopScope desktop(controls::Operator::Absent);
  ::testing::internal::CaptureStderr();
  platform::ShowMessageBox(
      {"No such device", platform::BoxIcon::None, platform::BoxButtons::Ok, "Vorda Server - Feed 2"});
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "vdserver: Vorda Server - Feed 2: No such device\n");
}

// Standard error as a pipe that is full because its reader sleeps. A write that waits is ended by the alarm.
class FullPipe {
 public:
  FullPipe() {
    if (::pipe(ends_.data()) != 0 || ::dup2(ends_[1], STDERR_FILENO) < 0) ::_exit(70);
    const std::string page(4096, '.');
    pollfd room = {ends_[1], POLLOUT, 0};
    while (::poll(&room, 1, 0) == 1 && ::write(ends_[1], page.data(), page.size()) > 0) continue;
  }
  // Reads that many bytes; the pipe has them.
  std::string Read(std::size_t length) {
    std::string bytes(length, '\0');
    std::size_t have = 0;
    while (have < length) {
      const ssize_t got = ::read(ends_[0], bytes.data() + have, length - have);
      if (got <= 0) ::_exit(71);
      have += static_cast<std::size_t>(got);
    }
    return bytes;
  }
  bool Empty() const {
    pollfd there = {ends_[0], POLLIN, 0};
    return ::poll(&there, 1, 0) == 0;
  }

 private:
  std::array<int, 2> ends_ = {};
};

TEST(BoxRepeatsDeathTest, ReaderThatSleepsIsNotWaitedFor) {
  EXPECT_EXIT(
      {
        ::alarm(30);
        FullPipe pipe;
        platform::WriteToStandardError("lost");
        const std::string page = pipe.Read(4096);
        platform::WriteToStandardError("told");
        while (pipe.Read(1) == ".") continue;
        const std::string line = pipe.Read(std::string("dserver: told\n").size());
        ::_exit(page == std::string(4096, '.') && line == "dserver: told\n" && pipe.Empty() ? 0 : 72);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(BoxRepeatsDeathTest, TextLongerThanTheRoomIsCut) {
  EXPECT_EXIT(
      {
        ::alarm(30);
        FullPipe pipe;
        pipe.Read(4096);
        platform::WriteToStandardError(std::string(10000, 'x'));
        while (pipe.Read(1) == ".") continue;
        const std::string line = pipe.Read(4095);
        ::_exit(line == "dserver: " + std::string(4086, 'x') && pipe.Empty() ? 0 : 72);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace vorda::test
