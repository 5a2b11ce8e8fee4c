#include "wire/Interrupt.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <csignal>
#include <ctime>

namespace vorda::simulator {
namespace {

volatile std::sig_atomic_t interrupted = 0;
sigset_t maskWhileWaiting;

void NoteInterrupt(int) {
  interrupted = 1;
}

}  // namespace

void CatchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = NoteInterrupt;
  sigset_t caught;
  sigemptyset(&caught);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    sigaction(signal, &action, nullptr);
    sigaddset(&caught, signal);
  }
  // Blocked everywhere but inside ppoll: so none can slip in between the look at the note and the wait.
  sigprocmask(SIG_BLOCK, &caught, &maskWhileWaiting);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigdelset(&maskWhileWaiting, signal);
  std::signal(SIGPIPE, SIG_IGN);
}

bool Interrupted() {
  // A signal that came while nobody waited is still pending: let it in.
  const timespec none = {};
  if (interrupted == 0) ppoll(nullptr, 0, &none, &maskWhileWaiting);
  return interrupted != 0;
}

bool Wait(pollfd* descriptors, unsigned count, Instant deadline) {
  while (interrupted == 0) {
    const auto left = std::max(std::chrono::nanoseconds(0),
                               std::chrono::nanoseconds(deadline - std::chrono::steady_clock::now()));
    const timespec timeout = {.tv_sec = left.count() / 1'000'000'000,
                              .tv_nsec = left.count() % 1'000'000'000};
    const int ready = ppoll(descriptors, count, &timeout, &maskWhileWaiting);
    if (ready > 0) return true;
    if (ready == 0) return false;
  }
  return false;
}

bool WaitFor(int descriptor, short events, Instant deadline) {
  pollfd entry = {.fd = descriptor, .events = events, .revents = 0};
  return Wait(&entry, 1, deadline);
}

}  // namespace vorda::simulator
