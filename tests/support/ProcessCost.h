// What a program costs the machine: memory and processor time.

#pragma once

#include <sys/types.h>
#include <time.h>

#include <cstdint>
#include <sstream>
#include <string>

#include "support/ProcFile.h"

namespace vorda::test {

// Bytes of memory that a running program occupies; 0 when there is none of that number.
inline std::int64_t ResidentMemory(pid_t process) {
  std::istringstream status(ReadProcFile("/proc/" + std::to_string(process) + "/status"));
  for (std::string word; status >> word;) {
    if (word != "VmRSS:") continue;
    std::int64_t kibibytes = 0;
    status >> kibibytes;
    return kibibytes * 1024;
  }
  return 0;
}

// The processor time that a program has had, in milliseconds; 0 stands for this one. -1 when there is none of
// that number.
inline std::int64_t ProcessorTime(pid_t process = 0) {
  clockid_t clock{};
  timespec used{};
  if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &used) != 0) return -1;
  return std::int64_t{used.tv_sec} * 1000 + used.tv_nsec / 1'000'000;
}

}  // namespace vorda::test
