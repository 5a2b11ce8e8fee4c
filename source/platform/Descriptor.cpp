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

}  // namespace vorda::platform
