// Starting other programs and forgetting them.
//
// Stands in for CreateProcess. A process is started detached, in a process group of its own, with none of the
// server's files, ports or sockets; it is never waited for unless the caller says so, and its end is
// collected without leaving a zombie.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Hook.h"

namespace vorda::platform {

struct ProcessStart {
  std::string program;                 // native path; "X.exe" that isn't there is tried as "X"
  std::vector<std::string> arguments;  // without the program's name
  bool lowestPriority = false;
};

struct ProcessInformation {
  std::int64_t processId = 0;
};

// Starts the process. False when it can't be started; `information` is then untouched.
bool StartProcess(const ProcessStart& start, ProcessInformation& information);
Hook<bool(const ProcessStart&, ProcessInformation&)>& ProcessHook();

// True when a process that StartProcess started has ended (or was never heard of).
bool ProcessHasEnded(const ProcessInformation& information);

// How many started processes have not ended, as far as is known now.
int RunningProcessCount();

// A text of arguments taken apart as the C run-time does: blanks and tabs part, double quotation marks hold
// together, a backslash counts only before a quotation mark.
std::vector<std::string> SplitArguments(std::string_view text);

}  // namespace vorda::platform
