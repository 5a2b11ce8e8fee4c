// What passes a serial port, and what its opening needs.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"
#include "platform/SerialDevice.h"
#include "platform/SerialFixture.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Le;
using ::testing::SizeIs;
using namespace platform;

constexpr size_t kMebibyte = 1'048'576;

// Text in which every four bytes tell where they stand.
std::string NumberedText(size_t length) {
  std::string text;
  for (std::uint32_t place = 0; text.size() < length; ++place)
    for (const int shift : {24, 16, 8, 0}) text += static_cast<char>((place >> shift) & 0xFF);
  text.resize(length);
  return text;
}

std::string AllBytesWithRunsOfFF() {
  std::string bytes;
  for (int value = 0; value < 256; ++value) bytes += static_cast<char>(value);
  return bytes + std::string(5, '\xFF') + std::string(3, '\0') + "\xFF" + std::string(1, '\0') + "A";
}

using SerialControlTest = SerialTest;

TEST_F(SerialControlTest, EveryByteValueArrives) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(terminal_.Write(AllBytesWithRunsOfFF()));
  EXPECT_TRUE(port.Receives(AllBytesWithRunsOfFF()));
  EXPECT_THAT(port.events, Each(comEvReceive));
}

TEST_F(SerialControlTest, EveryByteValueIsSent) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output(AllBytesWithRunsOfFF());
  EXPECT_EQ(terminal_.Read(AllBytesWithRunsOfFF().size()), AllBytesWithRunsOfFF());
}

TEST_F(SerialControlTest, OneEventAnArrivalAndInputTakesAllOfIt) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(terminal_.Write("one arrival"));
  ASSERT_TRUE(WaitUntil([&] { return !port.arrivals.empty(); }));
  EXPECT_THAT(port.arrivals, ElementsAre("one arrival"));
  EXPECT_EQ(port.control->Input(), "");
  EXPECT_EQ(port.control->CommEvent(), comEvReceive);
}

TEST_F(SerialControlTest, InputKeepsWhatAnEventLeftUnread) {
  const auto control = MakeSerialControl();
  int events = 0;
  control->OnComm = [&] { ++events; };
  control->SetRThreshold(1);
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  ASSERT_TRUE(terminal_.Write("first "));
  ASSERT_TRUE(WaitUntil([&] { return events == 1; }));
  ASSERT_TRUE(terminal_.Write("second"));
  ASSERT_TRUE(WaitUntil([&] { return events == 2; }));
  EXPECT_EQ(control->Input(), "first second");
}

TEST_F(SerialControlTest, ABurstArrivesWholeInPiecesOfTheInputBuffer) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const std::string burst = NumberedText(100'000);
  ASSERT_TRUE(terminal_.Write(burst));
  EXPECT_TRUE(port.Receives(burst));
  EXPECT_THAT(port.arrivals, Each(SizeIs(Le(4096u))));
}

TEST_F(SerialControlTest, WithoutAThresholdArrivalsAreReadAndDropped) {
  RecordedPort port;
  port.control->SetRThreshold(0);
  ASSERT_EQ(port.Open(1), kNoError);
  // More than the line itself holds, so that it only goes through if somebody reads.
  ASSERT_TRUE(terminal_.Write(NumberedText(200'000)));
  EXPECT_TRUE(port.events.empty());
  EXPECT_EQ(port.control->Input(), "");
}

TEST_F(SerialControlTest, AnUnreadLineKeepsAMebibyteAndDropsTheRest) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const std::string text = NumberedText(3 * kMebibyte);
  for (size_t at = 0; at < text.size(); at += 4096)
    port.control->Output(std::string_view(text).substr(at, 4096));

  std::string sent;
  ASSERT_TRUE(WaitUntil([&] { return (sent += terminal_.Read()).size() >= kMebibyte; }));
  port.control->Output("<end>");
  ASSERT_TRUE(WaitUntil([&] { return (sent += terminal_.Read()).ends_with("<end>"); }));
  sent.resize(sent.size() - 5);

  // What the line had taken by itself comes on top of the backlog.
  constexpr size_t kLineHoldsAtMost = 128 * 1024;
  EXPECT_GT(sent.size(), kMebibyte);
  EXPECT_LE(sent.size(), kMebibyte + kLineHoldsAtMost);
  EXPECT_EQ(sent, text.substr(0, sent.size()));
}

TEST_F(SerialControlTest, AnUnreadLineDoesNotKeepTheEventLoopBusy) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output(NumberedText(kMebibyte));
  const ActivationCount activations;
  for (int turn = 0; turn < 1000; ++turn) RunPendingEvents();
  EXPECT_LE(activations.count(), 20);
  EXPECT_TRUE(port.control->PortOpen());
}

TEST_F(SerialControlTest, ALineThatTakesAllDoesNotKeepTheEventLoopBusy) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output("taken at once");
  // More than the line takes at once, so that the rest waits and then drains.
  port.control->Output(NumberedText(kMebibyte / 2));
  ASSERT_EQ(terminal_.Read(13 + kMebibyte / 2).size(), 13 + kMebibyte / 2);
  const ActivationCount activations;
  for (int turn = 0; turn < 1000; ++turn) RunPendingEvents();
  EXPECT_LE(activations.count(), 1);
}

