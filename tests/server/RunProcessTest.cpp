// Starting real programs: small shell scripts that tell how they were started.

#include <QTimer>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/Desktop.h"
#include "platform/Process.h"
#include "platform/Settings.h"
#include "shell/GeneralFunctions.h"
#include "support/EventLoop.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

using platform::Pointer;
using test::WaitUntil;

// A mask of signals out of a process's status; without the two that are the C library's own affair.
unsigned long OrdinarySignals(const std::string& status, const std::string& name) {
  const std::size_t line = status.find(name);
  if (line == std::string::npos) return ~0UL;
  return std::stoul(status.substr(line + name.size()), nullptr, 16) & 0x7FFFFFFFUL;
}

class RunProcessTest : public ::testing::Test {
 protected:
  RunProcessTest() {
    EXPECT_EQ(::mkfifo(gatePath_.c_str(), 0600), 0);
    gate_ = ::open(gatePath_.c_str(), O_RDWR | O_CLOEXEC);
  }
  ~RunProcessTest() override {
    OpenGate();  // for a script that a failed test left behind it
    EXPECT_TRUE(WaitUntil([] { return platform::RunningProcessCount() == 0; }));
    ::close(gate_);
  }

  // A program that runs the shell's `commands`; their output is in out_ when they are through.
  std::string Program(const std::string& name, const std::string& commands) {
    const std::string path = directory_ / name;
    const std::string part = out_ + ".part";
    test::WriteWholeFile(
        path, "#!/bin/sh\n{\n" + commands + "\n} >'" + part + "' 2>&1\nmv '" + part + "' '" + out_ + "'\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }
  std::string TellingArguments(const std::string& name) {
    return Program(name, "printf '%s\\n' \"$#\" \"$@\"");
  }
  // A program that goes no further until the gate is opened.
  std::string WaitingProgram() { return Program("wait", "read line <'" + gatePath_ + "'"); }
  void OpenGate() { EXPECT_EQ(::write(gate_, "\n", 1), 1); }

  std::int32_t Run(const std::string& program, const std::string& arguments,
                   std::int32_t waitMode = kWaitNone, std::int32_t flags = 0) {
    return RunProcess(program, arguments, flags, waitMode, kShowNoActivate, information_);
  }
  // What the program wrote, once it is through.
  std::string Output() {
    EXPECT_TRUE(WaitUntil([this] { return std::filesystem::exists(out_); }));
    return test::ReadWholeFile(out_);
  }
  pid_t Pid() const { return static_cast<pid_t>(information_.processId); }
  bool HasEnded() const { return platform::ProcessHasEnded(information_); }

  test::FakeBoxes boxes_;
  test::TempDirectory directory_;
  std::string out_ = directory_ / "out";
  std::string gatePath_ = directory_ / "gate";
  int gate_ = -1;
  platform::ProcessInformation information_;
};

TEST_F(RunProcessTest, OneArgumentArrivesAsItIs) {
  EXPECT_NE(Run(TellingArguments("tool"), "/srv/VOR1.RA1|/srv/vorda.ini"), 0);
  EXPECT_EQ(Output(), "1\n/srv/VOR1.RA1|/srv/vorda.ini\n");
}

TEST_F(RunProcessTest, BlanksPartTheArgumentsAndQuotationMarksHoldThemTogether) {
  EXPECT_NE(Run(TellingArguments("tool"), "/srv/my  news|x \"a b\" D:\\x\\"), 0);
  EXPECT_EQ(Output(), "4\n/srv/my\nnews|x\na b\nD:\\x\\\n");
}

TEST_F(RunProcessTest, NoShellReadsTheArguments) {
  EXPECT_NE(Run(TellingArguments("tool"), "$HOME;`id` * 'a b'"), 0);
  EXPECT_EQ(Output(), "4\n$HOME;`id`\n*\n'a\nb'\n");
}

TEST_F(RunProcessTest, NoArgumentsAreNone) {
  EXPECT_NE(Run(TellingArguments("tool"), ""), 0);
  EXPECT_EQ(Output(), "0\n");
}

TEST_F(RunProcessTest, BlankInTheProgramsPathIsPartOfIt) {
  std::filesystem::create_directory(directory_ / "my tools");
  EXPECT_NE(Run(TellingArguments("my tools/Item File"), "x"), 0);
  EXPECT_EQ(Output(), "1\nx\n");
}

TEST_F(RunProcessTest, ProgramsTextMayBringArgumentsOfItsOwn) {
  EXPECT_NE(Run(TellingArguments("tool") + " -v \"two words\"", "/srv/VOR1.RA1|/srv/vorda.ini x"), 0);
  EXPECT_EQ(Output(), "4\n-v\ntwo words\n/srv/VOR1.RA1|/srv/vorda.ini\nx\n");
}

TEST_F(RunProcessTest, ProgramInQuotationMarksStartsWithAndWithoutArgumentsOfItsOwn) {
  std::filesystem::create_directory(directory_ / "my tools");
  const std::string quoted = "\"" + TellingArguments("my tools/Item File") + "\"";
  EXPECT_NE(Run(quoted, "x y"), 0);
  EXPECT_EQ(Output(), "2\nx\ny\n");
  std::filesystem::remove(out_);
  EXPECT_NE(Run(quoted + " -v", "x"), 0);
  EXPECT_EQ(Output(), "2\n-v\nx\n");
}

TEST_F(RunProcessTest, ProgramThatIsThereAsAWholeComesFirst) {
  Program("tool", "echo up to the blank");
  Program("tool one", "echo whole");
  EXPECT_NE(Run(directory_ / "tool one", "x"), 0);
  EXPECT_EQ(Output(), "whole\n");
}

TEST_F(RunProcessTest, ExeThatIsNotThereIsTriedWithoutItsSuffix) {
  TellingArguments("ItemFile");
  EXPECT_NE(Run(directory_ / "ItemFile.exe", "x"), 0);
  EXPECT_EQ(Output(), "1\nx\n");
}

TEST_F(RunProcessTest, ExeThatIsThereComesFirst) {
  Program("ItemFile", "echo without");
  Program("ItemFile.exe", "echo with");
  EXPECT_NE(Run(directory_ / "ItemFile.exe", "x"), 0);
  EXPECT_EQ(Output(), "with\n");
}

TEST_F(RunProcessTest, DriveTextNamesAProgramToo) {
  platform::Settings settings;
  settings.drives['P'] = directory_.path();
  const platform::ScopedSettings scoped(settings);
  TellingArguments("tool.exe");
  EXPECT_NE(Run("P:\\TOOL.EXE", "x"), 0);
  EXPECT_EQ(Output(), "1\nx\n");
}

TEST_F(RunProcessTest, WhatCannotBeStartedAnswersZeroWithoutAWord) {
  test::WriteWholeFile(directory_ / "text", "no program");
  for (const std::int32_t waitMode : {kWaitNone, kWaitYielding, kWaitBlocking}) {
    EXPECT_EQ(Run(directory_ / "missing.exe", "x", waitMode), 0);
    EXPECT_EQ(Run(directory_ / "missing/tool", "x", waitMode), 0);
    EXPECT_EQ(Run(directory_ / "text", "x", waitMode), 0);
    EXPECT_EQ(Run(directory_.path(), "x", waitMode), 0);
    EXPECT_EQ(Run("", "x", waitMode), 0);
    EXPECT_EQ(Run(" ", "", waitMode), 0);
    EXPECT_EQ(Run("\"" + (directory_ / "missing tool") + "\" -v", "x", waitMode), 0);
  }
  EXPECT_EQ(information_.processId, 0);
  EXPECT_EQ(platform::RunningProcessCount(), 0);
}

TEST_F(RunProcessTest, PointerIsTheHourglassUntilTheStartAndThenDefaultWhateverItWas) {
  std::vector<Pointer> pointers;
  const std::string tool = TellingArguments("tool");
  platform::SetPointer(Pointer::Hourglass);
  {
    const platform::ScopedHook noting(platform::PointerHook(),
                                      [&](Pointer pointer) { pointers.push_back(pointer); });
    Run(tool, "");
    Run(directory_ / "missing", "");
  }
  EXPECT_EQ(pointers, (std::vector<Pointer>{Pointer::Hourglass, Pointer::Default, Pointer::Hourglass,
                                            Pointer::Default}));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
  Output();
}

TEST_F(RunProcessTest, IdlePriorityClassIsTheLowestPriority) {
  ASSERT_NE(Run(WaitingProgram(), "", kWaitNone, kIdlePriorityClass), 0);
  EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(Pid())), 19);
  OpenGate();
}

