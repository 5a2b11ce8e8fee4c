// The whole station from outside: the demo plays real wire copy and speech into the real server, through a
// real sound server, and checks what is filed and recorded. Each of these takes about a quarter of a minute
// of real time, since copy comes at the pace of its line and sound at its own.

#include <gtest/gtest.h>

#include "station/Program.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

constexpr int kMilliseconds = 90000;

std::vector<std::string> DemoCommand(const TempDirectory& directory) {
  return {"env",      "-u",           "DISPLAY",           "-u",       "WAYLAND_DISPLAY",  "python3",
          VORDA_DEMO, "--build",      VORDA_BIN_DIR "/..", "--folder", directory / "demo", "--seconds",
          "8",        "--no-pictures"};
}

TEST(DemoTest, EveryStoryOfTheWireIsFiled) {
  const TempDirectory directory;
  Program demo(DemoCommand(directory));
  EXPECT_EQ(demo.ExitCode(kMilliseconds), 0) << demo.output();
  EXPECT_NE(demo.output().find("60 sent, 60 filed, 0 missing, 0 unexpected"), std::string::npos)
      << demo.output();
  EXPECT_NE(demo.output().find("Recordings: 4 items said, 4 recordings ended"), std::string::npos)
      << demo.output();
  EXPECT_NE(demo.output().find("Wall: 60 carts in 81 files, none changed"), std::string::npos)
      << demo.output();
}

TEST(DemoTest, StoryThatIsLeftOutIsNoticed) {
  const TempDirectory directory;
  std::vector<std::string> command = DemoCommand(directory);
  command.insert(command.end(), {"--drop", "4"});
  Program demo(command);
  EXPECT_EQ(demo.ExitCode(kMilliseconds), 1) << demo.output();
  EXPECT_NE(demo.output().find("60 sent, 59 filed, 1 missing, 0 unexpected"), std::string::npos)
      << demo.output();
}

}  // namespace
}  // namespace vorda::test
