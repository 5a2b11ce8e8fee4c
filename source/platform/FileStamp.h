// What tells whether a file or directory is still as it was when it was last read.

#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

namespace vorda::platform {

struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t modified = 0;  // nanoseconds
  std::int64_t changed = 0;   // nanoseconds; sees the changes of a program that puts the other time back

  bool operator==(const FileStamp&) const = default;
};

FileStamp StampOf(const struct stat& status);

// The stamp of what `path` names, through links; nothing when there is nothing.
std::optional<FileStamp> StampOf(const std::string& path);

// True when the next change is sure to give another stamp. The file system's clock stands still for some
// milliseconds at a time, on plain file systems for two seconds: what was read of a file that changed just
// now must not be kept.
bool IsSettled(const FileStamp& stamp);

}  // namespace vorda::platform
