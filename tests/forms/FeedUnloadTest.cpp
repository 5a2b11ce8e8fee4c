// The end of a feed window by the operator: never refused, and an open story stays open.

#include <gtest/gtest.h>

#include "platform/Files.h"
#include "support/FeedWindows.h"
#include "support/StatusClient.h"

namespace vorda::test {
namespace {

class FeedUnload : public FeedWindows {
 protected:
  FeedUnload() {
    Record(1).CapturePort = 1;
    Record(1).BouncePort = 2;
  }
  static void CloseByOperator(frmWireFeed& form) { ChildWindowOf(form.lblConfigFile())->close(); }
};

TEST_F(FeedUnload, CloseIsNotRefusedAndThePortsGoWithTheirControls) {
  frmWireFeed& form = Start(1);
  CloseByOperator(form);
  EXPECT_FALSE(form.Loaded());
  for (std::size_t i = 0; i < ports->size(); ++i) EXPECT_EQ((*ports)[i], nullptr);
}

TEST_F(FeedUnload, OpenStoryStaysOpenWithItsNumberInTheRecord) {
  frmWireFeed& form = Start(1);
  Port(1)->Arrive("\x01half");
  const WireFeedRecord before = Record(1);
  ASSERT_GT(before.StoryFileHandle, 0);
  CloseByOperator(form);
  EXPECT_EQ(Record(1).StoryFileHandle, before.StoryFileHandle);
  EXPECT_EQ(Record(1).StoryFileName, before.StoryFileName);
  EXPECT_TRUE(processes.started.empty());
  // The file is open under its number still.
  EXPECT_EQ(platform::WriteToFile(before.StoryFileHandle, " more"), 0);
  EXPECT_EQ(ReadWholeFile(before.StoryFileName), "half more");
}

TEST_F(FeedUnload, StatusClientIsCutOffAndNobodyListens) {
  frmWireFeed& form = Start(1);
  StatusClient client;
  ASSERT_TRUE(client.Connect(OwnLoopbackAddress(), 6960));
  ASSERT_TRUE(client.WaitFor("Current Recording"));
  CloseByOperator(form);
  EXPECT_TRUE(client.WaitForEnd());
  EXPECT_FALSE(client.Connect(OwnLoopbackAddress(), 6960));
}

TEST_F(FeedUnload, OtherFeedsGoOn) {
  Record(2).CapturePort = 3;
  frmWireFeed& form = Start(1);
  Start(2);
  CloseByOperator(form);
  ports->OpenOn(3)->Arrive("\x01Story\x04");
  EXPECT_EQ(processes.started.size(), 1u);
}

TEST_F(FeedUnload, NextWindowBelowBecomesTheActiveFeed) {
  Start(1);
  Start(2);
  Start(3);
  frame.Area().setActiveSubWindow(ChildWindowOf(FeedForm(1).lblConfigFile()));
  EXPECT_EQ(gActiveFeed, 1);
  CloseByOperator(FeedForm(1));
  EXPECT_EQ(gActiveFeed, 3);
  CloseByOperator(FeedForm(3));
  EXPECT_EQ(gActiveFeed, 2);
}

TEST_F(FeedUnload, UseOfTheClosedWindowLoadsItAsABlankOne) {
  frmWireFeed& form = Start(1);
  CloseByOperator(form);
  EXPECT_EQ(form.Text(), "Wire Feed Capture");
  EXPECT_EQ(form.Tag(), "");
  EXPECT_EQ(form.txtCapture()->Text(), "");
  EXPECT_EQ(ports->OpenOn(1), nullptr);
}

}  // namespace
}  // namespace vorda::test
