// What the opening of a serial port needs, and how it fails.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>

#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"
#include "platform/SerialDevice.h"
#include "platform/SerialFixture.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

using namespace platform;
using SerialOpeningTest = SerialTest;

TEST_F(SerialOpeningTest, ADeviceBelongsToOnePort) {
  RecordedPort first;
  RecordedPort second;
  ASSERT_EQ(first.Open(1), kNoError);
  EXPECT_EQ(second.Open(1), kFileAlreadyOpen);
  EXPECT_EQ(CurrentError(), kFileAlreadyOpen);
  EXPECT_FALSE(second.control->PortOpen());
  ASSERT_TRUE(terminal_.Write("for the first"));
  EXPECT_TRUE(first.Receives("for the first"));

  first.control->SetPortOpen(false);
  EXPECT_EQ(second.Open(1), kNoError);
}

TEST_F(SerialOpeningTest, APortFreesItsDeviceWhenItIsDestroyed) {
  auto first = std::make_unique<RecordedPort>();
  ASSERT_EQ(first->Open(1), kNoError);
  first.reset();
  RecordedPort second;
  EXPECT_EQ(second.Open(1), kNoError);
}

TEST_F(SerialOpeningTest, ADeviceAndALinkToItAreOnePort) {
  TempDirectory directory;
  ASSERT_EQ(::symlink(terminal_.slavePath().c_str(), (directory / "wire").c_str()), 0);
  ScopedSettings settings(SettingsWithPorts({terminal_.slavePath(), directory / "wire"}));
  RecordedPort direct;
  RecordedPort linked;
  ASSERT_EQ(direct.Open(1), kNoError);
  EXPECT_EQ(linked.Open(2), kFileAlreadyOpen);
  direct.control->SetPortOpen(false);
  ASSERT_EQ(linked.Open(2), kNoError);
  EXPECT_EQ(direct.Open(1), kFileAlreadyOpen);
}

TEST_F(SerialOpeningTest, ADeviceThatAnotherProgramHasLockedIsInUse) {
  const int other = ::open(terminal_.slavePath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(other, 0);
  ASSERT_EQ(::flock(other, LOCK_EX | LOCK_NB), 0);
  RecordedPort port;
  EXPECT_EQ(port.Open(1), kFileAlreadyOpen);
  ::close(other);
  EXPECT_EQ(port.Open(1), kNoError);
}

// Whether others are kept out of the device; root isn't, but can ask.
bool IsExclusive(const std::string& device) {
  const int other = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (other < 0) return errno == EBUSY;
  int exclusive = 0;
  const int answered = ::ioctl(other, TIOCGEXCL, &exclusive);
  ::close(other);
  return answered == 0 && exclusive != 0;
}

TEST_F(SerialOpeningTest, AnOpenDeviceIsExclusiveAndAClosedOneIsNot) {
  RecordedPort port;
  EXPECT_FALSE(IsExclusive(terminal_.slavePath()));
  ASSERT_EQ(port.Open(1), kNoError);
  EXPECT_TRUE(IsExclusive(terminal_.slavePath()));
  port.control->SetPortOpen(false);
  EXPECT_FALSE(IsExclusive(terminal_.slavePath()));
}

TEST_F(SerialOpeningTest, OpeningAnOpenPortIsRefusedAndLeavesItOpen) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  EXPECT_EQ(port.Open(1), kFileAlreadyOpen);
  EXPECT_TRUE(port.control->PortOpen());
}

TEST_F(SerialOpeningTest, AMissingDeviceIsUnavailable) {
  TempDirectory directory;
  ScopedSettings settings(SettingsWithPorts({directory / "none", directory / "no/such/directory"}));
  RecordedPort port;
  EXPECT_EQ(port.Open(1), kDeviceUnavailable);
  EXPECT_EQ(CurrentError(), kDeviceUnavailable);
  EXPECT_EQ(port.Open(2), kDeviceUnavailable);
  EXPECT_FALSE(port.control->PortOpen());
}

TEST_F(SerialOpeningTest, APortNumberThatNothingIsMappedToIsUnavailable) {
  ScopedSettings settings(SettingsWithPorts({terminal_.path(), "", terminal_.path(), terminal_.path()}));
  RecordedPort port;
  for (const std::int16_t number : std::initializer_list<std::int16_t>{-32768, -1, 0, 2, 5, 32767})
    EXPECT_EQ(port.Open(number), kDeviceUnavailable) << number;
}

TEST_F(SerialOpeningTest, AFileThatIsNoTerminalIsADeviceError) {
  TempDirectory directory;
  WriteWholeFile(directory / "file", "untouched");
  ScopedSettings settings(SettingsWithPorts({directory / "file"}));
  RecordedPort port;
  EXPECT_EQ(port.Open(1), kDeviceIoError);
  EXPECT_EQ(ReadWholeFile(directory / "file"), "untouched");
}

TEST_F(SerialOpeningTest, FailedOpeningsLeakNoDescriptor) {
  TempDirectory directory;
  WriteWholeFile(directory / "file", "");
  ScopedSettings settings(SettingsWithPorts({terminal_.path(), directory / "file", directory / "none"}));
  RecordedPort holder;
  RecordedPort other;
  ASSERT_EQ(holder.Open(1), kNoError);
  const auto before = OpenDescriptors();
  for (std::int16_t number = 1; number <= 3; ++number) EXPECT_NE(other.Open(number), kNoError);
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(SerialErrors, EachErrnoHasItsRunTimeError) {
  for (const int absent : {ENOENT, ENOTDIR, ENXIO, ENODEV, EIO})
    EXPECT_EQ(SerialErrorFromErrno(absent), kDeviceUnavailable) << absent;
  EXPECT_EQ(SerialErrorFromErrno(EBUSY), kFileAlreadyOpen);
  EXPECT_EQ(SerialErrorFromErrno(EACCES), kPermissionDenied);
  EXPECT_EQ(SerialErrorFromErrno(EPERM), kPermissionDenied);
  for (const int other : {EMFILE, ENOTTY, EISDIR})
    EXPECT_EQ(SerialErrorFromErrno(other), kDeviceIoError) << other;
}

TEST_F(SerialOpeningTest, AScopeReplacesTheMakingOfControlsAndPutsItBack) {
  int made = 0;
  {
    ScopedSerialControls scope([&] {
      ++made;
      return std::make_unique<TermiosPort>();
    });
    MakeSerialControl();
  }
  EXPECT_EQ(made, 1);
  EXPECT_NE(MakeSerialControl(), nullptr);
  EXPECT_EQ(made, 1);
}

}  // namespace
}  // namespace vorda::test
