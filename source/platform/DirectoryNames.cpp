#include "platform/DirectoryNames.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>

#include "platform/FileFault.h"
#include "platform/FileStamp.h"
#include "platform/Text.h"

namespace vorda::platform {
namespace {

// What a server that runs for months may hold: a wall of eleven locations and the feeds' directories find
// room, and the largest of them together stay below some 30 MB.
constexpr std::size_t kMostDirectories = 64;
constexpr std::size_t kMostNames = 200'000;

using NameTable = std::unordered_map<std::string, std::string>;  // name in capitals to name on disk

struct DirectoryScan {
  FileStamp stamp;
  NameTable names;
  std::uint64_t lastUse = 0;
};

// A name on disk is UTF-8, or bytes of the code page that an older station left.
std::string MatchingForm(std::string_view nameOnDisk) {
  std::string ansi;
  return UpperCase(FromUtf8(nameOnDisk, ansi) ? std::string_view(ansi) : nameOnDisk);
}

// False when the directory can't be read to its end; `names` then holds what was read.
bool ScanDirectory(const std::string& directory, NameTable& names) {
  names.clear();
  if (FileFault(FileOperation::Open, directory) != 0) return false;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(directory.c_str()), ::closedir);
  if (!entries) return false;
  errno = 0;
  while (const dirent* entry = ::readdir(entries.get())) {
    std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    const auto [known, isNew] = names.try_emplace(MatchingForm(name), name);
    if (!isNew && name < known->second) known->second = std::move(name);
  }
  return errno == 0;
}

class ScanCache {
 public:
  std::string Match(const std::string& directory, const std::string& upperName) {
    // Stamp and clock are read before the scan: a change in between makes the next look scan again.
    const std::optional<FileStamp> stamp = StampOf(directory);
    if (!stamp) return {};
    DirectoryScan& scan = scans_[directory];
    scan.lastUse = ++uses_;
    if (!(scan.stamp == *stamp)) {
      const bool settled = IsSettled(*stamp);
      const bool complete = ScanDirectory(directory, scan.names);
      scan.stamp = settled && complete ? *stamp : FileStamp();
      MakeRoom();
    }
    const auto found = scan.names.find(upperName);
    return found == scan.names.end() ? std::string() : found->second;
  }

 private:
  // Drops the longest unused scans; the one in use stays, however large it is.
  void MakeRoom() {
    std::size_t names = 0;
    for (const auto& [directory, scan] : scans_) names += scan.names.size();
    while (scans_.size() > 1 && (scans_.size() > kMostDirectories || names > kMostNames)) {
      const auto oldest = std::min_element(scans_.begin(), scans_.end(), [](const auto& a, const auto& b) {
        return a.second.lastUse < b.second.lastUse;
      });
      names -= oldest->second.names.size();
      scans_.erase(oldest);
    }
  }

  std::unordered_map<std::string, DirectoryScan> scans_;
  std::uint64_t uses_ = 0;
};

}  // namespace

std::string MatchDirectoryName(const std::string& directory, std::string_view name) {
  static ScanCache cache;
  return cache.Match(directory, UpperCase(name));
}

}  // namespace vorda::platform
