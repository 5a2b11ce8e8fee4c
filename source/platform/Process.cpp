#include "platform/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "platform/RunningProcesses.h"
#include "platform/Text.h"

extern char** environ;

namespace vorda::platform {

namespace {

// Attributes and file actions of a detached start: own process group, no signal blocked or ignored, nothing
// inherited. One at the lowest priority has a session too, by which the kernel groups processes: in a group
// of its own each story tool would wait for its turn while the server waits for its start.
class DetachedStart {
 public:
  explicit DetachedStart(bool lowestPriority) {
    const int apart = lowestPriority ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawn_file_actions_init(&actions_);
    sigset_t none;
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    sigset_t all;
    ::sigfillset(&all);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
    ::posix_spawnattr_setflags(&attributes_,
                               static_cast<short>(apart | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  ~DetachedStart() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }
  DetachedStart(const DetachedStart&) = delete;
  DetachedStart& operator=(const DetachedStart&) = delete;

  pid_t Run(const std::string& program, const std::vector<std::string>& arguments) const {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t process = 0;
    return ::posix_spawn(&process, program.c_str(), &actions_, &attributes_, argv.data(), environ) == 0
               ? process
               : 0;
  }

 private:
  posix_spawnattr_t attributes_;
  posix_spawn_file_actions_t actions_;
};

// The program to run: as named, or without its ".exe" where that isn't there.
std::string ExistingProgram(const std::string& named) {
  constexpr std::string_view kSuffix = ".exe";
  if (named.size() <= kSuffix.size() || ::access(named.c_str(), F_OK) == 0) return named;
  const std::size_t stem = named.size() - kSuffix.size();
  return SameText(std::string_view(named).substr(stem), kSuffix) ? named.substr(0, stem) : named;
}

bool SpawnDetached(const ProcessStart& start, ProcessInformation& information) {
  const pid_t process =
      DetachedStart(start.lowestPriority).Run(ExistingProgram(start.program), start.arguments);
  Running().Collect();
  if (process == 0) return false;
  if (start.lowestPriority) GiveLowestPriority(process);
  Running().Add(process);
  information.processId = process;
  return true;
}

}  // namespace

Hook<bool(const ProcessStart&, ProcessInformation&)>& ProcessHook() {
  static Hook<bool(const ProcessStart&, ProcessInformation&)> hook(SpawnDetached);
  return hook;
}

bool StartProcess(const ProcessStart& start, ProcessInformation& information) {
  return ProcessHook()(start, information);
}

bool ProcessHasEnded(const ProcessInformation& information) {
  Running().Collect();
  return !Running().Holds(information.processId);
}

int RunningProcessCount() {
  Running().Collect();
  return Running().Count();
}

std::vector<std::string> SplitArguments(std::string_view text) {
  std::vector<std::string> arguments;
  std::string argument;
  bool quoted = false;
  bool begun = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\\') {
      const std::size_t after = std::min(text.find_first_not_of('\\', i), text.size());
      const std::size_t count = after - i;
      const bool beforeQuote = after < text.size() && text[after] == '"';
      argument.append(beforeQuote ? count / 2 : count, '\\');
      begun = true;
      i = after - 1;
      if (beforeQuote && count % 2 == 1) {
        argument += '"';
        i = after;
      }
    } else if (c == '"') {
      quoted = !quoted;
      begun = true;
    } else if ((c == ' ' || c == '\t') && !quoted) {
      if (begun) arguments.push_back(std::exchange(argument, {}));
      begun = false;
    } else {
      argument += c;
      begun = true;
    }
  }
  if (begun) arguments.push_back(std::move(argument));
  return arguments;
}

}  // namespace vorda::platform
