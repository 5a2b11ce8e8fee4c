// Numbers as files hold them: the lowest byte first.

#pragma once

#include <cstdint>
#include <string>

namespace vorda::platform {

// Puts the lowest `size` bytes of a number behind `bytes`; at most 4.
inline void AppendLittleEndian(std::string& bytes, std::uint32_t number, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
}

}  // namespace vorda::platform
