// Numbers of sound inputs, and what stands of them in platform.ini.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "ScopedVariable.h"
#include "platform/FileFault.h"
#include "platform/WaveDevices.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

class WaveDevicesTest : public ::testing::Test {
 protected:
  void Give(const std::string& bytes) { test::WriteWholeFile(file_, bytes); }
  std::string Bytes() const { return test::ReadWholeFile(file_); }

  test::TempDirectory home_;
  test::ScopedVariable variable_{"VORDA_HOME", home_.path().c_str()};
  const std::string file_ = home_ / "platform.ini";
};

TEST_F(WaveDevicesTest, StationWithoutInputsHasNone) {
  EXPECT_EQ(WaveInDeviceCount(), 0);
  EXPECT_EQ(LastWaveInDevice(), 0);
  EXPECT_EQ(WaveInDeviceName(1), "");
  NumberWaveInDevices({});
  EXPECT_EQ(test::JoinedNames(home_.path()), "");
}

TEST_F(WaveDevicesTest, InputsGetTheNextNumbersInTheirOrder) {
  NumberWaveInDevices({"mic", "line"});
  EXPECT_EQ(Bytes(), "[WaveIn]\r\n1=mic\r\n2=line\r\n");
  EXPECT_EQ(WaveInDeviceName(1), "mic");
  EXPECT_EQ(WaveInDeviceName(2), "line");
  EXPECT_EQ(WaveInDeviceCount(), 2);
  EXPECT_EQ(LastWaveInDevice(), 2);
}

TEST_F(WaveDevicesTest, NumbersNeverMove) {
  NumberWaveInDevices({"mic", "line"});
  const std::string before = Bytes();
  NumberWaveInDevices({"line", "mic"});
  NumberWaveInDevices({"line"});
  NumberWaveInDevices({});
  EXPECT_EQ(Bytes(), before);
}

TEST_F(WaveDevicesTest, InputThatIsAwayKeepsItsNameAndItsNumber) {
  NumberWaveInDevices({"mic", "line"});
  NumberWaveInDevices({"usb"});
  EXPECT_EQ(WaveInDeviceName(1), "mic");
  EXPECT_EQ(WaveInDeviceName(2), "line");
  EXPECT_EQ(WaveInDeviceName(3), "usb");
  NumberWaveInDevices({"mic"});
  EXPECT_EQ(WaveInDeviceName(1), "mic");
  EXPECT_EQ(WaveInDeviceCount(), 3);
}

TEST_F(WaveDevicesTest, NextNumberIsTheFirstThatIsFree) {
  Give("[WaveIn]\r\n1=mic\r\n4=line\r\n");
  NumberWaveInDevices({"a", "b", "c"});
  EXPECT_EQ(Bytes(), "[WaveIn]\r\n1=mic\r\n4=line\r\n2=a\r\n3=b\r\n5=c\r\n");
  EXPECT_EQ(LastWaveInDevice(), 5);
}

TEST_F(WaveDevicesTest, GapHasNoNameAndCountsForNone) {
  Give("[WaveIn]\n7=far\n2=near\n");
  EXPECT_EQ(WaveInDeviceCount(), 2);
  EXPECT_EQ(LastWaveInDevice(), 7);
  EXPECT_EQ(WaveInDeviceName(2), "near");
  for (const int number : {-1, 0, 1, 3, 8}) EXPECT_EQ(WaveInDeviceName(number), "") << number;
}

TEST_F(WaveDevicesTest, NumberWithoutANameIsFree) {
  Give("[WaveIn]\n1=\n2=line\n");
  EXPECT_EQ(WaveInDeviceCount(), 1);
  NumberWaveInDevices({"mic"});
  EXPECT_EQ(Bytes(), "[WaveIn]\n1=mic\n2=line\n");
}

TEST_F(WaveDevicesTest, FileDevicesAreInputsLikeAnyOther) {
  Give("[WaveIn]\n1=file:/srv/My Sounds/a=b.wav\n");
  EXPECT_EQ(WaveInDeviceName(1), "file:/srv/My Sounds/a=b.wav");
  NumberWaveInDevices({"mic"});
  EXPECT_EQ(WaveInDeviceName(1), "file:/srv/My Sounds/a=b.wav");
  EXPECT_EQ(WaveInDeviceName(2), "mic");
}

