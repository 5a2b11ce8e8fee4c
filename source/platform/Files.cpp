#include "platform/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>

#include "platform/FileFault.h"
#include "platform/RunTimeError.h"

namespace vorda::platform {

namespace {

std::map<int, int>& OpenFiles() {
  static std::map<int, int> files;  // file number to descriptor
  return files;
}

int Failed(int systemError) {
  const int number = ErrorFromErrno(systemError);
  SetCurrentError(number);
  return number;
}

int OpenNative(const std::string& path, int flags) {
  if (const int fault = FileFault(FileOperation::Open, path); fault != 0) {
    errno = fault;
    return -1;
  }
  return ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, 0666);
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
  if (path.empty() || ::stat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) return -1;
  return status.st_size;
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
  const int descriptor = OpenNative(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (descriptor < 0) return Failed(errno);
  OpenFiles()[number] = descriptor;
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
    const ssize_t written = ::write(file->second, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return Failed(errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

void CloseFile(int number) {
  const auto file = OpenFiles().find(number);
  if (file == OpenFiles().end()) return;
  ::close(file->second);
  OpenFiles().erase(file);
}

void CloseAllFiles() {
  for (const auto& [number, descriptor] : OpenFiles()) ::close(descriptor);
  OpenFiles().clear();
}

std::string MakeTempFile(const std::string& directory, std::string_view prefix) {
  constexpr int kTries = 1000;
  for (int tries = 0; tries < kTries; ++tries) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%08X", NextTempNumber());
    const std::string name = std::string(prefix.substr(0, 3)) + digits + ".TMP";
    const int descriptor = OpenNative(directory + "/" + name, O_WRONLY | O_CREAT | O_EXCL);
    if (descriptor >= 0) {
      ::close(descriptor);
      return name;
    }
    if (errno != EEXIST) {
      Failed(errno);
      return {};
    }
  }
  return {};
}

}  // namespace vorda::platform
