// A serial device that goes away and comes back.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"
#include "platform/SerialFixture.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

using ::testing::IsEmpty;
using namespace platform;

// A terminal behind a link that stays in the settings, as an adapter keeps its name from one plugging to the
// next.
class SerialUnplugTest : public ::testing::Test {
 protected:
  void Plug() { terminal_.emplace(directory_ / "wire"); }
  // The port has noticed.
  bool Unplug(RecordedPort& port) {
    terminal_->HangUp();
    return WaitUntil([&] { return !port.control->PortOpen(); });
  }
  static bool IsOpen(RecordedPort& port) {
    return WaitUntil([&] { return port.control->PortOpen(); });
  }

  TempDirectory directory_;
  ScopedSettings settings_{SettingsWithPorts({directory_ / "wire"})};
  std::optional<PseudoTerminal> terminal_;
};

TEST_F(SerialUnplugTest, AReturningDeviceIsOpenedAgainAndNothingSpinsMeanwhile) {
  Plug();
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const ActivationCount activations;
  ASSERT_TRUE(Unplug(port));
  EXPECT_THAT(port.events, IsEmpty());
  Plug();
  ASSERT_TRUE(IsOpen(port));
  // One for the hang-up; the loop has turned for half a second since.
  EXPECT_LE(activations.count(), 2);

  ASSERT_TRUE(terminal_->Write("in"));
  EXPECT_TRUE(port.Receives("in"));
  port.control->Output("out");
  EXPECT_EQ(terminal_->Read(3), "out");
}

TEST_F(SerialUnplugTest, AnUnpluggedBouncePortIsSeenAsWell) {
  Plug();
  RecordedPort port;
  port.control->SetRThreshold(0);
  ASSERT_EQ(port.Open(1), kNoError);
  EXPECT_TRUE(Unplug(port));
}

TEST_F(SerialUnplugTest, SettingsAreAppliedAgain) {
  Plug();
  RecordedPort port;
  port.control->SetSettings("28800,n,8,2");
  port.control->SetHandshaking(1);
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(Unplug(port));
  // Also those made while the device was away.
  port.control->SetSettings("1200,n,8,2");
  Plug();
  ASSERT_TRUE(IsOpen(port));
  EXPECT_EQ(terminal_->Modes().baud, 1200u);
  EXPECT_NE(terminal_->Modes().inputFlags, 0u);
}

TEST_F(SerialUnplugTest, WhatWasNotSentIsDropped) {
  Plug();
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output(std::string(1'000'000, 'x'));
  ASSERT_TRUE(Unplug(port));
  port.control->Output("nobody there");
  Plug();
  ASSERT_TRUE(IsOpen(port));
  port.control->Output("fresh");
  EXPECT_EQ(terminal_->Read(5), "fresh");
}

TEST_F(SerialUnplugTest, OutputToADeviceThatHasJustGoneClosesThePort) {
  Plug();
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  terminal_->HangUp();
  port.control->Output("too late");
  EXPECT_FALSE(port.control->PortOpen());
  Plug();
  EXPECT_TRUE(IsOpen(port));
}

TEST_F(SerialUnplugTest, WhatArrivedBeforeIsStillInTheInput) {
  Plug();
  const auto control = MakeSerialControl();
  control->SetRThreshold(1);
  int events = 0;
  control->OnComm = [&] { ++events; };
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  ASSERT_TRUE(terminal_->Write("last words"));
  ASSERT_TRUE(WaitUntil([&] { return events == 1; }));
  terminal_->HangUp();
  ASSERT_TRUE(WaitUntil([&] { return !control->PortOpen(); }));
  EXPECT_EQ(control->Input(), "last words");
}

TEST_F(SerialUnplugTest, ManyPluggingsLeakNoDescriptor) {
  Plug();
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const auto before = OpenDescriptors();
  for (int turn = 0; turn < 20; ++turn) {
    ASSERT_TRUE(Unplug(port));
    Plug();
    ASSERT_EQ(port.Open(1), kNoError);
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(SerialUnplugTest, ClosingEndsTheWaitForTheDevice) {
  Plug();
  RecordedPort closed;
  ASSERT_EQ(closed.Open(1), kNoError);
  ASSERT_TRUE(Unplug(closed));
  EXPECT_EQ(closed.control->SetPortOpen(false), kNoError);

  // A second port that waits just as long tells when a retry of the first would have come.
  PseudoTerminal other(directory_ / "other");
  ScopedSettings settings(SettingsWithPorts({directory_ / "wire", directory_ / "other"}));
  RecordedPort witness;
  ASSERT_EQ(witness.Open(2), kNoError);
  other.HangUp();
  ASSERT_TRUE(WaitUntil([&] { return !witness.control->PortOpen(); }));
  Plug();
  PseudoTerminal again(directory_ / "other");
  ASSERT_TRUE(IsOpen(witness));
  EXPECT_FALSE(closed.control->PortOpen());
  EXPECT_EQ(closed.Open(1), kNoError);
}

TEST_F(SerialUnplugTest, APortThatCouldNotBeOpenedIsNotTriedAgain) {
  RecordedPort absent;
  ASSERT_EQ(absent.Open(1), kDeviceUnavailable);
  PseudoTerminal other(directory_ / "other");
  ScopedSettings settings(SettingsWithPorts({directory_ / "wire", directory_ / "other"}));
  RecordedPort witness;
  ASSERT_EQ(witness.Open(2), kNoError);
  Plug();
  other.HangUp();
  ASSERT_TRUE(WaitUntil([&] { return !witness.control->PortOpen(); }));
  PseudoTerminal again(directory_ / "other");
  ASSERT_TRUE(IsOpen(witness));
  EXPECT_FALSE(absent.control->PortOpen());
}

TEST_F(SerialUnplugTest, AControlMayGoWhileItsDeviceIsAway) {
  Plug();
  auto port = std::make_unique<RecordedPort>();
  ASSERT_EQ(port->Open(1), kNoError);
  ASSERT_TRUE(Unplug(*port));
  port.reset();
  Plug();
  RecordedPort next;
  EXPECT_EQ(next.Open(1), kNoError);
}

}  // namespace
}  // namespace vorda::test
