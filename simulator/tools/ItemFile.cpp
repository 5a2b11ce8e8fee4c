// ItemFile: the sample story processor. Started once a story, with one argument: "story path|configuration
// path".
//
// A story smaller than DiscardFileSize is removed. Any other is filed, byte for byte, as
// Stories/YYYY-MM-DD/HHMMSS-<process>-<first words>.txt beside the configuration file, and is gone from where
// it was. Exit code 0 when the story was filed or discarded, 1 when it could not be (it then stays), 2 for
// wrong arguments.

#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>

#include "tools/Profile.h"
#include "tools/StoryFolder.h"

namespace vorda::tools {
namespace {

namespace fs = std::filesystem;

constexpr long kDiscardFileSize = 70;

int Fail(const std::string& problem, int code = 1) {
  std::cerr << "ItemFile: " << problem << std::endl;
  return code;
}

// The first words as a part of a file's name: letters and digits, with single hyphens between them.
std::string NameFrom(const fs::path& story) {
  std::string name;
  for (const char letter : FirstWords(FileStart(story, 512), 60, true)) {
    if (std::isalnum(static_cast<unsigned char>(letter)) != 0) {
      name += letter;
    } else if (!name.empty() && name.back() != '-') {
      name += '-';
    }
    if (name.size() == 40) break;
  }
  while (name.ends_with('-')) name.pop_back();
  return name.empty() ? "untitled" : name;
}

// Copies a story from another file system into the folder, under a name that no index lists; the empty path
// when it can't.
fs::path CopiedInto(const fs::path& folder, const fs::path& story) {
  const fs::path copy =
      folder / (std::string(1, '.') + std::to_string(::getpid()) + "-" + story.filename().string());
  std::error_code error;
  fs::copy_file(story, copy, error);
  errno = error.value();
  return error ? fs::path() : copy;
}

// Gives the story a name of its own in the folder, in one step. False, with errno, when it can't.
bool GiveName(const fs::path& story, const fs::path& folder, const std::string& stem,
              const std::string& words) {
  fs::path from = story;
  for (int again = 1; again < 1000;) {
    const std::string count = again == 1 ? std::string() : std::string(1, '.') + std::to_string(again);
    if (RenameWithoutReplacing(from, folder / (stem + count + "-" + words + ".txt"))) {
      std::error_code error;
      return from == story || fs::remove(story, error);
    }
    if (errno == EXDEV && from == story) {
      from = CopiedInto(folder, story);
      if (from.empty()) return false;
    } else if (errno == EEXIST) {
      ++again;
    } else {
      return false;
    }
  }
  return false;
}

int FileStory(const fs::path& story, const fs::path& stories) {
  const std::tm now = LocalNow();
  const fs::path folder = stories / Formatted(now, "%Y-%m-%d");
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) return Fail(folder.string() + " can't be made: " + error.message());
  const std::string stem = Formatted(now, "%H%M%S-") + std::to_string(::getpid());
  if (GiveName(story, folder, stem, NameFrom(story))) return 0;
  return Fail(story.string() + " can't be filed: " + std::strerror(errno));
}

int Main(const std::string& argument) {
  const size_t bar = argument.find('|');
  if (bar == std::string::npos || bar == 0 || bar + 1 == argument.size()) {
    return Fail("the argument is \"story path|configuration path\", not \"" + argument + "\"", 2);
  }
  const fs::path story = argument.substr(0, bar);
  const std::string config = argument.substr(bar + 1);
  std::error_code error;
  const auto size = fs::file_size(story, error);
  if (error) return Fail(story.string() + " can't be read: " + error.message());
  const long least = Profile(config).Number("TextData", "DiscardFileSize", kDiscardFileSize);
  if (least <= 0 || size >= static_cast<std::uintmax_t>(least))
    return FileStory(story, StoriesFolder(config));
  fs::remove(story, error);
  return error ? Fail(story.string() + " can't be removed: " + error.message()) : 0;
}

}  // namespace
}  // namespace vorda::tools

int main(int argc, char** argv) {
  if (argc != 2) return vorda::tools::Fail("wants one argument, \"story path|configuration path\"", 2);
  return vorda::tools::Main(argv[1]);
}
