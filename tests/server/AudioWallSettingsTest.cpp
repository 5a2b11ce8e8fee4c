// The audio wall's settings: every key with its section, its default and the numbers that it holds.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/MessageBox.h"
#include "platform/ScopedVariable.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"
#include "support/WallLists.h"

namespace vorda {
namespace {

using S = AudioWallSettings;

constexpr auto kButtonFace = static_cast<std::int32_t>(0x8000000F);
constexpr auto kButtonText = static_cast<std::int32_t>(0x80000012);

struct Key {
  std::string section;
  std::string name;
  std::int32_t defaultValue;
  bool isShort;
  std::function<std::int32_t()> value;
};

Key Setting(const char* section, const char* name, std::int32_t defaultValue, std::int16_t S::*member) {
  return {section, name, defaultValue, true, [member] { return gAudioWallSettings.*member; }};
}
Key Setting(const char* section, const char* name, std::int32_t defaultValue, std::int32_t S::*member) {
  return {section, name, defaultValue, false, [member] { return gAudioWallSettings.*member; }};
}

std::vector<Key> PlayerKeys() {
  constexpr std::int32_t kForeColors[] = {255, 65280, 0xFFA0A0, 0xFFFFFF, 65535, 0xFFFFFF};
  std::vector<Key> keys;
  for (std::size_t i = 0; i < 6; ++i) {
    const std::string number = std::to_string(i + 1);
    const CartPlayerStatus& player = gCartPlayerStatus[i];
    keys.push_back(
        {"CartPlayers", "PlayerStatus" + number, 0, true, [&player] { return player.PlayerStatus; }});
    keys.push_back({"CartPlayers", "BackColor" + number, 0, false, [&player] { return player.BackColor; }});
    keys.push_back(
        {"CartPlayers", "ForeColor" + number, kForeColors[i], false, [&player] { return player.ForeColor; }});
  }
  return keys;
}

// All keys of whole numbers, but for Record, which is cut.
std::vector<Key> IntegerKeys() {
  std::vector<Key> keys = PlayerKeys();
  for (Key& key : std::vector<Key>{
           Setting("CartPlayers", "Instant", 1, &S::Instant),
           Setting("CartPlayers", "BasicFireButtons", 0, &S::BasicFireButtons),
           Setting("Carts", "KeyboardClose", 0, &S::KeyboardClose),
           Setting("Carts", "MouseClose", 1, &S::MouseClose),
           Setting("Audio", "MaintainLegacyCartList", 1, &S::MaintainLegacyCartList),
           Setting("Audio", "UseIndividualCartListFiles", 0, &S::UseIndividualCartListFiles),
           Setting("Audio", "SelectedCartMode", 1, &S::SelectedCartMode),
           Setting("Audio", "SelectedCartColor", 0xC00000, &S::SelectedCartColor),
           Setting("Audio", "SelectedCartColorText", 0xFFFFFF, &S::SelectedCartColorText),
           Setting("Audio", "CartPlayedRecentColor", 255, &S::CartPlayedRecentColor),
           Setting("Audio", "ShowTimesBarInColor", 1, &S::ShowTimesBarInColor),
           Setting("Audio", "TimesBarColor", 0xC00000, &S::TimesBarColor),
           Setting("Audio", "TimesBarColorText", 0xFFFFFF, &S::TimesBarColorText),
           Setting("Audio", "CartNumberColor", 255, &S::CartNumberColor),
           Setting("Audio", "EmptyCartNumberColor", 0x9A9A9A, &S::EmptyCartNumberColor),
           Setting("Audio", "EmptyCartBackColor", kButtonFace, &S::EmptyCartBackColor),
           Setting("Audio", "EmptyCartForeColor", kButtonText, &S::EmptyCartForeColor),
           Setting("Audio", "CartFontBold", 0, &S::CartFontBold),
           Setting("Audio", "CartFontSize", 8, &S::CartFontSize),
           Setting("Audio", "DisplayCartTimeHours", 0, &S::DisplayCartTimeHours),
           Setting("Audio", "GeneralVolume", 80, &S::GeneralVolume),
           Setting("Audio", "SweptVolume", 100, &S::SweptVolume),
           Setting("Audio", "PlayCartsInstantly", 1, &S::PlayCartsInstantly),
           Setting("Audio", "ForceRecordPlayerLocking", 0, &S::ForceRecordPlayerLocking),
           Setting("Audio", "DisplayRecordingInLastPlayer", 0, &S::DisplayRecordingInLastPlayer),
           Setting("Audio", "AllowAudioFileLinking", 0, &S::AllowAudioFileLinking),
           Setting("Carts", "HighlightPlayedCarts", 0, &S::HighlightPlayedCarts),
           Setting("Carts", "HighlightPLayedCartsInterval", 0, &S::HighlightPLayedCartsInterval),
       })
    keys.push_back(std::move(key));
  return keys;
}

class AudioWallSettingsTest : public ::testing::Test {
 protected:
  AudioWallSettingsTest() { Forget(); }
  ~AudioWallSettingsTest() override { Forget(); }

