#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ScopedVariable.h"
#include "platform/Settings.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

using Ports = std::vector<std::string>;
using test::ScopedVariable;

class SettingsTest : public ::testing::Test {
 protected:
  void Load(const std::string& text) {
    test::WriteWholeFile(home_ / "platform.ini", text);
    LoadPlatformSettings();
  }

  test::TempDirectory home_;
  ScopedVariable variable_{"VORDA_HOME", home_.path().c_str()};
  ScopedSettings restore_{Settings()};
};

TEST_F(SettingsTest, MissingFileGivesTheDefaults) {
  LoadPlatformSettings();
  const Settings& settings = PlatformSettings();
  EXPECT_EQ(settings.serialPorts, Ports({"/dev/ttyS0", "/dev/ttyS1", "/dev/ttyS2", "/dev/ttyS3"}));
  EXPECT_TRUE(settings.drives.empty());
  EXPECT_TRUE(settings.shares.empty());
  EXPECT_EQ(settings.statusPortAddress, "");
  EXPECT_EQ(settings.shortDate, "");
  EXPECT_EQ(settings.programDirectory, "");
}

TEST_F(SettingsTest, EmptyPortIsNotMappedAndAFifthIgnored) {
  Load("[SerialPorts]\nCom2=/dev/serial/by-id/usb-1\nCom3=\nCom5=/dev/ttyS9\n");
  EXPECT_EQ(PlatformSettings().serialPorts,
            Ports({"/dev/ttyS0", "/dev/serial/by-id/usb-1", "", "/dev/ttyS3"}));
}

TEST_F(SettingsTest, DrivesByLetterOnly) {
  Load("[Drives]\r\nd=/srv/audio\r\nE:=/srv/e\r\nFF=/x\r\n1=/y\r\nG=\r\nD=/second\r\n\xC4=/z\r\n");
  EXPECT_EQ(PlatformSettings().drives, (std::map<char, std::string>{{'D', "/srv/audio"}, {'E', "/srv/e"}}));
}

TEST_F(SettingsTest, SharesByTheirNameInCapitals) {
  Load("[Shares]\r\n\\\\News\\wall = /mnt/wall\r\n\\\\b\\c=\r\n");
  EXPECT_EQ(PlatformSettings().shares, (std::map<std::string, std::string>{{"\\\\NEWS\\WALL", "/mnt/wall"}}));
}

TEST_F(SettingsTest, TheOtherKeys) {
  Load(
      "[StatusPort]\nAddress=127.0.0.1\n[Formats]\nShortDate=dd.MM.yyyy\n[Program]\nDirectory=/opt/tools/\n");
  EXPECT_EQ(PlatformSettings().statusPortAddress, "127.0.0.1");
  EXPECT_EQ(PlatformSettings().shortDate, "dd.MM.yyyy");
  EXPECT_EQ(PlatformSettings().programDirectory, "/opt/tools/");
  EXPECT_EQ(ProgramDirectory(), "/opt/tools");
}

TEST_F(SettingsTest, LoadingAgainForgetsWhatIsGone) {
  Load("[Drives]\nD=/srv/audio\n");
  Load("[Formats]\nShortDate=yyyy\n");
  EXPECT_TRUE(PlatformSettings().drives.empty());
  EXPECT_EQ(PlatformSettings().shortDate, "yyyy");
}

TEST_F(SettingsTest, ScopedSettingsPutTheOldOnesBack) {
  Settings settings;
  settings.shortDate = "yy";
  {
    const ScopedSettings scoped(settings);
    EXPECT_EQ(PlatformSettings().shortDate, "yy");
  }
  EXPECT_EQ(PlatformSettings().shortDate, "");
}

TEST_F(SettingsTest, OwnDirectoryFollowsTheEnvironment) {
  EXPECT_EQ(WindowsDirectory(), home_.path());
  const ScopedVariable home("HOME", "/home/op");
  const ScopedVariable configuration("XDG_CONFIG_HOME", "/conf/");
  {
    const ScopedVariable own("VORDA_HOME", "/own/vorda//");
    EXPECT_EQ(WindowsDirectory(), "/own/vorda");
  }
  const ScopedVariable empty("VORDA_HOME", "");
  EXPECT_EQ(WindowsDirectory(), "/conf/vorda");
  const ScopedVariable relative("XDG_CONFIG_HOME", "conf");
  EXPECT_EQ(WindowsDirectory(), "/home/op/.config/vorda");
  const ScopedVariable none("XDG_CONFIG_HOME", nullptr);
  EXPECT_EQ(WindowsDirectory(), "/home/op/.config/vorda");
}

TEST_F(SettingsTest, RelativeOwnDirectoryHangsOnTheDirectoryAtTheStart) {
  const std::string startedIn = std::filesystem::current_path().string();
  const ScopedVariable own("VORDA_HOME", "some/home");
  std::filesystem::current_path(home_.path());
  const std::string directory = WindowsDirectory();
  std::filesystem::current_path(startedIn);
  EXPECT_EQ(directory, startedIn + "/some/home");
}

TEST_F(SettingsTest, ProgramDirectoryIsTheExecutablesOwn) {
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_EQ(ProgramDirectory(), executable.parent_path().string());
}

}  // namespace
}  // namespace vorda::platform
