// The load of a feed's tables: categories, priorities, bulletin types, flash channels.

#include <string>
#include <string_view>

#include "config/Vorda_Common_API.h"
#include "platform/NumericValue.h"
#include "platform/ProfileFile.h"
#include "platform/RunTimeError.h"
#include "platform/Text.h"

namespace vorda {

namespace {

// How many bulletin types and flash channels have a name without the file's help.
constexpr std::size_t kNamedByDefault = 10;

// A value that has gone empty leaves the text of the former load.
void ReadUnlessEmpty(std::string& target, std::string_view section, const std::string& key,
                     const std::string& defaultText, const std::string& file) {
  std::string value = platform::ReadProfileString(section, key, defaultText, file);
  if (!value.empty()) target = std::move(value);
}

void ReadCategories(WireFeedRecord& feed, const std::string& file) {
  for (std::size_t n = 1; n < feed.Categories.size(); ++n) {
    const std::string number = std::to_string(n);
    ReadUnlessEmpty(feed.Categories[n].Name, "Categories", "Name" + number, "", file);
    ReadUnlessEmpty(feed.Categories[n].Code, "Categories", "Code" + number, "", file);
    feed.Categories[n].Expiry = platform::ReadProfileShort("Categories", "Expiry" + number, 10, file);
  }
  feed.UnknownCategory = platform::ReadProfileInteger("Categories", "UnknownCategory", 1, file);
  feed.HighlightCategory = platform::ReadProfileShort("Categories", "HighlightCategory", 0, file);
  feed.Categories[0].Code = "ALL";
  feed.Categories[0].Name = "All Stories";
}

void ReadPriorities(WireFeedRecord& feed, const std::string& file) {
  for (std::size_t i = 0; i < feed.Priorities.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    ReadUnlessEmpty(feed.Priorities[i].Name, "Priorities", "Name" + number, "", file);
    ReadUnlessEmpty(feed.Priorities[i].Code, "Priorities", "Code" + number, "", file);
    const std::string colour = platform::ReadProfileString("Priorities", "Colour" + number, "255", file);
    if (colour.empty()) continue;
    const auto value = platform::NumericInteger(colour);
    if (!value) platform::StopWithRuntimeError(platform::kOverflow);
    feed.Priorities[i].Colour = *value;
  }
}

void ReadBulletins(WireFeedRecord& feed, const std::string& file) {
  for (std::size_t i = 0; i < feed.BulletinTypes.size(); ++i) {
    const std::string key = std::string("Type ") + static_cast<char>('A' + i);
    ReadUnlessEmpty(feed.BulletinTypes[i], "Bulletin", key, i < kNamedByDefault ? key : "", file);
  }
  for (std::size_t i = 0; i < feed.FlashChannels.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    const std::string defaultName = i < kNamedByDefault ? "Channel " + number : "";
    ReadUnlessEmpty(feed.FlashChannels[i], "Bulletin", "FlashChannel" + number, defaultName, file);
  }
}

}  // namespace

void ReadFeedLists(std::int16_t feedNumber) {
  if (feedNumber < 1 || feedNumber > kFeedCount) return;
  WireFeedRecord& feed = gWireFeeds[static_cast<std::size_t>(feedNumber - 1)];
  // The record keeps the blanks that stand round a path; the file has none.
  const std::string file = platform::Trim(feed.FullConfigFile);
  ReadCategories(feed, file);
  ReadPriorities(feed, file);
  ReadBulletins(feed, file);
  feed.Name = platform::ReadProfileString("General", "Name", "", file);
}

}  // namespace vorda
