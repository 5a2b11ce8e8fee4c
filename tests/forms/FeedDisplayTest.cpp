// A display that fails in the middle of an arrival: the operator is told, and the story goes on.

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "support/FeedWindows.h"

namespace vorda::test {
namespace {

using Texts = std::vector<std::string>;

class FailingFeed : public frmWireFeed {
 public:
  // How many times the display fails from now on.
  int failures = 0;

 protected:
  void ShowCaptureText() override {
    if (failures == 0) return frmWireFeed::ShowCaptureText();
    --failures;
    throw std::runtime_error("The display is gone");
  }
};

class FeedDisplay : public FeedWindows {
 protected:
  FeedDisplay() {
    Record(1).CapturePort = 1;
    Record(1).BouncePort = 2;
    auto failing = std::make_unique<FailingFeed>();
    feed = failing.get();
    gFeedForms[0] = std::move(failing);
    Start(1);
    processes.atStart = [this](const platform::ProcessStart& start) {
      const std::string& argument = start.arguments.at(0);
      stories.push_back(ReadWholeFile(argument.substr(0, argument.find('|'))));
    };
  }

  // The next arrival's display fails; `meanwhile` runs behind the box that tells so.
  void FailNext(std::function<void()> meanwhile = {}) {
    feed->failures = 1;
    boxes.Expect("The display is gone", platform::BoxAnswer::Ok, std::move(meanwhile));
  }

  FailingFeed* feed = nullptr;
  Texts stories;
};

TEST_F(FeedDisplay, FailureIsToldInAPlainBoxAndTheStoryIsCutAllTheSame) {
  FailNext();
  Port(1)->Arrive("\x01One\r\x04\x01Two");
  EXPECT_EQ(boxes.Last().icon, platform::BoxIcon::None);
  EXPECT_EQ(boxes.Last().buttons, platform::BoxButtons::Ok);
  EXPECT_EQ(boxes.Last().title, "");
  EXPECT_EQ(Port(0)->sent(), "\x01One\r\x04\x01Two");
  EXPECT_EQ(stories, Texts{"One\r\n"});
  EXPECT_EQ(ReadWholeFile(Record(1).StoryFileName), "Two");
}

TEST_F(FeedDisplay, EveryFailureIsToldAnew) {
  FailNext();
  Port(1)->Arrive("\x01One");
  FailNext();
  Port(1)->Arrive(" two\x04");
  Port(1)->Arrive("\x01Three\x04");
  EXPECT_EQ(stories, (Texts{"One two", "Three"}));
}

TEST_F(FeedDisplay, ArrivalBehindTheBoxIsCutFirstAndWhole) {
  FailNext([this] {
    Port(1)->Arrive("\x01Inner\x04");
    EXPECT_EQ(stories, Texts{"Inner"});
    EXPECT_EQ(Record(1).StoryFileHandle, 0);
    EXPECT_EQ(Record(1).StoryFileName, "");
  });
  Port(1)->Arrive("\x01Outer\x04");
  EXPECT_EQ(stories, (Texts{"Inner", "Outer"}));
  EXPECT_EQ(Record(1).StoryFileHandle, 0);
  EXPECT_EQ(Record(1).StoryFileName, "");
}

TEST_F(FeedDisplay, OuterArrivalGoesOnInTheStoryThatTheInnerOneLeftOpen) {
  Port(1)->Arrive("\x01One");
  const std::int32_t first = Record(1).StoryFileHandle;
  std::int32_t second = 0;
  FailNext([&] {
    EXPECT_EQ(Record(1).StoryFileHandle, first);
    Port(1)->Arrive("\x01Two");
    second = Record(1).StoryFileHandle;
    EXPECT_GT(second, first);
  });
  Port(1)->Arrive(" and three");
  EXPECT_EQ(Record(1).StoryFileHandle, second);
  EXPECT_EQ(ReadWholeFile(Record(1).StoryFileName), "Two and three");
  Port(1)->Arrive("\x04");
  EXPECT_EQ(stories, (Texts{"One", "Two and three"}));
}

TEST_F(FeedDisplay, BoxBehindABoxLeavesTheInnermostArrivalFirst) {
  FailNext([this] {
    FailNext([this] { Port(1)->Arrive("\x01Third\x04"); });
    Port(1)->Arrive("\x01Second\x04");
  });
  Port(1)->Arrive("\x01Outermost\x04");
  EXPECT_EQ(stories, (Texts{"Third", "Second", "Outermost"}));
}

TEST_F(FeedDisplay, OtherFeedsAreCutBehindTheBox) {
  Record(2).CapturePort = 3;
  Start(2);
  FailNext([this] {
    ports->OpenOn(3)->Arrive("\x01Other\x04");
    EXPECT_EQ(stories, Texts{"Other"});
  });
  Port(1)->Arrive("\x01Own\x04");
  EXPECT_EQ(stories, (Texts{"Other", "Own"}));
}

TEST_F(FeedDisplay, WindowUnloadedBehindTheBoxIsNotLoadedAgain) {
  FailNext([this] { feed->Unload(); });
  Port(1)->Arrive("\x01Story\x04");
  EXPECT_FALSE(feed->Loaded());
  ASSERT_EQ(ports->size(), 2u);
  EXPECT_EQ((*ports)[0], nullptr);
  EXPECT_EQ((*ports)[1], nullptr);
  EXPECT_TRUE(frame.Area().subWindowList().isEmpty());
  EXPECT_TRUE(processes.started.empty());
  EXPECT_EQ(Record(1).StoryFileHandle, 0);
  EXPECT_EQ(JoinedNames(directory.path()), "feed1.ini");
}

TEST_F(FeedDisplay, WindowClosedBehindTheBoxLeavesItsOpenStoryAsItWas) {
  Port(1)->Arrive("\x01half");
  const WireFeedRecord before = Record(1);
  FailNext([this] { ChildWindowOf(feed->lblConfigFile())->close(); });
  Port(1)->Arrive(" and whole\x04");
  EXPECT_FALSE(feed->Loaded());
  EXPECT_EQ(ports->size(), 2u);
  EXPECT_TRUE(processes.started.empty());
  EXPECT_EQ(Record(1).StoryFileHandle, before.StoryFileHandle);
  EXPECT_EQ(Record(1).StoryFileName, before.StoryFileName);
  EXPECT_EQ(ReadWholeFile(before.StoryFileName), "half");
}

}  // namespace
}  // namespace vorda::test
