#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/LineErrors.h"
#include "support/PseudoTerminal.h"

namespace vorda::platform {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_literals;
using namespace std::string_view_literals;

// Every byte value as a marking line delivers it, then a bad "A", a break, a bad FF, and an ordinary "z".
std::string MarkedSample() {
  std::string raw;
  for (int value = 0; value < 256; ++value)
    raw += value == 255 ? "\xFF\xFF"s : std::string(1, static_cast<char>(value));
  return raw + std::string("\xFF\0A\xFF\0\0\xFF\0\xFFz"sv);
}

std::string SampleData() {
  std::string data;
  for (int value = 0; value < 256; ++value) data += static_cast<char>(value);
  return data + "A\xFFz";
}

TEST(MarkedStream, DoubledFFIsOneByteOfData) {
  MarkedStream stream;
  const Arrival arrival = stream.Decode(
      "a\xFF\xFF\xFF\xFF"
      "b");
  EXPECT_EQ(arrival.data,
            "a\xFF\xFF"
            "b");
  EXPECT_FALSE(arrival.breakSeen);
  EXPECT_FALSE(arrival.badByteSeen);
}

TEST(MarkedStream, ABadByteStaysData) {
  MarkedStream stream;
  const Arrival arrival = stream.Decode("a\xFF\0xb"sv);
  EXPECT_EQ(arrival.data, "axb");
  EXPECT_TRUE(arrival.badByteSeen);
  EXPECT_FALSE(arrival.breakSeen);
}

TEST(MarkedStream, TheNulOfABreakIsNoData) {
  MarkedStream stream;
  const Arrival arrival = stream.Decode("a\xFF\0\0b"sv);
  EXPECT_EQ(arrival.data, "ab");
  EXPECT_TRUE(arrival.breakSeen);
  EXPECT_FALSE(arrival.badByteSeen);
}

TEST(MarkedStream, ALoneFFIsDataLikeWhatFollows) {
  MarkedStream stream;
  EXPECT_EQ(stream
                .Decode("a\xFF"
                        "1")
                .data,
            "a\xFF"
            "1");
}

TEST(MarkedStream, ALoneNulIsData) {
  MarkedStream stream;
  const Arrival arrival = stream.Decode("\0\0"sv);
  EXPECT_EQ(arrival.data, "\0\0"sv);
  EXPECT_FALSE(arrival.breakSeen);
}

TEST(MarkedStream, ASplitAtAnyByteChangesNothing) {
  const std::string raw = MarkedSample();
  for (size_t split = 0; split <= raw.size(); ++split) {
    MarkedStream stream;
    const Arrival first = stream.Decode(std::string_view(raw).substr(0, split));
    const Arrival second = stream.Decode(std::string_view(raw).substr(split));
    EXPECT_EQ(first.data + second.data, SampleData()) << "split at " << split;
    EXPECT_TRUE(first.breakSeen != second.breakSeen) << "split at " << split;
    EXPECT_TRUE(first.badByteSeen || second.badByteSeen) << "split at " << split;
  }
}

TEST(MarkedStream, SingleBytesGiveTheSameData) {
  MarkedStream stream;
  std::string data;
  int breaks = 0;
  int badBytes = 0;
  for (const char byte : MarkedSample()) {
    const Arrival arrival = stream.Decode({&byte, 1});
    data += arrival.data;
    breaks += arrival.breakSeen;
    badBytes += arrival.badByteSeen;
  }
  EXPECT_EQ(data, SampleData());
  EXPECT_EQ(breaks, 1);
  EXPECT_EQ(badBytes, 2);
}

LineState Counted(LineCounters counters) {
  return {counters, std::nullopt};
}
LineState Pins(int pins) {
  return {std::nullopt, pins};
}
Arrival BadByte() {
  return {"x", false, true};
}
Arrival Break() {
  return {"", true, false};
}

TEST(LineWatch, EachCounterHasItsOwnEvent) {
  struct Case {
    LineCounters now;
    CommEventValue event;
  };
  constexpr std::array cases = {
      Case{{1, 0, 0, 0, 0}, comEventBreak},    Case{{0, 1, 0, 0, 0}, comEventFrame},
      Case{{0, 0, 1, 0, 0}, comEventRxParity}, Case{{0, 0, 0, 1, 0}, comEventOverrun},
      Case{{0, 0, 0, 0, 1}, comEventRxOver},
  };
  for (const Case& tried : cases) {
    LineWatch watch(Counted({}));
    EXPECT_THAT(watch.Events(Counted(tried.now), {}, false), ElementsAre(tried.event));
    EXPECT_THAT(watch.Events(Counted(tried.now), {}, false), IsEmpty()) << "told twice: " << tried.event;
  }
}

TEST(LineWatch, ManyErrorsOfAKindAreOneEvent) {
  LineWatch watch(Counted({}));
  EXPECT_THAT(watch.Events(Counted({3, 40, 0, 0, 2}), {}, false),
              ElementsAre(comEventBreak, comEventFrame, comEventRxOver));
}

TEST(LineWatch, ErrorsBeforeTheOpeningAreNotTold) {
  LineWatch watch(Counted({5, 5, 5, 5, 5}));
  EXPECT_THAT(watch.Events(Counted({5, 5, 5, 5, 5}), {}, false), IsEmpty());
}

TEST(LineWatch, ACounterThatWrapsStillTells) {
  LineWatch watch(Counted({0, 0, 0xFFFFFFFF, 0, 0}));
  EXPECT_THAT(watch.Events(Counted({0, 0, 0, 0, 0}), {}, false), ElementsAre(comEventRxParity));
}

TEST(LineWatch, CountersDecideWhatAMarkMeant) {
  LineWatch watch(Counted({}));
  EXPECT_THAT(watch.Events(Counted({0, 1, 0, 0, 0}), BadByte(), true), ElementsAre(comEventFrame));
}

TEST(LineWatch, AMarkBehindItsCounterIsNotToldTwice) {
  LineWatch watch(Counted({}));
  EXPECT_THAT(watch.Events(Counted({0, 0, 1, 0, 0}), {}, true), ElementsAre(comEventRxParity));
  EXPECT_THAT(watch.Events(Counted({0, 0, 1, 0, 0}), BadByte(), true), IsEmpty());
}

TEST(LineWatch, CountersThatNeverMoveLeaveTheMarksToTell) {
  LineWatch watch(Counted({7, 0, 0, 0, 0}));
  EXPECT_THAT(watch.Events(Counted({7, 0, 0, 0, 0}), BadByte(), true), ElementsAre(comEventRxParity));
  EXPECT_THAT(watch.Events(Counted({7, 0, 0, 0, 0}), Break(), true), ElementsAre(comEventBreak));
}

TEST(LineWatch, WithoutCountersParityDecidesWhatABadByteIs) {
  LineWatch watch({});
  EXPECT_THAT(watch.Events({}, BadByte(), true), ElementsAre(comEventRxParity));
  EXPECT_THAT(watch.Events({}, BadByte(), false), ElementsAre(comEventFrame));
  EXPECT_THAT(watch.Events({}, Break(), true), ElementsAre(comEventBreak));
  EXPECT_THAT(watch.Events({}, {"x", true, true}, false), ElementsAre(comEventBreak, comEventFrame));
}

TEST(LineWatch, EachPinHasItsOwnEventAtEitherChange) {
  struct Case {
    int pin;
    CommEventValue event;
  };
  constexpr std::array cases = {Case{TIOCM_CTS, comEvCTS}, Case{TIOCM_DSR, comEvDSR}, Case{TIOCM_CD, comEvCD},
                                Case{TIOCM_RNG, comEvRing}};
  for (const Case& tried : cases) {
    LineWatch watch(Pins(0));
    EXPECT_THAT(watch.Events(Pins(tried.pin), {}, false), ElementsAre(tried.event));
    EXPECT_THAT(watch.Events(Pins(tried.pin), {}, false), IsEmpty());
    EXPECT_THAT(watch.Events(Pins(0), {}, false), ElementsAre(tried.event));
  }
}

TEST(LineWatch, PinsOfOurOwnAreNoEvents) {
  LineWatch watch(Pins(0));
  EXPECT_THAT(watch.Events(Pins(TIOCM_DTR | TIOCM_RTS), {}, false), IsEmpty());
}

TEST(LineWatch, ErrorsComeAheadOfPins) {
  LineWatch watch({LineCounters{}, 0});
  EXPECT_THAT(watch.Events({LineCounters{0, 0, 0, 1, 0}, TIOCM_CTS | TIOCM_RNG}, {}, false),
              ElementsAre(comEventOverrun, comEvCTS, comEvRing));
}

TEST(LineState, APseudoTerminalAnswersNothing) {
  const test::PseudoTerminal terminal;
  const int slave = ::open(terminal.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(slave, 0);
  const LineState state = ReadLineState(slave);
  ::close(slave);
  EXPECT_FALSE(state.counters);
  EXPECT_FALSE(state.pins);
}

}  // namespace
}  // namespace vorda::platform
