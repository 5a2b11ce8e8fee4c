// Settings and handshaking, down to the line's modes.

#include <gtest/gtest.h>
#include <termios.h>

#include <cstdint>
#include <initializer_list>
#include <string>

#include "platform/LineModes.h"
#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"
#include "platform/SerialFixture.h"

namespace vorda::test {
namespace {

using namespace platform;
using SerialModesTest = SerialTest;

std::uint32_t ControlFlagsFor(const char* settings, int handshaking = 0) {
  return LineModesFor(*ParseSerialSettings(settings), handshaking).controlFlags;
}

TEST(LineModes, ParityLettersBecomeTheirFlags) {
  constexpr std::uint32_t kParity = PARENB | PARODD | CMSPAR;
  EXPECT_EQ(ControlFlagsFor("9600,n,8,1") & kParity, 0u);
  EXPECT_EQ(ControlFlagsFor("9600,e,8,1") & kParity, std::uint32_t{PARENB});
  EXPECT_EQ(ControlFlagsFor("9600,o,8,1") & kParity, std::uint32_t{PARENB | PARODD});
  EXPECT_EQ(ControlFlagsFor("9600,m,8,1") & kParity, std::uint32_t{PARENB | PARODD | CMSPAR});
  EXPECT_EQ(ControlFlagsFor("9600,s,8,1") & kParity, std::uint32_t{PARENB | CMSPAR});
}

TEST(LineModes, DataBitsBecomeTheirFlagsAndFourTheNearest) {
  EXPECT_EQ(ControlFlagsFor("9600,n,8,1") & CSIZE, std::uint32_t{CS8});
  EXPECT_EQ(ControlFlagsFor("9600,n,7,1") & CSIZE, std::uint32_t{CS7});
  EXPECT_EQ(ControlFlagsFor("9600,n,6,1") & CSIZE, std::uint32_t{CS6});
  EXPECT_EQ(ControlFlagsFor("9600,n,5,1") & CSIZE, std::uint32_t{CS5});
  EXPECT_EQ(ControlFlagsFor("9600,n,4,1") & CSIZE, std::uint32_t{CS5});
}

TEST(LineModes, OneStopBitIsShortTheOthersAreLong) {
  EXPECT_EQ(ControlFlagsFor("9600,n,8,1") & CSTOPB, 0u);
  EXPECT_NE(ControlFlagsFor("9600,n,5,1.5") & CSTOPB, 0u);
  EXPECT_NE(ControlFlagsFor("9600,n,8,2") & CSTOPB, 0u);
}

TEST_F(SerialModesTest, ErrorsAreMarkedAndNothingElseIsDoneToTheBytes) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const TerminalModes modes = terminal_.Modes();
  EXPECT_EQ(modes.inputFlags, std::uint32_t{INPCK | PARMRK});
  EXPECT_EQ(modes.outputFlags, 0u);
  EXPECT_EQ(modes.localFlags, 0u);
  EXPECT_EQ(modes.controlFlags & (CREAD | CLOCAL | CSIZE), std::uint32_t{CREAD | CLOCAL | CS8});
  EXPECT_EQ(modes.baud, 9600u);
}

TEST_F(SerialModesTest, EverySpeedReachesTheLine) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  for (const std::uint32_t baud : {110u, 300u, 600u, 1200u, 2400u, 4800u, 14400u, 9600u, 19200u, 28800u,
                                   38400u, 56000u, 57600u, 115200u, 128000u, 256000u}) {
    port.control->SetSettings(std::to_string(baud) + ",n,8,1");
    EXPECT_EQ(terminal_.Modes().baud, baud);
  }
}

TEST_F(SerialModesTest, ANamedSpeedHasItsName) {
  RecordedPort port;
  port.control->SetSettings("19200,n,8,1");
  ASSERT_EQ(port.Open(1), kNoError);
  EXPECT_EQ(terminal_.Modes().controlFlags & (CBAUD | CBAUDEX), std::uint32_t{B19200});
}

TEST_F(SerialModesTest, SettingsMadeBeforeTheOpeningHold) {
  RecordedPort port;
  port.control->SetSettings("1200,o,8,2");
  port.control->SetHandshaking(2);
  ASSERT_EQ(port.Open(1), kNoError);
  const TerminalModes modes = terminal_.Modes();
  EXPECT_EQ(modes.baud, 1200u);
  // A pseudo-terminal keeps no PARENB, but the kind of parity.
  EXPECT_EQ(modes.controlFlags & (PARODD | CSTOPB | CRTSCTS), std::uint32_t{PARODD | CSTOPB | CRTSCTS});
}

TEST_F(SerialModesTest, ModesThatAPseudoTerminalLacksDoNotKeepItClosed) {
  RecordedPort port;
  port.control->SetSettings("9600,e,7,1");
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(terminal_.Write("all the same"));
  EXPECT_TRUE(port.Receives("all the same"));
}

TEST_F(SerialModesTest, EachHandshakingHasItsFlags) {
  struct Case {
    std::int16_t handshaking;
    std::uint32_t input;
    std::uint32_t control;
  };
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  for (const Case& tried :
       {Case{3, IXON | IXOFF, CRTSCTS}, Case{2, 0, CRTSCTS}, Case{1, IXON | IXOFF, 0}, Case{0, 0, 0}}) {
    port.control->SetHandshaking(tried.handshaking);
    const TerminalModes modes = terminal_.Modes();
    EXPECT_EQ(modes.inputFlags & (IXON | IXOFF | IXANY), tried.input) << tried.handshaking;
    EXPECT_EQ(modes.controlFlags & CRTSCTS, tried.control) << tried.handshaking;
  }
}

TEST_F(SerialModesTest, XoffHoldsOutputBackAndXonLetsItGo) {
  RecordedPort port;
  port.control->SetHandshaking(1);
  ASSERT_EQ(port.Open(1), kNoError);
  // The byte behind the XOFF tells that the line has seen it.
  ASSERT_TRUE(terminal_.Write("\x13-"));
  ASSERT_TRUE(port.Receives("-"));
  port.control->Output("held");
  RunPendingEvents();
  EXPECT_EQ(terminal_.Read(), "");
  ASSERT_TRUE(terminal_.Write("\x11"));
  EXPECT_EQ(terminal_.Read(4), "held");
}

TEST_F(SerialModesTest, InvalidSettingsLeaveTheFormerOnes) {
  RecordedPort port;
  EXPECT_EQ(port.control->Settings(), "9600,n,8,1");
  for (const char* invalid : {"", "9600,X,8,1", "9600", "1,n,8,1", "9600,n,9,1"})
    port.control->SetSettings(invalid);
  EXPECT_EQ(port.control->Settings(), "9600,n,8,1");
  ASSERT_EQ(port.Open(1), kNoError);
  EXPECT_EQ(terminal_.Modes().baud, 9600u);

  port.control->SetSettings("2400,E,8,1");
  port.control->SetSettings("2401,E,8,1");
  EXPECT_EQ(port.control->Settings(), "2400,E,8,1");
  EXPECT_EQ(terminal_.Modes().baud, 2400u);
}

TEST_F(SerialModesTest, AHandshakingThatIsNoneLeavesTheFormerOne) {
  RecordedPort port;
  EXPECT_EQ(port.control->Handshaking(), 0);
  port.control->SetHandshaking(3);
  for (const std::int16_t invalid : std::initializer_list<std::int16_t>{-1, 4, 7, 32767})
    port.control->SetHandshaking(invalid);
  EXPECT_EQ(port.control->Handshaking(), 3);
}

}  // namespace
}  // namespace vorda::test