TEST_F(RunProcessTest, WithoutItThePriorityIsTheServersOwn) {
  ASSERT_NE(Run(WaitingProgram(), ""), 0);
  EXPECT_EQ(::getpriority(PRIO_PROCESS, static_cast<id_t>(Pid())), ::getpriority(PRIO_PROCESS, 0));
  OpenGate();
}

TEST_F(RunProcessTest, NoFileAndNoSocketIsInherited) {
  const std::string marker = directory_ / "marker";
  const int file = ::open(marker.c_str(), O_RDWR | O_CREAT, 0600);
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  struct stat status {};
  ASSERT_EQ(::fstat(socket, &status), 0);
  EXPECT_NE(Run(Program("tool", "ls -l /proc/$$/fd"), ""), 0);
  const std::string descriptors = Output();
  EXPECT_EQ(descriptors.find(marker), std::string::npos) << descriptors;
  EXPECT_EQ(descriptors.find("socket:[" + std::to_string(status.st_ino) + "]"), std::string::npos)
      << descriptors;
  EXPECT_NE(descriptors.find(" 0 -> /dev/null"), std::string::npos) << descriptors;
  ::close(file);
  ::close(socket);
}

TEST_F(RunProcessTest, NoBlockedOrIgnoredSignalIsInherited) {
  sigset_t blocked;
  sigset_t before;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGUSR1);
  ::sigprocmask(SIG_BLOCK, &blocked, &before);
  const auto ignored = ::signal(SIGUSR2, SIG_IGN);
  // No shell, which plays with its own signals.
  const std::int32_t started = Run("/bin/cp", "/proc/self/status " + out_);
  ::signal(SIGUSR2, ignored);
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
  ASSERT_NE(started, 0);
  ASSERT_TRUE(WaitUntil([this] { return HasEnded(); }));
  const std::string status = test::ReadWholeFile(out_);
  EXPECT_EQ(OrdinarySignals(status, "SigBlk:"), 0U) << status;
  EXPECT_EQ(OrdinarySignals(status, "SigIgn:"), 0U) << status;
}

