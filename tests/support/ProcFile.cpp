#include "support/ProcFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/Descriptor.h"

namespace vorda::test {

std::string ReadProcFile(const std::string& path) {
  const platform::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::string bytes;
  for (std::array<char, 4096> piece; file.isOpen();) {
    const ssize_t length = ::read(file.number(), piece.data(), piece.size());
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) return "";
    if (length == 0) break;
    bytes.append(piece.data(), static_cast<std::size_t>(length));
  }
  return bytes;
}

}  // namespace vorda::test
