// A directory of a test's own, gone with it.

#pragma once

#include <string>
#include <string_view>

namespace vorda::test {

class TempDirectory {
 public:
  TempDirectory();
  ~TempDirectory();
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  const std::string& path() const { return path_; }
  // The full path of a name in it.
  std::string operator/(std::string_view name) const;

 private:
  std::string path_;
};

// The file's bytes; "" when there is none.
std::string ReadWholeFile(const std::string& path);
// Makes or replaces the file.
void WriteWholeFile(const std::string& path, std::string_view bytes);
// The names in a directory, sorted, without "." and "..".
std::string JoinedNames(const std::string& directory);

}  // namespace vorda::test
