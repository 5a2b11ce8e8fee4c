// How the real program starts and ends: its exit codes, signals, the command line, and a machine without a
// display.

#include <gtest/gtest.h>

#include <csignal>

#include "station/Station.h"
#include "support/Loopback.h"

namespace vorda::test {
namespace {

using Screen = Station::Screen;

class ServerSignal : public ::testing::TestWithParam<int> {};

TEST_P(ServerSignal, EndsItWithZero) {
  Station station;
  station.AddFeed(1, "");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  station.Server().Signal(GetParam());
  EXPECT_EQ(station.Server().ExitCode(), 0);
  EXPECT_TRUE(client.WaitForEnd());
}

INSTANTIATE_TEST_SUITE_P(Signals, ServerSignal, ::testing::Values(SIGTERM, SIGINT, SIGHUP));

// Feed 2's warning waits for an operator, who isn't there.
TEST(ServerEnd, SignalEndsItBehindABoxOfTheStartUp) {
  Station station;
  station.AddFeed(1, "");
  station.AddFeed(2, "", "");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
}

// The far end has said stop; a mebibyte waits for it to say go.
TEST(ServerEnd, LineThatIsHeldUpIsNotWaitedFor) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\nBouncePort=2\r\n",
                  "[General]\r\nName=Wire\r\n[TextData]\r\nHandShaking=1\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  ASSERT_TRUE(station.com2->Write("\x13"));
  const std::string story = "\x01" + std::string(30000, 'x') + "\x04";
  for (int i = 0; i < 40; ++i) ASSERT_TRUE(station.com1->Write(story));
  ASSERT_TRUE(station.WaitForStories(40));
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
  // It was held up.
  EXPECT_LT(station.com2->Read().size(), 40 * story.size());
}

// As much as a line takes by itself while nobody reads its far end.
TEST(ServerEnd, WhatTheBounceLineHasTakenIsNotTakenBack) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\nBouncePort=2\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  const std::string story = "\x01" + std::string(8000, 'x') + "\x04";
  ASSERT_TRUE(station.com1->Write(story));
  ASSERT_TRUE(client.WaitFor(" Processed New Story\r\n"));
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
  EXPECT_EQ(station.com2->Read(story.size()), story);
}

TEST(ServerEnd, WrongCommandLineEndsWithTwo) {
  Station station;
  station.AddFeed(1, "");
  station.Start({"/P"}, Screen::None);
  EXPECT_EQ(station.Server().ExitCode(), 2);
  EXPECT_TRUE(station.Server().output().ends_with(
      "vdserver: Invalid .INI file in command line\nCorrect form : vdserver[.exe] [IniFileName]\n"))
      << station.Server().output();
}

TEST(ServerEnd, NumberTooLargeEndsWithOne) {
  Station station;
  station.AddFeed(1, "CapturePort=40000\r\n");
  station.Start({}, Screen::None);
  EXPECT_EQ(station.Server().ExitCode(), 1);
  EXPECT_TRUE(station.Server().output().ends_with("vdserver: Run-time error '6':\n\nOverflow\n"))
      << station.Server().output();
}

TEST(ServerEnd, NoFeedOneEndsWithZero) {
  Station station;
  station.Start({}, Screen::None);
  EXPECT_EQ(station.Server().ExitCode(), 0);
  EXPECT_EQ(JoinedNames(station.Home()), "platform.ini");
}

TEST(ServerCommandLine, IniNameArrivesInCapitalsAndIsFoundInLowerCase) {
  Station station;
  station.AddFeed(1, "SoundCard=5\r\n");
  station.WriteIniAs("station.ini");
  WriteWholeFile(station.Home() + "/vdServer.INI", "");
  station.Start({"/P", "station.ini"});
  StatusClient client;
  EXPECT_TRUE(station.Connect(client, 5));
}

TEST(ServerCommandLine, IniNameMayCarryAPath) {
  Station station;
  station.AddFeed(1, "SoundCard=6\r\n");
  station.WriteIniAs("Station2.ini");
  WriteWholeFile(station.Home() + "/vdServer.INI", "");
  station.Start({"/p", station.Home() + "/Station2.ini", "ignored.ini"});
  StatusClient client;
  EXPECT_TRUE(station.Connect(client, 6));
}

TEST(ServerCommandLine, NameWithoutTheSwitchIsIgnored) {
  Station station;
  station.AddFeed(1, "SoundCard=7\r\n");
  station.Start({"other.ini"});
  StatusClient client;
  EXPECT_TRUE(station.Connect(client, 7));
}

TEST(ServerWithoutDisplay, SaysSoOnceAndAnswersItsBoxes) {
  Station station;
  station.AddFeed(1, "", "");
  station.AddFeed(2, "CapturePort=3\r\nSoundCard=2\r\n");
  station.Start({}, Screen::None);
  StatusClient client;
  ASSERT_TRUE(station.Connect(client, 2));
  const std::string output = station.Server().output();
  const std::size_t firstEnd = output.find('\n');
  ASSERT_NE(firstEnd, std::string::npos);
  EXPECT_NE(output.substr(0, firstEnd).find("no display"), std::string::npos) << output;
  EXPECT_EQ(output.substr(firstEnd + 1),
            "vdserver: Warning : No Vorda information was found in the specifed news directory: " +
                station.News(1) +
                "/vorda.ini\n"
                "vdserver: Couldn't open port 3 for data capture, error : Device unavailable\n");
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
}

TEST(ServerStatusPort, TakesOneClientAndListensAgainWhenItHasGone) {
  Station station;
  station.AddFeed(1, "");
  station.Start();
  StatusClient first;
  ASSERT_TRUE(station.Connect(first));
  ASSERT_TRUE(first.WaitFor("Status Information:"));
  StatusClient second;
  EXPECT_FALSE(second.Connect(OwnLoopbackAddress(), 6960));
  first.Disconnect();
  EXPECT_TRUE(station.Connect(second));
  EXPECT_TRUE(second.WaitFor("Status Information:"));
}

}  // namespace
}  // namespace vorda::test
