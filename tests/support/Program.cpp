#include "support/Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>

#include "support/EventLoop.h"

namespace vorda::test {

Program::Program(const std::vector<std::string>& command) {
  std::array<int, 2> input = {};
  if (::pipe2(input.data(), O_CLOEXEC) != 0) std::abort();
  std::vector<char*> words;
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (directory_ / "output").c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND, 0600);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  if (::posix_spawnp(&process_, words[0], &actions, nullptr, words.data(), environ) != 0) std::abort();
  posix_spawn_file_actions_destroy(&actions);
  ::close(input[0]);
  input_ = input[1];
}

Program::~Program() {
  if (Runs()) {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  ::close(input_);
}

bool Program::Runs() {
  int status = 0;
  if (exitCode_ < 0 && ::waitpid(process_, &status, WNOHANG) == process_) {
    exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }
  return exitCode_ < 0;
}

int Program::ExitCode(int milliseconds) {
  WaitUntil([this] { return !Runs(); }, milliseconds);
  return exitCode_;
}

void Program::Signal(int signal) {
  if (Runs()) ::kill(process_, signal);
}

void Program::Type(std::string_view text) {
  if (::write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
}

std::string Program::output() const {
  return ReadWholeFile(directory_ / "output");
}

int RunToEnd(const std::vector<std::string>& command) {
  return Program(command).ExitCode();
}

}  // namespace vorda::test
