// The load of a feed configuration file.

#include <cstdint>

#include "config/FeedKeys.h"
#include "config/Vorda_Common_API.h"
#include "platform/Desktop.h"
#include "platform/MessageBox.h"
#include "platform/NumericValue.h"
#include "platform/ProfileFile.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

std::array<WireFeedRecord, kFeedCount> gWireFeeds;

WireFeedRecord* FeedOfTag(std::string_view tag) {
  const std::int32_t number = platform::NumericInteger(tag).value_or(0);
  return number >= 1 && number <= kFeedCount ? &gWireFeeds[static_cast<std::size_t>(number - 1)] : nullptr;
}

namespace {

void ReadTextData(WireFeedRecord& feed, const std::string& file) {
  for (const FeedKey& key : TextDataKeys()) ReadFeedKey(key, file, feed);
  for (std::size_t i = 0; i < feed.RemoveChar.size(); ++i) {
    const std::string name = "RemoveChar" + std::to_string(i + 1);
    feed.RemoveChar[i] = platform::ReadProfileShort("TextData", name, 0, file);
  }
}

// The codec manager fills in what follows from tag, channels and rate. When it can't, the record keeps what
// the file says.
void ReadRecordFormat(WireFeedRecord& feed, const std::string& file) {
  platform::WaveFormat& format = feed.RecordFormat;
  format.nChannels = platform::ReadProfileShort("RecordAudioFormat", "Channels", 1, file);
  format.nSamplesPerSec = platform::ReadProfileInteger("RecordAudioFormat", "SampleRate", 44100, file);
  format.wFormatTag = platform::ReadProfileShort("RecordAudioFormat", "Format", 1, file);
  format.wBitsPerSample = 16;

  const platform::WaveFormat source =
      platform::SixteenBitFormat(format.wFormatTag, format.nChannels, format.nSamplesPerSec);
  platform::WaveFormat suggested{
      platform::kWaveFormatPcm, format.nChannels, format.nSamplesPerSec, 0, 0, 0, 0, 0};
  const int result = platform::acmFormatSuggest(source, suggested);
  if (result > 0) {
    platform::ShowMessageBox(
        "Cannot calculate wave format requested, acmFormatSuggest has returned error code : " +
            std::to_string(result),
        platform::BoxIcon::Information);
    return;
  }
  format = suggested;
}

}  // namespace

std::string ReadFeedConfig(std::int16_t feedNumber, const std::string& configFile, bool loadAnyway) {
  if (configFile.empty() || feedNumber < 1 || feedNumber > kFeedCount) return {};
  const std::string file = platform::Trim(configFile);
  std::string result = file;
  if (!(FileSize(file) > 0)) {
    platform::ShowMessageBox(
        "Warning : No Vorda information was found in the specifed news directory: " + configFile,
        platform::BoxIcon::Critical);
    result.clear();
    if (!loadAnyway) return result;
  }
  platform::SetPointer(platform::Pointer::Hourglass);
  WireFeedRecord& feed = gWireFeeds[static_cast<std::size_t>(feedNumber - 1)];
  feed.NewsPath = DirectoryPart(configFile);
  feed.ConfigFile = FileNamePart(configFile);
  feed.FullConfigFile = configFile;
  ReadFeedLists(feedNumber);
  ReadTextData(feed, file);
  for (const FeedKey& key : AudioCaptureKeys()) ReadFeedKey(key, file, feed);
  ReadRecordFormat(feed, file);
  for (const FeedKey& key : StoryDelimiterKeys()) ReadFeedKey(key, file, feed);
  platform::SetPointer(platform::Pointer::Default);
  return result;
}

}  // namespace vorda
