#include "platform/ReplaceFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/FileFault.h"

namespace vorda::platform {
namespace {

constexpr int kMostNames = 100;
constexpr mode_t kModeBits = 07777;

enum class Outcome { Done, Refused, Failed, Changed };

// What a directory, or the share it lies on, says when it takes no new file or gives no entry away.
bool IsRefusal(int systemError) {
  return systemError == EACCES || systemError == EPERM || systemError == EROFS || systemError == EBUSY ||
         systemError == EOPNOTSUPP;
}

Outcome RefusedOrFailed() {
  return IsRefusal(errno) ? Outcome::Refused : Outcome::Failed;
}

// What becomes of a file that isn't as it was read.
Outcome Unlike(Standing standing) {
  return standing == Standing::Changed ? Outcome::Changed : Outcome::Failed;
}

bool Faulted(FileOperation operation, const std::string& path) {
  const int fault = FileFault(operation, path);
  if (fault != 0) errno = fault;
  return fault != 0;
}

// From the front of the file, wherever it stands.
bool WriteWhole(const Descriptor& file, std::string_view bytes, const std::string& path) {
  if (::lseek(file.number(), 0, SEEK_SET) != 0) return false;
  errno = WriteAll(file, bytes, path);
  return errno == 0;
}

bool Sync(const Descriptor& file, const std::string& path) {
  return !Faulted(FileOperation::Sync, path) && ::fdatasync(file.number()) == 0;
}

std::optional<std::string> WithoutLinks(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  if (!real) return std::nullopt;
  return std::string(real.get());
}

bool IsNamed(const std::string& path, const Descriptor& file) {
  struct stat named {};
  struct stat held {};
  return ::lstat(path.c_str(), &named) == 0 && ::fstat(file.number(), &held) == 0 &&
         named.st_dev == held.st_dev && named.st_ino == held.st_ino;
}

struct TemporaryFile {
  std::string path;
  Descriptor file;
};

// Whoever uses a temporary file holds its lock until it has its name: one without a lock was left by a writer
// that was killed. Where no locks are known it can't be told apart and stays.
bool RemoveStray(const std::string& path) {
  const Descriptor stray = OpenFile(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
  return stray.isOpen() && ::flock(stray.number(), LOCK_EX | LOCK_NB) == 0 && IsNamed(path, stray) &&
         ::unlink(path.c_str()) == 0;
}

// False when another writer has just taken the new file for a stray one.
bool Occupy(const TemporaryFile& temporary) {
  if (::flock(temporary.file.number(), LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
  return IsNamed(temporary.path, temporary.file);
}

// Hidden, and never taken for a cart's or a story's file. The names are the same few for every program: what
// a killed writer left lies in the next one's way, and nobody has to search the directory for it.
TemporaryFile MakeTemporary(const std::string& target) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL;
  const std::string stem = target.substr(0, target.rfind('/') + 1) + ".vorda-ini-";
  for (int number = 0; number < kMostNames; ++number) {
    TemporaryFile temporary{stem + std::to_string(number), {}};
    temporary.file = OpenFile(temporary.path, kFlags, 0600);
    if (!temporary.file.isOpen() && errno != EEXIST) return temporary;
    if (!temporary.file.isOpen() && RemoveStray(temporary.path)) {
      temporary.file = OpenFile(temporary.path, kFlags, 0600);
    }
    if (!temporary.file.isOpen() || !Occupy(temporary)) continue;
    // What several writers left that were killed at the same time.
    while (RemoveStray(stem + std::to_string(++number))) continue;
    return temporary;
  }
  errno = EEXIST;
  return {};
}

// The owner has to be right before the mode: a change of owner takes mode bits away.
bool TakeOverOwnerAndMode(const Descriptor& file, const struct stat& status) {
  struct stat own {};
  if (::fstat(file.number(), &own) != 0) return false;
  const bool sameOwner = own.st_uid == status.st_uid && own.st_gid == status.st_gid;
  if (!sameOwner && ::fchown(file.number(), status.st_uid, status.st_gid) != 0) return false;
  return ::fchmod(file.number(), status.st_mode & kModeBits) == 0;
}

Outcome FillAndRename(const TemporaryFile& temporary, const std::string& target, const struct stat& status,
                      const NewContents& contents) {
  // Another user's file would become ours: better written in place than with another owner.
  if (!TakeOverOwnerAndMode(temporary.file, status)) return RefusedOrFailed();
  if (!WriteWhole(temporary.file, contents.newBytes, temporary.path)) return Outcome::Failed;
  if (!contents.inHaste && !Sync(temporary.file, temporary.path)) return Outcome::Failed;
  const Standing standing = contents.standing();
  if (standing != Standing::AsRead) return Unlike(standing);
  if (Faulted(FileOperation::Rename, target) || ::rename(temporary.path.c_str(), target.c_str()) != 0) {
    return RefusedOrFailed();
  }
  if (contents.inHaste) Sync(temporary.file, target);
  return Outcome::Done;
}

Outcome ReplaceByRename(const std::string& target, const struct stat& status, const NewContents& contents) {
  const TemporaryFile temporary = MakeTemporary(target);
  if (!temporary.file.isOpen()) return RefusedOrFailed();
  const Outcome outcome = FillAndRename(temporary, target, status, contents);
  if (outcome != Outcome::Done) ::unlink(temporary.path.c_str());
  return outcome;
}

bool Overwrite(const Descriptor& file, const std::string& bytes, const std::string& path) {
  return WriteWhole(file, bytes, path) && ::ftruncate(file.number(), static_cast<off_t>(bytes.size())) == 0 &&
         Sync(file, path);
}

Outcome ReplaceInPlace(const std::string& target, const Descriptor& file, const NewContents& contents) {
  const Standing standing = contents.standing();
  if (standing != Standing::AsRead) return Unlike(standing);
  if (Overwrite(file, contents.newBytes, target)) return Outcome::Done;
  // The old bytes have their place on the disk still, so that this succeeds on a full one.
  Overwrite(file, contents.oldBytes, target);
  return Outcome::Failed;
}

}  // namespace

Replacement ReplaceFile(const std::string& path, const Descriptor& file, const struct stat& status,
                        const NewContents& contents) {
  const std::optional<std::string> target = WithoutLinks(path);
  if (!target) return Replacement::Failed;
  Outcome outcome = ReplaceByRename(*target, status, contents);
  if (outcome == Outcome::Refused) outcome = ReplaceInPlace(*target, file, contents);
  if (outcome == Outcome::Done) return Replacement::Done;
  return outcome == Outcome::Changed ? Replacement::Changed : Replacement::Failed;
}

}  // namespace vorda::platform
