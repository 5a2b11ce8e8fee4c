// A feed's recordings while a box waits for the operator: the feed goes on behind it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "platform/FileFault.h"
#include "support/FeedAudioFixture.h"
#include "support/StatusClient.h"

namespace vorda::test {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::HasSubstr;

class FeedAudioBox : public FeedAudioFixture {
 protected:
  static constexpr const char* kLost = "Failed to write data during 'WriteAudioData'";
};

TEST_F(FeedAudioBox, CartThatCannotBeDeletedIsPassedOverInSilenceByTheStartsClearing) {
  Fill(9004);
  Fill(9005);
  WriteWholeFile(CartPath(9004), "held");
  const ScopedFileFault held(FileOperation::Remove, EACCES, 1, 1, "ORV09004.WAV");
  frmWireFeed& form = StartFeed("LastRecordedCartNumber=9003\r\n");
  EXPECT_FALSE(IsEmptyCart(Info(9004)));
  EXPECT_TRUE(IsEmptyCart(Info(9005)));
  Record5SecondsOfSound(0);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9005");
  EXPECT_EQ(Audio(9004), "held");
}

// The clearing of the start stands at cart 9004; 9005 is the next it would come to.
TEST_F(FeedAudioBox, RecordingBegunBehindABoxOfTheStartsClearingIsNeitherClearedNorForgotten) {
  FillInListOnly(9004);
  boxes.Expect(NoOwnFile(9004), platform::BoxAnswer::Ok, [this] {
    Tick(0, 80);
    EXPECT_EQ(Caption(FeedForm(1), "pnlTimeIn"), "0.0");
    Tick(2, 80);
    EXPECT_EQ(Caption(FeedForm(1), "pnlTimeIn"), "2.0") << "the feed's timers go on";
    Tick(5, 80);
    EXPECT_EQ(Caption(FeedForm(1), "pnlCartNo"), "9005");
    Stream().Play("abcd");
  });
  frmWireFeed& form = StartFeed("LastRecordedCartNumber=9003\r\n");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9005");
  EXPECT_EQ(Of<controls::Panel>(form, "pnlCartNo")->BackColor(), 255);
  EXPECT_EQ(Title(9005), "Vorda Server is recording into this cart");
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=9005\r\n"));
  Stream().Play("efgh");
  Tick(6, 10);
  Tick(31, 10);
  EXPECT_EQ(Audio(9005).substr(44), "abcdefgh");
  EXPECT_EQ(Title(9005), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_TRUE(IsEmptyCart(Info(9004))) << "its clearing was gone through with";
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("LastRecordedCartNumber=9005\r\n"));
}

// A whole recording behind the box: the key is 0 and the clearing goes on without harm to it.
TEST_F(FeedAudioBox, RecordingBegunAndEndedBehindABoxOfTheStartsClearingStaysFiled) {
  FillInListOnly(9004);
  boxes.Expect(NoOwnFile(9004), platform::BoxAnswer::Ok, [this] {
    Record5SecondsOfSound(0);
    Stream().Play("abcd");
    Tick(6, 10);
    Tick(31, 10);
    EXPECT_EQ(Caption(FeedForm(1), "pnlCartNo"), "");
  });
  frmWireFeed& form = StartFeed("LastRecordedCartNumber=9003\r\n");
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=0\r\n"));
  EXPECT_EQ(Record(1).LastRecordedCartNumber, 9005);
  EXPECT_EQ(Audio(9005).substr(44), "abcd");
  EXPECT_EQ(Title(9005), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_TRUE(Enabled(form, "cmdRecord"));
}

// The clearing begins below the range, and the first cart of the range is the next it would come to.
TEST_F(FeedAudioBox, RecordingBehindABoxOfTheStartsClearingStaysFiledWithALastRecordingBelowTheRange) {
  FillInListOnly(9000);
  boxes.Expect(NoOwnFile(9000), platform::BoxAnswer::Ok, [this] {
    Click(FeedForm(1), "cmdRecord");
    EXPECT_EQ(Caption(FeedForm(1), "pnlCartNo"), "9001");
    Stream().Play("abcd");
    Click(FeedForm(1), "cmdEject");
  });
  StartFeed("IndexCartNumber=9050\r\nClearCartCount=3\r\nLastRecordedCartNumber=8999\r\n");
  EXPECT_EQ(Audio(9001).substr(44), "abcd");
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_EQ(Title(9050), "Last recorded cart was : 9001");
  EXPECT_EQ(Record(1).LastRecordedCartNumber, 9001);
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("LastRecordedCartNumber=9001\r\n"));
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=0\r\n"));
}

// All carts are full, and the one whose turn it is tells while it is forced.
TEST_F(FeedAudioBox, TickBehindABoxOfForcingACartTakesTheNextOneAndTheOuterOneGivesWay) {
  for (std::int32_t cart = 9001; cart <= 9003; ++cart) Fill(cart);
  frmWireFeed& form = StartFeed("EndCartNumber=9003\r\nClearCartCount=0\r\nLastRecordedCartNumber=9001\r\n");
  StatusClient client;
  ASSERT_TRUE(WaitUntil([&] { return client.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
  ASSERT_TRUE(client.WaitFor("Current Recording : 0"));
  gAudioWallSettings.UseIndividualCartListFiles = 1;
  WriteWholeFile(CartPath(9003, "LST"), "");
  boxes.Expect(NoOwnFile(9002), platform::BoxAnswer::Ok, [&] {
    EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo") == "9003"; }, kLimit));
    Stream().Play("abcd");
  });
  Record5SecondsOfSound(0);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9003");
  EXPECT_TRUE(IsEmptyCart(Info(9002)));
  Stream().Play("efgh");
  form.EndRecording();
  EXPECT_EQ(Audio(9003).substr(44), "abcdefgh");
  EXPECT_EQ(Audio(9002), "");
  ASSERT_TRUE(client.WaitFor("Closed Audio File\r\n"));
  const std::string& text = client.Text();
  EXPECT_EQ(text.find("Started Recording"), text.rfind("Started Recording"));
}

// The cart whose turn it is can't be emptied, and the search that told it goes on to the next: that is being
// recorded into by then.
TEST_F(FeedAudioBox, CartForcedBehindTheBoxOfOneThatCannotBeForcedIsNotTakenFromItsRecording) {
  gAudioWallSettings.UseIndividualCartListFiles = 1;
  for (std::int32_t cart = 9001; cart <= 9003; ++cart) Fill(cart);
  frmWireFeed& form = StartFeed("EndCartNumber=9003\r\nClearCartCount=0\r\nLastRecordedCartNumber=9001\r\n");
  const ScopedFileFault held(FileOperation::Remove, EACCES, 1, 2, "ORV09002.LST");
  boxes.Expect(
      "There was a problem removing the information file for cart 9002 and the error's description was "
      "reported as : \n\"Permission denied\" (70)",
      platform::BoxAnswer::Ok, [&] {
        EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo") == "9003"; }, kLimit));
        Stream().Play(std::string(16000, 'a'));
      });
  Record5SecondsOfSound(0);
  EXPECT_EQ(held.calls(), 2) << "both ways of emptying it failed";
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9003");
  EXPECT_EQ(Title(9003), "Vorda Server is recording into this cart");
  Stream().Play(std::string(16000, 'b'));
  form.EndRecording();
  EXPECT_EQ(Audio(9003).substr(44), std::string(16000, 'a') + std::string(16000, 'b'));
  EXPECT_EQ(Title(9003), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_EQ(Info(9003).AudioLength, 1.0F);
}

TEST_F(FeedAudioBox, BlocksBehindTheBoxOfALostOneAreKeptAndTheTicksGoOn) {
  frmWireFeed& form = StartFeed();
  Record5SecondsOfSound(0);
  const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09001.WAV");
  boxes.Expect(kLost, platform::BoxAnswer::Ok, [&] {
    Stream().Play("kept");
    Tick(8, 80);
    EXPECT_EQ(Caption(form, "pnlTimeIn"), "8.0");
    EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  });
  Stream().Play("lost");
  Stream().Play("too.");
  EXPECT_EQ(Audio(9001).substr(44), "kepttoo.");
  EXPECT_TRUE(Enabled(form, "cmdEject"));
}

TEST_F(FeedAudioBox, SilenceEndsTheRecordingBehindTheBoxOfALostBlock) {
  frmWireFeed& form = StartFeed();
  Record5SecondsOfSound(0);
  Stream().Play(std::string(32000, 'a'));
  const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09001.WAV");
  boxes.Expect(kLost, platform::BoxAnswer::Ok, [&] {
    Tick(8, 10);
    Tick(33, 10);
    EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  });
  Stream().Play("lost");
  EXPECT_EQ(Audio(9001).size(), 32044u);
  EXPECT_EQ(Info(9001).AudioLength, 1.0F);
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_TRUE(Enabled(form, "cmdRecord"));
  EXPECT_FALSE(Enabled(form, "cmdEject"));
  Stream().Play("behind");
  EXPECT_EQ(Audio(9001).size(), 32044u);
}

// The cut's end can't be written: while that is told the sound comes back and takes the next cart.
TEST_F(FeedAudioBox, SoundThatComesBackBehindTheBoxOfAFailedCloseIsTheNextCarts) {
  frmWireFeed& form = StartFeed();
  Record5SecondsOfSound(0);
  Stream().Play("abcd");
  Tick(8, 10);
  {
    const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09001.WAV");
    boxes.Expect("The Windows Multimedia Sub-System has returned with an unknown error, the code was: 262",
                 platform::BoxAnswer::Ok, [&] {
                   Record5SecondsOfSound(40);
                   Stream().Play("efgh");
                   EXPECT_EQ(Caption(form, "pnlCartNo"), "9002");
                 });
    Tick(33, 10);
  }
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9002");
  EXPECT_FALSE(Enabled(form, "cmdRecord"));
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  Stream().Play("ijkl");
  form.EndRecording();
  EXPECT_EQ(Audio(9002).substr(44), "efghijkl");
}

// The cut that ends takes over what was taken in, and that block is lost with a box; behind it the window
// goes.
TEST_F(FeedAudioBox, WindowThatIsClosedBehindABoxOfItsRecordingsEndLeavesItFiled) {
  frmWireFeed& form = StartFeed();
  Record5SecondsOfSound(0);
  Stream().Play(std::string(32000, 'a'));
  const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09001.WAV");
  Stream().Keep("lost");
  boxes.Expect(kLost, platform::BoxAnswer::Ok, [&] { form.Close(controls::CloseCause::FormControlMenu); });
  Tick(8, 10);
  now_.seconds = kNoon + 33;
  EXPECT_TRUE(WaitUntil([&] { return !form.Loaded(); }, kLimit));
  EXPECT_EQ(Audio(9001).size(), 32044u);
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=0\r\n"));
}

TEST_F(FeedAudioBox, EjectThatIsDisabledDoesNothing) {
  frmWireFeed& form = StartFeed();
  const std::string ini = ReadWholeFile(config_);
  frame.Window().activateWindow();
  ASSERT_TRUE(WaitUntil([&] { return frame.Window().isActiveWindow(); }, kLimit));
  Click(form, "cmdEject");
  QTest::keyClick(form.lblConfigFile(), Qt::Key_E, Qt::AltModifier);
  Tick(1, 10);
  EXPECT_EQ(streams.calls, std::vector<std::string>{"StartStream"});
  EXPECT_EQ(ReadWholeFile(config_), ini);
  EXPECT_TRUE(IsEmptyCart(Info(9000)));
}

}  // namespace
}  // namespace vorda::test
