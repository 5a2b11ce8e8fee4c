#include "platform/FileStamp.h"

#include <time.h>

#include "platform/FileFault.h"

namespace vorda::platform {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kTick = 20'000'000;

std::int64_t Nanoseconds(const timespec& time) {
  return time.tv_sec * kSecond + time.tv_nsec;
}

}  // namespace

FileStamp StampOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_mtim),
          Nanoseconds(status.st_ctim)};
}

std::optional<FileStamp> StampOf(const std::string& path) {
  struct stat status {};
  if (FileFault(FileOperation::Stat, path) != 0 || ::stat(path.c_str(), &status) != 0) return std::nullopt;
  return StampOf(status);
}

bool IsSettled(const FileStamp& stamp) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const std::int64_t tick = stamp.changed % kSecond == 0 ? 3 * kSecond : kTick;
  // Only `changed` follows the clock: the other time may have been set to anything.
  return Nanoseconds(now) - stamp.changed > tick;
}

}  // namespace vorda::platform