  static void Forget() {
    gAudioWallSettings = {};
    gCartPlayerStatus = {};
    gAudioWallParts = {};
    gAudioEditor.clear();
    gBlankCartInfo = {};
    gSelectedPlayerCount = gPlayerCount = gUsablePlayerCount = 0;
  }
  void Read(const std::string& text) {
    test::WriteWholeFile(file_, text);
    ReadAudioWallSettings(file_);
  }
  void ReadKey(const std::string& section, const std::string& name, const std::string& value) {
    Read("[" + section + "]\r\n" + name + "=" + value + "\r\n");
  }
  void ExpectStop(const std::string& section, const std::string& name, const std::string& value) {
    SCOPED_TRACE(name + "=" + value);
    EXPECT_EXIT(
        {
          const platform::ScopedHook toStandardError(platform::MessageBoxHook(),
                                                     [](const platform::BoxRequest& request) {
                                                       std::fputs(request.text.c_str(), stderr);
                                                       return platform::BoxAnswer::Ok;
                                                     });
          ReadKey(section, name, value);
        },
        ::testing::ExitedWithCode(1), "^Run-time error '6':\n\nOverflow$");
  }
  void HaveSoundInputs(int count) {
    std::string text = "[WaveIn]\r\n";
    for (int i = 0; i < count; ++i) text += std::to_string(i + 1) + "=input\r\n";
    test::WriteWholeFile(home_ / "platform.ini", text);
  }