TEST_F(WaveDevicesTest, LongNameIsNotCut) {
  const std::string name = "file:/" + std::string(400, 'x');
  NumberWaveInDevices({name});
  EXPECT_EQ(WaveInDeviceName(1), name);
  NumberWaveInDevices({name});
  EXPECT_EQ(WaveInDeviceCount(), 1);
}

// What no number can be asked by is no input either, and takes none away.
TEST_F(WaveDevicesTest, OddKeysAreNoNumbers) {
  Give("[WaveIn]\n01=a\n1x=b\n+1=c\n-1=d\n0=e\n=f\nname=g\n1.5=h\n32768=i\n4294967297=j\n");
  EXPECT_EQ(WaveInDeviceCount(), 0);
  EXPECT_EQ(LastWaveInDevice(), 0);
  EXPECT_EQ(WaveInDeviceName(1), "");
  NumberWaveInDevices({"mic"});
  EXPECT_EQ(WaveInDeviceName(1), "mic");
  EXPECT_EQ(WaveInDeviceCount(), 1);
}

TEST_F(WaveDevicesTest, LargestNumberThatAFeedCanName) {
  Give("[WaveIn]\n32767=last\n");
  EXPECT_EQ(LastWaveInDevice(), 32767);
  EXPECT_EQ(WaveInDeviceName(32767), "last");
}

TEST_F(WaveDevicesTest, FirstOfTwoLinesForANumberCounts) {
  Give("[WaveIn]\n1=first\n1=second\n");
  EXPECT_EQ(WaveInDeviceName(1), "first");
  EXPECT_EQ(WaveInDeviceCount(), 1);
}

TEST_F(WaveDevicesTest, OtherSectionsStayAsTheyAre) {
  Give("; mine\r\n[Drives]\r\nD=/srv\r\n\r\n[wavein]\r\n1=mic\r\n[Shares]\r\n");
  NumberWaveInDevices({"line"});
  EXPECT_EQ(Bytes(), "; mine\r\n[Drives]\r\nD=/srv\r\n\r\n[wavein]\r\n1=mic\r\n2=line\r\n[Shares]\r\n");
}

TEST_F(WaveDevicesTest, SameNameTwiceGetsOneNumber) {
  NumberWaveInDevices({"mic", "mic"});
  EXPECT_EQ(WaveInDeviceCount(), 1);
}

// What couldn't be read a moment ago isn't empty: no number goes to another input.
TEST_F(WaveDevicesTest, NumbersStandWhenTheFileCannotBeReadForAMoment) {
  Give("[WaveIn]\r\n1=mic\r\n");
  const ScopedFileFault fault(FileOperation::Open, EMFILE, 1, 1, "platform.ini");
  EXPECT_TRUE(NumberWaveInDevices({"line"}));
  EXPECT_EQ(Bytes(), "[WaveIn]\r\n1=mic\r\n2=line\r\n");
}

TEST_F(WaveDevicesTest, FileThatCannotBeReadStaysAsItIs) {
  Give("[WaveIn]\r\n1=mic\r\n");
  {
    const ScopedFileFault fault(FileOperation::Open, EIO, 1, 1000, "platform.ini");
    EXPECT_FALSE(NumberWaveInDevices({"line"}));
  }
  EXPECT_EQ(Bytes(), "[WaveIn]\r\n1=mic\r\n");
}

TEST_F(WaveDevicesTest, InputThatCannotBeWrittenHasNoNumber) {
  Give("[WaveIn]\r\n1=mic\r\n");
  {
    const ScopedFileFault fault(FileOperation::Write, ENOSPC, 1, 1000);
    EXPECT_FALSE(NumberWaveInDevices({"line", "usb"}));
    EXPECT_TRUE(NumberWaveInDevices({"mic"})) << "nothing is to be written";
  }
  EXPECT_EQ(WaveInDeviceCount(), 1);
  EXPECT_TRUE(NumberWaveInDevices({"usb", "line"}));
  EXPECT_EQ(Bytes(), "[WaveIn]\r\n1=mic\r\n2=usb\r\n3=line\r\n");
}

// It would be a new one at every look.
TEST_F(WaveDevicesTest, NameThatNoFileCanHoldHasNoNumber) {
  for (int look = 0; look < 3; ++look) EXPECT_TRUE(NumberWaveInDevices({" mic", "\"usb\"", "a\nb", "line"}));
  EXPECT_EQ(Bytes(), "[WaveIn]\r\n1=line\r\n");
}

}  // namespace
}  // namespace vorda::platform
