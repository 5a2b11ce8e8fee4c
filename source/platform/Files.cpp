#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <utility>

#include "platform/Descriptor.h"
#include "platform/FileFault.h"
#include "platform/RunTimeError.h"

namespace vorda::platform {

namespace {

std::map<int, Descriptor>& OpenFiles() {
  static std::map<int, Descriptor> files;  // by file number
  return files;
}

int Failed(int systemError) {
  const int number = ErrorFromErrno(systemError);
  SetCurrentError(number);
  return number;
}

// Seeded by the clock, so that two runs begin far apart; each name is made exclusively, so that a clash only
// costs a turn.
std::uint32_t NextTempNumber() {
  static std::uint32_t number = [] {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint32_t>(now.tv_sec * 1000 + now.tv_nsec / 1000000);
  }();
  return number++;
}

}  // namespace

std::int64_t NativeFileSize(const std::string& path) {
  struct stat status {};
  if (path.empty() || FileFault(FileOperation::Stat, path) != 0) return -1;
  if (::stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) return -1;
  // One that this user may not read is as good as missing.
  return ::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0 ? status.st_size : -1;
}

std::uint64_t FreeBytes(const std::string& path) {
  struct statvfs volume {};
  std::string existing = path;
  while (!existing.empty() && ::statvfs(existing.c_str(), &volume) != 0) {
    if (errno != ENOENT && errno != ENOTDIR) return 0;
    const std::size_t separator = existing.rfind('/');
    if (separator == std::string::npos || existing == "/") return 0;
    existing.resize(separator == 0 ? 1 : separator);
  }
  if (existing.empty()) return 0;
  return std::uint64_t{volume.f_bavail} * volume.f_frsize;
}

int RemoveNativeFile(const std::string& path) {
  if (const int fault = FileFault(FileOperation::Remove, path); fault != 0) return Failed(fault);
  return ::unlink(path.c_str()) == 0 ? 0 : Failed(errno);
}

int FreeFileNumber() {
  static int lastNumber = 0;
  return ++lastNumber;
}

int OpenForOutput(int number, const std::string& path) {
  if (OpenFiles().contains(number)) {
    SetCurrentError(kFileAlreadyOpen);
    return kFileAlreadyOpen;
  }
  Descriptor file = OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.isOpen()) return Failed(errno);
  OpenFiles()[number] = std::move(file);
  return 0;
}

int WriteToFile(int number, std::string_view bytes) {
  const auto file = OpenFiles().find(number);
  if (file == OpenFiles().end()) {
    SetCurrentError(kBadFileNumber);
    return kBadFileNumber;
  }
  while (!bytes.empty()) {
    if (const int fault = FileFault(FileOperation::Write, {}); fault != 0) return Failed(fault);
    const ssize_t written = ::write(file->second.number(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    // Nothing taken and no error: some file systems' way of being full.
    if (written <= 0) return Failed(written < 0 ? errno : ENOSPC);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

void CloseFile(int number) {
  OpenFiles().erase(number);
}

void CloseAllFiles() {
  OpenFiles().clear();
}

std::string MakeTempFile(const std::string& directory, std::string_view prefix) {
  constexpr int kTries = 1000;
  for (int tries = 0; tries < kTries; ++tries) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%08X", NextTempNumber());
    std::string name = std::string(prefix.substr(0, 3)) + digits + ".TMP";
    if (OpenFile(directory + "/" + name, O_WRONLY | O_CREAT | O_EXCL).isOpen()) return name;
    if (errno != EEXIST) {
      Failed(errno);
      return {};
    }
  }
  return {};
}

}  // namespace vorda::platform
