// The sound inputs that the station has.

#pragma once

#include <cstdint>

namespace vorda::platform {

// How many inputs have a device number: the entries of [WaveIn] in platform.ini.
std::int16_t WaveInDeviceCount();

}  // namespace vorda::platform
