// The program's one connection to the sound server. It runs in a thread of its own and comes back by itself
// when the server was away.

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vorda::platform {

// Connects, if that isn't done, and has `told` called on the interface thread with the names of the server's
// inputs, hardware ahead of the outputs' monitors and otherwise in the order of their names, now and whenever
// they change. One listener; a new one takes the place of the former.
void WatchSoundInputs(std::function<void(const std::vector<std::string>& names)> told);

}  // namespace vorda::platform
