#include "platform/SmallFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/Descriptor.h"
#include "platform/FileFault.h"
#include "platform/NativePath.h"
#include "platform/OpenFiles.h"

namespace vorda::platform {
namespace {

// Longer than any path that a system opens.
constexpr std::size_t kLongestLine = 16384;

bool IsMissing(int systemError) {
  return systemError == ENOENT || systemError == ENOTDIR;
}

// Opening something that isn't a file must not wait for its other end.
Descriptor OpenToRead(std::string_view configured) {
  constexpr int kFlags = O_RDONLY | O_NONBLOCK;
  const std::string literal = LiteralPath(configured);
  errno = ENOENT;
  if (literal.empty()) return {};
  Descriptor file = OpenFile(literal, kFlags);
  if (file.isOpen() || !IsMissing(errno)) return file;
  const std::string path = NativePath(configured);
  errno = ENOENT;
  return path == literal ? Descriptor() : OpenFile(path, kFlags);
}

}  // namespace

int ReadFileStart(std::string_view configured, std::span<char> bytes, std::size_t& count) {
  count = 0;
  const Descriptor file = OpenToRead(configured);
  if (!file.isOpen()) return IsMissing(errno) ? 0 : FailedWithErrno(errno);
  struct stat status {};
  if (::fstat(file.number(), &status) != 0) return FailedWithErrno(errno);
  if (S_ISDIR(status.st_mode) || status.st_size == 0) return 0;
  if (const int fault = FileFault(FileOperation::Read, configured); fault != 0) return FailedWithErrno(fault);
  const ssize_t length = ::pread(file.number(), bytes.data(), bytes.size(), 0);
  if (length < 0) return FailedWithErrno(errno);
  count = static_cast<std::size_t>(length);
  return 0;
}

std::string ReadFirstLine(std::string_view configured) {
  std::array<char, kLongestLine> bytes;
  std::size_t count = 0;
  if (ReadFileStart(configured, bytes, count) != 0) return {};
  const std::string_view text(bytes.data(), count);
  return std::string(text.substr(0, text.find_first_of("\r\n")));
}

}  // namespace vorda::platform
