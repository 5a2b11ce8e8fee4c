// Every key that a feed configuration file is read for by name: its section, its default and its member.

#include <gtest/gtest.h>

#include <array>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "config/FeedKeys.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

using R = WireFeedRecord;

// Set down by hand, so that a slip in the program's own table shows.
struct HandKey {
  const char* section;
  const char* name;
  FeedMember member;
  const char* byDefault;
};

const std::vector<HandKey> kTextData = {
    {"TextData", "Settings", &R::Settings, "9600,n,8,1"},
    {"TextData", "CutOverride", &R::CutOverride, ""},
    {"TextData", "HandShaking", &R::HandShaking, "0"},
    {"TextData", "TitleLineNumber", &R::TitleLineNumber, "0"},
    {"TextData", "TitleStart", &R::TitleStart, "0"},
    {"TextData", "TitleLength", &R::TitleLength, "0"},
    {"TextData", "AuthorStart", &R::AuthorStart, "0"},
    {"TextData", "AuthorLength", &R::AuthorLength, "0"},
    {"TextData", "DestinationStart", &R::DestinationStart, "0"},
    {"TextData", "DestinationLength", &R::DestinationLength, "0"},
    {"TextData", "CategoryStart", &R::CategoryStart, "0"},
    {"TextData", "CategoryLength", &R::CategoryLength, "0"},
    {"TextData", "PriorityStart", &R::PriorityStart, "0"},
    {"TextData", "PriorityLength", &R::PriorityLength, "0"},
    {"TextData", "CutNoStart", &R::CutNoStart, "0"},
    {"TextData", "CutNoLength", &R::CutNoLength, "0"},
    {"TextData", "CartNoStart", &R::CartNoStart, "0"},
    {"TextData", "CartNoLength", &R::CartNoLength, "0"},
    {"TextData", "CopyTimeStart", &R::CopyTimeStart, "0"},
    {"TextData", "CopyTimeLength", &R::CopyTimeLength, "0"},
    {"TextData", "AudioTimeStart", &R::AudioTimeStart, "0"},
    {"TextData", "AudioTimeLength", &R::AudioTimeLength, "0"},
    {"TextData", "TotalTimeStart", &R::TotalTimeStart, "0"},
    {"TextData", "TotalTimeLength", &R::TotalTimeLength, "0"},
    {"TextData", "AudioOutStart", &R::AudioOutStart, "0"},
    {"TextData", "AudioOutLength", &R::AudioOutLength, "0"},
    {"TextData", "StoryStart", &R::StoryStart, "0"},
    {"TextData", "StoryLength", &R::StoryLength, "0"},
    {"TextData", "HighLightColor", &R::HighLightColor, "255"},
    {"TextData", "HighLightBold", &R::HighLightBold, "-1"},
    {"TextData", "HighLightItalic", &R::HighLightItalic, "0"},
    {"TextData", "HighLightUnderLine", &R::HighLightUnderLine, "0"},
    {"TextData", "HighLightStrikeThru", &R::HighLightStrikeThru, "0"},
    {"TextData", "HighLightSize", &R::HighLightSize, "10"},
    {"TextData", "HighLightFont", &R::HighLightFont, "MS Sans Serif"},
    {"TextData", "DiscardFileSize", &R::DiscardFileSize, "70"},
};
const std::vector<HandKey> kAudioCapture = {
    {"AudioCapture", "IndexCartNumber", &R::IndexCartNumber, "9000"},
    {"AudioCapture", "StartCartNumber", &R::StartCartNumber, "9001"},
    {"AudioCapture", "EndCartNumber", &R::EndCartNumber, "9099"},
    {"AudioCapture", "LastRecordedCartNumber", &R::LastRecordedCartNumber, "9000"},
    {"AudioCapture", "ClearCartCount", &R::ClearCartCount, "10"},
    {"AudioCapture", "AudioActivationLevel", &R::AudioActivationLevel, "99"},
    {"AudioCapture", "AudioStartDuration", &R::AudioStartDuration, "5"},
    {"AudioCapture", "AudioEndDuration", &R::AudioEndDuration, "25"},
    {"AudioCapture", "MaxCutLength", &R::MaxCutLength, "3600"},
};
const std::vector<HandKey> kStoryDelimiters = {
    {"StoryDelimiters", "StartChar", &R::StartChar, "1"},
    {"StoryDelimiters", "EndChar", &R::EndChar, "4"},
    {"StoryDelimiters", "HeaderEndChar", &R::HeaderEndChar, "0"},
    {"StoryDelimiters", "TailStartChar", &R::TailStartChar, "0"},
};

