// The load of a feed configuration file as a whole: found or not, what is shown, what is derived.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <ostream>
#include <string>

#include "config/Vorda_Common_API.h"
#include "platform/Desktop.h"
#include "platform/FileFault.h"
#include "platform/Settings.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

using platform::BoxAnswer;
using platform::BoxIcon;
using platform::Pointer;

class FeedConfigTest : public ::testing::Test {
 protected:
  FeedConfigTest() { gWireFeeds = {}; }
  ~FeedConfigTest() override { gWireFeeds = {}; }

  std::string Write(const std::string& text) {
    test::WriteWholeFile(file_, text);
    return file_;
  }
  const WireFeedRecord& Load(const std::string& text) {
    EXPECT_EQ(ReadFeedConfig(1, Write(text), false), file_);
    return gWireFeeds[0];
  }
  static std::string Warning(const std::string& path) {
    return "Warning : No Vorda information was found in the specifed news directory: " + path;
  }

  test::FakeBoxes boxes_;
  test::TempDirectory directory_;
  std::string file_ = directory_ / "vorda.ini";
};

TEST_F(FeedConfigTest, FileThatIsThereGivesItsPath) {
  const WireFeedRecord& feed = Load("[General]\r\nName=Sport\r\n");
  EXPECT_EQ(feed.NewsPath, directory_.path());
  EXPECT_EQ(feed.ConfigFile, "vorda.ini");
  EXPECT_EQ(feed.FullConfigFile, file_);
  EXPECT_EQ(feed.Name, "Sport");
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(FeedConfigTest, EachFeedHasItsRecord) {
  Write("[General]\r\nName=Fourth\r\n");
  EXPECT_EQ(ReadFeedConfig(4, file_, false), file_);
  EXPECT_EQ(gWireFeeds[3].Name, "Fourth");
  EXPECT_EQ(gWireFeeds[0].Name, "");
}

TEST_F(FeedConfigTest, DriveTextIsTakenApartAndNotTranslated) {
  platform::Settings settings;
  settings.drives['D'] = directory_.path();
  const platform::ScopedSettings scoped(settings);
  std::filesystem::create_directory(directory_ / "news");
  test::WriteWholeFile(directory_ / "news/vorda.ini", "[General]\r\nName=Drive\r\n");
  EXPECT_EQ(ReadFeedConfig(1, "D:\\NEWS\\vorda.ini", false), "D:\\NEWS\\vorda.ini");
  EXPECT_EQ(gWireFeeds[0].NewsPath, "D:\\NEWS");
  EXPECT_EQ(gWireFeeds[0].ConfigFile, "vorda.ini");
  EXPECT_EQ(gWireFeeds[0].FullConfigFile, "D:\\NEWS\\vorda.ini");
  EXPECT_EQ(gWireFeeds[0].Name, "Drive");
}

TEST_F(FeedConfigTest, BlanksRoundThePathGoFromTheResultAndStayInTheRecord) {
  Write("[General]\r\nName=Blank\r\n");
  EXPECT_EQ(ReadFeedConfig(1, file_ + "  ", false), file_);
  EXPECT_EQ(gWireFeeds[0].FullConfigFile, file_ + "  ");
  EXPECT_EQ(gWireFeeds[0].ConfigFile, "vorda.ini  ");
  EXPECT_EQ(gWireFeeds[0].Name, "Blank");
}

TEST_F(FeedConfigTest, NoNumberOrNoPathDoesNothingWithoutAWord) {
  Write("[General]\r\nName=Sport\r\n");
  EXPECT_EQ(ReadFeedConfig(0, file_, true), "");
  EXPECT_EQ(ReadFeedConfig(1, "", true), "");
  EXPECT_EQ(gWireFeeds[0].Name, "");
  EXPECT_EQ(gWireFeeds[0].Settings, "");
}

TEST_F(FeedConfigTest, MissingFileWarnsAndStops) {
  boxes_.Expect(Warning(file_), BoxAnswer::Ok,
                [] { EXPECT_EQ(platform::CurrentPointer(), Pointer::Default); });
  gWireFeeds[0].NewsPath = "before";
  EXPECT_EQ(ReadFeedConfig(1, file_, false), "");
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Critical);
  EXPECT_EQ(gWireFeeds[0].NewsPath, "before");
  EXPECT_EQ(gWireFeeds[0].Settings, "");
}

