// Another process of a test's own, made by a fork.

#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace vorda::test {

// Runs `work` and ends with its result.
class OtherProcess {
 public:
  explicit OtherProcess(const std::function<bool()>& work) : id_(::fork()) {
    if (id_ == 0) ::_exit(work() ? 0 : 1);
  }
  // A test that failed has left the loop that this one may wait for.
  ~OtherProcess() { Kill(); }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  // Waits for its end.
  bool Succeeded() {
    if (id_ > 0 && ::waitpid(id_, &status_, 0) == id_) id_ = -1;
    return id_ == -1 && WIFEXITED(status_) && WEXITSTATUS(status_) == 0;
  }
  bool HasEnded() {
    if (id_ > 0 && ::waitpid(id_, &status_, WNOHANG) == id_) id_ = -1;
    return id_ == -1;
  }
  // Waits until it has stopped itself by SIGSTOP; false when it ended instead.
  bool HasStopped() {
    int status = 0;
    if (id_ <= 0 || ::waitpid(id_, &status, WUNTRACED) != id_) return false;
    if (WIFSTOPPED(status)) return true;
    id_ = -1;
    status_ = status;
    return false;
  }
  void GoOn() const { ::kill(id_, SIGCONT); }
  void Kill() {
    if (id_ <= 0) return;
    ::kill(id_, SIGKILL);
    Succeeded();
  }

 private:
  pid_t id_;
  int status_ = -1;
};

}  // namespace vorda::test