std::vector<HandKey> AllKeys() {
  std::vector<HandKey> all;
  for (const auto* keys : {&kTextData, &kAudioCapture, &kStoryDelimiters})
    all.insert(all.end(), keys->begin(), keys->end());
  return all;
}

std::string TextOf(const std::string& text) {
  return text;
}
template <class Number>
std::string TextOf(Number number) {
  return std::to_string(number);
}
std::string ValueOf(const WireFeedRecord& record, const FeedMember& member) {
  return std::visit([&record](auto pointer) { return TextOf(record.*pointer); }, member);
}

void ExpectTable(std::span<const FeedKey> table, const std::vector<HandKey>& byHand) {
  ASSERT_EQ(table.size(), byHand.size());
  for (std::size_t i = 0; i < byHand.size(); ++i) {
    EXPECT_STREQ(table[i].section, byHand[i].section);
    EXPECT_STREQ(table[i].name, byHand[i].name);
    EXPECT_EQ(table[i].member, byHand[i].member) << byHand[i].name;
  }
}

class FeedKeysTest : public ::testing::Test {
 protected:
  FeedKeysTest() { gWireFeeds = {}; }
  ~FeedKeysTest() override { gWireFeeds = {}; }

  const WireFeedRecord& Load(const std::string& text) {
    test::WriteWholeFile(directory_ / "vorda.ini", text);
    EXPECT_EQ(ReadFeedConfig(1, directory_ / "vorda.ini", false), directory_ / "vorda.ini");
    return gWireFeeds[0];
  }

  test::FakeBoxes boxes_;
  test::TempDirectory directory_;
};

TEST_F(FeedKeysTest, TablesHoldTheKeysInTheirOrder) {
  ExpectTable(TextDataKeys(), kTextData);
  ExpectTable(AudioCaptureKeys(), kAudioCapture);
  ExpectTable(StoryDelimiterKeys(), kStoryDelimiters);
}

TEST_F(FeedKeysTest, FileWithoutSectionsGivesEveryDefault) {
  const WireFeedRecord& feed = Load("; nothing\r\n");
  for (const HandKey& key : AllKeys()) EXPECT_EQ(ValueOf(feed, key.member), key.byDefault) << key.name;
}

TEST_F(FeedKeysTest, EveryKeyIsReadIntoItsOwnMember) {
  std::string text;
  int value = 1000;
  std::string section;
  for (const HandKey& key : AllKeys()) {
    // The first of several sections of a name counts, so each has one head.
    if (section != key.section) text += "[" + (section = key.section) + "]\r\n";
    text += std::string(key.name) + "=" + std::to_string(++value) + "\r\n";
  }
  const WireFeedRecord& feed = Load(text);
  value = 1000;
  for (const HandKey& key : AllKeys())
    EXPECT_EQ(ValueOf(feed, key.member), std::to_string(++value)) << key.name;
}

TEST_F(FeedKeysTest, NamesMatchWithoutRegardToCase) {
  const WireFeedRecord& feed = Load("[textdata]\r\nHighLightUnderline=-1\r\nSETTINGS=2400,E,7,1\r\n");
  EXPECT_EQ(feed.HighLightUnderLine, -1);
  EXPECT_EQ(feed.Settings, "2400,E,7,1");
}

