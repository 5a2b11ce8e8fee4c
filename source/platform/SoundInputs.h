// Which inputs the sound server has.

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vorda::platform {

// Ends what it was given for with its life, also from within a call of it.
class SoundInputsWatch {
 public:
  virtual ~SoundInputsWatch() = default;
};

// Connects, if that isn't done, and has `told` called on the interface thread with the names of the server's
// inputs, hardware ahead of the outputs' monitors and otherwise in the order of their names, now and whenever
// they change. Any number may listen. For the interface thread only.
[[nodiscard]] std::unique_ptr<SoundInputsWatch> WatchSoundInputs(
    std::function<void(const std::vector<std::string>& names)> told);

}  // namespace vorda::platform
