#include "config/FeedKeys.h"

#include <array>

#include "platform/ProfileFile.h"

namespace vorda {

namespace {

using R = WireFeedRecord;

std::int32_t OneBelowFirstCart(const WireFeedRecord& feed) {
  return static_cast<std::int32_t>(std::int64_t{feed.StartCartNumber} - 1);
}

constexpr auto kTextDataKeys = std::to_array<FeedKey>({
    {"TextData", "Settings", &R::Settings, 0, "9600,n,8,1"},
    {"TextData", "CutOverride", &R::CutOverride},
    {"TextData", "HandShaking", &R::HandShaking},
    {"TextData", "TitleLineNumber", &R::TitleLineNumber},
    {"TextData", "TitleStart", &R::TitleStart},
    {"TextData", "TitleLength", &R::TitleLength},
    {"TextData", "AuthorStart", &R::AuthorStart},
    {"TextData", "AuthorLength", &R::AuthorLength},
    {"TextData", "DestinationStart", &R::DestinationStart},
    {"TextData", "DestinationLength", &R::DestinationLength},
    {"TextData", "CategoryStart", &R::CategoryStart},
    {"TextData", "CategoryLength", &R::CategoryLength},
    {"TextData", "PriorityStart", &R::PriorityStart},
    {"TextData", "PriorityLength", &R::PriorityLength},
    {"TextData", "CutNoStart", &R::CutNoStart},
    {"TextData", "CutNoLength", &R::CutNoLength},
    {"TextData", "CartNoStart", &R::CartNoStart},
    {"TextData", "CartNoLength", &R::CartNoLength},
    {"TextData", "CopyTimeStart", &R::CopyTimeStart},
    {"TextData", "CopyTimeLength", &R::CopyTimeLength},
    {"TextData", "AudioTimeStart", &R::AudioTimeStart},
    {"TextData", "AudioTimeLength", &R::AudioTimeLength},
    {"TextData", "TotalTimeStart", &R::TotalTimeStart},
    {"TextData", "TotalTimeLength", &R::TotalTimeLength},
    {"TextData", "AudioOutStart", &R::AudioOutStart},
    {"TextData", "AudioOutLength", &R::AudioOutLength},
    {"TextData", "StoryStart", &R::StoryStart},
    {"TextData", "StoryLength", &R::StoryLength},
    {"TextData", "HighLightColor", &R::HighLightColor, 255},
    {"TextData", "HighLightBold", &R::HighLightBold, -1},
    {"TextData", "HighLightItalic", &R::HighLightItalic},
    {"TextData", "HighLightUnderLine", &R::HighLightUnderLine},
    {"TextData", "HighLightStrikeThru", &R::HighLightStrikeThru},
    {"TextData", "HighLightSize", &R::HighLightSize, 10},
    {"TextData", "HighLightFont", &R::HighLightFont, 0, "MS Sans Serif"},
    {"TextData", "DiscardFileSize", &R::DiscardFileSize, 70},
});

constexpr auto kAudioCaptureKeys = std::to_array<FeedKey>({
    {"AudioCapture", "IndexCartNumber", &R::IndexCartNumber, 9000},
    {"AudioCapture", "StartCartNumber", &R::StartCartNumber, 9001},
    {"AudioCapture", "EndCartNumber", &R::EndCartNumber, 9099},
    {"AudioCapture", "LastRecordedCartNumber", &R::LastRecordedCartNumber, 0, "", OneBelowFirstCart},
    {"AudioCapture", "ClearCartCount", &R::ClearCartCount, 10},
    {"AudioCapture", "AudioActivationLevel", &R::AudioActivationLevel, 99},
    {"AudioCapture", "AudioStartDuration", &R::AudioStartDuration, 5},
    {"AudioCapture", "AudioEndDuration", &R::AudioEndDuration, 25},
    {"AudioCapture", "MaxCutLength", &R::MaxCutLength, 3600},
});

constexpr auto kStoryDelimiterKeys = std::to_array<FeedKey>({
    {"StoryDelimiters", "StartChar", &R::StartChar, 1},
    {"StoryDelimiters", "EndChar", &R::EndChar, 4},
    {"StoryDelimiters", "HeaderEndChar", &R::HeaderEndChar},
    {"StoryDelimiters", "TailStartChar", &R::TailStartChar},
});

// Reads a key into the member of whichever kind it has.
struct KeyReader {
  const FeedKey& key;
  const std::string& file;
  WireFeedRecord& record;

  void operator()(std::int16_t R::*member) const {
    const auto defaultShort = static_cast<std::int16_t>(key.defaultNumber);
    record.*member = platform::ReadProfileShort(key.section, key.name, defaultShort, file);
  }
  void operator()(std::int32_t R::*member) const {
    const std::int32_t defaultNumber = key.computedDefault ? key.computedDefault(record) : key.defaultNumber;
    record.*member = platform::ReadProfileInteger(key.section, key.name, defaultNumber, file);
  }
  void operator()(std::string R::*member) const {
    record.*member = platform::ReadProfileString(key.section, key.name, key.defaultText, file);
  }
};

}  // namespace

std::span<const FeedKey> TextDataKeys() {
  return kTextDataKeys;
}
std::span<const FeedKey> AudioCaptureKeys() {
  return kAudioCaptureKeys;
}
std::span<const FeedKey> StoryDelimiterKeys() {
  return kStoryDelimiterKeys;
}

void ReadFeedKey(const FeedKey& key, const std::string& file, WireFeedRecord& record) {
  std::visit(KeyReader{key, file, record}, key.member);
}

}  // namespace vorda
