#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/Descriptor.h"
#include "platform/FileFault.h"
#include "platform/OpenFiles.h"
#include "platform/RunTimeError.h"

namespace vorda::platform {

namespace {

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

std::uint64_t BytesFreeOnVolume(const std::string& path) {
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

}  // namespace

std::map<int, NumberedFile>& OpenFiles() {
  static std::map<int, NumberedFile> files;
  return files;
}

int FailedWith(int number) {
  SetCurrentError(number);
  return number;
}

int FailedWithErrno(int systemError) {
  return systemError == 0 ? 0 : FailedWith(ErrorFromErrno(systemError));
}

std::int64_t NativeFileSize(const std::string& path) {
  struct stat status {};
  if (path.empty() || FileFault(FileOperation::Stat, path) != 0) return -1;
  if (::stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) return -1;
  // One that this user may not read is as good as missing.
  return ::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0 ? status.st_size : -1;
}

int LookUpFile(const std::string& path, bool& found) {
  found = false;
  if (const int fault = FileFault(FileOperation::Stat, path); fault != 0) return FailedWithErrno(fault);
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    found = !S_ISDIR(status.st_mode);
    return 0;
  }
  return errno == ENOENT || errno == ENOTDIR ? 0 : FailedWithErrno(errno);
}

std::uint64_t FreeBytes(const std::string& path) {
  return FreeBytesHook()(path);
}

Hook<std::uint64_t(const std::string&)>& FreeBytesHook() {
  static Hook<std::uint64_t(const std::string&)> hook(BytesFreeOnVolume);
  return hook;
}

int RemoveNativeFile(const std::string& path) {
  if (path.empty()) return FailedWith(kPathNotFound);
  if (const int fault = FileFault(FileOperation::Remove, path); fault != 0) return FailedWithErrno(fault);
  return ::unlink(path.c_str()) == 0 ? 0 : FailedWithErrno(errno);
}

int FreeFileNumber() {
  static int lastNumber = 0;
  return ++lastNumber;
}

int OpenForOutput(int number, const std::string& path) {
  if (OpenFiles().contains(number)) return FailedWith(kFileAlreadyOpen);
  Descriptor file = OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.isOpen()) return FailedWithErrno(errno);
  OpenFiles()[number] = {std::move(file), path};
  return 0;
}

int WriteToFile(int number, std::string_view bytes) {
  const auto file = OpenFiles().find(number);
  if (file == OpenFiles().end()) return FailedWith(kBadFileNumber);
  return FailedWithErrno(WriteAll(file->second.file, bytes, file->second.path));
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
      FailedWithErrno(errno);
      return {};
    }
  }
  return {};
}

}  // namespace vorda::platform
