// The processes that were started: their ends are collected, and those of the lowest priority have it.

#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/Process.h"
#include "platform/RunningProcesses.h"
#include "support/EventLoop.h"
#include "support/ProcFile.h"
#include "support/ScenarioEnd.h"

namespace vorda::platform {
namespace {

using test::WaitUntil;

// How the kernel ranks the process's session among the others; "" where sessions are no groups to it.
std::string SessionPriority(const std::string& process) {
  const std::string group = test::ReadProcFile("/proc/" + process + "/autogroup");
  return group.substr(std::min(group.find("nice"), group.size()));
}
std::string SessionPriority(pid_t process) {
  return SessionPriority(std::to_string(process));
}
// What a session of that priority tells there.
std::string Expected(const std::string& priority) {
  return std::filesystem::exists("/proc/self/autogroup") ? "nice " + priority + "\n" : "";
}

// A child that isn't the list's. It has ended and waits for its owner.
class ForeignChild {
 public:
  ForeignChild() {
    char name[] = "false";
    char* const words[] = {name, nullptr};
    EXPECT_EQ(::posix_spawnp(&process_, name, nullptr, nullptr, words, environ), 0);
    siginfo_t ended = {};
    EXPECT_EQ(::waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOWAIT), 0);
  }
  ~ForeignChild() {
    int status = 0;
    EXPECT_EQ(::waitpid(process_, &status, WNOHANG), process_);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
  }
  ForeignChild(const ForeignChild&) = delete;
  ForeignChild& operator=(const ForeignChild&) = delete;

 private:
  pid_t process_ = 0;
};

class RunningProcessesTest : public ::testing::Test {
 protected:
  ~RunningProcessesTest() override { EndAll(); }

  pid_t Start(const ProcessStart& start) {
    ProcessInformation information;
    EXPECT_TRUE(StartProcess(start, information));
    return static_cast<pid_t>(information.processId);
  }
  pid_t StartEnding() { return Start({"/bin/true", {}, false}); }
  // Far longer than the test.
  pid_t StartHanging(bool lowestPriority = false) {
    const pid_t process = Start({"/bin/sleep", {"600"}, lowestPriority});
    hanging_.push_back(process);
    return process;
  }
  void EndAll() {
    for (const pid_t process : hanging_)
      if (Running().Holds(process)) ::kill(process, SIGKILL);
    EXPECT_TRUE(WaitUntil([] { return RunningProcessCount() == 0; }, 20000));
    hanging_.clear();
  }
  // Whether it has ended and left nothing behind. Only looks.
  static bool IsCollected(pid_t process) {
    siginfo_t ended = {};
    return ::waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT) == -1 &&
           errno == ECHILD;
  }

  std::vector<pid_t> hanging_;
};

TEST_F(RunningProcessesTest, LowestPriorityIsThatOfTheSessionToo) {
  const std::string own = SessionPriority("self");
  const pid_t process = StartHanging(true);
  EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(process)), 19);
  EXPECT_TRUE(WaitUntil([&] { return SessionPriority(process) == Expected("19"); }))
      << SessionPriority(process);
  EXPECT_EQ(SessionPriority("self"), own);
}

using RunningProcessesDeathTest = RunningProcessesTest;

// In a session of the scenario's own: the one that the tests were started in may have any priority, or none
// that could be lowered, and belongs to other programs too.
TEST_F(RunningProcessesDeathTest, OrdinaryStartLeavesItsSessionAlone) {
  const auto scenario = [this] {
    ASSERT_EQ(::setsid(), ::getpid());
    const std::string before = SessionPriority("self");
    const pid_t process = StartHanging();
    EXPECT_EQ(::getsid(process), ::getpid());
    EXPECT_EQ(SessionPriority(process), before);
    EXPECT_EQ(SessionPriority("self"), before);
    EndAll();
  };
  EXPECT_EXIT((scenario(), test::EndScenario()), ::testing::ExitedWithCode(test::kScenarioHeld), "");
}

// From an ordinary user the kernel takes one such change at a time.
TEST_F(RunningProcessesDeathTest, OrdinaryUsersManySessionsAreAllLoweredInTheEnd) {
  const auto scenario = [this] {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() == 0) {
      ASSERT_EQ(::setgroups(0, nullptr), 0);
      ASSERT_EQ(::setresgid(kNobody, kNobody, kNobody), 0);
      ASSERT_EQ(::setresuid(kNobody, kNobody, kNobody), 0);
    }
    for (int i = 0; i < 6; ++i) StartHanging(true);
    const auto lowered = [](pid_t process) { return SessionPriority(process) == Expected("19"); };
    EXPECT_TRUE(WaitUntil([&] { return std::all_of(hanging_.begin(), hanging_.end(), lowered); }, 20000));
    EndAll();
  };
  EXPECT_EXIT((scenario(), test::EndScenario()), ::testing::ExitedWithCode(test::kScenarioHeld), "");
}

TEST_F(RunningProcessesTest, EndIsCollectedThoughAnothersChildStandsFirst) {
  const ForeignChild foreign;
  const pid_t process = StartEnding();
  EXPECT_TRUE(WaitUntil([&] { return ProcessHasEnded({process}); }));
  EXPECT_TRUE(IsCollected(process));
}

TEST_F(RunningProcessesTest, EndBehindAnothersChildIsCollectedThoughNobodyAsks) {
  const ForeignChild foreign;
  const pid_t process = StartEnding();
  EXPECT_TRUE(WaitUntil([&] { return IsCollected(process); }));
}

TEST_F(RunningProcessesTest, HundredsThatHangKeepNoEndFromBeingCollected) {
  constexpr int kHanging = 300;
  for (int i = 0; i < kHanging / 2; ++i) StartHanging();
  std::vector<pid_t> ending;
  for (int i = 0; i < 20; ++i) ending.push_back(StartEnding());
  for (int i = 0; i < kHanging / 2; ++i) StartHanging();
  EXPECT_TRUE(WaitUntil([] { return RunningProcessCount() == kHanging; }, 20000));
  for (const pid_t process : ending) EXPECT_TRUE(IsCollected(process)) << process;
  for (const pid_t process : hanging_) EXPECT_FALSE(ProcessHasEnded({process})) << process;
}

TEST_F(RunningProcessesTest, HundredsThatHangBehindAnothersChildDoNeither) {
  const ForeignChild foreign;
  constexpr int kHanging = 300;
  for (int i = 0; i < kHanging; ++i) StartHanging();
  const pid_t process = StartEnding();
  EXPECT_TRUE(WaitUntil([&] { return IsCollected(process); }, 20000));
  EXPECT_EQ(RunningProcessCount(), kHanging);
}

}  // namespace
}  // namespace vorda::platform
