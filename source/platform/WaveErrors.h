// The multimedia system's error numbers and their texts.

#pragma once

#include <cstdint>
#include <string>

namespace vorda::platform {

inline constexpr std::int32_t kMmsysInvalidParameter = 11;

// The text of an error of the wave devices; "" for a number that they don't know.
std::string WaveErrorText(std::int32_t code);

}  // namespace vorda::platform
