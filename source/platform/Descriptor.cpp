#include "platform/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileFault.h"

namespace vorda::platform {

bool Descriptor::Close() {
  return number_ < 0 || ::close(std::exchange(number_, -1)) == 0;
}

Descriptor OpenFile(const std::string& path, int flags, unsigned mode) {
  if (const int fault = FileFault(FileOperation::Open, path); fault != 0) {
    errno = fault;
    return {};
  }
  return Descriptor(::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode));
}

int WriteAll(const Descriptor& file, std::string_view bytes, std::string_view path) {
  while (!bytes.empty()) {
    if (const int fault = FileFault(FileOperation::Write, path); fault != 0) return fault;
    const ssize_t written = ::write(file.number(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    // Nothing taken and no error: some file systems' way of being full.
    if (written <= 0) return written < 0 ? errno : ENOSPC;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace vorda::platform
