// A loopback address of this process's own, so that tests that listen run side by side.

#pragma once

#include <unistd.h>

#include <string>

namespace vorda::test {

inline std::string OwnLoopbackAddress() {
  const auto id = static_cast<unsigned>(::getpid());
  return "127." + std::to_string(1 + ((id >> 16) & 0x7f)) + "." + std::to_string((id >> 8) & 0xff) + "." +
         std::to_string(id & 0xff);
}

}  // namespace vorda::test
