// How a feed window comes to life: Tag, then the label's text, then the effects in their order.

#include <gtest/gtest.h>

#include "platform/RunTimeError.h"
#include "support/FeedWindows.h"
#include "support/StatusClient.h"

namespace vorda::test {
namespace {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;

class FeedStart : public FeedWindows {
 protected:
  static constexpr const char* kSlowLine = "[TextData]\r\nSettings=1200,e,7,1\r\nHandShaking=2\r\n";

  bool StatusPortListens(int soundCard = 0) {
    StatusClient client;
    return client.Connect(OwnLoopbackAddress(), 6960 + soundCard);
  }
};

TEST_F(FeedStart, LoadPlacesTheWindowInTheRoomOfTheFrame) {
  frmWireFeed& form = FeedForm(1);
  form.Load();
  EXPECT_EQ(form.Left(), 30);
  EXPECT_EQ(form.Top(), 30);
  EXPECT_EQ(form.Width(), 6000);   // 13200 / 2.2
  EXPECT_EQ(form.Height(), 6540);  // 6600 - 60
  EXPECT_EQ(form.Text(), "Wire Feed Capture");
  EXPECT_EQ(form.Tag(), "");
}

TEST_F(FeedStart, TagAloneStartsNothing) {
  frmWireFeed& form = FeedForm(2);
  form.SetTag("2");
  EXPECT_EQ(form.Text(), "Wire Feed Capture");
  EXPECT_EQ(Record(2).Name, "");
  EXPECT_FALSE(StatusPortListens());
}

TEST_F(FeedStart, LabelsTextStartsTheChannelBeforeTheWindowIsShown) {
  frmWireFeed& form = FeedForm(2);
  const std::string path = WriteConfig(2);
  form.SetTag("2");
  form.lblConfigFile()->SetCaption(path);
  EXPECT_EQ(form.Text(), "Vorda Server : Wire 2");
  EXPECT_EQ(form.lblConfigFile()->Caption(), path);
  EXPECT_EQ(Record(2).FullConfigFile, path);
  EXPECT_EQ(Record(2).NewsPath, directory.path());
  EXPECT_FALSE(form.Visible());
  EXPECT_EQ(gActiveFeed, 0);
  form.Show();
  EXPECT_EQ(gActiveFeed, 2);
}

TEST_F(FeedStart, SecondFeedsCartRangeIsTheOperatorsRange) {
  Start(1, WriteConfig(1, "[AudioCapture]\r\nStartCartNumber=100\r\nEndCartNumber=199\r\n"));
  EXPECT_EQ(gServerCartStart, 100);
  EXPECT_EQ(gServerCartEnd, 199);
  Start(2, WriteConfig(2, "[AudioCapture]\r\nStartCartNumber=300\r\nEndCartNumber=350\r\n"));
  EXPECT_EQ(gServerCartStart, 300);
  EXPECT_EQ(gServerCartEnd, 350);
}

TEST_F(FeedStart, BothPortsGetTheSettingsThoughNeitherHasANumber) {
  Start(1, WriteConfig(1, kSlowLine));
  ASSERT_NE(Port(1), nullptr);
  ASSERT_NE(Port(0), nullptr);
  for (FakeSerialControl* port : {Port(1), Port(0)}) {
    EXPECT_EQ(port->Settings(), "1200,e,7,1");
    EXPECT_EQ(port->Handshaking(), 2);
    EXPECT_FALSE(port->PortOpen());
  }
}

TEST_F(FeedStart, BounceWithoutCaptureOpensNoPort) {
  Record(1).CapturePort = 0;
  Record(1).BouncePort = 2;
  Start(1);
  EXPECT_TRUE(ports->openingsTried().empty());
}

TEST_F(FeedStart, NegativePortNumbersOpenNoPort) {
  Record(1).CapturePort = -1;
  Record(1).BouncePort = -1;
  Start(1);
  EXPECT_TRUE(ports->openingsTried().empty());
}

TEST_F(FeedStart, CaptureIsOpenedFirstThenBounce) {
  Record(1).CapturePort = 3;
  Record(1).BouncePort = 2;
  Start(1);
  EXPECT_EQ(ports->openingsTried(), (std::vector<std::int16_t>{3, 2}));
  EXPECT_EQ(ports->OpenOn(3), Port(1));
  EXPECT_EQ(ports->OpenOn(2), Port(0));
}

TEST_F(FeedStart, FailingCaptureGivesOneBoxLeavesBounceUntriedAndStopsNothingElse) {
  Record(1).CapturePort = 3;
  Record(1).BouncePort = 2;
  ports->FailOpenWith(platform::kDeviceUnavailable, 3);
  boxes.Expect("Couldn't open port 3 for data capture, error : Device unavailable");
  frmWireFeed& form = Start(1);
  EXPECT_EQ(boxes.Last().icon, BoxIcon::None);
  EXPECT_EQ(boxes.Last().buttons, BoxButtons::Ok);
  EXPECT_EQ(ports->openingsTried(), std::vector<std::int16_t>{3});
  EXPECT_EQ(form.Text(), "Vorda Server : Wire 1");
  EXPECT_TRUE(form.Visible());
  EXPECT_TRUE(Timer(form, "timerIndexLogs")->Enabled());
  EXPECT_TRUE(StatusPortListens());
}

TEST_F(FeedStart, FailingBounceGivesItsBoxAndCaptureGoesOn) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 4;
  ports->FailOpenWith(platform::kPermissionDenied, 4);
  boxes.Expect("Couldn't open Bounce port 4 for data re-feed, error : Permission denied");
  Start(1);
  EXPECT_EQ(boxes.Last().icon, BoxIcon::None);
  EXPECT_EQ(boxes.Last().buttons, BoxButtons::Ok);
  Port(1)->Arrive("\x01Story\x04");
  EXPECT_EQ(processes.started.size(), 1u);
  EXPECT_EQ(Port(0)->sent(), "");
  EXPECT_EQ(Port(0)->lost(), "");
}

TEST_F(FeedStart, PortOfAnotherFeedGivesTheMessageOfAMissingOneWithItsOwnError) {
  Record(1).CapturePort = 1;
  Record(2).CapturePort = 1;
  Start(1);
  boxes.Expect("Couldn't open port 1 for data capture, error : File already open");
  Start(2);
}

TEST_F(FeedStart, BounceOntoTheOwnCapturePortIsInUse) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 1;
  boxes.Expect("Couldn't open Bounce port 1 for data re-feed, error : File already open");
  Start(1);
}

