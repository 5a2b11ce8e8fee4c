// ItemRoll: the sample index tool. Started once a day with the path of the configuration file.
//
// Writes Stories/INDEX.txt, oldest story first, a line a story: date, time, bytes, path within Stories, first
// words, with tabs between them. The file is replaced in one step, so that no reader sees half an index.
// Leaves a line in Stories/tools.log. Exit code 0, 1 when the index can't be written, 2 for wrong arguments.

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "tools/StoryFolder.h"

namespace vorda::tools {
namespace {

namespace fs = std::filesystem;

// The filed stories of a dated folder in the order of their names, which begin with their time.
std::vector<fs::path> StoriesIn(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (!name.starts_with('.') && name.ends_with(".txt")) files.push_back(entry->path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string IndexLine(const fs::path& file) {
  const std::string folder = file.parent_path().filename().string();
  const std::string name = file.filename().string();
  std::error_code error;
  const auto size = fs::file_size(file, error);
  return folder + "\t" + name.substr(0, 6) + "\t" + (error ? "?" : std::to_string(size)) + "\t" + folder +
         "/" + name + "\t" + FirstWords(FileStart(file, 512), 60, false) + "\n";
}

int Main(const std::string& config) {
  const fs::path stories = StoriesFolder(config);
  std::error_code error;
  fs::create_directories(stories, error);
  const fs::path draft = stories / (".INDEX-" + std::to_string(::getpid()));
  std::ofstream index(draft, std::ios::binary | std::ios::trunc);
  long count = 0;
  for (const fs::path& folder : DatedFolders(stories)) {
    for (const fs::path& file : StoriesIn(folder)) {
      index << IndexLine(file);
      ++count;
    }
  }
  index.close();
  if (index) fs::rename(draft, stories / "INDEX.txt", error);
  const bool written = index && !error;
  if (!written) fs::remove(draft, error);
  if (!written || !AddLogLine(stories, "ItemRoll", "indexed " + std::to_string(count) + " stories")) {
    std::cerr << "ItemRoll: the index or the log in " << stories.string() << " can't be written" << std::endl;
    return 1;
  }
  return 0;
}

}  // namespace
}  // namespace vorda::tools

int main(int argc, char** argv) {
  if (argc == 2) return vorda::tools::Main(argv[1]);
  std::cerr << "ItemRoll: wants one argument, the path of the configuration file" << std::endl;
  return 2;
}
