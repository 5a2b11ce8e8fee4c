#include "platform/RunningProcesses.h"

#include <QCoreApplication>
#include <QTimer>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/Descriptor.h"

namespace vorda::platform {

namespace {

constexpr int kCollectInterval = 500;  // milliseconds
constexpr int kLowest = 19;
// The kernel takes a change of a session's priority only so often from an ordinary user.
constexpr int kPriorityRetryInterval = 150;  // milliseconds
constexpr int kPriorityTries = 40;

// The kernel may schedule each session as a group of its own, in which a process's own priority counts among
// its fellows only; then the group's has to be lowered too.
void LowerSession(pid_t process, int tries) {
  const Descriptor group = OpenFile("/proc/" + std::to_string(process) + "/autogroup", O_WRONLY);
  if (!group.isOpen()) return;  // the process has ended, or there are no such groups
  const std::string priority = std::to_string(kLowest);
  if (::write(group.number(), priority.data(), priority.size()) >= 0 || errno != EAGAIN || tries <= 1) return;
  if (QCoreApplication::instance() == nullptr) return;
  QTimer::singleShot(kPriorityRetryInterval, QCoreApplication::instance(), [process, tries] {
    // Its number may be another's by now.
    if (Running().Holds(process)) LowerSession(process, tries - 1);
  });
}

}  // namespace

RunningProcesses::RunningProcesses() = default;
RunningProcesses::~RunningProcesses() = default;

void RunningProcesses::Add(pid_t process) {
  processes_.insert(process);
  if (QCoreApplication::instance() == nullptr) return;
  if (!timer_) {
    timer_ = std::make_unique<QTimer>();
    timer_->setInterval(kCollectInterval);
    QObject::connect(timer_.get(), &QTimer::timeout, timer_.get(), [this] { Collect(); });
  }
  if (!timer_->isActive()) timer_->start();
}

void RunningProcesses::Collect() {
  for (;;) {
    siginfo_t ended = {};
    if (::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) != 0 || ended.si_pid == 0) break;
    if (processes_.erase(ended.si_pid) == 0) {
      // Somebody else's child stands first and waits for its owner: ours have to be asked one by one.
      std::erase_if(processes_, [](pid_t process) { return ::waitpid(process, nullptr, WNOHANG) != 0; });
      break;
    }
    ::waitpid(ended.si_pid, nullptr, WNOHANG);
  }
  if (processes_.empty() && timer_) timer_->stop();
}

bool RunningProcesses::Holds(std::int64_t process) const {
  return processes_.contains(static_cast<pid_t>(process));
}

RunningProcesses& Running() {
  static auto* running = new RunningProcesses;
  return *running;
}

void GiveLowestPriority(pid_t process) {
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(process), kLowest);
  LowerSession(process, kPriorityTries);
}

}  // namespace vorda::platform
