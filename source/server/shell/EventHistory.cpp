#include "shell/EventHistory.h"

#include <algorithm>

#include "platform/Clock.h"

namespace vorda {

std::int16_t gHistoryCount = 0;
std::array<std::string, kHistorySize> gHistoryLines;

platform::Hook<void()>& HistoryChangedHook() {
  static platform::Hook<void()> hook([] {});
  return hook;
}

void AddHistoryEvent(const std::string& message) {
  std::string line = platform::FormatDateTimeStamp(platform::ReadClock()) + message;
  if (gHistoryCount < kHistorySize) {
    gHistoryLines[static_cast<std::size_t>(gHistoryCount++)] = std::move(line);
  } else {
    std::move(gHistoryLines.begin() + 1, gHistoryLines.end(), gHistoryLines.begin());
    gHistoryLines.back() = std::move(line);
  }
  HistoryChangedHook()();
}

}  // namespace vorda
