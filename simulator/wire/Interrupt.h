// Being stopped from outside: ^C and its kin end the program in good order, wherever it waits.

#pragma once

#include <chrono>

struct pollfd;

namespace vorda::simulator {

using Instant = std::chrono::steady_clock::time_point;

// From now on SIGINT, SIGTERM and SIGHUP are only noted, and only while Wait waits. Call once, at the start.
void CatchInterrupts();

// Whether one of them has come.
bool Interrupted();

// Waits until one of the descriptors is ready or `deadline` has passed. Returns true when one is ready, false
// after the deadline or when interrupted. Without descriptors it just lets time pass.
bool Wait(pollfd* descriptors, unsigned count, Instant deadline);
bool WaitFor(int descriptor, short events, Instant deadline);

}  // namespace vorda::simulator
