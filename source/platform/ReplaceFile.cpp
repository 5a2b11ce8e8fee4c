#include "platform/ReplaceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/FileFault.h"

namespace vorda::platform {
namespace {

constexpr int kMostTries = 100;
constexpr mode_t kModeBits = 07777;

enum class Outcome { Done, Refused, Failed };

// What a directory, or the share it lies on, says when it takes no new file or gives no entry away.
bool IsRefusal(int systemError) {
  return systemError == EACCES || systemError == EPERM || systemError == EROFS || systemError == EBUSY ||
         systemError == EOPNOTSUPP;
}

Outcome RefusedOrFailed() {
  return IsRefusal(errno) ? Outcome::Refused : Outcome::Failed;
}

bool Faulted(FileOperation operation, const std::string& path) {
  const int fault = FileFault(operation, path);
  if (fault != 0) errno = fault;
  return fault != 0;
}

bool WriteAll(const Descriptor& file, std::string_view bytes, const std::string& path) {
  off_t position = 0;
  while (!bytes.empty()) {
    if (Faulted(FileOperation::Write, path)) return false;
    const ssize_t count = ::pwrite(file.number(), bytes.data(), bytes.size(), position);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
    position += count;
  }
  return true;
}

bool Sync(const Descriptor& file, const std::string& path) {
  return !Faulted(FileOperation::Sync, path) && ::fdatasync(file.number()) == 0;
}

std::optional<std::string> WithoutLinks(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  if (!real) return std::nullopt;
  return std::string(real.get());
}

struct TemporaryFile {
  std::string path;
  Descriptor file;
};

// Hidden, and never taken for a cart's or a story's file; the name carries the process, so that programs
// don't meet.
TemporaryFile MakeTemporary(const std::string& target) {
  static std::uint32_t number = 0;
  const std::string stem =
      target.substr(0, target.rfind('/') + 1) + ".vorda-ini-" + std::to_string(::getpid()) + "-";
  for (int tries = 0; tries < kMostTries; ++tries) {
    std::string path = stem + std::to_string(number++);
    Descriptor file = OpenFile(path, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (file.isOpen() || errno != EEXIST) return {std::move(path), std::move(file)};
  }
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

Outcome FillAndRename(TemporaryFile& temporary, const std::string& target, const struct stat& status,
                      const std::string& bytes) {
  // Another user's file would become ours: better written in place than with another owner.
  if (!TakeOverOwnerAndMode(temporary.file, status)) return RefusedOrFailed();
  if (!WriteAll(temporary.file, bytes, temporary.path) || !Sync(temporary.file, temporary.path))
    return Outcome::Failed;
  if (!temporary.file.Close()) return Outcome::Failed;
  if (Faulted(FileOperation::Rename, target) || ::rename(temporary.path.c_str(), target.c_str()) != 0) {
    return RefusedOrFailed();
  }
  return Outcome::Done;
}

Outcome ReplaceByRename(const std::string& target, const struct stat& status, const std::string& bytes) {
  TemporaryFile temporary = MakeTemporary(target);
  if (!temporary.file.isOpen()) return RefusedOrFailed();
  const Outcome outcome = FillAndRename(temporary, target, status, bytes);
  if (outcome != Outcome::Done) ::unlink(temporary.path.c_str());
  return outcome;
}

bool Overwrite(const Descriptor& file, const std::string& bytes, const std::string& path) {
  return WriteAll(file, bytes, path) && ::ftruncate(file.number(), static_cast<off_t>(bytes.size())) == 0 &&
         Sync(file, path);
}

bool ReplaceInPlace(const std::string& target, const Descriptor& file, const std::string& oldBytes,
                    const std::string& newBytes) {
  if (Overwrite(file, newBytes, target)) return true;
  // The old bytes have their place on the disk still, so that this succeeds on a full one.
  Overwrite(file, oldBytes, target);
  return false;
}

}  // namespace

bool ReplaceFile(const std::string& path, const Descriptor& file, const struct stat& status,
                 const std::string& oldBytes, const std::string& newBytes) {
  const std::optional<std::string> target = WithoutLinks(path);
  if (!target) return false;
  const Outcome outcome = ReplaceByRename(*target, status, newBytes);
  if (outcome == Outcome::Refused) return ReplaceInPlace(*target, file, oldBytes, newBytes);
  return outcome == Outcome::Done;
}

}  // namespace vorda::platform
