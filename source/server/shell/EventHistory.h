// The event history: the last six lines of what the operator should know. There is no file behind it.

#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/Hook.h"

namespace vorda {

inline constexpr int kHistorySize = 6;

// The number of lines filled so far, 0 to 6.
extern std::int16_t gHistoryCount;

// The lines from the oldest to the newest; the first gHistoryCount of them are filled.
extern std::array<std::string, kHistorySize> gHistoryLines;

// Adds the message with date and time in front; the oldest of six lines is lost.
void AddHistoryEvent(const std::string& message);

// Called after each added line; the history window installs itself here.
platform::Hook<void()>& HistoryChangedHook();

}  // namespace vorda
