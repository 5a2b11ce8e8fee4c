// ItemDrop: the sample expiry tool. Started once a day with the path of the configuration file.
//
// Removes the dated folders that are older than the longest Expiry of the feed's categories. A category is
// one that has a name or a code; its Expiry is 10 days when none is given, and 10 days hold when there is no
// category at all. Leaves a line in Stories/tools.log. Exit code 0 when all old folders are gone, 1 when one
// is not, 2 for wrong arguments.

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>

#include "tools/Profile.h"
#include "tools/StoryFolder.h"

namespace vorda::tools {
namespace {

namespace fs = std::filesystem;

constexpr int kCategories = 26;
constexpr long kExpiryDays = 10;

long LongestExpiry(const Profile& profile) {
  long longest = -1;
  for (int category = 1; category <= kCategories; ++category) {
    const std::string number = std::to_string(category);
    const bool named = !profile.Text("Categories", "Name" + number).value_or("").empty();
    const bool coded = !profile.Text("Categories", "Code" + number).value_or("").empty();
    if (named || coded)
      longest = std::max(longest, profile.Number("Categories", "Expiry" + number, kExpiryDays));
  }
  return longest < 0 ? kExpiryDays : longest;
}

long AgeInDays(const fs::path& folder, std::chrono::sys_days today) {
  return (today - *DateOf(folder.filename().string())).count();
}

int Main(const std::string& config) {
  const fs::path stories = StoriesFolder(config);
  const std::chrono::sys_days today = *DateOf(Formatted(LocalNow(), "%Y-%m-%d"));
  const long expiry = LongestExpiry(Profile(config));
  int removed = 0;
  int failed = 0;
  for (const fs::path& folder : DatedFolders(stories)) {
    if (AgeInDays(folder, today) <= expiry) continue;
    std::error_code error;
    fs::remove_all(folder, error);
    ++(error ? failed : removed);
    if (error)
      std::cerr << "ItemDrop: " << folder.string() << " can't be removed: " << error.message() << std::endl;
  }
  const std::string text =
      "removed " + std::to_string(removed) + " folders older than " + std::to_string(expiry) + " days";
  if (!AddLogLine(stories, "ItemDrop", text)) {
    std::cerr << "ItemDrop: the log in " << stories.string() << " can't be written" << std::endl;
    return 1;
  }
  return failed == 0 ? 0 : 1;
}

}  // namespace
}  // namespace vorda::tools

int main(int argc, char** argv) {
  if (argc == 2) return vorda::tools::Main(argv[1]);
  std::cerr << "ItemDrop: wants one argument, the path of the configuration file" << std::endl;
  return 2;
}
