#include "StoryFile.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace vorda::bench {

StoryFile::StoryFile(const char* path, const char* length) : length_(std::strtoull(length, nullptr, 10)) {
  std::ifstream file(path, std::ios::binary);
  bytes_.assign(std::istreambuf_iterator<char>(file), {});
  if (bytes_.empty() || length_ < 2 || bytes_.size() % length_ != 0) {
    std::fprintf(stderr, "%s holds no stories of %s bytes\n", path, length);
    std::exit(1);
  }
}

}  // namespace vorda::bench
