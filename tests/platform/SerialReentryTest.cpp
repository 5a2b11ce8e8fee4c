// Handlers of OnComm that close, destroy, or wait in an event loop of their own; and line errors on their way
// to them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"
#include "platform/SerialFixture.h"

namespace vorda::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using namespace platform;
using namespace std::string_view_literals;
using SerialReentryTest = SerialTest;
using SerialLineErrorTest = SerialTest;

TEST_F(SerialReentryTest, AHandlerMayCloseThePort) {
  RecordedPort port;
  port.control->OnComm = [&] {
    port.events.push_back(port.control->CommEvent());
    port.control->SetPortOpen(false);
  };
  ASSERT_EQ(port.Open(1), kNoError);
  terminal_.WriteMarksAsTheyAre();
  // An arrival with two errors in it: nothing follows once the port is closed.
  ASSERT_TRUE(terminal_.Write("a\xFF\0\0\xFF\0x"sv));
  ASSERT_TRUE(WaitUntil([&] { return !port.control->PortOpen(); }));
  RunPendingEvents();
  EXPECT_THAT(port.events, ElementsAre(comEvReceive));
  EXPECT_EQ(port.Open(1), kNoError);
}

TEST_F(SerialReentryTest, AHandlerMayCloseAndReopenThePort) {
  RecordedPort port;
  int reopened = 0;
  port.control->OnComm = [&] {
    port.events.push_back(port.control->CommEvent());
    port.arrivals.push_back(port.control->Input());
    if (reopened++ > 0) return;
    port.control->SetPortOpen(false);
    EXPECT_EQ(port.control->SetPortOpen(true), kNoError);
  };
  ASSERT_EQ(port.Open(1), kNoError);
  terminal_.WriteMarksAsTheyAre();
  ASSERT_TRUE(terminal_.Write("a\xFF\0\0"sv));
  ASSERT_TRUE(WaitUntil([&] { return reopened == 1; }));
  ASSERT_TRUE(terminal_.Write("b"));
  EXPECT_TRUE(port.Receives("ab"));
  EXPECT_THAT(port.events, ElementsAre(comEvReceive, comEvReceive));
}

TEST_F(SerialReentryTest, AHandlerMayDestroyTheControl) {
  auto control = MakeSerialControl();
  control->SetRThreshold(1);
  int events = 0;
  control->OnComm = [&] {
    ++events;
    control.reset();
  };
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  terminal_.WriteMarksAsTheyAre();
  ASSERT_TRUE(terminal_.Write("a\xFF\0\0\xFF\0x"sv));
  ASSERT_TRUE(WaitUntil([&] { return control == nullptr; }));
  RunPendingEvents();
  EXPECT_EQ(events, 1);
  RecordedPort next;
  EXPECT_EQ(next.Open(1), kNoError);
}

TEST_F(SerialReentryTest, AHandlerThatWaitsLetsTheNextArrivalIn) {
  RecordedPort port;
  std::vector<std::string> order;
  bool waiting = false;
  port.control->OnComm = [&] {
    const std::string input = port.control->Input();
    order.push_back(input);
    if (waiting) return;
    waiting = true;
    EXPECT_TRUE(terminal_.Write("second"));
    EXPECT_TRUE(WaitUntil([&] { return order.size() == 2; }));
    order.push_back("end of " + input);
  };
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(terminal_.Write("first"));
  ASSERT_TRUE(WaitUntil([&] { return order.size() == 3; }));
  EXPECT_THAT(order, ElementsAre("first", "second", "end of first"));
}

TEST_F(SerialReentryTest, AControlMayGoWhileAnOuterHandlerWaits) {
  auto control = MakeSerialControl();
  control->SetRThreshold(1);
  int depth = 0;
  bool outerEnded = false;
  control->OnComm = [&] {
    control->Input();
    if (++depth == 2) {
      control.reset();
      return;
    }
    EXPECT_TRUE(terminal_.Write("second"));
    EXPECT_TRUE(WaitUntil([&] { return control == nullptr; }));
    outerEnded = true;
  };
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  ASSERT_TRUE(terminal_.Write("first"));
  ASSERT_TRUE(WaitUntil([&] { return outerEnded; }));
  EXPECT_EQ(depth, 2);
}

TEST_F(SerialReentryTest, AHandlerMayPutAnotherInItsPlace) {
  RecordedPort port;
  std::string later;
  port.control->OnComm = [&] {
    const std::string first = port.control->Input();
    port.control->OnComm = [&] { later += port.control->Input(); };
    EXPECT_EQ(first, "first");
    EXPECT_TRUE(terminal_.Write("later"));
  };
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(terminal_.Write("first"));
  EXPECT_TRUE(WaitUntil([&] { return later == "later"; }));
}

