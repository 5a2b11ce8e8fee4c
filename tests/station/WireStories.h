// The stories that a station's tool has kept, for tests of many or long ones.

#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "station/Station.h"

namespace vorda::test {

// How many stories the tool has kept. Reading them tells that too, and takes long where they are long.
inline std::size_t StoriesKept(const Station& station) {
  const std::filesystem::path kept = std::filesystem::path(station.News(1)).parent_path() / "tools/kept";
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kept))
    count += entry.path().stem() == "argument" ? 1 : 0;
  return count;
}

// Whether the tool has kept a story of that text by now.
inline bool HasStory(const Station& station, const std::string& text) {
  const std::vector<Station::Story> stories = station.Stories();
  return std::any_of(stories.begin(), stories.end(),
                     [&](const Station::Story& story) { return story.text == text; });
}

}  // namespace vorda::test
