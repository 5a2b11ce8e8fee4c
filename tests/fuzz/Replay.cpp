// Runs a target on files without the fuzzer: on those named, and on all of the directories named. A directory
// without any is an error, so that a corpus that went astray doesn't pass for one that holds.

#include <cstdio>
#include <filesystem>
#include <set>
#include <string>

#include "Target.h"
#include "support/TempDirectory.h"

namespace {

void Run(const std::string& path) {
  // Told ahead of the run: the last one told is the one that failed.
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  const std::string bytes = vorda::test::ReadWholeFile(path);
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

std::set<std::string> FilesIn(const std::string& directory) {
  std::set<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(directory))
    if (entry.is_regular_file()) files.insert(entry.path().string());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string path = argv[i];
    if (!std::filesystem::exists(path)) {
      std::fprintf(stderr, "no such file or directory: %s\n", path.c_str());
      return 1;
    }
    const std::set<std::string> files =
        std::filesystem::is_directory(path) ? FilesIn(path) : std::set<std::string>{path};
    if (files.empty()) {
      std::fprintf(stderr, "nothing to run in %s\n", path.c_str());
      return 1;
    }
    for (const std::string& file : files) Run(file);
    count += files.size();
  }
  std::printf("%zu inputs\n", count);
  return count == 0 ? 1 : 0;
}