TEST_F(SerialLineErrorTest, MarksOfALineWithoutCountersFollowTheirArrival) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  terminal_.WriteMarksAsTheyAre();
  ASSERT_TRUE(terminal_.Write("a\xFF\0xb\xFF\0\0c"sv));
  ASSERT_TRUE(WaitUntil([&] { return port.events.size() == 3; }));
  EXPECT_THAT(port.events, ElementsAre(comEvReceive, comEventBreak, comEventFrame));
  EXPECT_EQ(port.Received(), "axbc");
}

TEST_F(SerialLineErrorTest, WithParityABadByteIsAParityError) {
  RecordedPort port;
  port.control->SetSettings("9600,e,8,1");
  ASSERT_EQ(port.Open(1), kNoError);
  terminal_.WriteMarksAsTheyAre();
  ASSERT_TRUE(terminal_.Write("\xFF\0x"sv));
  ASSERT_TRUE(WaitUntil([&] { return port.events.size() == 2; }));
  EXPECT_THAT(port.events, ElementsAre(comEvReceive, comEventRxParity));
}

TEST_F(SerialLineErrorTest, ABreakAloneIsNoArrival) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  terminal_.WriteMarksAsTheyAre();
  ASSERT_TRUE(terminal_.Write("\xFF\0\0"sv));
  ASSERT_TRUE(WaitUntil([&] { return !port.events.empty(); }));
  EXPECT_THAT(port.events, ElementsAre(comEventBreak));
  EXPECT_EQ(port.control->Input(), "");
}

// A port whose line answers what the test puts into `state`.
struct StagedPort : RecordedPort {
  explicit StagedPort(const LineState& state)
      : RecordedPort(std::make_unique<TermiosPort>([&state](int) { return state; })) {}
};

TEST_F(SerialLineErrorTest, CountersAreSeenWithoutAnyArrival) {
  LineState state{LineCounters{}, 0};
  StagedPort port(state);
  ASSERT_EQ(port.Open(1), kNoError);
  struct Step {
    std::uint32_t LineCounters::*counter;
    std::int16_t event;
  };
  for (const Step& step :
       {Step{&LineCounters::parity, comEventRxParity}, Step{&LineCounters::framing, comEventFrame},
        Step{&LineCounters::overrun, comEventOverrun}, Step{&LineCounters::breaks, comEventBreak},
        Step{&LineCounters::bufferOverrun, comEventRxOver}}) {
    port.events.clear();
    ++((*state.counters).*step.counter);
    ASSERT_TRUE(WaitUntil([&] { return !port.events.empty(); })) << step.event;
    EXPECT_THAT(port.events, ElementsAre(step.event));
  }
}

TEST_F(SerialLineErrorTest, PinsAreSeen) {
  LineState state{std::nullopt, 0};
  StagedPort port(state);
  ASSERT_EQ(port.Open(1), kNoError);
  state.pins = TIOCM_CTS | TIOCM_DSR | TIOCM_CD | TIOCM_RNG;
  ASSERT_TRUE(WaitUntil([&] { return port.events.size() == 4; }));
  EXPECT_THAT(port.events, ElementsAre(comEvCTS, comEvDSR, comEvCD, comEvRing));
}

TEST_F(SerialLineErrorTest, TheCounterOfAMarkIsReadWithItsArrival) {
  LineState state{LineCounters{}, std::nullopt};
  StagedPort port(state);
  ASSERT_EQ(port.Open(1), kNoError);
  terminal_.WriteMarksAsTheyAre();
  state.counters->framing = 1;
  ASSERT_TRUE(terminal_.Write("\xFF\0x"sv));
  ASSERT_TRUE(WaitUntil([&] { return port.events.size() == 2; }));
  EXPECT_THAT(port.events, ElementsAre(comEvReceive, comEventFrame));
}

TEST_F(SerialLineErrorTest, ErrorsAreStillSeenWhileAHandlerWaits) {
  LineState state{LineCounters{}, std::nullopt};
  StagedPort port(state);
  bool waited = false;
  port.control->OnComm = [&] {
    port.events.push_back(port.control->CommEvent());
    if (port.events.size() > 1) return;
    state.counters->breaks = 1;
    waited = WaitUntil([&] { return port.events.size() == 2; });
  };
  ASSERT_EQ(port.Open(1), kNoError);
  state.counters->overrun = 1;
  ASSERT_TRUE(WaitUntil([&] { return port.events.size() == 2; }));
  EXPECT_TRUE(WaitUntil([&] { return waited; }));
  EXPECT_THAT(port.events, ElementsAre(comEventOverrun, comEventBreak));
}

TEST_F(SerialLineErrorTest, AHandlerMayDestroyTheControlThatLooksAtItsLine) {
  LineState state{LineCounters{}, 0};
  std::unique_ptr<SerialControl> control = std::make_unique<TermiosPort>([&state](int) { return state; });
  int events = 0;
  control->OnComm = [&] {
    ++events;
    control.reset();
  };
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  state = {LineCounters{1, 1, 1, 1, 1}, TIOCM_CTS};
  ASSERT_TRUE(WaitUntil([&] { return control == nullptr; }));
  EXPECT_EQ(events, 1);
}

}  // namespace
}  // namespace vorda::test