TEST_F(FeedConfigTest, EmptyFileIsTreatedAsMissing) {
  Write("");
  boxes_.Expect(Warning(file_));
  EXPECT_EQ(ReadFeedConfig(1, file_, false), "");
  EXPECT_EQ(gWireFeeds[0].Settings, "");
}

TEST_F(FeedConfigTest, UnreadableFileIsTreatedAsMissing) {
  Write("[General]\r\nName=Sport\r\n");
  gWireFeeds[0].NewsPath = "before";
  {
    const platform::ScopedFileFault fault(platform::FileOperation::Stat, EACCES, 1, 1000, "vorda.ini");
    boxes_.Expect(Warning(file_));
    EXPECT_EQ(ReadFeedConfig(1, file_, false), "");
    EXPECT_GT(fault.calls(), 0);
  }
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Critical);
  EXPECT_EQ(gWireFeeds[0].NewsPath, "before");
  EXPECT_EQ(gWireFeeds[0].Name, "");
  EXPECT_EQ(ReadFeedConfig(1, file_, false), file_);
}

TEST_F(FeedConfigTest, WarningShowsThePathAsGiven) {
  boxes_.Expect(Warning(" " + file_ + " "));
  EXPECT_EQ(ReadFeedConfig(1, " " + file_ + " ", false), "");
}

