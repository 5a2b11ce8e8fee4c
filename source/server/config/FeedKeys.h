// The keys of a feed configuration file that stand for one field each: one table for the reader and whatever
// writes the file. The lists, the name and the record format are read apart.

#pragma once

#include <span>
#include <variant>

#include "config/Vorda_Common_API.h"

namespace vorda {

using FeedMember = std::variant<std::int16_t WireFeedRecord::*, std::int32_t WireFeedRecord::*,
                                std::string WireFeedRecord::*>;

struct FeedKey {
  const char* section;
  const char* name;
  FeedMember member;
  std::int32_t defaultNumber = 0;
  const char* defaultText = "";
  // Works a 32-bit default out of what has been read before.
  std::int32_t (*computedDefault)(const WireFeedRecord& record) = nullptr;
};

// Each in the order in which it is read: the default of LastRecordedCartNumber rests on the StartCartNumber
// just read.
std::span<const FeedKey> TextDataKeys();
std::span<const FeedKey> AudioCaptureKeys();
std::span<const FeedKey> StoryDelimiterKeys();

// Reads one key of `file` into the record. A number out of range for a 16-bit member stops the program
// (Overflow).
void ReadFeedKey(const FeedKey& key, const std::string& file, WireFeedRecord& record);

}  // namespace vorda