TEST_F(RunProcessTest, ProcessStandsInAGroupOfItsOwn) {
  ASSERT_NE(Run(WaitingProgram(), ""), 0);
  EXPECT_EQ(::getpgid(Pid()), Pid());
  OpenGate();
}

TEST_F(RunProcessTest, ProcessAtTheLowestPriorityStandsInASessionOfItsOwn) {
  ASSERT_NE(RunProcess(WaitingProgram(), "", kIdlePriorityClass, kWaitNone, 0, information_), 0);
  EXPECT_EQ(::getsid(Pid()), Pid());
  OpenGate();
}

TEST_F(RunProcessTest, NoZombieIsLeftThoughNobodyAsks) {
  ASSERT_NE(Run(TellingArguments("tool"), ""), 0);
  const std::string process = "/proc/" + std::to_string(Pid());
  EXPECT_TRUE(WaitUntil([&] { return !std::filesystem::exists(process); }));
  EXPECT_EQ(::waitpid(Pid(), nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(RunProcessTest, StartWithoutAWaitReturnsAtOnce) {
  for (const std::int32_t waitMode : {kWaitNone, 1, 2, 9998, -2}) {
    ASSERT_NE(Run(WaitingProgram(), "", waitMode), 0);
    EXPECT_FALSE(HasEnded()) << waitMode;
    OpenGate();
    EXPECT_TRUE(WaitUntil([this] { return HasEnded(); })) << waitMode;
  }
}

class WaitingRunProcessTest : public RunProcessTest, public ::testing::WithParamInterface<std::int32_t> {};

TEST_P(WaitingRunProcessTest, ReturnsWhenTheProcessHasEndedAndLetsEventsRunMeanwhile) {
  bool running = false;
  QTimer::singleShot(0, [&] {
    running = !HasEnded() && !std::filesystem::exists(out_);
    OpenGate();
  });
  // The timer alone opens the gate: without events this would never return.
  EXPECT_NE(RunProcess(WaitingProgram(), "", 0, GetParam(), 0, information_), 0);
  EXPECT_TRUE(running);
  EXPECT_TRUE(HasEnded());
  EXPECT_TRUE(std::filesystem::exists(out_));
}

INSTANTIATE_TEST_SUITE_P(WaitModes, WaitingRunProcessTest, ::testing::Values(-1, 9999));

}  // namespace
}  // namespace vorda