TEST_F(FeedKeysTest, TextThatHasGoneEmptyIsStored) {
  Load("[TextData]\r\nSettings=2400,e,7,1\r\nHighLightFont=Arial\r\nCutOverride=Cut\r\n");
  const WireFeedRecord& feed = Load("[TextData]\r\nSettings=\r\nHighLightFont=\r\nCutOverride=\r\n");
  EXPECT_EQ(feed.Settings, "");
  EXPECT_EQ(feed.HighLightFont, "");
  EXPECT_EQ(feed.CutOverride, "");
}

TEST_F(FeedKeysTest, NumberIsTakenFromItsLeadingDigits) {
  const WireFeedRecord& feed =
      Load("[AudioCapture]\r\nMaxCutLength=12.5\r\nClearCartCount=-3x\r\nEndCartNumber=none\r\n");
  EXPECT_EQ(feed.MaxCutLength, 12);
  EXPECT_EQ(feed.ClearCartCount, -3);
  EXPECT_EQ(feed.EndCartNumber, 9099);
}

TEST_F(FeedKeysTest, NothingIsRangeChecked) {
  const WireFeedRecord& feed = Load(
      "[AudioCapture]\r\nStartCartNumber=123456789\r\nAudioActivationLevel=-32768\r\n"
      "[StoryDelimiters]\r\nStartChar=32767\r\nEndChar=-1\r\n");
  EXPECT_EQ(feed.StartCartNumber, 123456789);
  EXPECT_EQ(feed.AudioActivationLevel, -32768);
  EXPECT_EQ(feed.StartChar, 32767);
  EXPECT_EQ(feed.EndChar, -1);
}

TEST_F(FeedKeysTest, RemoveCharactersAreNumberedFromOne) {
  EXPECT_EQ(Load(";\r\n").RemoveChar, (std::array<std::int16_t, 5>{}));
  const WireFeedRecord& feed = Load(
      "[TextData]\r\nRemoveChar0=9\r\nRemoveChar1=11\r\nRemoveChar2=12\r\nRemoveChar3=13\r\n"
      "RemoveChar4=14\r\nRemoveChar5=15\r\nRemoveChar6=16\r\n");
  EXPECT_EQ(feed.RemoveChar, (std::array<std::int16_t, 5>{11, 12, 13, 14, 15}));
}

TEST_F(FeedKeysTest, LastRecordedCartIsOneBelowTheFirstByDefault) {
  EXPECT_EQ(Load(";\r\n").LastRecordedCartNumber, 9000);
  EXPECT_EQ(Load("[AudioCapture]\r\nStartCartNumber=5000\r\n").LastRecordedCartNumber, 4999);
  EXPECT_EQ(
      Load("[AudioCapture]\r\nLastRecordedCartNumber=7\r\nStartCartNumber=5000\r\n").LastRecordedCartNumber,
      7);
  EXPECT_EQ(
      Load("[AudioCapture]\r\nLastRecordedCartNumber=\r\nStartCartNumber=5000\r\n").LastRecordedCartNumber,
      4999);
}

TEST_F(FeedKeysTest, ExpireAudioIsNeverRead) {
  EXPECT_EQ(Load("[General]\r\nExpireAudio=1\r\n[AudioCapture]\r\nExpireAudio=1\r\n").ExpireAudio, 0);
}

TEST_F(FeedKeysTest, TextIsCutAt254Characters) {
  const WireFeedRecord& feed = Load("[General]\r\nName=" + std::string(300, 'n') +
                                    "\r\n[TextData]\r\nCutOverride=" + std::string(254, 'c') + "\r\n");
  EXPECT_EQ(feed.Name, std::string(254, 'n'));
  EXPECT_EQ(feed.CutOverride, std::string(254, 'c'));
}

}  // namespace
}  // namespace vorda