TEST_F(SerialControlTest, OneOutputOverTheBacklogIsCutNotRefused) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const std::string text = NumberedText(2 * kMebibyte);
  port.control->Output(text);
  std::string sent;
  ASSERT_TRUE(WaitUntil([&] { return (sent += terminal_.Read()).size() > kMebibyte; }));
  EXPECT_EQ(sent, text.substr(0, sent.size()));
}

TEST_F(SerialControlTest, OutputOfAClosedPortIsDropped) {
  RecordedPort port;
  port.control->Output("lost");
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output("sent");
  EXPECT_EQ(terminal_.Read(4), "sent");
}

TEST_F(SerialControlTest, ClosingAPortWithABacklogDoesNotWait) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output(NumberedText(kMebibyte));
  EXPECT_EQ(port.control->SetPortOpen(false), kNoError);
  EXPECT_FALSE(port.control->PortOpen());
}

TEST_F(SerialControlTest, ADeviceBelongsToOnePort) {
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

TEST_F(SerialControlTest, APortFreesItsDeviceWhenItIsDestroyed) {
  auto first = std::make_unique<RecordedPort>();
  ASSERT_EQ(first->Open(1), kNoError);
  first.reset();
  RecordedPort second;
  EXPECT_EQ(second.Open(1), kNoError);
}

TEST_F(SerialControlTest, ADeviceAndALinkToItAreOnePort) {
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

TEST_F(SerialControlTest, ADeviceThatAnotherProgramHasLockedIsInUse) {
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

TEST_F(SerialControlTest, AnOpenDeviceIsExclusiveAndAClosedOneIsNot) {
  RecordedPort port;
  EXPECT_FALSE(IsExclusive(terminal_.slavePath()));
  ASSERT_EQ(port.Open(1), kNoError);
  EXPECT_TRUE(IsExclusive(terminal_.slavePath()));
  port.control->SetPortOpen(false);
  EXPECT_FALSE(IsExclusive(terminal_.slavePath()));
}

TEST_F(SerialControlTest, OpeningAnOpenPortIsRefusedAndLeavesItOpen) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  EXPECT_EQ(port.Open(1), kFileAlreadyOpen);
  EXPECT_TRUE(port.control->PortOpen());
}

TEST_F(SerialControlTest, AMissingDeviceIsUnavailable) {
  TempDirectory directory;
  ScopedSettings settings(SettingsWithPorts({directory / "none", directory / "no/such/directory"}));
  RecordedPort port;
  EXPECT_EQ(port.Open(1), kDeviceUnavailable);
  EXPECT_EQ(CurrentError(), kDeviceUnavailable);
  EXPECT_EQ(port.Open(2), kDeviceUnavailable);
  EXPECT_FALSE(port.control->PortOpen());
}

TEST_F(SerialControlTest, APortNumberThatNothingIsMappedToIsUnavailable) {
  ScopedSettings settings(SettingsWithPorts({terminal_.path(), "", terminal_.path(), terminal_.path()}));
  RecordedPort port;
  for (const std::int16_t number : std::initializer_list<std::int16_t>{-32768, -1, 0, 2, 5, 32767})
    EXPECT_EQ(port.Open(number), kDeviceUnavailable) << number;
}

TEST_F(SerialControlTest, AFileThatIsNoTerminalIsADeviceError) {
  TempDirectory directory;
  WriteWholeFile(directory / "file", "untouched");
  ScopedSettings settings(SettingsWithPorts({directory / "file"}));
  RecordedPort port;
  EXPECT_EQ(port.Open(1), kDeviceIoError);
  EXPECT_EQ(ReadWholeFile(directory / "file"), "untouched");
}

TEST_F(SerialControlTest, FailedOpeningsLeakNoDescriptor) {
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

TEST_F(SerialControlTest, AScopeReplacesTheMakingOfControlsAndPutsItBack) {
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
