// Faults of the news directory under the real program.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include "station/ServerProcess.h"
#include "station/Station.h"
#include "support/EventLoop.h"

namespace vorda::test {
namespace {

bool WasHanded(const Station& station, const std::string& text) {
  const std::vector<Station::Story> stories = station.Stories();
  return std::any_of(stories.begin(), stories.end(),
                     [&](const Station::Story& story) { return story.text == text; });
}

TEST(ServerNewsDirectory, RemovedUnderAnOpenStoryAndMadeAgainHasTheLaterStoriesWhole) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  ASSERT_TRUE(
      station.com1->Write("\x01"
                          "open"));
  ASSERT_TRUE(WaitUntil([&] { return station.StoryFiles(1).size() == 1; }));
  const std::string open = station.StoryFiles(1)[0];
  std::filesystem::remove_all(station.News(1));
  ASSERT_TRUE(station.com1->Write(" story\x04\x01lost\x04"));
  ASSERT_TRUE(station.WaitForStories(2));
  std::set<std::string> arguments;
  for (const Station::Story& story : station.Stories()) arguments.insert(story.argument);
  const std::string config = station.News(1) + "/vorda.ini";
  EXPECT_EQ(arguments, (std::set<std::string>{open + "|" + config, "|" + config}));
  EXPECT_TRUE(IsQuiet(ServerProcess()));
  std::filesystem::create_directory(station.News(1));
  ASSERT_TRUE(station.com1->Write("\x01later\x04\x01 and later\x04"));
  ASSERT_TRUE(station.WaitForStories(4));
  EXPECT_TRUE(WasHanded(station, "later"));
  EXPECT_TRUE(WasHanded(station, " and later"));
  EXPECT_EQ(station.StoryFiles(1).size(), 2u);
  EXPECT_EQ(station.Server().output().find("vdserver"), std::string::npos) << station.Server().output();
}

// The system takes no more of a file, as where the disk is full: at 4096 bytes, and tells so by a signal too.
TEST(ServerNewsDirectory, FileThatMayNotGrowLosesTheRestOfItsStoryAndTheNextIsWhole) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.StartWith({"QT_QPA_PLATFORM=offscreen"}, {"sh", "-c", "ulimit -f 8; exec \"$@\"", "sh"});
  StatusClient client;
  ASSERT_TRUE(station.Connect(client)) << station.Server().output();
  const std::string text(6000, 'x');
  ASSERT_TRUE(station.com1->Write("\x01" + text + "\x04\x01later\x04"));
  ASSERT_TRUE(station.WaitForStories(2)) << station.Server().output();
  EXPECT_TRUE(WasHanded(station, text.substr(0, 4096)));
  EXPECT_TRUE(WasHanded(station, "later"));
  EXPECT_TRUE(station.Server().Runs());
}

}  // namespace
}  // namespace vorda::test
