// The feeds: their records, and the load of a feed's configuration file into its record.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/WaveFormats.h"
#include "shell/TimeStamp.h"

namespace vorda {

struct FeedCategory {
  std::string Name;
  std::string Code;
  std::int16_t Expiry = 0;
};

struct FeedPriority {
  std::string Name;
  std::string Code;
  std::int32_t Colour = 0;  // 0x00BBGGRR
};

// Configuration and capture state of one feed. The fields' names are those of the keys;
// docs/formats/feed-configuration.md tells what each means.
struct WireFeedRecord {
  std::string NewsPath;
  std::string ConfigFile;
  std::string FullConfigFile;
  std::string Name;
  std::int32_t UnknownCategory = 0;
  std::int16_t HighlightCategory = 0;
  std::int16_t NoIndexProcessing = 0;
  std::array<FeedCategory, 27> Categories;  // entry 0 stands for all stories
  std::array<FeedPriority, 3> Priorities;
  std::string StoryFileName;         // the open story's path, "" = none
  std::int32_t StoryFileHandle = 0;  // the open story's file number, 0 = none
  std::int16_t CapturePort = 0;
  std::int16_t BouncePort = 0;
  std::string Settings;
  std::int16_t HandShaking = 0;
  std::int16_t StartChar = 0;
  std::int16_t EndChar = 0;
  std::int16_t HeaderEndChar = 0;
  std::int16_t TailStartChar = 0;
  std::int32_t HighLightColor = 0;
  std::string HighLightFont;
  std::int16_t HighLightSize = 0;
  std::int16_t HighLightBold = 0;
  std::int16_t HighLightItalic = 0;
  std::int16_t HighLightUnderLine = 0;
  std::int16_t HighLightStrikeThru = 0;
  std::int32_t DiscardFileSize = 0;
  std::int32_t TitleStart = 0, TitleLength = 0;
  std::int32_t AuthorStart = 0, AuthorLength = 0;
  std::int32_t DestinationStart = 0, DestinationLength = 0;
  std::int32_t CategoryStart = 0, CategoryLength = 0;
  std::int32_t PriorityStart = 0, PriorityLength = 0;
  std::int32_t CutNoStart = 0, CutNoLength = 0;
  std::int32_t CartNoStart = 0, CartNoLength = 0;
  std::int32_t CopyTimeStart = 0, CopyTimeLength = 0;
  std::int32_t AudioTimeStart = 0, AudioTimeLength = 0;
  std::int32_t TotalTimeStart = 0, TotalTimeLength = 0;
  std::int32_t AudioOutStart = 0, AudioOutLength = 0;
  std::int32_t StoryStart = 0, StoryLength = 0;
  std::array<std::int16_t, 5> RemoveChar{};
  std::int32_t TitleLineNumber = 0;
  std::string CutOverride;
  std::int16_t SoundCard = 0;
  std::int32_t IndexCartNumber = 0;
  std::int32_t StartCartNumber = 0;
  std::int32_t EndCartNumber = 0;
  std::int32_t ClearCartCount = 0;
  std::int32_t LastRecordedCartNumber = 0;
  platform::WaveFormat RecordFormat;
  std::int16_t AudioActivationLevel = 0;
  std::int32_t AudioStartDuration = 0;
  std::int32_t AudioEndDuration = 0;
  std::int32_t MaxCutLength = 0;
  std::int32_t ThisItemMaxLength = 0;
  TimeStamp RecordStartStamp;
  std::int32_t ExpireAudio = 0;  // never loaded
  std::array<std::string, 26> BulletinTypes;
  std::array<std::string, 99> FlashChannels;
};

inline constexpr int kFeedCount = 4;

// The table of feeds, indexed by feed number minus 1. It lives for the whole run; a load never clears it.
extern std::array<WireFeedRecord, kFeedCount> gWireFeeds;

// The record of the feed whose number stands in a window's Tag; null when the text is no number from 1 to 4.
WireFeedRecord* FeedOfTag(std::string_view tag);

// Loads the feed configuration file into the record of feed `feedNumber` (1 to 4). When the file is absent,
// empty or unreadable a critical box warns; the load then stops, or goes on with every key's default when
// `loadAnyway` is set. Result: the trimmed path when the file was found; "" when it was not, when the path is
// empty or the number 0.
std::string ReadFeedConfig(std::int16_t feedNumber, const std::string& configFile, bool loadAnyway);

// Loads the tables of categories, priorities, bulletin types and flash channels and the feed's name from the
// record's FullConfigFile. An empty value of a table leaves the former one; an empty name doesn't.
void ReadFeedLists(std::int16_t feedNumber);

}  // namespace vorda
