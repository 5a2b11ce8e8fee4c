#include "platform/DirectoryNames.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "platform/Descriptor.h"
#include "platform/DirectoryNotices.h"
#include "platform/FileStamp.h"
#include "platform/NameIndex.h"
#include "platform/NativePath.h"
#include "platform/Text.h"

namespace vorda::platform {
namespace {

// What a server that runs for months may hold: a wall of eleven locations and the feeds' directories find
// room, and the largest of them together stay below some 30 MB.
constexpr std::size_t kMostDirectories = 64;
constexpr std::size_t kMostNames = 200'000;

struct DirectoryScan {
  FileStamp stamp;  // of the directory when it was read
  NameIndex names;
  int watch = -1;  // the number of its notices, -1 = none come
  bool whole = false;
  std::uint64_t lastUse = 0;
};

bool IsItselfOrParent(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// False when the directory can't be read to its end; `names` then holds what was read. Straight from the
// system: the library's way to the entries costs as much as all that is done with them here.
bool ScanDirectory(const std::string& directory, const FileStamp& stamp, NameIndex& names) {
  names.Clear();
  names.Reserve(stamp.size);
  const Descriptor open = OpenFile(directory, O_RDONLY | O_DIRECTORY);
  if (!open.isOpen()) return false;
  alignas(dirent64) char entries[std::size_t{1} << 16];
  ssize_t length = 0;
  while ((length = ::getdents64(open.number(), entries, sizeof entries)) > 0) {
    for (ssize_t at = 0; at < length;) {
      const auto* const entry = reinterpret_cast<const dirent64*>(entries + at);
      at += entry->d_reclen;
      if (!IsItselfOrParent(entry->d_name)) names.AddNew({entry->d_name, entries + at});
    }
  }
  return length == 0;
}

class ScanCache {
 public:
  // The directory's names as they are now. With `afresh` a scan that only its stamp vouches for doesn't
  // count.
  const NameIndex* NamesOf(const std::string& directory, bool afresh) {
    FollowNotices();
    // Stamp and clock are read before the scan: a change in between makes the next look scan again.
    const std::optional<FileStamp> stamp = StampOf(directory);
    if (!stamp) return nullptr;
    DirectoryScan& scan = scans_[directory];
    scan.lastUse = ++uses_;
    if (!Holds(scan, *stamp, afresh)) Read(directory, *stamp, scan);
    return &scan.names;
  }

 private:
  static bool Holds(const DirectoryScan& scan, const FileStamp& stamp, bool afresh) {
    if (!scan.whole) return false;
    // The path may name another directory by now.
    if (scan.watch >= 0) return scan.stamp.device == stamp.device && scan.stamp.inode == stamp.inode;
    return !afresh && scan.stamp == stamp;
  }

  void Read(const std::string& directory, const FileStamp& stamp, DirectoryScan& scan) {
    Release(scan);
    scan.watch = notices_.Watch(directory);
    const bool settled = scan.watch >= 0 || IsSettled(stamp);
    scan.whole = ScanDirectory(directory, stamp, scan.names) && settled;
    scan.stamp = stamp;
    MakeRoom();
  }

  void FollowNotices() {
    std::vector<DirectoryNotice> notices;
    if (!notices_.Take(notices)) {
      for (auto& [directory, scan] : scans_) scan.whole = false;
      return;
    }
    for (const DirectoryNotice& notice : notices) {
      for (auto& [directory, scan] : scans_) {
        if (scan.watch == notice.watch) Follow(notice, scan);
      }
    }
  }

  static void Follow(const DirectoryNotice& notice, DirectoryScan& scan) {
    switch (notice.change) {
      case DirectoryChange::Added:
        return scan.names.Add(notice.name);
      case DirectoryChange::Removed:
        return scan.names.Remove(notice.name);
      case DirectoryChange::Lost:
        scan.whole = false;
    }
  }

  // Two paths may name one directory, and then share its notices.
  void Release(DirectoryScan& released) {
    const int watch = std::exchange(released.watch, -1);
    const bool shared = std::any_of(scans_.begin(), scans_.end(),
                                    [watch](const auto& entry) { return entry.second.watch == watch; });
    if (watch >= 0 && !shared) notices_.Forget(watch);
  }

  // Drops the longest unused scans; the one in use stays, however large it is.
  void MakeRoom() {
    std::size_t names = 0;
    for (const auto& [directory, scan] : scans_) names += scan.names.size();
    while (scans_.size() > 1 && (scans_.size() > kMostDirectories || names > kMostNames)) {
      const auto oldest = std::min_element(scans_.begin(), scans_.end(), [](const auto& a, const auto& b) {
        return a.second.lastUse < b.second.lastUse;
      });
      names -= oldest->second.names.size();
      Release(oldest->second);
      scans_.erase(oldest);
    }
  }

  DirectoryNotices notices_;
  std::unordered_map<std::string, DirectoryScan> scans_;
  std::uint64_t uses_ = 0;
};

ScanCache& Scans() {
  static ScanCache cache;
  return cache;
}

bool IsDirectory(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool ListedBefore(const std::string& a, const std::string& b) {
  const auto isTemporary = [](std::string_view name) {
    return name.size() >= 4 && SameText(name.substr(name.size() - 4), ".TMP");
  };
  return std::make_tuple(isTemporary(a), std::string_view(a)) <
         std::make_tuple(isTemporary(b), std::string_view(b));
}

}  // namespace

std::string MatchDirectoryName(const std::string& directory, std::string_view name) {
  const NameIndex* const names = Scans().NamesOf(directory, false);
  return names == nullptr ? std::string() : names->Match(name);
}

std::vector<std::string> FilesWithStem(std::string_view stem) {
  const std::size_t separator = stem.find_last_of("\\/");
  if (separator == std::string_view::npos) return {};
  const std::string directory = NativePath(stem.substr(0, separator));
  if (directory.empty()) return {};
  const NameIndex* const names = Scans().NamesOf(directory, true);
  if (names == nullptr) return {};
  std::vector<std::string> files = names->WithStem(stem.substr(separator + 1));
  std::erase_if(files, [&](const std::string& name) { return IsDirectory(directory + "/" + name); });
  for (std::string& name : files) name = NameFromDisk(name);
  std::sort(files.begin(), files.end(), ListedBefore);
  return files;
}

}  // namespace vorda::platform
