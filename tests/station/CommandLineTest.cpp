// The real program with the words that it is started with, and with INI files that stop it.

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "station/Station.h"
#include "support/WallLists.h"

namespace vorda::test {
namespace {

using Screen = Station::Screen;
using Words = std::vector<std::string>;

class CommandLineThatEndsTheProgram : public ::testing::TestWithParam<Words> {};

TEST_P(CommandLineThatEndsTheProgram, WithTwoAndTheTwoLines) {
  Station station;
  station.AddFeed(1, "");
  station.Start(GetParam(), Screen::None);
  EXPECT_EQ(station.Server().ExitCode(), 2);
  EXPECT_TRUE(station.Server().output().ends_with(
      "vdserver: Invalid .INI file in command line\nCorrect form : vdserver[.exe] [IniFileName]\n"))
      << station.Server().output();
}

INSTANTIATE_TEST_SUITE_P(Words, CommandLineThatEndsTheProgram,
                         ::testing::Values(Words{"/p"}, Words{"/P", "  "}, Words{"/Pstation.ini"},
                                           Words{"vdServer.INI", "/P"}, Words{"/srv/playout/vdServer.INI"}));

// The path holds the switch, and the word behind its blank is the name.
TEST(CommandLine, PathThatHoldsTheSwitchMakesTheRealOneAName) {
  Station station;
  station.AddFeed(1, "");
  station.WriteIniAs("X.INI");
  station.Start({"/srv/PLAYOUT", "/P", "X.INI"}, Screen::None);
  // "/P" names no file: the first run's question is answered by nobody.
  EXPECT_EQ(station.Server().ExitCode(), 0);
}

TEST(CommandLine, LettersAtTheSwitchAreNoName) {
  Station station;
  station.AddFeed(1, "SoundCard=8\r\n");
  station.WriteIniAs("X.INI");
  WriteWholeFile(station.Home() + "/vdServer.INI", "");
  WriteWholeFile(station.Home() + "/FOO", "");
  station.Start({"/pfoo", "x.ini", "y.ini"});
  StatusClient client;
  EXPECT_TRUE(station.Connect(client, 8));
}

TEST(ServerIni, OfAnotherMachinesEditorStartsTheFeed) {
  Station station;
  station.AddFeed(1, "");
  WriteWholeFile(station.Home() + "/vdServer.INI", "\xEF\xBB\xBF; feeds\n" + WallKeys(station.Wall()) +
                                                       "[ WIREFEED1 ]\n newspath = \"" + station.News(1) +
                                                       "\" \nSOUNDCARD=9 ; the second\nSoundCard=1");
  station.Start();
  StatusClient client;
  EXPECT_TRUE(station.Connect(client, 9));
}

TEST(ServerIni, DirectoryInItsPlaceIsAsMissing) {
  Station station;
  station.AddFeed(1, "");
  std::filesystem::remove(station.Home() + "/vdServer.INI");
  std::filesystem::create_directory(station.Home() + "/vdServer.INI");
  station.Start({}, Screen::None);
  EXPECT_EQ(station.Server().ExitCode(), 0);
}

class NumberTooLarge : public ::testing::TestWithParam<const char*> {};

TEST_P(NumberTooLarge, InAFeedConfigurationEndsTheProgramWithOne) {
  Station station;
  station.AddFeed(1, "", std::string("[General]\r\nName=Wire\r\n") + GetParam() + "\r\n");
  station.Start({}, Screen::None);
  EXPECT_EQ(station.Server().ExitCode(), 1);
  EXPECT_TRUE(station.Server().output().ends_with("vdserver: Run-time error '6':\n\nOverflow\n"))
      << station.Server().output();
}

INSTANTIATE_TEST_SUITE_P(Keys, NumberTooLarge,
                         ::testing::Values("[TextData]\r\nHandShaking=32768",
                                           "[StoryDelimiters]\r\nEndChar=-32769"));

}  // namespace
}  // namespace vorda::test
