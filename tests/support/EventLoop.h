// Running the event loop in a test until something has come true.

#pragma once

#include <functional>

namespace vorda::test {

// Runs events until `condition` holds; false when it still doesn't after `milliseconds`.
bool WaitUntil(const std::function<bool()>& condition, int milliseconds = 5000);

// Runs the events that are pending now, without waiting.
void RunPendingEvents();

}  // namespace vorda::test
