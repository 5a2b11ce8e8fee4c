// What the tests themselves read of other processes, which may end meanwhile.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "platform/Descriptor.h"
#include "support/ProcFile.h"

namespace vorda::platform {
namespace {

using test::ReadProcFile;

TEST(ProcFileTest, OwnStatusIsReadWhole) {
  const std::string status = ReadProcFile("/proc/self/stat");
  EXPECT_EQ(status.substr(0, status.find(' ')), std::to_string(::getpid()));
  EXPECT_TRUE(status.ends_with('\n'));
}

// What is opened before the end can still be opened through its descriptor, and reading it fails.
TEST(ProcFileTest, ProcessThatEndsBehindTheOpeningTellsNothing) {
  pid_t process = 0;
  char name[] = "true";
  char* const words[] = {name, nullptr};
  ASSERT_EQ(::posix_spawnp(&process, name, nullptr, nullptr, words, environ), 0);
  const std::string path = "/proc/" + std::to_string(process) + "/stat";
  const Descriptor opened = OpenFile(path, O_RDONLY);
  ASSERT_TRUE(opened.isOpen());
  ASSERT_EQ(::waitpid(process, nullptr, 0), process);
  EXPECT_EQ(ReadProcFile("/proc/self/fd/" + std::to_string(opened.number())), "");
  EXPECT_EQ(ReadProcFile(path), "");
}

}  // namespace
}  // namespace vorda::platform
