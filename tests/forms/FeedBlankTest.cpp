// The blank window: what a feed without a configuration file comes to.

#include <gtest/gtest.h>

#include "support/FeedWindows.h"
#include "support/StatusClient.h"

namespace vorda::test {
namespace {

class FeedBlank : public FeedWindows {
 protected:
  void ExpectWarning(const std::string& path) {
    boxes.Expect("Warning : No Vorda information was found in the specifed news directory: " + path);
  }
  frmWireFeed& StartBlank(int number) {
    const std::string path = directory / "missing.ini";
    ExpectWarning(path);
    return Start(number, path);
  }
};

// Each load makes the window's two serial controls anew.
TEST_F(FeedBlank, MissingFileWarnsUnloadsAndShowLoadsTheWindowAgain) {
  const std::string path = directory / "missing.ini";
  ExpectWarning(path);
  frmWireFeed& form = FeedForm(1);
  form.SetTag("1");
  EXPECT_EQ(ports->size(), 2u);
  form.lblConfigFile()->SetCaption(path);
  EXPECT_EQ(boxes.Last().icon, platform::BoxIcon::Critical);
  EXPECT_FALSE(form.Loaded());
  EXPECT_EQ(ports->size(), 2u);
  EXPECT_EQ((*ports)[0], nullptr);
  EXPECT_EQ((*ports)[1], nullptr);
  form.Show();
  EXPECT_EQ(ports->size(), 4u);
  EXPECT_TRUE(form.Visible());
}

TEST_F(FeedBlank, EmptyFileCountsAsMissing) {
  const std::string path = directory / "empty.ini";
  WriteWholeFile(path, "");
  ExpectWarning(path);
  EXPECT_EQ(Start(1, path).Tag(), "");
}

TEST_F(FeedBlank, IsAsDesignedAndHasNoFeed) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  frmWireFeed& form = StartBlank(1);
  EXPECT_EQ(form.Text(), "Wire Feed Capture");
  EXPECT_EQ(form.Tag(), "");
  EXPECT_EQ(form.lblConfigFile()->Caption(), "");
  EXPECT_EQ(form.txtCapture()->Text(), "");
  EXPECT_TRUE(ports->openingsTried().empty());
  for (const char* name : {"timerIndexLogs", "timerRecordMonitor", "tmrAudioLevel"})
    EXPECT_TRUE(Timer(form, name)->Enabled()) << name;
  StatusClient client;
  EXPECT_FALSE(client.Connect(OwnLoopbackAddress(), 6960));
}

TEST_F(FeedBlank, StandsWhereANewWindowStands) {
  frmWireFeed& form = StartBlank(1);
  EXPECT_EQ(form.Left(), 30);
  EXPECT_EQ(form.Top(), 30);
  EXPECT_EQ(form.Width(), 6000);
  EXPECT_EQ(form.Height(), 6540);
}

TEST_F(FeedBlank, ItsActivationLeavesNoFeedActive) {
  Start(1);
  EXPECT_EQ(gActiveFeed, 1);
  StartBlank(2);
  EXPECT_EQ(gActiveFeed, 0);
  frame.Area().setActiveSubWindow(ChildWindowOf(FeedForm(1).lblConfigFile()));
  EXPECT_EQ(gActiveFeed, 1);
}

TEST_F(FeedBlank, MembersDoNothing) {
  frmWireFeed& form = StartBlank(1);
  form.sendWinSockMessage("Processed New Story");
  EXPECT_EQ(form.EndRecording(), 0);
}

TEST_F(FeedBlank, OtherFeedsStartBehindIt) {
  Record(2).CapturePort = 1;
  StartBlank(1);
  frmWireFeed& second = Start(2);
  EXPECT_EQ(second.Text(), "Vorda Server : Wire 2");
  EXPECT_NE(ports->OpenOn(1), nullptr);
}

}  // namespace
}  // namespace vorda::test
