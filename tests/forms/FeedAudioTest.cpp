// The audio side of a feed's window: sound on its input becomes carts by itself, or by hand.

#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "platform/FileFault.h"
#include "support/FeedAudioFixture.h"
#include "support/StatusClient.h"

namespace vorda::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr std::int32_t kRed = 255;

class FeedAudio : public FeedAudioFixture {};

TEST_F(FeedAudio, StreamGetsTheFeedsFormatAndDevice) {
  StartFeed({}, 3);
  EXPECT_EQ(Stream().numberchannels, 2);
  EXPECT_EQ(Stream().samplerate, 8000);
  EXPECT_EQ(Stream().wavedevicenumber, 3);
  EXPECT_THAT(streams.calls, ElementsAre("StartStream"));
}

TEST_F(FeedAudio, WithoutASoundCardTheStreamIsNeverStarted) {
  StartFeed({}, 0);
  EXPECT_EQ(Stream().wavedevicenumber, 0);
  EXPECT_THAT(streams.calls, ElementsAre());
}

TEST_F(FeedAudio, StartClearsCartsAheadAndSaysThatNothingIsRecorded) {
  CartInfo full = gBlankCartInfo;
  full.AudioLength = 3;
  for (const std::int32_t cart : {9003, 9004, 9005, 9006}) WriteCartInfo(full, cart, true);
  StartFeed("LastRecordedCartNumber=9003\r\nCurrentlyRecordingCartNumber=9003\r\n");
  EXPECT_FALSE(IsEmptyCart(Info(9003)));
  EXPECT_TRUE(IsEmptyCart(Info(9004)));
  EXPECT_TRUE(IsEmptyCart(Info(9005)));
  EXPECT_FALSE(IsEmptyCart(Info(9006)));
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=0\r\n"));
}

TEST_F(FeedAudio, ClosedGateIsGreyAndOffersRecord) {
  frmWireFeed& form = StartFeed();
  EXPECT_EQ(Of<controls::Panel>(form, "pnlCartNo")->BackColor(), controls::kButtonFace);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  EXPECT_TRUE(Enabled(form, "cmdRecord"));
  EXPECT_FALSE(Enabled(form, "cmdEject"));
}

TEST_F(FeedAudio, GaugeAndCountsFollowTheLevel) {
  frmWireFeed& form = StartFeed();
  Tick(0, 10);
  EXPECT_FLOAT_EQ(static_cast<float>(Of<controls::FloodPanel>(form, "pnlVolume")->FloodPercent()), 50);
  EXPECT_EQ(Caption(form, "pnlTimeIn"), "");
  Tick(0.5, 10);
  EXPECT_EQ(Caption(form, "pnlTimeOut"), "");
  Tick(0.75, 10);
  EXPECT_EQ(Caption(form, "pnlTimeOut"), "0.8");
  Tick(1, 100);
  EXPECT_FLOAT_EQ(static_cast<float>(Of<controls::FloodPanel>(form, "pnlVolume")->FloodPercent()), 100);
  EXPECT_EQ(Caption(form, "pnlTimeIn"), "0.0");
  EXPECT_EQ(Caption(form, "pnlTimeOut"), "");
  Tick(3, 100);
  EXPECT_EQ(Caption(form, "pnlTimeIn"), "2.0");
}

TEST_F(FeedAudio, SoundThatStaysIsRecordedAndSilenceEndsIt) {
  frmWireFeed& form = StartFeed();
  Stream().Play("lost");
  Record5SecondsOfSound(0);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  EXPECT_EQ(Of<controls::Panel>(form, "pnlCartNo")->BackColor(), kRed);
  EXPECT_FALSE(Enabled(form, "cmdRecord"));
  EXPECT_TRUE(Enabled(form, "cmdEject"));
  EXPECT_EQ(Title(9001), "Vorda Server is recording into this cart");
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=9001\r\n"));
  Stream().Play(std::string(32000, 'a'));
  Tick(8, 10);
  Tick(32.5, 10);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  Tick(33, 10);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  EXPECT_EQ(Of<controls::Panel>(form, "pnlCartNo")->BackColor(), controls::kButtonFace);
  EXPECT_TRUE(Enabled(form, "cmdRecord"));
  EXPECT_FALSE(Enabled(form, "cmdEject"));
  EXPECT_EQ(Audio(9001).substr(44), std::string(32000, 'a'));
  EXPECT_EQ(Info(9001).AudioLength, 1.0F);
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_EQ(Title(9000), "Last recorded cart was : 9001");
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("LastRecordedCartNumber=9001\r\n"));
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=0\r\n"));
}