TEST_F(FeedConfigTest, LoadAnywayWarnsThenLoadsTheDefaultsAndStillAnswersNothing) {
  boxes_.Expect(Warning(file_));
  gWireFeeds[0].EndChar = 3;
  EXPECT_EQ(ReadFeedConfig(1, file_, true), "");
  EXPECT_EQ(gWireFeeds[0].NewsPath, directory_.path());
  EXPECT_EQ(gWireFeeds[0].FullConfigFile, file_);
  EXPECT_EQ(gWireFeeds[0].EndChar, 4);
  EXPECT_EQ(gWireFeeds[0].Settings, "9600,n,8,1");
  EXPECT_EQ(gWireFeeds[0].LastRecordedCartNumber, 9000);
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(FeedConfigTest, ReloadReachesTheRecordAndLeavesTheRunTimesFieldsAlone) {
  gWireFeeds[0].StoryFileHandle = 7;
  gWireFeeds[0].StoryFileName = "open";
  gWireFeeds[0].ThisItemMaxLength = 60;
  gWireFeeds[0].SoundCard = 2;
  gWireFeeds[0].CapturePort = 3;
  Load("[StoryDelimiters]\r\nEndChar=3\r\n");
  EXPECT_EQ(Load("[StoryDelimiters]\r\nEndChar=5\r\n").EndChar, 5);
  EXPECT_EQ(gWireFeeds[0].StoryFileHandle, 7);
  EXPECT_EQ(gWireFeeds[0].StoryFileName, "open");
  EXPECT_EQ(gWireFeeds[0].ThisItemMaxLength, 60);
  EXPECT_EQ(gWireFeeds[0].SoundCard, 2);
  EXPECT_EQ(gWireFeeds[0].CapturePort, 3);
}

TEST_F(FeedConfigTest, RecordFormatIsPcmMonoAtItsDefaults) {
  const platform::WaveFormat expected{1, 1, 44100, 88200, 2, 16, 0, 0};
  EXPECT_EQ(Load(";\r\n").RecordFormat, expected);
}

TEST_F(FeedConfigTest, RecordFormatFollowsFromChannelsAndRate) {
  const platform::WaveFormat expected{1, 2, 22050, 88200, 4, 16, 0, 0};
  EXPECT_EQ(Load("[RecordAudioFormat]\r\nChannels=2\r\nSampleRate=22050\r\nFormat=1\r\n").RecordFormat,
            expected);
}

TEST_F(FeedConfigTest, AnyOtherFormatBecomesPcm) {
  const platform::WaveFormat expected{1, 1, 8000, 16000, 2, 16, 0, 0};
  EXPECT_EQ(Load("[RecordAudioFormat]\r\nSampleRate=8000\r\nFormat=2\r\n").RecordFormat, expected);
}

TEST_F(FeedConfigTest, FormatThatCannotBeHadIsReportedAndTheLoadGoesOn) {
  boxes_.Expect("Cannot calculate wave format requested, acmFormatSuggest has returned error code : 512",
                BoxAnswer::Ok, [] { EXPECT_EQ(platform::CurrentPointer(), Pointer::Hourglass); });
  const WireFeedRecord& feed = Load(
      "[RecordAudioFormat]\r\nChannels=3\r\nSampleRate=48000\r\nFormat=85\r\n[StoryDelimiters]\r\nEndChar="
      "3\r\n");
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  const platform::WaveFormat expected{85, 3, 48000, 0, 0, 16, 0, 0};
  EXPECT_EQ(feed.RecordFormat, expected);
  EXPECT_EQ(feed.EndChar, 3);
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(FeedConfigTest, FormatThatCannotBeHadKeepsTheFormerBytesPerSecond) {
  Load("[RecordAudioFormat]\r\nChannels=2\r\nSampleRate=44100\r\n");
  boxes_.Expect("Cannot calculate wave format requested, acmFormatSuggest has returned error code : 512");
  const platform::WaveFormat expected{1, 2, 0, 176400, 4, 16, 0, 0};
  EXPECT_EQ(Load("[RecordAudioFormat]\r\nChannels=2\r\nSampleRate=0\r\n").RecordFormat, expected);
}

// The keys that are held in 16 bits.
struct ShortKey {
  const char* section;
  const char* name;
};
void PrintTo(const ShortKey& row, std::ostream* out) {
  *out << row.section << " " << row.name;
}
class FeedConfigOverflowTest : public FeedConfigTest, public ::testing::WithParamInterface<ShortKey> {
 protected:
  std::string WithValue(const std::string& value) {
    return "[" + std::string(GetParam().section) + "]\r\n" + GetParam().name + "=" + value + "\r\n";
  }
  void ExpectStop(const std::string& value) {
    Write(WithValue(value));
    EXPECT_EXIT(
        {
          const platform::ScopedHook toStandardError(platform::MessageBoxHook(),
                                                     [](const platform::BoxRequest& request) {
                                                       std::fputs(request.text.c_str(), stderr);
                                                       return BoxAnswer::Ok;
                                                     });
          ReadFeedConfig(1, file_, false);
        },
        ::testing::ExitedWithCode(1), "^Run-time error '6':");
  }
};

TEST_P(FeedConfigOverflowTest, SixteenBitsHoldWhatTheyHold) {
  // Two such values make no format; that box is another test's.
  if (std::string(GetParam().name) == "Channels")
    boxes_.Expect("Cannot calculate wave format requested, acmFormatSuggest has returned error code : 512");
  Load(WithValue("32767"));
  if (std::string(GetParam().name) == "Channels")
    boxes_.Expect("Cannot calculate wave format requested, acmFormatSuggest has returned error code : 512");
  Load(WithValue("-32768"));
}

TEST_P(FeedConfigOverflowTest, OneMoreStopsTheProgram) {
  ExpectStop("32768");
  ExpectStop("-32769");
}

constexpr ShortKey kShortKeys[] = {
    {"TextData", "HandShaking"},
    {"TextData", "HighLightBold"},
    {"TextData", "HighLightItalic"},
    {"TextData", "HighLightUnderLine"},
    {"TextData", "HighLightStrikeThru"},
    {"TextData", "HighLightSize"},
    {"TextData", "RemoveChar1"},
    {"TextData", "RemoveChar5"},
    {"Categories", "Expiry1"},
    {"Categories", "Expiry26"},
    {"Categories", "HighlightCategory"},
    {"AudioCapture", "AudioActivationLevel"},
    {"RecordAudioFormat", "Channels"},
    {"RecordAudioFormat", "Format"},
    {"StoryDelimiters", "StartChar"},
    {"StoryDelimiters", "EndChar"},
    {"StoryDelimiters", "HeaderEndChar"},
    {"StoryDelimiters", "TailStartChar"},
};
INSTANTIATE_TEST_SUITE_P(Keys, FeedConfigOverflowTest, ::testing::ValuesIn(kShortKeys),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(FeedConfigTest, FeedIsFoundByTheTextOfATag) {
  for (int number = 1; number <= 4; ++number)
    EXPECT_EQ(FeedOfTag(std::to_string(number)), &gWireFeeds[static_cast<std::size_t>(number - 1)]);
  for (const char* tag : {"", "0", "5", "-1", "feed", "99999999999"})
    EXPECT_EQ(FeedOfTag(tag), nullptr) << tag;
}

}  // namespace
}  // namespace vorda
