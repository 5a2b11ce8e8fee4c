#include "platform/WaveDevices.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

#include "platform/NumericValue.h"
#include "platform/ProfileFile.h"
#include "platform/SoundServer.h"

namespace vorda::platform {
namespace {

constexpr const char* kSection = "WaveIn";
constexpr const char* kFile = "platform.ini";

// Other keys than plain numbers don't count.
std::map<int, std::string> NumberedInputs() {
  constexpr int kMost = std::numeric_limits<std::int16_t>::max();
  std::map<int, std::string> inputs;
  for (const auto& [key, name] : ReadProfileSection(kSection, kFile)) {
    const int number = LeadingInteger(key).value_or(0);
    const bool plain = number >= 1 && number <= kMost && key == std::to_string(number);
    if (plain && !name.empty()) inputs.emplace(number, name);
  }
  return inputs;
}

}  // namespace

std::int16_t WaveInDeviceCount() {
  return static_cast<std::int16_t>(NumberedInputs().size());
}

std::string WaveInDeviceName(int number) {
  const auto inputs = NumberedInputs();
  const auto found = inputs.find(number);
  return found == inputs.end() ? std::string() : found->second;
}

int LastWaveInDevice() {
  const auto inputs = NumberedInputs();
  return inputs.empty() ? 0 : inputs.rbegin()->first;
}

void NumberWaveInDevices(const std::vector<std::string>& names) {
  auto inputs = NumberedInputs();
  for (const std::string& name : names) {
    const bool known =
        std::any_of(inputs.begin(), inputs.end(), [&](const auto& input) { return input.second == name; });
    if (known) continue;
    int free = 1;
    while (inputs.contains(free)) ++free;
    inputs.emplace(free, name);
    WriteProfileString(kSection, std::to_string(free), name, kFile);
  }
}

void WatchWaveInDevices(std::function<void()> changed) {
  WatchSoundInputs([changed = std::move(changed)](const std::vector<std::string>& names) {
    NumberWaveInDevices(names);
    changed();
  });
}

}  // namespace vorda::platform