TEST_F(FeedAudio, StatusLinesOfARecording) {
  StartFeed();
  StatusClient client;
  ASSERT_TRUE(WaitUntil([&] { return client.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
  ASSERT_TRUE(client.WaitFor("Current Recording : 0"));
  Record5SecondsOfSound(0);
  EXPECT_TRUE(client.WaitFor("Opened Audio File "));
  EXPECT_TRUE(client.WaitFor("Started Recording\r\n"));
  Tick(8, 10);
  Tick(33, 10);
  EXPECT_TRUE(client.WaitFor("Closed Audio File\r\n"));
  EXPECT_TRUE(client.WaitFor("Stopped Recording\r\n"));
}

TEST_F(FeedAudio, RecordByHandBeginsAtOnceAndSilenceEndsItBehindItsWholeDuration) {
  frmWireFeed& form = StartFeed();
  Tick(0, 10);
  Tick(20, 10);
  Click(form, "cmdRecord");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  Tick(21, 10);
  Tick(45, 10);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001") << "silence counts from the click on";
  Tick(46.5, 10);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
}

TEST_F(FeedAudio, EjectInSoundStartsTheNextCartAtOnceAndSaysNothing) {
  frmWireFeed& form = StartFeed();
  StatusClient client;
  ASSERT_TRUE(WaitUntil([&] { return client.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
  Record5SecondsOfSound(0);
  ASSERT_TRUE(client.WaitFor("Started Recording\r\n"));
  Click(form, "cmdEject");
  Tick(5.5, 80);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9002");
  form.sendWinSockMessage("The end");
  ASSERT_TRUE(client.WaitFor("The end\r\n"));
  const std::string& text = client.Text();
  const std::size_t closed = text.find("Closed Audio File\r\n");
  ASSERT_NE(closed, std::string::npos);
  EXPECT_NE(text.find("Started Recording\r\n", closed), std::string::npos) << "of the next cart";
  EXPECT_THAT(text, Not(HasSubstr("Stopped Recording")));
}

TEST_F(FeedAudio, KeyboardRecordsAndEjects) {
  frmWireFeed& form = StartFeed();
  frame.Window().activateWindow();
  ASSERT_TRUE(WaitUntil([&] { return frame.Window().isActiveWindow(); }, kLimit));
  // A button that is pressed by its letter is seen to go down before it acts.
  QTest::keyClick(form.lblConfigFile(), Qt::Key_R, Qt::AltModifier);
  EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo") == "9001"; }, kLimit));
  QTest::keyClick(form.lblConfigFile(), Qt::Key_E, Qt::AltModifier);
  EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo").empty(); }, kLimit));
}

// They share the input and ask for one status port, which is the first one's; the second one's failure passes
// unnoticed.
TEST_F(FeedAudio, TwoFeedsOnOneSoundCardBothRecordAndTheFirstHasTheStatusPort) {
  frmWireFeed& first = StartFeed();
  Record(2).SoundCard = 1;
  frmWireFeed& second =
      Start(2, WriteConfig(2, AudioKeys("IndexCartNumber=9100\r\nStartCartNumber=9101\r\nEndCartNumber="
                                        "9110\r\nLastRecordedCartNumber=9104\r\n")));
  EXPECT_EQ(streams.made.at(1)->wavedevicenumber, 1);
  StatusClient client;
  ASSERT_TRUE(WaitUntil([&] { return client.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
  ASSERT_TRUE(client.WaitFor("Log Name          : Wire 1\r\n"));
  streams.made.at(1)->level = 80;
  Record5SecondsOfSound(0);
  EXPECT_TRUE(WaitUntil([&] { return Caption(second, "pnlCartNo") == "9105"; }, kLimit));
  EXPECT_EQ(Caption(first, "pnlCartNo"), "9001");
  for (FakeStream* stream : streams.made) stream->Play("abcd");
  first.EndRecording();
  second.EndRecording();
  EXPECT_EQ(Audio(9001).substr(44), "abcd");
  EXPECT_EQ(Audio(9105).substr(44), "abcd");
  ASSERT_TRUE(client.WaitFor("Closed Audio File\r\n"));
  EXPECT_THAT(client.Text(), Not(HasSubstr("ORV09105")));
}

TEST_F(FeedAudio, LongestCutEndsARecordingAndTheNextCartGoesOn) {
  frmWireFeed& form = StartFeed("MaxCutLength=10\r\n");
  Record5SecondsOfSound(0);
  Tick(15, 80);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001") << "ten seconds are no more than ten";
  now_.seconds = kNoon + 15.5;
  EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo") == "9002"; }, kLimit));
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
}

TEST_F(FeedAudio, LongestCutOfZeroEndsEachOnTheMonitorsNextTick) {
  frmWireFeed& form = StartFeed("MaxCutLength=0\r\n");
  Record5SecondsOfSound(0);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  now_.seconds += 0.5;
  EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo") == "9002"; }, kLimit));
  now_.seconds += 0.5;
  EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo") == "9003"; }, kLimit));
}

TEST_F(FeedAudio, WithoutASoundCardNothingBeginsByItselfAndRecordMakesACartOfNoLength) {
  frmWireFeed& form = StartFeed({}, 0);
  Record5SecondsOfSound(0);
  EXPECT_EQ(Caption(form, "pnlTimeIn"), "");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  Click(form, "cmdRecord");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  Click(form, "cmdEject");
  EXPECT_EQ(Audio(9001).size(), 44u);
  EXPECT_EQ(Info(9001).AudioLength, 0.0F);
}

TEST_F(FeedAudio, DiskThatFillsShortensTheCut) {
  frmWireFeed& form = StartFeed();
  const platform::ScopedHook<std::uint64_t(const std::string&)> room(
      platform::FreeBytesHook(), [](const std::string&) { return std::uint64_t{32000} * 12; });
  Record5SecondsOfSound(0);
  EXPECT_TRUE(WaitUntil([&] { return Record(1).ThisItemMaxLength == 12; }, kLimit));
  Tick(17, 80);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  now_.seconds = kNoon + 17.5;
  EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo") == "9002"; }, kLimit));
}

TEST_F(FeedAudio, FullDiskStartsNothingAndSaysNothing) {
  frmWireFeed& form = StartFeed();
  const platform::ScopedHook<std::uint64_t(const std::string&)> room(
      platform::FreeBytesHook(), [](const std::string&) { return std::uint64_t{1000}; });
  Record5SecondsOfSound(0);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  EXPECT_EQ(Audio(9001), "");
}

TEST_F(FeedAudio, ClosingTheWindowFilesTheRecordingAndStopsTheStream) {
  frmWireFeed& form = StartFeed();
  Record5SecondsOfSound(0);
  Stream().Play(std::string(32000, 'a'));
  form.Close(controls::CloseCause::FormControlMenu);
  EXPECT_EQ(Audio(9001).size(), 32044u);
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_THAT(streams.calls, ElementsAre("StartStream", "EndOfCut", "StopStream"));
}

TEST_F(FeedAudio, EndWithoutARecordingDoesNothing) {
  frmWireFeed& form = StartFeed();
  EXPECT_EQ(form.EndRecording(), 0);
  EXPECT_THAT(streams.calls, Not(Contains("EndOfCut")));
  EXPECT_EQ(ReadWholeFile(config_).find("LastRecorded"), std::string::npos);
}

TEST_F(FeedAudio, BlankWindowTakesNothingIn) {
  const std::string missing = directory / "missing.ini";
  boxes.Expect("Warning : No Vorda information was found in the specifed news directory: " + missing);
  frmWireFeed& form = Start(1, missing);
  EXPECT_EQ(form.StartRecording(9001), 0);
  Click(form, "cmdRecord");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  EXPECT_EQ(Audio(9001), "");
}

// A cart that another program holds: each tick tries the next start, and each tells it.
TEST_F(FeedAudio, BoxInATickLetsTheNextTickIn) {
  frmWireFeed& form = StartFeed();
  WriteWholeFile(directory / "wall" + "/ORV09001.WAV", "held");
  const platform::ScopedFileFault held(platform::FileOperation::Remove, EACCES, 1, 2, "ORV09001.WAV");
  const std::string words = "Cannot delete " + directory.path() + "/wall/ORV09001.WAV";
  bool inner = false;
  boxes.Expect(words, platform::BoxAnswer::Ok,
               [&] { EXPECT_TRUE(WaitUntil([&] { return inner; }, kLimit)); });
  boxes.Expect(words, platform::BoxAnswer::Ok, [&] { inner = true; });
  Record5SecondsOfSound(0);
  EXPECT_TRUE(WaitUntil([&] { return Caption(form, "pnlCartNo") == "9001"; }, kLimit));
  Stream().Play("abcd");
  form.EndRecording();
  EXPECT_EQ(Audio(9001).substr(44), "abcd");
}

TEST_F(FeedAudio, BlockThatCannotBeWrittenIsToldAndTheRecordingGoesOn) {
  StartFeed();
  Record5SecondsOfSound(0);
  {
    const platform::ScopedFileFault full(platform::FileOperation::Write, ENOSPC, 1, 1, "ORV09001.WAV");
    boxes.Expect("Failed to write data during 'WriteAudioData'");
    Stream().Play("lost");
  }
  Stream().Play("kept");
  EXPECT_EQ(Audio(9001).substr(44), "kept");
}

}  // namespace
}  // namespace vorda::test
