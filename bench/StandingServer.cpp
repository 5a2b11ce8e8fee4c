// The server, whose interface thread stands still for a while: once, when SIGUSR1 comes. Behind it the
// milliseconds that it stood still go to its findings.
//
//     StandingServer SECONDS

#include <QApplication>
#include <QSocketNotifier>

#include <sys/signalfd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "Moments.h"
#include "ServerRun.h"

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;

// Blocked here, ahead of every other thread, the signal comes to the descriptor alone.
int SignalDescriptor() {
  sigset_t mask;
  sigemptyset(&mask);
  sigaddset(&mask, SIGUSR1);
  if (pthread_sigmask(SIG_BLOCK, &mask, nullptr) != 0) return -1;
  return signalfd(-1, &mask, SFD_CLOEXEC);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const int descriptor = SignalDescriptor();
  if (descriptor < 0) return 1;
  QApplication application(argc, argv);
  std::FILE* const findings = vorda::bench::OpenFindings();
  const std::chrono::seconds still(std::atoi(argv[1]));
  QSocketNotifier arrival(descriptor, QSocketNotifier::Read);
  QObject::connect(&arrival, &QSocketNotifier::activated, [&] {
    arrival.setEnabled(false);
    const std::int64_t began = vorda::bench::Now();
    std::this_thread::sleep_for(still);
    std::fprintf(findings, "%lld\n", static_cast<long long>((vorda::bench::Now() - began) / kMillisecond));
  });
  return vorda::bench::RunServer(application);
}
