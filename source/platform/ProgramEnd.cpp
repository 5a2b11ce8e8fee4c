#include "platform/ProgramEnd.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "platform/SerialDevice.h"

namespace vorda::platform {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};
int gSignalPipe[2] = {-1, -1};

void OnSignal(int) {
  const int systemError = errno;  // of the code that was interrupted
  const char byte = 0;
  // A full pipe means that a signal is on its way already.
  [[maybe_unused]] const ssize_t written = ::write(gSignalPipe[1], &byte, 1);
  errno = systemError;
}

}  // namespace

void EndProgram(int exitCode) {
  std::fflush(nullptr);
  DropUnsentOutput();
  ::_exit(exitCode);
}

void IgnoreBrokenPipes() {
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
}

TerminationSignals::TerminationSignals(std::function<void()> handler) {
  if (::pipe2(gSignalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  auto* notifier = new QSocketNotifier(gSignalPipe[0], QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, this, [handler = std::move(handler)] {
    char bytes[16];
    [[maybe_unused]] const ssize_t taken = ::read(gSignalPipe[0], bytes, sizeof bytes);
    handler();
  });
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART;
  for (const int signal : kSignals) {
    // Who starts the program so that it outlives its terminal means it.
    struct sigaction former = {};
    ::sigaction(signal, nullptr, &former);
    if (former.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
  }
}

TerminationSignals::~TerminationSignals() {
  for (const int signal : kSignals) ::signal(signal, SIG_DFL);
  for (int& end : gSignalPipe) {
    if (end >= 0) ::close(end);
    end = -1;
  }
}

}  // namespace vorda::platform
