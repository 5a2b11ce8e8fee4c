// A program run from outside: started, listened to, stopped.

#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/TempDirectory.h"

namespace vorda::test {

class Program {
 public:
  // Starts it; the command's first word is a path, or a name that is looked for in PATH. A program that can't
  // be started aborts the test.
  explicit Program(const std::vector<std::string>& command);
  // Kills it when it still runs.
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  bool Runs();
  // Waits for its end: the exit code, 1000 + the signal that ended it, or -1 when it still runs.
  int ExitCode(int milliseconds = 20000);
  void Signal(int signal);
  void Type(std::string_view text);  // on its standard input
  // What it has written by now, standard output and standard error together.
  std::string output() const;

 private:
  TempDirectory directory_;
  pid_t process_ = -1;
  int input_ = -1;
  int exitCode_ = -1;
};

// Runs a program to its end and answers its exit code.
int RunToEnd(const std::vector<std::string>& command);

}  // namespace vorda::test
