// The sound inputs that the station has, by number.
//
// A number is a device's for good: it is written to [WaveIn] of platform.ini (n=name) when the device is seen
// for the first time, and nothing moves it. A device that is away keeps its number and its name. A name
// "file:PATH" stands for a sound file played in real time. For the interface thread only.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vorda::platform {

// How many inputs have a number.
std::int16_t WaveInDeviceCount();

// The name of the n-th input, counted from 1; "" when no device has this number.
std::string WaveInDeviceName(int number);

// The largest number that a device has.
int LastWaveInDevice();

// Gives numbers to names that have none: the next free ones, in the order given.
void NumberWaveInDevices(const std::vector<std::string>& names);

// Looks for the sound server's inputs from now on and numbers them; `changed` is called after each look.
void WatchWaveInDevices(std::function<void()> changed);

}  // namespace vorda::platform
