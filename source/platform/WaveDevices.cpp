#include "platform/WaveDevices.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "platform/ProfileFile.h"

namespace vorda::platform {

std::int16_t WaveInDeviceCount() {
  constexpr std::size_t kMost = std::numeric_limits<std::int16_t>::max();
  return static_cast<std::int16_t>(std::min(ReadProfileSection("WaveIn", "platform.ini").size(), kMost));
}

}  // namespace vorda::platform
