#include "platform/ProfileStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/Descriptor.h"
#include "platform/FileFault.h"
#include "platform/NativePath.h"
#include "platform/ReplaceFile.h"
#include "platform/Settings.h"

namespace vorda::platform {
namespace {

constexpr int kMostTries = 1000;
// A writer holds the lock for some milliseconds. One that hangs must not hold up the server: after this the
// change is made without the lock.
constexpr int kLockWaitMilliseconds = 2000;

bool IsPlainFile(const struct stat& status) {
  return S_ISREG(status.st_mode);
}

std::optional<std::string> ReadAll(const Descriptor& file) {
  struct stat status {};
  if (::fstat(file.number(), &status) != 0) return std::nullopt;
  // One byte more finds the end without growing.
  std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
  std::size_t length = 0;
  while (true) {
    if (length == bytes.size()) bytes.resize(bytes.size() * 2);
    const ssize_t count =
        ::pread(file.number(), bytes.data() + length, bytes.size() - length, static_cast<off_t>(length));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  bytes.resize(length);
  return bytes;
}

// A share that knows no locks answers with an error: then there is nothing to wait for.
void LockBriefly(const Descriptor& file) {
  constexpr timespec kMillisecond{0, 1'000'000};
  for (int waited = 0; waited < kLockWaitMilliseconds; ++waited) {
    if (::flock(file.number(), LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR)) return;
    ::nanosleep(&kMillisecond, nullptr);
  }
}

struct OpenedProfile {
  Descriptor file;
  bool made = false;
};

OpenedProfile OpenOrMake(const std::string& path) {
  // Not blocking: a pipe that stands in the file's place would hold us up.
  constexpr int kFlags = O_RDWR | O_NONBLOCK;
  Descriptor file = OpenFile(path, kFlags);
  if (file.isOpen() || errno != ENOENT) return {std::move(file), false};
  file = OpenFile(path, kFlags | O_CREAT | O_EXCL);
  if (file.isOpen()) return {std::move(file), true};
  // Another writer was faster, or the path is a link to a file that isn't there yet.
  return {OpenFile(path, kFlags | O_CREAT), false};
}

bool HoldsAlready(const Descriptor& file, const ProfileChange& change) {
  const std::optional<std::string> bytes = ReadAll(file);
  return bytes && change(*bytes) == bytes;
}

enum class Outcome { Done, Failed, Again };

// One try. Again when another writer has put a new file in place while this one waited for the lock.
Outcome TryToChange(const std::string& path, const ProfileChange& change) {
  const OpenedProfile opened = OpenOrMake(path);
  struct stat held {};
  if (!opened.file.isOpen() || ::fstat(opened.file.number(), &held) != 0 || !IsPlainFile(held))
    return Outcome::Failed;
  // A dialog writes all its keys, of which most stand already: no lock for these.
  if (HoldsAlready(opened.file, change)) return Outcome::Done;
  LockBriefly(opened.file);
  struct stat named {};
  if (::stat(path.c_str(), &named) != 0 || held.st_dev != named.st_dev || held.st_ino != named.st_ino) {
    return Outcome::Again;
  }
  // The status again: size and mode may have changed during the wait.
  if (::fstat(opened.file.number(), &held) != 0) return Outcome::Failed;
  const std::optional<std::string> bytes = ReadAll(opened.file);
  const std::optional<std::string> changed = bytes ? change(*bytes) : std::nullopt;
  if (changed && *changed == *bytes) return Outcome::Done;
  if (changed && ReplaceFile(path, opened.file, held, *bytes, *changed)) return Outcome::Done;
  if (opened.made) ::unlink(path.c_str());
  return Outcome::Failed;
}

}  // namespace

std::string ProfilePath(std::string_view file) {
  if (file.empty()) return {};
  return NativePath(IsAbsolutePath(file) ? std::string(file) : WindowsDirectory() + "/" + std::string(file));
}

std::optional<ProfileBytes> ReadProfileBytes(const std::string& path) {
  const Descriptor file = OpenFile(path, O_RDONLY | O_NONBLOCK);
  struct stat before {};
  if (!file.isOpen() || ::fstat(file.number(), &before) != 0 || !IsPlainFile(before)) return std::nullopt;
  const bool settled = IsSettled(StampOf(before));
  std::optional<std::string> bytes = ReadAll(file);
  struct stat after {};
  if (!bytes || ::fstat(file.number(), &after) != 0) return std::nullopt;
  return ProfileBytes{std::move(*bytes), StampOf(before), settled && StampOf(before) == StampOf(after)};
}

bool ChangeProfile(std::string_view file, const ProfileChange& change) {
  if (file.empty()) return false;
  if (!IsAbsolutePath(file)) {
    std::error_code ignored;
    std::filesystem::create_directories(WindowsDirectory(), ignored);
  }
  const std::string path = ProfilePath(file);
  if (path.empty()) return false;
  Outcome outcome = Outcome::Again;
  for (int tries = 0; outcome == Outcome::Again && tries < kMostTries; ++tries)
    outcome = TryToChange(path, change);
  return outcome == Outcome::Done;
}

}  // namespace vorda::platform
