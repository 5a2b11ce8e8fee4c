#include "platform/ProfileStore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>

#include "platform/Descriptor.h"
#include "platform/FileFault.h"
#include "platform/NativePath.h"
#include "platform/ReplaceFile.h"
#include "platform/Settings.h"

namespace vorda::platform {
namespace {

// What one change may wait in all: the interface thread stands still meanwhile, and serial input and the
// level's ticks wait behind it. A lock is held for less than a millisecond as a rule.
constexpr std::chrono::milliseconds kPatience(150);
// Of this, what is given to a tool that may be in the midst of writing a file that holds something.
constexpr std::chrono::milliseconds kSettling(50);
// How often others may change the file between our look and our step.
constexpr int kMostConflicts = 20;

class Patience {
 public:
  // Waits a moment; false, without waiting, when so much has been waited already.
  bool Wait(std::chrono::milliseconds most) {
    constexpr timespec kMoment{0, 200'000};
    if (waited_ >= most) return false;
    const auto start = std::chrono::steady_clock::now();
    ::nanosleep(&kMoment, nullptr);
    waited_ += std::chrono::steady_clock::now() - start;
    return true;
  }

 private:
  std::chrono::steady_clock::duration waited_{};
};

// The file that this program wrote last, as it left it.
FileStamp leftBehind;

// The file whose lock wasn't given back in time, as it was then. A dialog with many keys waits for it once.
FileStamp hungLock;

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

// False when the lock can't be had in time. A share that knows no locks answers with an error: then there is
// nothing to wait for.
bool Lock(const Descriptor& file, const FileStamp& stamp, Patience& patience) {
  while (::flock(file.number(), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR)) {
    if (stamp == hungLock) return false;
    if (patience.Wait(kPatience)) continue;
    hungLock = stamp;
    return false;
  }
  if (stamp == hungLock) hungLock = {};
  return true;
}

// How long it is waited for another program that may be writing the file in place just now, and whose other
// half is still to come. What we left is whole; an empty file is waited for longest, since of it all would be
// lost.
std::chrono::milliseconds TimeToSettle(const FileStamp& stamp) {
  if (stamp == leftBehind) return {};
  if (stamp.size == 0) return kPatience;
  return IsSettled(stamp) ? std::chrono::milliseconds() : kSettling;
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

// Takes a file away again that was made for nothing, unless another has begun to use it.
void RemoveEmpty(const std::string& path, const Descriptor& file, const struct stat& status,
                 Patience& patience) {
  struct stat now {};
  if (Lock(file, StampOf(status), patience) && ::stat(path.c_str(), &now) == 0 &&
      now.st_dev == status.st_dev && now.st_ino == status.st_ino && now.st_size == 0) {
    ::unlink(path.c_str());
  }
}

enum class Outcome { Done, Failed, Changed, Unsettled };

// A file that was read to be changed.
struct ReadProfile {
  const std::string& path;
  const OpenedProfile& opened;
  const struct stat& status;
  const std::string& bytes;
};

// The lock is taken for the last look and the step behind it alone, and with it nobody's change is lost: a
// writer who comes second finds another file. Only a change in place holds it while the disk is waited for.
Standing StandingOf(const ReadProfile& read, Patience& patience) {
  if (!Lock(read.opened.file, StampOf(read.status), patience)) return Standing::Taken;
  const bool asRead = StampOf(read.path) == StampOf(read.status) && ReadAll(read.opened.file) == read.bytes;
  return asRead ? Standing::AsRead : Standing::Changed;
}

Outcome Replace(const ReadProfile& read, const std::string& changed, Patience& patience, bool inHaste) {
  const std::function<Standing()> standing = [&] { return StandingOf(read, patience); };
  const NewContents contents = {read.bytes, changed, standing, inHaste};
  switch (ReplaceFile(read.path, read.opened.file, read.status, contents)) {
    case Replacement::Changed:
      return Outcome::Changed;
    case Replacement::Done:
      leftBehind = StampOf(read.path).value_or(FileStamp());
      return Outcome::Done;
    case Replacement::Failed:
      break;
  }
  return Outcome::Failed;
}

// One try. Changed when another writer has changed the file meanwhile, Unsettled when one may be about to.
Outcome TryToChange(const std::string& path, const ProfileChange& change, Patience& patience, bool inHaste) {
  const OpenedProfile opened = OpenOrMake(path);
  struct stat status {};
  if (!opened.file.isOpen() || ::fstat(opened.file.number(), &status) != 0 || !IsPlainFile(status))
    return Outcome::Failed;
  const std::optional<std::string> bytes = ReadAll(opened.file);
  const std::optional<std::string> changed = bytes ? change(*bytes) : std::nullopt;
  if (changed && *changed == *bytes) return Outcome::Done;
  const FileStamp stamp = StampOf(status);
  if (changed && !opened.made && patience.Wait(TimeToSettle(stamp))) return Outcome::Unsettled;
  // Under a lock that hangs not so much as a temporary file is written.
  const bool possible = changed && (stamp != hungLock || Lock(opened.file, stamp, patience));
  const Outcome outcome =
      possible ? Replace({path, opened, status, *bytes}, *changed, patience, inHaste) : Outcome::Failed;
  if (outcome == Outcome::Failed && opened.made) RemoveEmpty(path, opened.file, status, patience);
  return outcome;
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
  Patience patience;
  int conflicts = 0;
  while (conflicts < kMostConflicts) {
    const Outcome outcome = TryToChange(path, change, patience, conflicts > 0);
    if (outcome == Outcome::Done) return true;
    if (outcome == Outcome::Failed) return false;
    if (outcome == Outcome::Changed) ++conflicts;
  }
  return false;
}

}  // namespace vorda::platform