  test::FakeBoxes boxes_;
  test::TempDirectory home_;
  test::ScopedVariable homeVariable_{"VORDA_HOME", home_.path().c_str()};
  const std::string file_ = home_ / "server.ini";
};

TEST_F(AudioWallSettingsTest, MissingFileGivesEveryKeyItsDefault) {
  ReadAudioWallSettings(home_ / "none.ini");
  for (const Key& key : IntegerKeys()) EXPECT_EQ(key.value(), key.defaultValue) << key.name;
  const S& settings = gAudioWallSettings;
  EXPECT_EQ(settings.CartFontName, "MS Sans Serif");
  EXPECT_EQ(settings.FadeFire, 0.4F);
  EXPECT_EQ(settings.KHz, 44100);
  EXPECT_EQ(settings.Channels, 1);
  EXPECT_EQ(settings.Record, 0);
  EXPECT_EQ(gAudioEditor, "");
  for (const AudioWallPart& part : gAudioWallParts) EXPECT_EQ(part.Location, "");
}

TEST_F(AudioWallSettingsTest, EachKeyIsReadFromItsSectionIntoItsFieldAlone) {
  const std::vector<Key> keys = IntegerKeys();
  for (const Key& key : keys) {
    ReadKey(key.section, key.name, "12345");
    for (const Key& other : keys)
      EXPECT_EQ(other.value(), other.name == key.name ? 12345 : other.defaultValue)
          << key.name << " in the file, " << other.name;
  }
}

TEST_F(AudioWallSettingsTest, KeyInAnotherSectionCountsForNothing) {
  std::string text;
  for (const char* section : {"CartPlayers", "Carts", "Audio", "FileLocations"}) {
    text += "[" + std::string(section) + "]\r\n";
    for (const Key& key : IntegerKeys())
      if (key.section != section) text += key.name + "=7\r\n";
    if (section != std::string("FileLocations")) text += "Carts1=x\r\nSampleEditor=x\r\nAudioEditor=x\r\n";
    if (section != std::string("Audio")) text += "CartFontName=x\r\nFadeFire=9\r\nKHz=9\r\nChannels=9\r\n";
    if (section != std::string("CartPlayers")) text += "Record=5\r\n";
  }
  Read(text);
  for (const Key& key : IntegerKeys()) EXPECT_EQ(key.value(), key.defaultValue) << key.name;
  EXPECT_EQ(gAudioWallSettings.CartFontName, "MS Sans Serif");
  EXPECT_EQ(gAudioWallSettings.FadeFire, 0.4F);
  EXPECT_EQ(gAudioWallSettings.KHz, 44100);
  EXPECT_EQ(gAudioWallSettings.Channels, 1);
  EXPECT_EQ(gAudioWallSettings.Record, 0);
  EXPECT_EQ(gAudioWallParts[0].Location, "");
  EXPECT_EQ(gAudioEditor, "");
}

TEST_F(AudioWallSettingsTest, NumberIsItsLeadingDigitsAndTheDefaultWithoutAny) {
  for (const Key& key : IntegerKeys()) {
    ReadKey(key.section, key.name, " -12 of them");
    EXPECT_EQ(key.value(), -12) << key.name;
    for (const char* none : {"", "many", "&HFF", "+3"}) {
      ReadKey(key.section, key.name, none);
      EXPECT_EQ(key.value(), key.defaultValue) << key.name << "=" << none;
    }
  }
}

TEST_F(AudioWallSettingsTest, EachKeyHoldsAllNumbersOfItsSize) {
  for (const Key& key : IntegerKeys()) {
    const std::int32_t most = key.isShort ? 32767 : std::numeric_limits<std::int32_t>::max();
    for (const std::int32_t value : {most, -most - 1}) {
      ReadKey(key.section, key.name, std::to_string(value));
      EXPECT_EQ(key.value(), value) << key.name;
    }
  }
}

TEST_F(AudioWallSettingsTest, NumberTooLargeForSixteenBitsStopsTheProgram) {
  for (const Key& key : IntegerKeys())
    if (key.isShort) ExpectStop(key.section, key.name, "32768");
  ExpectStop("CartPlayers", "Record", "32768");
  ExpectStop("Audio", "CartFontSize", "-32769");
  ExpectStop("CartPlayers", "PlayerStatus6", "-32769");
}

TEST_F(AudioWallSettingsTest, NumberTooLargeForThirtyTwoBitsGoesRound) {
  for (const Key& key : IntegerKeys()) {
    if (key.isShort) continue;
    ReadKey(key.section, key.name, "4294967294");
    EXPECT_EQ(key.value(), -2) << key.name;
  }
  // What has gone round may fit the sixteen bits again.
  ReadKey("Audio", "CartFontSize", "4294967294");
  EXPECT_EQ(gAudioWallSettings.CartFontSize, -2);
}

TEST_F(AudioWallSettingsTest, RecordIsTheNumberOfSoundInputsAndSixAtMost) {
  Read("");
  EXPECT_EQ(gAudioWallSettings.Record, 0);
  HaveSoundInputs(4);
  Read("");
  EXPECT_EQ(gAudioWallSettings.Record, 4);
  HaveSoundInputs(7);
  Read("");
  EXPECT_EQ(gAudioWallSettings.Record, 6);
}

TEST_F(AudioWallSettingsTest, RecordAboveSixIsHeldAsSix) {
  HaveSoundInputs(4);
  for (const auto& [text, held] : std::vector<std::pair<const char*, std::int16_t>>{
           {"9", 6}, {"7", 6}, {"6", 6}, {"5", 5}, {"0", 0}, {"-1", -1}, {"32767", 6}, {"none", 4}}) {
    ReadKey("CartPlayers", "Record", text);
    EXPECT_EQ(gAudioWallSettings.Record, held) << text;
  }
}

TEST_F(AudioWallSettingsTest, NumbersHeldAsTextAreReadAsFarAsTheyAreNumbers) {
  struct Row {
    const char* text;
    float fadeFire;
    std::int32_t whole;
  };
  for (const auto& [text, fadeFire, whole] : std::vector<Row>{{"2", 2, 2},
                                                              {" 12 Hz", 12, 12},
                                                              {"\"3\"", 3, 3},
                                                              {"letters", 0, 0},
                                                              {"", 0, 0},
                                                              {"- 1.25x", -1.25, -1},
                                                              {"0.4", 0.4F, 0},
                                                              {"1e2", 100, 100},
                                                              {"2.5", 2.5F, 2},
                                                              {"3.5", 3.5F, 4},
                                                              {".75", .75F, 1},
                                                              {"-32768", -32768, -32768},
                                                              {"32767", 32767, 32767}}) {
    const std::string value = std::string(text) + "\r\n";
    Read("[Audio]\r\nFadeFire=" + value + "KHz=" + value + "Channels=" + value);
    EXPECT_EQ(gAudioWallSettings.FadeFire, fadeFire) << text;
    EXPECT_EQ(gAudioWallSettings.KHz, whole) << text;
    EXPECT_EQ(gAudioWallSettings.Channels, whole) << text;
  }
}

TEST_F(AudioWallSettingsTest, TextBeyondItsNumberStopsTheProgram) {
  ReadKey("Audio", "KHz", "2147483647");
  EXPECT_EQ(gAudioWallSettings.KHz, 2147483647);
  ReadKey("Audio", "KHz", "-2147483648");
  EXPECT_EQ(gAudioWallSettings.KHz, std::numeric_limits<std::int32_t>::min());
  ReadKey("Audio", "FadeFire", "3.4e38");
  EXPECT_EQ(gAudioWallSettings.FadeFire, 3.4e38F);
  ExpectStop("Audio", "KHz", "2147483648");
  ExpectStop("Audio", "Channels", "32768");
  ExpectStop("Audio", "Channels", "-32769");
  ExpectStop("Audio", "FadeFire", "1e39");
  ExpectStop("Audio", "FadeFire", "-1e400");
}

TEST_F(AudioWallSettingsTest, FontNameIsATextOfAtMost254Bytes) {
  ReadKey("Audio", "CartFontName", "  Arial Narrow ");
  EXPECT_EQ(gAudioWallSettings.CartFontName, "Arial Narrow");
  ReadKey("Audio", "CartFontName", "");
  EXPECT_EQ(gAudioWallSettings.CartFontName, "");
  ReadKey("Audio", "CartFontName", std::string(300, 'x'));
  EXPECT_EQ(gAudioWallSettings.CartFontName, std::string(254, 'x'));
}

TEST_F(AudioWallSettingsTest, LocationsAreTakenAsTheyStand) {
  std::string text = "[FileLocations]\r\n";
  for (int i = 1; i <= 12; ++i)
    text += "Carts" + std::to_string(i) + "=D:\\Audio" + std::to_string(i) + "\\\r\n";
  Read(text);
  for (std::size_t i = 0; i < 11; ++i)
    EXPECT_EQ(gAudioWallParts[i].Location, "D:\\Audio" + std::to_string(i + 1) + "\\");
  ReadKey("FileLocations", "Carts2", "/srv/audio");
  EXPECT_EQ(gAudioWallParts[0].Location, "") << "a location that is gone";
  EXPECT_EQ(gAudioWallParts[1].Location, "/srv/audio");
}

TEST_F(AudioWallSettingsTest, LocationsTouchNothingElseOfAPart) {
  gAudioWallParts[2] = {"before", "/srv/Carts3.lst", true, 77};
  ReadKey("FileLocations", "Carts3", "/srv/audio");
  EXPECT_EQ(gAudioWallParts[2].ListFile, "/srv/Carts3.lst");
  EXPECT_TRUE(gAudioWallParts[2].Connected);
  EXPECT_EQ(gAudioWallParts[2].ListHandle, 77);
}

TEST_F(AudioWallSettingsTest, OlderEditorKeyIsTheFallbackOfTheNewer) {
  ReadKey("FileLocations", "SampleEditor", "/opt/old");
  EXPECT_EQ(gAudioEditor, "/opt/old");
  gAudioEditor.clear();
  ReadKey("FileLocations", "AudioEditor", "/opt/new");
  EXPECT_EQ(gAudioEditor, "/opt/new");
  Read("[FileLocations]\r\nAudioEditor=/opt/new\r\nSampleEditor=/opt/old\r\n");
  EXPECT_EQ(gAudioEditor, "/opt/new");
}

TEST_F(AudioWallSettingsTest, EditorThatWasKnownStaysWithoutKeys) {
  gAudioEditor = "/opt/before";
  Read("");
  EXPECT_EQ(gAudioEditor, "/opt/before");
}

TEST_F(AudioWallSettingsTest, NewerEditorKeyWithoutValueMeansNone) {
  Read("[FileLocations]\r\nSampleEditor=/opt/old\r\nAudioEditor=\r\n");
  EXPECT_EQ(gAudioEditor, "");
}

TEST_F(AudioWallSettingsTest, PlayersOfStatusOneGetTheirTurn) {
  Read(
      "[CartPlayers]\r\nPlayerStatus1=2\r\nPlayerStatus2=1\r\nPlayerStatus4=-1\r\nPlayerStatus5=1\r\n"
      "PlayerStatus6=1\r\nPlayerStatus7=1\r\n");
  EXPECT_EQ(gSelectedPlayerCount, 3);
  EXPECT_EQ(gPlayerCount, 5);
  EXPECT_EQ(gUsablePlayerCount, 5);
  std::vector<int> turns;
  for (const CartPlayerStatus& player : gCartPlayerStatus) turns.push_back(player.Sequence);
  EXPECT_EQ(turns, (std::vector<int>{0, 1, 0, 0, 2, 3}));
}

TEST_F(AudioWallSettingsTest, CountsOfPlayersBeginAnewWithEachRead) {
  Read("[CartPlayers]\r\nPlayerStatus1=1\r\nPlayerStatus2=2\r\n");
  Read("[CartPlayers]\r\nPlayerStatus1=1\r\nPlayerStatus2=2\r\n");
  EXPECT_EQ(gSelectedPlayerCount, 1);
  EXPECT_EQ(gPlayerCount, 2);
  EXPECT_EQ(gUsablePlayerCount, 2);
  EXPECT_EQ(gCartPlayerStatus[0].Sequence, 1);
  Read("");
  EXPECT_EQ(gSelectedPlayerCount, 0);
  EXPECT_EQ(gPlayerCount, 0);
  EXPECT_EQ(gUsablePlayerCount, 0);
}

TEST_F(AudioWallSettingsTest, ColoursOfEmptyCartsReachTheBlankRecord) {
  Read("");
  EXPECT_EQ(gBlankCartInfo.BackColor, kButtonFace);
  EXPECT_EQ(gBlankCartInfo.ForeColor, kButtonText);
  Read("[Audio]\r\nEmptyCartBackColor=16777215\r\nEmptyCartForeColor=-2147483640\r\n");
  EXPECT_EQ(gBlankCartInfo.BackColor, 0xFFFFFF);
  EXPECT_EQ(gBlankCartInfo.ForeColor, static_cast<std::int32_t>(0x80000008));
}

TEST_F(AudioWallSettingsTest, BlankRecordIsMadeAnewWithTheSettings) {
  gBlankCartInfo.Title1.fill('x');
  gBlankCartInfo.AudioLength = 5;
  gBlankCartInfo.PlayEnd = 5;
  gBlankCartInfo.ReservedTail.fill('x');
  Read("");
  const CartRecord record = PackCartInfo(gBlankCartInfo);
  EXPECT_EQ(std::string(record.data(), record.size()), test::BlankCartRecord());
}

}  // namespace
}  // namespace vorda
