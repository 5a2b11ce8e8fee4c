// The processes that the server has started and not yet seen to end.

#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <unordered_set>

class QTimer;

namespace vorda::platform {

// Ends are collected at each start, and on a slow timer that runs only while there are any. The cost goes by
// the processes that have ended, not by those that hang.
class RunningProcesses {
 public:
  RunningProcesses();
  ~RunningProcesses();

  void Add(pid_t process);
  void Collect();
  bool Holds(std::int64_t process) const;
  int Count() const { return static_cast<int>(processes_.size()); }

 private:
  std::unordered_set<pid_t> processes_;
  std::unique_ptr<QTimer> timer_;
};

// The one list of the program. It is never destroyed, so that whatever ends late may still start a process.
RunningProcesses& Running();

// The lowest priority against everything else on the machine, also for a process in a session of its own.
void GiveLowestPriority(pid_t process);

}  // namespace vorda::platform