TEST_F(FeedStart, PortNumberOutOfRangeIsAnErrorLikeAnyOther) {
  Record(1).CapturePort = 5;
  boxes.Expect("Couldn't open port 5 for data capture, error : Device unavailable");
  Start(1);
}

// What is done ahead of the ports and what comes behind them, seen from behind the box.
TEST_F(FeedStart, EverythingAheadOfThePortsIsDoneWhenTheirBoxComes) {
  Record(1).CapturePort = 1;
  Record(1).NoIndexProcessing = 1;
  ports->FailOpenWith(platform::kDeviceUnavailable, 1);
  bool listening = true;
  boxes.Expect("Couldn't open port 1 for data capture, error : Device unavailable", BoxAnswer::Ok, [&] {
    frmWireFeed& form = FeedForm(1);
    EXPECT_FALSE(Timer(form, "timerIndexLogs")->Enabled());
    EXPECT_EQ(gServerCartStart, 40);
    EXPECT_EQ(gServerCartEnd, 49);
    EXPECT_EQ(form.Text(), "Vorda Server : Wire 1");
    EXPECT_EQ(Port(1)->Settings(), "1200,e,7,1");
    EXPECT_EQ(Port(0)->Settings(), "1200,e,7,1");
    EXPECT_FALSE(form.Visible());
    listening = StatusPortListens();
  });
  Start(1, WriteConfig(
               1, std::string("[AudioCapture]\r\nStartCartNumber=40\r\nEndCartNumber=49\r\n") + kSlowLine));
  EXPECT_FALSE(listening);
  EXPECT_TRUE(StatusPortListens());
}

TEST_F(FeedStart, NoIndexProcessingDisablesTheDailyToolsOnlyAndStoriesGoOn) {
  Record(1).CapturePort = 1;
  Record(1).NoIndexProcessing = -1;
  frmWireFeed& form = Start(1);
  EXPECT_FALSE(Timer(form, "timerIndexLogs")->Enabled());
  EXPECT_TRUE(Timer(form, "timerRecordMonitor")->Enabled());
  EXPECT_TRUE(Timer(form, "tmrAudioLevel")->Enabled());
  Port(1)->Arrive("\x01Story\x04");
  ASSERT_EQ(processes.started.size(), 1u);
  EXPECT_EQ(processes.started[0].program, "/tools/ItemFile.exe");
}

TEST_F(FeedStart, StatusPortIsNumberedBySoundCard) {
  Record(1).SoundCard = 0;
  Record(2).SoundCard = 3;
  Start(1);
  Start(2);
  EXPECT_TRUE(StatusPortListens(0));
  EXPECT_TRUE(StatusPortListens(3));
}

TEST_F(FeedStart, TwoFeedsWithoutSoundShareAStatusPortNumberSilently) {
  Start(1);
  Start(2);
  StatusClient client;
  ASSERT_TRUE(client.Connect(OwnLoopbackAddress(), 6960));
  EXPECT_TRUE(client.WaitFor("Log Name          : Wire 1\r\n"));
}

TEST_F(FeedStart, InvalidSettingsInTheFileLeaveThePortsWhatTheyWere) {
  Start(1, WriteConfig(1, "[TextData]\r\nSettings=fast\r\n"));
  EXPECT_EQ(Port(1)->Settings(), "9600,n,8,1");
  EXPECT_EQ(Port(0)->Settings(), "9600,n,8,1");
}

}  // namespace
}  // namespace vorda::test
