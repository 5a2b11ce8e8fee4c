// Feeds on real serial lines that can't be had, go away, or are read by nobody: each costs its own feed what
// it must, and the stories behind it nothing.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileFault.h"
#include "support/FeedWindows.h"
#include "support/HeapInUse.h"
#include "support/PseudoTerminal.h"

namespace vorda::test {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using Texts = std::vector<std::string>;

constexpr const char* kAnyTerminal = "/dev/pts/";
constexpr std::size_t kMebibyte = 1'048'576;

// Ports 1 and 2 are lines, port 3 has no device behind it, port 4 is a line that no feed has unless a test
// says so.
class FeedPorts : public FeedWindows {
 protected:
  FeedPorts() {
    ports.reset();
    platform::Settings mapped = TestSettings();
    mapped.serialPorts = {directory / "com1", directory / "com2", directory / "no-device", spare.path()};
    lines.emplace(mapped);
    processes.atStart = [this](const platform::ProcessStart& start) {
      if (!start.program.ends_with("ItemFile.exe")) return;  // a daily tool, which is free to come
      const std::string path = start.arguments.at(0).substr(0, start.arguments.at(0).find('|'));
      stories.push_back(ReadWholeFile(path));
      std::filesystem::remove(path);
    };
  }

  // The story comes down the line and is filed.
  void ExpectStory(PseudoTerminal& line, const std::string& story) {
    sent += "\1" + story + "\4";
    ASSERT_TRUE(line.Write("\1" + story + "\4"));
    EXPECT_TRUE(WaitUntil([&] { return !stories.empty() && stories.back() == story; })) << story;
  }

  // Sends stories down line 1, each of which is filed, until line 2 has something of them. Answers what it
  // has.
  std::string SendUntilBounced() {
    std::string bounced;
    EXPECT_TRUE(WaitUntil([&] {
      ExpectStory(*com1, "later " + std::to_string(++sentMeanwhile));
      return !(bounced += com2->Read()).empty();
    }));
    return bounced;
  }

  std::optional<PseudoTerminal> com1{std::in_place, directory / "com1"};
  std::optional<PseudoTerminal> com2{std::in_place, directory / "com2"};
  PseudoTerminal spare{directory / "com4"};
  std::optional<platform::ScopedSettings> lines;
  Texts stories;
  std::string sent;  // down all lines
  std::size_t sentMeanwhile = 0;
};

TEST_F(FeedPorts, CaptureWithoutPermissionIsToldOnceAndTheOtherFeedFilesItsStories) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  Record(2).CapturePort = 4;
  boxes.Expect("Couldn't open port 1 for data capture, error : Permission denied");
  {
    const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, kAnyTerminal);
    EXPECT_EQ(Start(1).Text(), "Vorda Server : Wire 1");
    EXPECT_EQ(fault.calls(), 1);  // the bounce port was not tried
  }
  Start(2);
  ExpectStory(spare, "of feed 2");
  // Nothing tries again by itself.
  ASSERT_TRUE(com1->Write("\1nobody listens\4"));
  ExpectStory(spare, "another of feed 2");
  EXPECT_EQ(stories, (Texts{"of feed 2", "another of feed 2"}));
}

TEST_F(FeedPorts, BounceWithoutPermissionIsToldOnceAndCaptureGoesOn) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  boxes.Expect("Couldn't open Bounce port 2 for data re-feed, error : Permission denied");
  {
    const ScopedFileFault fault(FileOperation::Open, EACCES, 2, 1, kAnyTerminal);
    Start(1);
    EXPECT_EQ(fault.calls(), 2);
  }
  ExpectStory(*com1, "one");
  ExpectStory(*com1, "two");
  EXPECT_EQ(com2->Read(), "");
}

// A number that is no port: below 1 the feed has none and nobody is told, above 4 it can't be had.
TEST_F(FeedPorts, NumbersThatAreNoPortCostTheOtherFeedsNothing) {
  Record(4).CapturePort = 4;
  Start(4);
  int number = 0;
  for (const int capture : {0, -1, -32768, 5, 32767}) {
    const int feed = 1 + number++ % 3;
    gFeedForms[static_cast<std::size_t>(feed - 1)].reset();
    Record(feed) = WireFeedRecord();
    Record(feed).CapturePort = static_cast<std::int16_t>(capture);
    Record(feed).BouncePort = 2;
    if (capture > 0)
      boxes.Expect("Couldn't open port " + std::to_string(capture) +
                   " for data capture, error : Device unavailable");
    EXPECT_EQ(Start(feed).Text(), "Vorda Server : Wire " + std::to_string(feed)) << capture;
    ExpectStory(spare, "beside " + std::to_string(capture));
  }
  EXPECT_EQ(com2->Read(), "");
}

TEST_F(FeedPorts, BounceNumbersThatAreNoPortLeaveCaptureAlone) {
  for (const int bounce : {0, -1, -32768, 5, 32767, 3}) {
    gFeedForms[0].reset();
    Record(1).CapturePort = 1;
    Record(1).BouncePort = static_cast<std::int16_t>(bounce);
    if (bounce > 0)
      boxes.Expect("Couldn't open Bounce port " + std::to_string(bounce) +
                   " for data re-feed, error : Device unavailable");
    Start(1);
    ExpectStory(*com1, "in spite of " + std::to_string(bounce));
  }
}

