#include "support/TempDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace vorda::test {

TempDirectory::TempDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "vorda-test-XXXXXX").string();
  const char* made = ::mkdtemp(pattern.data());
  if (made == nullptr) std::abort();
  path_ = pattern;
}

TempDirectory::~TempDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDirectory::operator/(std::string_view name) const {
  return path_ + "/" + std::string(name);
}

std::string ReadWholeFile(const std::string& path) {
  const std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  if (file.is_open()) bytes << file.rdbuf();
  return bytes.str();
}

void WriteWholeFile(const std::string& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string JoinedNames(const std::string& directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory))
    names.insert(entry.path().filename().string());
  std::string joined;
  for (const auto& name : names) joined += (joined.empty() ? "" : " ") + name;
  return joined;
}

}  // namespace vorda::test
