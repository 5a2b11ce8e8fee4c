#include "platform/WaveDevices.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "platform/NumericValue.h"
#include "platform/ProfileFile.h"
#include "platform/ProfileStore.h"
#include "platform/ProfileText.h"
#include "platform/SoundInputs.h"
#include "platform/StandardError.h"

namespace vorda::platform {
namespace {

constexpr const char* kSection = "WaveIn";
constexpr const char* kFile = "platform.ini";

constexpr std::chrono::seconds kTryAgain(2);

using Names = std::vector<std::string>;
using Inputs = std::map<int, std::string>;

// Other keys than plain numbers don't count.
Inputs InputsOf(const std::vector<std::pair<std::string, std::string>>& keys) {
  constexpr int kMost = std::numeric_limits<std::int16_t>::max();
  Inputs inputs;
  for (const auto& [key, name] : keys) {
    const int number = LeadingInteger(key).value_or(0);
    const bool plain = number >= 1 && number <= kMost && key == std::to_string(number);
    if (plain && !name.empty()) inputs.emplace(number, name);
  }
  return inputs;
}

Inputs NumberedInputs() {
  return InputsOf(ReadProfileSection(kSection, kFile));
}

bool IsNumbered(const std::string& name, const Inputs& inputs) {
  return std::ranges::any_of(inputs, [&](const auto& input) { return input.second == name; });
}

// The file's text with a number for each of the names; nothing when it can't hold one.
std::optional<std::string> WithNumbers(std::string text, const Names& names) {
  Inputs inputs = InputsOf(ProfileText(text).Keys(kSection));
  for (const std::string& name : names) {
    if (IsNumbered(name, inputs)) continue;
    int free = 1;
    while (inputs.contains(free)) ++free;
    const auto changed = ProfileText(text).WithValue(kSection, std::to_string(free), name);
    if (!changed) return {};
    // A name with a blank at its end, say, reads as another one: it would get a number at every look.
    Inputs withIt = InputsOf(ProfileText(*changed).Keys(kSection));
    if (!IsNumbered(name, withIt)) continue;
    inputs = std::move(withIt);
    text = *changed;
  }
  return text;
}

// Tells of the inputs that have no number and of which it wasn't told before.
void TellOfUnnumbered(const Names& names) {
  static std::set<std::string> told;
  const Inputs inputs = NumberedInputs();
  std::string list;
  for (const std::string& name : names) {
    if (IsNumbered(name, inputs) || !told.insert(name).second) continue;
    list += (list.empty() ? "" : ", ") + name;
  }
  if (list.empty()) return;
  const std::string text = "No number for " + list + " : platform.ini can't be written";
  WriteToStandardError(text);
  WaveInTroubleHook()(text);
}

class Watch : public WaveInDevicesWatch {
 public:
  explicit Watch(std::function<void()> changed)
      : changed_(std::move(changed)), inputs_(WatchSoundInputs([this](const Names& names) {
          names_ = names;
          Look();
        })) {
    tryAgain_.setSingleShot(true);
    QObject::connect(&tryAgain_, &QTimer::timeout, [this] { Look(); });
  }

 private:
  void Look() {
    if (!NumberWaveInDevices(names_)) {
      TellOfUnnumbered(names_);
      tryAgain_.start(kTryAgain);
    }
    const std::function<void()> changed = changed_;  // which may end the watch
    changed();
  }

  const std::function<void()> changed_;
  Names names_;
  QTimer tryAgain_;
  std::unique_ptr<SoundInputsWatch> inputs_;
};

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

// One change of the file as it is at that moment: it may be one that couldn't be read just before, or that
// another program has changed.
bool NumberWaveInDevices(const Names& names) {
  const Inputs inputs = NumberedInputs();
  const auto numbered = [&](const std::string& name) { return IsNumbered(name, inputs); };
  return std::ranges::all_of(names, numbered) ||
         ChangeProfile(kFile, [&](const std::string& text) { return WithNumbers(text, names); });
}

Hook<void(const std::string&)>& WaveInTroubleHook() {
  static Hook<void(const std::string&)> hook([](const std::string&) {});
  return hook;
}

std::unique_ptr<WaveInDevicesWatch> WatchWaveInDevices(std::function<void()> changed) {
  return std::make_unique<Watch>(std::move(changed));
}

}  // namespace vorda::platform
