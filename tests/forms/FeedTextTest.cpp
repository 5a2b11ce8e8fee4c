// What a received text becomes: on the bounce port, on the screen, in the story file.

#include <gtest/gtest.h>

#include <filesystem>

#include "support/FeedWindows.h"
#include "support/StatusClient.h"

namespace vorda::test {
namespace {

using namespace std::string_literals;

class FeedText : public FeedWindows {
 protected:
  FeedText() {
    Record(2).CapturePort = 1;
    Record(2).BouncePort = 2;
    // The story as the tool finds it when it is started.
    processes.atStart = [this](const platform::ProcessStart& start) {
      if (start.arguments.size() != 1) return;
      const std::string& argument = start.arguments[0];
      stories.push_back(ReadWholeFile(argument.substr(0, argument.find('|'))));
    };
  }

  std::vector<std::string> stories;
};

TEST_F(FeedText, BounceGetsTheRawBytesAndTheStoryTheFilteredOnes) {
  Start(2);
  Port(1)->Arrive(
      "\x01"
      "AB\bC\nD\rE\x04");
  EXPECT_EQ(Port(0)->sent(),
            "\x01"
            "AB\bC\nD\rE\x04");
  ASSERT_EQ(stories.size(), 1u);
  EXPECT_EQ(stories[0], "ACD\r\nE");
}

TEST_F(FeedText, EveryByteAboveTheControlsPassesUnchanged) {
  std::string bytes;
  for (int code = 32; code < 256; ++code) bytes += static_cast<char>(code);
  frmWireFeed& form = Start(2);
  Port(1)->Arrive("\x01" + bytes + "\x04");
  EXPECT_EQ(Port(0)->sent(), "\x01" + bytes + "\x04");
  ASSERT_EQ(stories.size(), 1u);
  EXPECT_EQ(stories[0], bytes);
  EXPECT_EQ(form.txtCapture()->Text(), "\x01" + bytes + "\x04");
}

TEST_F(FeedText, ToolGetsStoryAndConfigurationFileInOneArgument) {
  const std::string config = WriteConfig(2);
  Start(2, config);
  Port(1)->Arrive("\x01Story");
  const std::string story = Record(2).StoryFileName;
  EXPECT_EQ(std::filesystem::path(story).parent_path(), directory.path());
  EXPECT_TRUE(story.ends_with(".RA2")) << story;
  Port(1)->Arrive("\x04");
  ASSERT_EQ(processes.started.size(), 1u);
  EXPECT_EQ(processes.started[0].program, "/tools/ItemFile.exe");
  EXPECT_EQ(processes.started[0].arguments, std::vector<std::string>{story + "|" + config});
  EXPECT_FALSE(processes.started[0].lowestPriority);
  EXPECT_EQ(Record(2).StoryFileHandle, 0);
  EXPECT_EQ(Record(2).StoryFileName, "");
}

TEST_F(FeedText, ScreenShowsTheCodesThatTheStoryNeverSees) {
  frmWireFeed& form = Start(2);
  Port(1)->Arrive("\x01Hello\r");
  Port(1)->Arrive("World\x04");
  EXPECT_EQ(form.txtCapture()->Text(), "\x01Hello\r\nWorld\x04");
  EXPECT_EQ(stories, std::vector<std::string>{"Hello\r\nWorld"});
}

TEST_F(FeedText, BackspaceAtTheFrontTakesTheScreensCharacterAndNotTheFiles) {
  frmWireFeed& form = Start(2);
  Port(1)->Arrive(
      "\x01"
      "AB");
  Port(1)->Arrive("\bC\x04");
  EXPECT_EQ(form.txtCapture()->Text(),
            "\x01"
            "AC\x04");
  EXPECT_EQ(stories, std::vector<std::string>{"ABC"});
  EXPECT_EQ(Port(0)->sent(),
            "\x01"
            "AB\bC\x04");
}

TEST_F(FeedText, TextBehindAnEndCodeIsAStoryOfItsOwn) {
  Start(2);
  Port(1)->Arrive("\x01One\x04\r\n");
  Port(1)->Arrive("\x01Two\x04");
  EXPECT_EQ(stories, (std::vector<std::string>{"One", "\r\n", "Two"}));
}

TEST_F(FeedText, LineFeedAsStartCodeOpensNothingAndIsBounced) {
  Start(2, WriteConfig(2, "[StoryDelimiters]\r\nStartChar=10\r\n"));
  Port(1)->Arrive("\n");
  EXPECT_EQ(Record(2).StoryFileHandle, 0);
  Port(1)->Arrive("one\ntwo\x04");
  EXPECT_EQ(stories, std::vector<std::string>{"onetwo"});
  EXPECT_EQ(Port(0)->sent(), "\none\ntwo\x04");
}

TEST_F(FeedText, LineFeedAsEndCodeClosesNothingAndIsBounced) {
  Start(2, WriteConfig(2, "[StoryDelimiters]\r\nEndChar=10\r\n"));
  Port(1)->Arrive("\x01one\ntwo\n");
  EXPECT_TRUE(stories.empty());
  EXPECT_EQ(ReadWholeFile(Record(2).StoryFileName), "onetwo");
  EXPECT_EQ(Port(0)->sent(), "\x01one\ntwo\n");
}

TEST_F(FeedText, LineFeedsAloneGiveAStoryWithoutLineBreaks) {
  frmWireFeed& form = Start(2);
  Port(1)->Arrive("\x01One line\nsecond\n\nthird\n");
  Port(1)->Arrive("\nlast\n\x04\n");
  EXPECT_EQ(stories, std::vector<std::string>{"One linesecondthirdlast"});
  EXPECT_EQ(Record(2).StoryFileHandle, 0);
  EXPECT_EQ(form.txtCapture()->Text(), "\x01One linesecondthirdlast\x04");
}

TEST_F(FeedText, TextAtSixteenThousandAndOneLosesItsOldestFourThousandAndNinetySix) {
  frmWireFeed& form = Start(2);
  Port(1)->Arrive(std::string(4096, 'a') + std::string(11905, 'b'));
  EXPECT_EQ(form.txtCapture()->Text().size(), 16001u);
  Port(1)->Arrive("c");
  EXPECT_EQ(form.txtCapture()->Text(), std::string(11905, 'b') + "c");
}

TEST_F(FeedText, StatusClientHearsOfEachStory) {
  Start(2);
  const platform::ScopedClock clock({platform::DayNumber(2026, 11, 21), 11 * 3600 + 54 * 60 + 18.9});
  StatusClient client;
  ASSERT_TRUE(client.Connect(OwnLoopbackAddress(), 6960));
  const std::string stamp = "21/11/2026 11:54:18 ";
  const std::string rule = stamp + std::string(54, '-') + "\r\n";
  const std::string block = stamp + "Status Information:\r\n" + rule + stamp +
                            "Log Name          : Wire 2\r\n" + stamp + "Last Record       : 9000\r\n" +
                            stamp + "Current Recording : 0\r\n" + rule + stamp + "\r\n";
  ASSERT_TRUE(client.WaitFor(rule + stamp + "\r\n"));
  EXPECT_EQ(client.Text(), block);
  processes.canStart = false;
  Port(1)->Arrive(
      "\x01"
      "1\x04\x01"
      "2\x04");
  ASSERT_TRUE(WaitUntil([&] { return client.Text().size() >= block.size() + 2 * (stamp.size() + 21); }));
  EXPECT_EQ(client.Text(), block + stamp + "Processed New Story\r\n" + stamp + "Processed New Story\r\n");
}

TEST_F(FeedText, EachFeedCutsByItsOwnCodesIntoItsOwnFiles) {
  Record(1).CapturePort = 3;
  Start(1, WriteConfig(1, "[StoryDelimiters]\r\nStartChar=2\r\nEndChar=3\r\n"));
  FakeSerialControl* first = ports->OpenOn(3);
  Start(2);
  FakeSerialControl* second = ports->OpenOn(1);
  first->Arrive("\x02One");
  second->Arrive("\x01Two");
  EXPECT_TRUE(Record(1).StoryFileName.ends_with(".RA1"));
  first->Arrive("\x03");
  EXPECT_EQ(stories, std::vector<std::string>{"One"});
  EXPECT_GT(Record(2).StoryFileHandle, 0);
  second->Arrive("\x04");
  EXPECT_EQ(stories, (std::vector<std::string>{"One", "Two"}));
}

}  // namespace
}  // namespace vorda::test
