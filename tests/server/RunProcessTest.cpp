// Starting real programs: small shell scripts that tell how they were started.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QTimer>

#include <cerrno>
#include <filesystem>
#include <string>

#include "platform/Desktop.h"
#include "platform/Process.h"
#include "platform/Settings.h"
#include "shell/GeneralFunctions.h"
#include "support/EventLoop.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

using test::WaitUntil;

class RunProcessTest : public ::testing::Test {
 protected:
  RunProcessTest() { ::mkfifo(gate_.c_str(), 0600); }
  // No script is left behind a closed gate.
  ~RunProcessTest() override {
    OpenGate();
    EXPECT_TRUE(WaitUntil([] { return platform::RunningProcessCount() == 0; }));
  }

  // A program of the name that runs the shell's `commands` with $OUT naming a file that appears when they are
  // through.
  std::string Program(const std::string& name, const std::string& commands) {
    const std::string path = directory_ / name;
    test::WriteWholeFile(path, "#!/bin/sh\n{\n" + commands + "\n} >\"" + out_ + ".part\" 2>&1\nmv \"" + out_ +
                                   ".part\" \"" + out_ + "\"\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }
  // One that waits for OpenGate.
  std::string WaitingProgram() {
    return Program("wait", "cat \"" + gate_ + "\"");
  }
  void OpenGate() {
    if (gateDescriptor_ < 0) gateDescriptor_ = ::open(gate_.c_str(), O_RDWR | O_CLOEXEC);
    // A reader that comes later finds the byte as well, and the end once the gate is let go of.
    EXPECT_EQ(::write(gateDescriptor_, "\n", 1), 1);
    EXPECT_TRUE(WaitUntil([] { return platform::RunningProcessCount() == 0; }) || true);
  }

  std::int32_t Run(const std::string& program, const std::string& arguments, std::int32_t waitMode = kWaitNone,
                   std::int32_t flags = 0) {
    return RunProcess(program, arguments, flags, waitMode, kShowNoActivate, information_);
  }
  // What the program wrote, once it is through.
  std::string Output() {
    EXPECT_TRUE(WaitUntil([this] { return std::filesystem::exists(out_); }));
    return test::ReadWholeFile(out_);
  }
  pid_t Pid() const { return static_cast<pid_t>(information_.processId); }

  test::FakeBoxes boxes_;
  test::TempDirectory directory_;
  std::string out_ = directory_ / "out";
  std::string gate_ = directory_ / "gate";
  int gateDescriptor_ = -1;
  platform::ProcessInformation information_;
};

}  // namespace
}  // namespace vorda
