// How the program ends, and what asks it to.

#pragma once

#include <QObject>

#include <functional>

namespace vorda::platform {

// Ends the program at once: standard streams are flushed, nothing else runs, whatever boxes and loops are
// open.
[[noreturn]] void EndProgram(int exitCode);

// Calls `handler` on the interface thread for SIGTERM, SIGINT and SIGHUP, also from inside a nested event
// loop. One watcher a program; it lives as long as the object.
class TerminationSignals : public QObject {
 public:
  explicit TerminationSignals(std::function<void()> handler);
  ~TerminationSignals() override;
};

}  // namespace vorda::platform
