// What each input does in each state, and which text reaches which file.

#include <gtest/gtest.h>

#include <string>

#include "feed/CaptureText.h"
#include "support/StoryFixture.h"

namespace vorda {
namespace {

class StoryCaptureTest : public test::StoryFixture {
 protected:
  // An arrival as the feed takes it: through the display's filter first.
  void Receive(std::string data) {
    text_.Append(data);
    Take(data);
  }

  CaptureText text_;
};

TEST_F(StoryCaptureTest, StartWithNoneOpenOpensAnEmptyFile) {
  Take("\x01");
  EXPECT_GT(feed().StoryFileHandle, 0);
  EXPECT_TRUE(std::filesystem::is_regular_file(feed().StoryFileName));
  EXPECT_EQ(OpenText(), "");
  EXPECT_TRUE(processes_.started.empty());
}

TEST_F(StoryCaptureTest, EndWithNoneOpenStartsNoToolAndSendsNoLine) {
  Take("\x04\x04");
  EXPECT_EQ(feed().StoryFileHandle, 0);
  EXPECT_TRUE(processes_.started.empty());
  EXPECT_TRUE(announced_.empty());
  EXPECT_EQ(test::JoinedNames(news_.path()), "");
}

TEST_F(StoryCaptureTest, TextWithNoneOpenOpensAStoryOfItsOwn) {
  Take("stray");
  EXPECT_GT(feed().StoryFileHandle, 0);
  EXPECT_EQ(OpenText(), "stray");
  Take("\x01");
  EXPECT_EQ(Handed(), Texts{"stray"});
}

TEST_F(StoryCaptureTest, StartWhileOpenHandsOnTheHalfStoryAndOpensAnother) {
  Take("\x01half");
  const std::string first = feed().StoryFileName;
  Take("\x01whole");
  EXPECT_EQ(Handed(), Texts{"half"});
  EXPECT_NE(feed().StoryFileName, first);
  EXPECT_EQ(OpenText(), "whole");
}

TEST_F(StoryCaptureTest, EndWhileOpenHandsOnAndLeavesNoneOpen) {
  Take("\x01story\x04");
  EXPECT_EQ(Handed(), Texts{"story"});
  EXPECT_EQ(announced_, Texts{"Processed New Story"});
  EXPECT_EQ(feed().StoryFileHandle, 0);
  EXPECT_EQ(feed().StoryFileName, "");
}

TEST_F(StoryCaptureTest, TextWhileOpenIsWrittenAtOnce) {
  Take("\x01one");
  EXPECT_EQ(OpenText(), "one");
  Take(" two");
  EXPECT_EQ(OpenText(), "one two");
  EXPECT_TRUE(processes_.started.empty());
}

TEST_F(StoryCaptureTest, TwoStartsInARowHandOnAnEmptyFile) {
  Take("\x01\x01story\x04");
  EXPECT_EQ(Handed(), (Texts{"", "story"}));
  EXPECT_TRUE(std::filesystem::exists(handed_[0].path));
}

TEST_F(StoryCaptureTest, StartAndEndWithNothingBetweenHandOnAnEmptyFile) {
  Take("\x01\x04");
  EXPECT_EQ(Handed(), Texts{""});
}

TEST_F(StoryCaptureTest, EndAndStartInOneArrivalCloseOneStoryAndOpenTheNext) {
  Take(
      "\x01"
      "first");
  Take(" end\x04\x01second");
  EXPECT_EQ(Handed(), Texts{"first end"});
  EXPECT_EQ(OpenText(), "second");
}

TEST_F(StoryCaptureTest, ManyStoriesInOneArrival) {
  Take(
      "\x01"
      "1\x04\x01"
      "2\x04\x01"
      "3\x04");
  EXPECT_EQ(Handed(), (Texts{"1", "2", "3"}));
  EXPECT_EQ(announced_.size(), 3U);
}

TEST_F(StoryCaptureTest, OneStoryOverManyArrivals) {
  for (const char c : std::string("\x01one story\x04")) Take(std::string(1, c));
  EXPECT_EQ(Handed(), Texts{"one story"});
}

TEST_F(StoryCaptureTest, LineEndBehindTheEndCodeIsAShortStoryOfItsOwn) {
  Receive("\x01one\x04\r\n\x01two\x04\r\n");
  EXPECT_EQ(Handed(), (Texts{"one", "\r\n", "two"}));
  EXPECT_EQ(OpenText(), "\r\n");
}

TEST_F(StoryCaptureTest, FilteredTextReachesTheFile) {
  Receive(
      "\x01"
      "ab\bc\r\r\nd\ne\x04");
  EXPECT_EQ(Handed(), Texts{"ac\r\n\r\nde"});
}

TEST_F(StoryCaptureTest, BackspaceAtTheArrivalsFrontLeavesTheFileAlone) {
  Receive(
      "\x01"
      "abc");
  Receive("\bX\x04");
  EXPECT_EQ(Handed(), Texts{"abcX"});
  EXPECT_EQ(text_.Text(),
            "\x01"
            "abX\x04");
}

TEST_F(StoryCaptureTest, StartCodeTakenByABackspaceOpensNothing) {
  Receive("\x01\b\x04");
  EXPECT_TRUE(processes_.started.empty());
  EXPECT_EQ(test::JoinedNames(news_.path()), "");
}

TEST_F(StoryCaptureTest, EqualCodesOnlyClose) {
  feed().StartChar = 'X';
  feed().EndChar = 'X';
  Take("XXoneXXtwoX");
  EXPECT_EQ(Handed(), (Texts{"one", "two"}));
  EXPECT_EQ(feed().StoryFileHandle, 0);
}

TEST_F(StoryCaptureTest, LineFeedAsACodeNeverTakesEffect) {
  feed().StartChar = 10;
  Receive("a\nb\x04");
  EXPECT_EQ(Handed(), Texts{"ab"});
  feed().StartChar = 1;
  feed().EndChar = 10;
  Receive(
      "\x01"
      "c\n\n"
      "d\x01");
  EXPECT_EQ(Handed().back(), "cd");
}

TEST_F(StoryCaptureTest, CarriageReturnAsEndLeavesItsLineFeedAsAStory) {
  feed().EndChar = 13;
  Receive("\x01one\rtwo\r");
  EXPECT_EQ(Handed(), (Texts{"one", "\ntwo"}));
  EXPECT_EQ(OpenText(), "\n");
}

TEST_F(StoryCaptureTest, CarriageReturnAsStartLeavesItsLineFeedInTheStory) {
  feed().StartChar = 13;
  Receive("\rone\x04");
  EXPECT_EQ(Handed(), Texts{"\none"});
}

TEST_F(StoryCaptureTest, BackspaceAsACodeNeverTakesEffect) {
  feed().EndChar = 8;
  Receive(
      "\x01"
      "abc\b\b");
  EXPECT_TRUE(processes_.started.empty());
  EXPECT_EQ(OpenText(), "a");
}

TEST_F(StoryCaptureTest, NulAsACode) {
  feed().EndChar = 0;
  Take(std::string("\x01one\0two\0", 9));
  EXPECT_EQ(Handed(), (Texts{"one", "two"}));
}

TEST_F(StoryCaptureTest, CodesAbove127) {
  feed().StartChar = 0x93;
  feed().EndChar = 255;
  Take("\x93one\xFF\xFE\x93two\xFF");
  EXPECT_EQ(Handed(), (Texts{"one", "\xFE", "two"}));
}

TEST_F(StoryCaptureTest, CodesOutOfRangeMakeOneEndlessStory) {
  feed().StartChar = -1;
  feed().EndChar = 256;
  Take(std::string("\x01one\x04\0\xFF", 7));
  EXPECT_TRUE(processes_.started.empty());
  EXPECT_EQ(OpenText(), std::string("\x01one\x04\0\xFF", 7));
}

TEST_F(StoryCaptureTest, AllOtherBytesReachTheFile) {
  std::string all;
  for (int code = 0; code < 256; ++code) {
    if (code != 1 && code != 4) all += static_cast<char>(static_cast<unsigned char>(code));
  }
  Take("\x01" + all + "\x04");
  EXPECT_EQ(Handed(), Texts{all});
}

TEST_F(StoryCaptureTest, CodesAreReadAgainForEveryTest) {
  processes_.atStart = [this](const platform::ProcessStart& start) {
    LookAt(start);
    feed().StartChar = '<';
    feed().EndChar = '>';
  };
  Take("\x01one\x04<two>");
  EXPECT_EQ(Handed(), (Texts{"one", "two"}));
}

TEST_F(StoryCaptureTest, WindowWithoutAFeedNumberTakesNothing) {
  for (const char* tag : {"", "0", "5", "-1", "x"}) {
    tag_ = tag;
    Take("\x01story\x04");
    capture_.OpenTempTextStoryFile();
    capture_.WriteTextBuffer("x");
    capture_.CloseTempTextStoryFile();
  }
  EXPECT_TRUE(processes_.started.empty());
  EXPECT_EQ(test::JoinedNames(news_.path()), "");
}

}  // namespace
}  // namespace vorda
