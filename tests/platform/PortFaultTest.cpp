// What a port does while its device can't be had: the error's number, the quiet wait, and the bytes that come
// afterwards.

#include <QElapsedTimer>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "platform/FileFault.h"
#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"
#include "platform/SerialFixture.h"
#include "support/ProcessCost.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

using ::testing::IsEmpty;
using namespace platform;

constexpr int kForGood = std::numeric_limits<int>::max();
constexpr const char* kAnyTerminal = "/dev/pts/";

// A terminal behind a link that stays in the settings, whatever terminal it leads to.
class PortFaultTest : public ::testing::Test {
 protected:
  void Plug() { terminal_.emplace(directory_ / "wire"); }
  bool Unplug(RecordedPort& port) {
    terminal_->HangUp();
    return WaitUntil([&] { return !port.control->PortOpen(); });
  }
  // Bytes pass in both directions.
  void ExpectToWork(RecordedPort& port) {
    port.arrivals.clear();
    ASSERT_TRUE(terminal_->Write("in"));
    EXPECT_TRUE(port.Receives("in"));
    port.control->Output("out");
    EXPECT_EQ(terminal_->Read(3), "out");
  }

  TempDirectory directory_;
  ScopedSettings settings_{SettingsWithPorts({directory_ / "wire"})};
  std::optional<PseudoTerminal> terminal_;
};

TEST_F(PortFaultTest, NoPermissionIsSeventyAndTheNextOpeningIsFree) {
  Plug();
  RecordedPort port;
  for (const int refused : {EACCES, EPERM}) {
    const ScopedFileFault fault(FileOperation::Open, refused, 1, 1, kAnyTerminal);
    SetCurrentError(kNoError);
    EXPECT_EQ(port.Open(1), kPermissionDenied);
    EXPECT_EQ(CurrentError(), kPermissionDenied);
    EXPECT_EQ(fault.calls(), 1);
    EXPECT_FALSE(port.control->PortOpen());
  }
  ASSERT_EQ(port.Open(1), kNoError);
  ExpectToWork(port);
}

TEST_F(PortFaultTest, RefusedOpeningsLeakNoDescriptorAndHoldNothingBack) {
  Plug();
  RecordedPort refused;
  RecordedPort other;
  const auto before = OpenDescriptors();
  {
    const ScopedFileFault fault(FileOperation::Open, EACCES, 1, kForGood, kAnyTerminal);
    for (int turn = 0; turn < 20; ++turn) ASSERT_EQ(refused.Open(1), kPermissionDenied);
  }
  EXPECT_EQ(OpenDescriptors(), before);
  ASSERT_EQ(other.Open(1), kNoError);
  ExpectToWork(other);
}

// A device that has just come back belongs to root until the system's rules have seen it.
TEST_F(PortFaultTest, DeviceThatIsBackButRefusedIsTriedAgainWithoutABusyLoop) {
  Plug();
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(Unplug(port));
  {
    const ScopedFileFault fault(FileOperation::Open, EACCES, 1, kForGood, kAnyTerminal);
    Plug();
    const ActivationCount activations;
    const std::int64_t processorTime = ProcessorTime();
    QElapsedTimer elapsed;
    elapsed.start();
    ASSERT_TRUE(WaitUntil([&] { return fault.calls() >= 4; }));
    EXPECT_LE(fault.calls(), 1 + elapsed.elapsed() / 250);
    EXPECT_LT(ProcessorTime() - processorTime, elapsed.elapsed() / 3);
    EXPECT_EQ(activations.count(), 0);
    EXPECT_FALSE(port.control->PortOpen());
  }
  ASSERT_TRUE(WaitUntil([&] { return port.control->PortOpen(); }));
  EXPECT_THAT(port.events, IsEmpty());
  ExpectToWork(port);
}

TEST_F(PortFaultTest, DeviceThatIsBackInAnotherProgramsHandsIsTriedAgain) {
  Plug();
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(Unplug(port));
  Plug();
  const int other = ::open((directory_ / "wire").c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(other, 0);
  ASSERT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
  // One that waits just as long and has nothing in its way tells when a try of the first has failed.
  PseudoTerminal free(directory_ / "free");
  const ScopedSettings settings(SettingsWithPorts({directory_ / "wire", directory_ / "free"}));
  RecordedPort witness;
  ASSERT_EQ(witness.Open(2), kNoError);
  free.HangUp();
  ASSERT_TRUE(WaitUntil([&] { return !witness.control->PortOpen(); }));
  const PseudoTerminal again(directory_ / "free");
  ASSERT_TRUE(WaitUntil([&] { return witness.control->PortOpen(); }));
  EXPECT_FALSE(port.control->PortOpen());

  ::close(other);
  ASSERT_TRUE(WaitUntil([&] { return port.control->PortOpen(); }));
  ExpectToWork(port);
}

TEST_F(PortFaultTest, DeviceThatIsBackInAnotherPortsHandsIsTriedAgain) {
  Plug();
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(Unplug(port));
  Plug();
  auto thief = std::make_unique<RecordedPort>();
  ASSERT_EQ(thief->Open(1), kNoError);
  ExpectToWork(*thief);
  thief.reset();
  ASSERT_TRUE(WaitUntil([&] { return port.control->PortOpen(); }));
  ExpectToWork(port);
}

TEST_F(PortFaultTest, NumbersWithoutAPortLeaveAControlThatStillOpensARealOne) {
  Plug();
  RecordedPort port;
  for (const std::int16_t number : {std::int16_t{-32768}, std::int16_t{-1}, std::int16_t{0}, std::int16_t{2},
                                    std::int16_t{5}, std::int16_t{32767}}) {
    SetCurrentError(kNoError);
    EXPECT_EQ(port.Open(number), kDeviceUnavailable) << number;
    EXPECT_EQ(CurrentError(), kDeviceUnavailable) << number;
    EXPECT_FALSE(port.control->PortOpen()) << number;
  }
  ASSERT_EQ(port.Open(1), kNoError);
  ExpectToWork(port);
}

// On the line each FF comes doubled.
TEST_F(PortFaultTest, FullReadsOfFFStayWhole) {
  Plug();
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  std::string sent;
  for (const char* ahead : {"", "a", "bc", "def"}) {
    const std::string burst = ahead + std::string(20'001, '\xFF');
    ASSERT_TRUE(terminal_->Write(burst));
    sent += burst;
    ASSERT_TRUE(port.Receives(sent));
  }
  EXPECT_THAT(port.events, ::testing::Each(comEvReceive));
}

}  // namespace
}  // namespace vorda::test
