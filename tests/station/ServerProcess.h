// The running server as the system sees it.

#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/EventLoop.h"
#include "support/ProcFile.h"
#include "support/ProcessCost.h"

namespace vorda::test {

// The fields of a process's status that stand behind its name; empty when it is gone.
inline std::vector<std::string> StatusFields(pid_t process) {
  const std::string status = ReadProcFile("/proc/" + std::to_string(process) + "/stat");
  std::vector<std::string> fields;
  if (status.rfind(')') == std::string::npos) return fields;
  std::istringstream text(status.substr(status.rfind(')') + 1));
  for (std::string field; text >> field;) fields.push_back(field);
  return fields;
}

// A process's children, those that have ended and were not collected included.
inline std::vector<pid_t> ChildrenOf(pid_t process) {
  std::vector<pid_t> children;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    const std::vector<std::string> fields = StatusFields(std::stoi(name));
    if (fields.size() > 1 && fields[1] == std::to_string(process)) children.push_back(std::stoi(name));
  }
  return children;
}

// The server that this process has started; -1 when there is none.
inline pid_t ServerProcess() {
  for (const pid_t child : ChildrenOf(::getpid())) {
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/" + std::to_string(child) + "/exe", ignored);
    if (program.filename() == "vdserver") return child;
  }
  return -1;
}

// Whether a process leaves the processor alone: it has less than half of the second for which it is watched.
inline bool IsQuiet(pid_t process) {
  const std::int64_t before = ProcessorTime(process);
  return before >= 0 && !WaitUntil([&] { return ProcessorTime(process) - before >= 500; }, 1000);
}

}  // namespace vorda::test
