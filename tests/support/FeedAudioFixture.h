// A feed's window that takes sound in: a stream, a wall and a clock of the test's own.

#pragma once

#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/Clock.h"
#include "support/FeedWindows.h"
#include "support/WallLists.h"

namespace vorda::test {

inline constexpr double kNoon = 43200;
inline constexpr int kLimit = 20000;  // ms

// Carts 9001 to 9010 are feed 1's; its thresholds are those of the text it is given.
class FeedAudioFixture : public FeedWindows {
 protected:
  FeedAudioFixture() {
    gAudioWallSettings = {};
    gAudioWallSettings.MaintainLegacyCartList = 1;
    InitBlankCartInfo();
    MakeWallLists(directory / "wall");
    for (AudioWallPart& part : gAudioWallParts) part = {directory / "wall", {}, false, 0};
    EXPECT_EQ(ConnectAudioWall(0, true), 0);
  }
  ~FeedAudioFixture() override {
    gAudioWallParts = {};
    gAudioWallSettings = {};
    gBlankCartInfo = {};
  }

  // `keys` stand ahead of the range and the thresholds: of a key that is there twice the first counts.
  static std::string AudioKeys(const std::string& keys) {
    return "[AudioCapture]\r\n" + keys +
           "IndexCartNumber=9000\r\nStartCartNumber=9001\r\nEndCartNumber=9010\r\nClearCartCount=2\r\n"
           "AudioActivationLevel=50\r\nAudioStartDuration=5\r\nAudioEndDuration=25\r\n"
           "[RecordAudioFormat]\r\nChannels=2\r\nSampleRate=8000\r\n";
  }
  frmWireFeed& StartFeed(const std::string& keys = {}, int soundCard = 1) {
    Record(1).SoundCard = static_cast<std::int16_t>(soundCard);
    Record(1).NoIndexProcessing = 1;
    config_ = WriteConfig(1, AudioKeys(keys));
    return Start(1, config_);
  }
  FakeStream& Stream() { return *streams.made.at(0); }
  template <class Control>
  static Control* Of(frmWireFeed& form, const char* name) {
    return form.lblConfigFile()->parentWidget()->findChild<Control*>(QString::fromLatin1(name));
  }
  static std::string Caption(frmWireFeed& form, const char* name) {
    return Of<controls::Panel>(form, name)->Caption();
  }
  static bool Enabled(frmWireFeed& form, const char* name) {
    return Of<QPushButton>(form, name)->isEnabled();
  }
  static void Click(frmWireFeed& form, const char* name) {
    QTest::mouseClick(Of<QPushButton>(form, name), Qt::LeftButton);
  }

  // Sets level and time, and waits until ticks have seen them.
  void Tick(double seconds, int level) {
    now_.seconds = kNoon + seconds;
    Stream().level = static_cast<std::int16_t>(level);
    const int until = Stream().asked + 3;
    ASSERT_TRUE(WaitUntil([&] { return Stream().asked >= until; }, kLimit));
  }
  // Sound from `seconds` on until the recording begins.
  void Record5SecondsOfSound(double seconds) {
    Tick(seconds, 80);
    Tick(seconds + 5, 80);
  }
  // Waits until the monitor of a recording has ticked so often. Of all that goes on while nothing begins or
  // ends it alone reads the clock without having asked for the level.
  void MonitorTicks(int count) {
    const int until = reads_ - Stream().asked + count;
    ASSERT_TRUE(WaitUntil([&] { return reads_ - Stream().asked >= until; }, kLimit));
  }
  std::string CartPath(std::int32_t cart, const char* extension = "WAV") const {
    return directory / "wall" + "/ORV0" + std::to_string(cart) + "." + extension;
  }
  std::string Audio(std::int32_t cart) const { return ReadWholeFile(CartPath(cart)); }
  static CartInfo Info(std::int32_t cart) {
    CartInfo info;
    EXPECT_EQ(ReadCartInfo(info, cart), 0);
    return info;
  }
  static std::string Title(std::int32_t cart) {
    std::string title;
    JoinCartTitle(Info(cart), title);
    return title.substr(0, title.find_last_not_of(' ') + 1);
  }
  // Makes a cart that holds a former recording, in its list.
  static void Fill(std::int32_t cart) {
    CartInfo full = gBlankCartInfo;
    full.AudioLength = full.PlayLength = 3;
    EXPECT_EQ(WriteCartInfo(full, cart, true), 0);
  }
  // The same that only its list knows. With individual files on, emptying it is told.
  static void FillInListOnly(std::int32_t cart) {
    Fill(cart);
    gAudioWallSettings.UseIndividualCartListFiles = 1;
  }
  static std::string NoOwnFile(std::int32_t cart) {
    return "There was a problem removing the information file for cart " + std::to_string(cart) +
           " and the error's description was reported as : \n\"File not found\" (53)";
  }

  platform::Moment now_{platform::DayNumber(2026, 11, 21), kNoon};
  int reads_ = 0;
  platform::ScopedClock clock_{[this] {
    ++reads_;
    return now_;
  }};
  std::string config_;
};

}  // namespace vorda::test
