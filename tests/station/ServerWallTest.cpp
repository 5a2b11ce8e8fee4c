// The audio wall at the start of the real program where nobody answers.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "station/Station.h"
#include "support/EventLoop.h"

namespace vorda::test {
namespace {

using Screen = Station::Screen;

TEST(ServerWall, BlankLocationEndsAnUnattendedStartWithItsReason) {
  Station station;
  station.AddFeed(1, "");
  const std::string ini = "[WireFeed1]\r\nNewsPath=" + station.News(1) + "\r\n";
  WriteWholeFile(station.Home() + "/vdServer.INI", ini);
  station.Start({}, Screen::None);
  EXPECT_EQ(station.Server().ExitCode(), 0);
  EXPECT_TRUE(station.Server().output().ends_with(
      "vdserver: Orvane Cart Locations: nobody is there to fill it in, so it counts as cancelled\n"
      "vdserver: 10 locations of the AudioWall have not been set : Please check your configuration.\n"))
      << station.Server().output();
  EXPECT_EQ(ReadWholeFile(station.Home() + "/vdServer.INI"), ini);
}

TEST(ServerWall, MissingListsAreNotMadeInAnUnattendedStartAndTheFeedsRun) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  std::string told;
  for (int part = 1; part <= 10; ++part) {
    const std::string number = std::to_string(part);
    const std::string list = station.Wall() + "/Carts" + number + ".lst";
    std::filesystem::remove(list);
    told += "vdserver: Part " + number +
            " of the AudioWall has not been found.\nDo you wish to create it in :\n" + list + "\n";
  }
  station.Start({}, Screen::None);
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  ASSERT_TRUE(
      station.com1->Write("\x01"
                          "a story\x04"));
  EXPECT_TRUE(station.WaitForStories(1));
  EXPECT_TRUE(WaitUntil([&] { return station.Server().output().ends_with(told); }, 20000))
      << station.Server().output();
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
  EXPECT_EQ(JoinedNames(station.Wall()), "");
}

}  // namespace
}  // namespace vorda::test