TEST_F(FeedPorts, MissingDeviceThatComesLaterIsNotOpenedAndTheOtherFeedGoesOn) {
  Record(1).CapturePort = 3;
  Record(2).CapturePort = 1;
  Record(2).BouncePort = 2;
  boxes.Expect("Couldn't open port 3 for data capture, error : Device unavailable");
  Start(1);
  Start(2);
  PseudoTerminal late(directory / "no-device");
  ASSERT_TRUE(late.Write("\1nobody listens\4"));
  // The other feed's line goes and comes back meanwhile: time enough for a try of the first.
  com2->HangUp();
  ExpectStory(*com1, "one");
  com2.emplace(directory / "com2");
  SendUntilBounced();
  EXPECT_EQ(std::count(stories.begin(), stories.end(), "nobody listens"), 0);
}

TEST_F(FeedPorts, BounceLineThatGoesAndComesBackCostsNoStory) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  Start(1);
  ExpectStory(*com1, "before");
  EXPECT_EQ(com2->Read(8), "\1before\4");
  com2->HangUp();
  ExpectStory(*com1, "meanwhile");
  com2.emplace(directory / "com2");
  // From the first story on that finds the line open, each is bounced.
  std::string bounced = SendUntilBounced();
  ExpectStory(*com1, "last");
  ASSERT_TRUE(WaitUntil([&] { return (bounced += com2->Read()).ends_with("\1last\4"); }));
  EXPECT_TRUE(sent.ends_with(bounced)) << bounced;
  EXPECT_EQ(stories.size(), 2 + sentMeanwhile + 1);
}

TEST_F(FeedPorts, CaptureLineThatGoesInTheMiddleOfAStoryGoesOnInIt) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  Start(1);
  ASSERT_TRUE(com1->Write("\1one half "));
  ASSERT_EQ(com2->Read(10), "\1one half ");
  const std::string story = Record(1).StoryFileName;
  com1->HangUp();
  com1.emplace(directory / "com1");
  ASSERT_TRUE(com1->Write("and the other\4"));
  ASSERT_TRUE(WaitUntil([&] { return !stories.empty(); }));
  EXPECT_EQ(stories, Texts{"one half and the other"});
  EXPECT_FALSE(std::filesystem::exists(story));
  ExpectStory(*com1, "later");
}

TEST_F(FeedPorts, BounceLineThatNobodyReadsCostsNoStoryAndKeepsAMebibyte) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  Start(1);
  constexpr std::size_t kStories = 100;
  const auto story = [](std::size_t i) { return std::string(64'000, 'x') + std::to_string(i); };
  sent.reserve(8 * kMebibyte);  // no part of what grows
  std::size_t before = 0;
  for (std::size_t i = 0; i < kStories; ++i) {
    ExpectStory(*com1, story(i));
    stories.back().clear();
    stories.back().shrink_to_fit();
    if (i == 0) before = HeapInUse();
  }
  EXPECT_EQ(stories.size(), kStories);
  EXPECT_LT(HeapInUse(), before + 3 * kMebibyte);

  // What was kept comes out whole and in order, and the next story behind it.
  std::string bounced;
  ASSERT_TRUE(WaitUntil([&] { return (bounced += com2->Read()).size() > kMebibyte; }));
  ExpectStory(*com1, "later");
  ASSERT_TRUE(WaitUntil([&] { return (bounced += com2->Read()).ends_with("\1later\4"); }));
  bounced.resize(bounced.size() - 7);
  EXPECT_LT(bounced.size(), kMebibyte + 256 * 1024);
  EXPECT_TRUE(sent.starts_with(bounced));
}

// On the line each FF comes doubled.
TEST_F(FeedPorts, CodesOfFFOnARealLineEndEachStoryOnce) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  Start(1, WriteConfig(1, "[StoryDelimiters]\r\nStartChar=254\r\nEndChar=255\r\n"));
  std::string wire;
  Texts expected;
  for (int i = 0; i < 600; ++i) {
    expected.push_back("story " + std::to_string(i));
    wire += "\xFE" + expected.back() + "\xFF";
  }
  wire += "\xFF\xFF\xFF";
  ASSERT_TRUE(com1->Write(wire));
  EXPECT_EQ(com2->Read(wire.size()), wire);
  ASSERT_TRUE(WaitUntil([&] { return stories.size() >= expected.size(); }));
  EXPECT_EQ(stories, expected);
  EXPECT_EQ(Record(1).StoryFileHandle, 0);
}

// As many control characters as fill more than two reads of the line.
TEST_F(FeedPorts, TenThousandOfEachControlCharacterLeaveTheLaterStoryWhole) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  Start(1);
  for (int code = 0; code < 32; ++code) {
    if (code == 1) continue;  // a story each
    const std::string burst(10'000, static_cast<char>(code));
    ASSERT_TRUE(com1->Write(burst));
    ASSERT_EQ(com2->Read(burst.size()), burst) << code;
    ExpectStory(*com1, "behind " + std::to_string(code));
    com2->Read(std::string("behind ").size() + std::to_string(code).size() + 2);
  }
}

TEST_F(FeedPorts, FiveThousandStartCodesAreAsManyStoriesAndTheLaterOneIsWhole) {
  Record(1).CapturePort = 1;
  Start(1);
  ASSERT_TRUE(com1->Write(std::string(5'000, '\1')));
  ASSERT_TRUE(WaitUntil([&] { return stories.size() >= 4'999; }, 60'000));
  ExpectStory(*com1, "later");
  ASSERT_EQ(stories.size(), 5'001u);
  EXPECT_EQ(std::count(stories.begin(), stories.end(), ""), 5'000);
}

}  // namespace
}  // namespace vorda::test
