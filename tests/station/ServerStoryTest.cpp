// The road of a story through the real program, from the line to the story tool.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <set>

#include "station/Station.h"
#include "support/EventLoop.h"

namespace vorda::test {
namespace {

// Every byte but the story codes and those that the display works on.
std::string EveryPlainByte() {
  std::string bytes;
  for (int code = 0; code < 256; ++code)
    if (code != 1 && code != 4 && code != 8 && code != 10 && code != 13) bytes += static_cast<char>(code);
  return bytes;
}

TEST(ServerStory, ArrivesAtTheToolByteForByteWithItsArgument) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\nBouncePort=2\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  const std::string sent = "\x01" + EveryPlainByte() + "12\b3\r\nlast line\n\x04";
  ASSERT_TRUE(station.com1->Write(sent));
  EXPECT_EQ(station.com2->Read(sent.size()), sent);
  ASSERT_TRUE(station.WaitForStories(1));
  const Station::Story story = station.Stories().at(0);
  EXPECT_EQ(story.text, EveryPlainByte() + "13\r\nlast line");
  const std::vector<std::string> files = station.StoryFiles(1);
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(story.argument, files[0] + "|" + station.News(1) + "/vorda.ini");
  EXPECT_TRUE(client.WaitFor(" Processed New Story\r\n"));
}

TEST(ServerStory, BurstOfStoriesLosesNone) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  std::string sent;
  std::multiset<std::string> expected;
  for (int i = 0; i < 60; ++i) {
    const std::string text = "Story " + std::to_string(i) + "\r\n" + std::string(200, 'x') + "\r\n";
    sent += "\x01" + text + "\x04";
    expected.insert(text);
  }
  ASSERT_TRUE(station.com1->Write(sent));
  ASSERT_TRUE(station.WaitForStories(60));
  std::multiset<std::string> filed;
  for (const Station::Story& story : station.Stories()) filed.insert(story.text);
  EXPECT_EQ(filed, expected);
}

TEST(ServerStory, TwoFeedsKeepTheirStoriesApart) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.AddFeed(3, "CapturePort=2\r\nSoundCard=3\r\n",
                  "[General]\r\nName=Third\r\n[StoryDelimiters]\r\nStartChar=2\r\nEndChar=3\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client, 3));
  ASSERT_TRUE(client.WaitFor("Log Name          : Third\r\n"));
  ASSERT_TRUE(station.com1->Write("\x01One\x04"));
  ASSERT_TRUE(station.com2->Write("\x02Three\x03"));
  ASSERT_TRUE(station.WaitForStories(2));
  std::set<std::string> told;
  for (const Station::Story& story : station.Stories())
    told.insert(story.text + story.argument.substr(story.argument.find('|')));
  EXPECT_EQ(told, (std::set<std::string>{"One|" + station.News(1) + "/vorda.ini",
                                         "Three|" + station.News(3) + "/vorda.ini"}));
}

TEST(ServerStory, OpenOneStaysOnDiskAtTheEndAndIsNotHandedOn) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  ASSERT_TRUE(station.com1->Write("\x01half a story"));
  ASSERT_TRUE(WaitUntil([&] {
    const std::vector<std::string> files = station.StoryFiles(1);
    return files.size() == 1 && ReadWholeFile(files[0]) == "half a story";
  }));
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
  ASSERT_EQ(station.StoryFiles(1).size(), 1u);
  EXPECT_EQ(ReadWholeFile(station.StoryFiles(1)[0]), "half a story");
  EXPECT_TRUE(station.Stories().empty());
}

// An open story goes on behind the gap.
TEST(ServerStory, LineThatWasUnpluggedAndIsBackGoesOn) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\nBouncePort=2\r\n",
                  "[General]\r\nName=Wire\r\n[TextData]\r\nSettings=1200,n,8,1\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  ASSERT_TRUE(
      station.com1->Write("\x01"
                          "before "));
  EXPECT_EQ(station.com2->Read(8),
            "\x01"
            "before ");
  station.com1.reset();
  station.com1 = std::make_unique<PseudoTerminal>(station.Com(1));
  ASSERT_TRUE(WaitUntil([&] { return station.com1->Modes().baud == 1200; }, 20000));
  ASSERT_TRUE(station.com1->Write("after\x04"));
  EXPECT_EQ(station.com2->Read(6), "after\x04");
  ASSERT_TRUE(station.WaitForStories(1));
  EXPECT_EQ(station.Stories().at(0).text, "before after");
  EXPECT_EQ(station.Server().output(), "");
}

TEST(ServerStory, StoryOfAnEarlierRunIsLeftAlone) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  ASSERT_TRUE(
      station.com1->Write("\x01"
                          "half"));
  ASSERT_TRUE(WaitUntil([&] { return station.StoryFiles(1).size() == 1; }));
  const std::string left = station.StoryFiles(1)[0];
  ASSERT_TRUE(WaitUntil([&] { return ReadWholeFile(left) == "half"; }));
  station.Server().Signal(SIGTERM);
  ASSERT_EQ(station.Server().ExitCode(), 0);
  station.Start();
  StatusClient second;
  ASSERT_TRUE(station.Connect(second));
  ASSERT_TRUE(station.com1->Write("\x01New story\x04"));
  ASSERT_TRUE(station.WaitForStories(1));
  EXPECT_EQ(station.Stories().at(0).text, "New story");
  EXPECT_EQ(ReadWholeFile(left), "half");
}

TEST(ServerStory, MissingToolIsPassedOverAndTheStoryStays) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  std::filesystem::remove(std::filesystem::path(station.News(1)).parent_path() / "tools/ItemFile");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  ASSERT_TRUE(station.com1->Write("\x01Story\x04"));
  ASSERT_TRUE(client.WaitFor(" Processed New Story\r\n"));
  ASSERT_EQ(station.StoryFiles(1).size(), 1u);
  EXPECT_EQ(ReadWholeFile(station.StoryFiles(1)[0]), "Story");
}

}  // namespace
}  // namespace vorda::test
