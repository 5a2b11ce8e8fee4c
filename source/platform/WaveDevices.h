// The sound inputs that the station has, by number.
//
// A number is a device's for good: it is written to [WaveIn] of platform.ini (n=name) when the device is seen
// for the first time, and nothing moves it. A device that is away keeps its number and its name. A name
// "file:PATH" stands for a sound file played in real time. For the interface thread only.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Hook.h"

namespace vorda::platform {

// How many inputs have a number.
std::int16_t WaveInDeviceCount();

// The name of the n-th input, counted from 1; "" when no device has this number.
std::string WaveInDeviceName(int number);

// The largest number that a device has.
int LastWaveInDevice();

// Gives numbers to names that have none: the next free ones, in the order given. All of them or, with false,
// none: a number that platform.ini doesn't keep would be another device's after the next start.
bool NumberWaveInDevices(const std::vector<std::string>& names);

// Told once for each input that can't have its number, in words for the operator, which go to standard error
// as well.
Hook<void(const std::string& text)>& WaveInTroubleHook();

// Ends what it was given for with its life, also from within a call of it.
class WaveInDevicesWatch {
 public:
  virtual ~WaveInDevicesWatch() = default;
};

// Looks for the sound server's inputs and numbers them; `changed` is called behind each look. What can't be
// numbered is tried again every two seconds.
[[nodiscard]] std::unique_ptr<WaveInDevicesWatch> WatchWaveInDevices(std::function<void()> changed);

}  // namespace vorda::platform
