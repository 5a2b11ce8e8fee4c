// How the program ends, and what asks it to.

#pragma once

#include <QObject>

#include <functional>

namespace vorda::platform {

// Ends the program at once: standard streams are flushed, what serial lines have not sent is dropped, nothing
// else runs, whatever boxes and loops are open.
[[noreturn]] void EndProgram(int exitCode);

// A pipe or socket that nobody reads any more fails a write, and so does a file that may grow no further;
// without this they would end the program. To be called first thing: standard error may be such a pipe.
void IgnoreBrokenPipes();

// Calls `handler` on the interface thread for SIGTERM, SIGINT and SIGHUP, also from inside a nested event
// loop. One watcher a program; it lives as long as the object.
class TerminationSignals : public QObject {
 public:
  explicit TerminationSignals(std::function<void()> handler);
  ~TerminationSignals() override;
};

}  // namespace vorda::platform
