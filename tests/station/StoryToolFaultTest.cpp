// Faults of the story tool under the real program.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <string>

#include "station/ServerProcess.h"
#include "station/Station.h"
#include "support/EventLoop.h"
#include "support/WallLists.h"

namespace vorda::test {
namespace {

namespace fs = std::filesystem;

class ServerStoryTool : public ::testing::Test {
 protected:
  ServerStoryTool() { station_.AddFeed(1, "CapturePort=1\r\n"); }
  ~ServerStoryTool() override { Release(); }

  void Start() {
    station_.Start();
    ASSERT_TRUE(station_.Connect(client_)) << station_.Server().output();
  }
  std::string Root() const { return fs::path(station_.News(1)).parent_path().string(); }
  std::string Tool() const { return Root() + "/tools/ItemFile"; }
  // Puts commands ahead of the tool's own, which hold it up at each story that begins with "hang" until
  // Release, or until the test ends, however it ends.
  void HangAtSomeStories() {
    const std::string hold = Root() + "/hold";
    const std::string commands = ReadWholeFile(Tool()).substr(std::string("#!/bin/sh\n").size());
    WriteWholeFile(hold, "");
    WriteWholeFile(Tool(), "#!/bin/sh\nread text <\"${1%%|*}\"\ncase $text in hang*) flock -s '" + hold +
                               "' true;; esac\n" + commands);
    lock_ = ::open(hold.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(lock_, LOCK_EX), 0);
  }
  void Release() {
    if (lock_ >= 0) ::close(lock_);
    lock_ = -1;
  }

  Station station_;
  StatusClient client_;

 private:
  int lock_ = -1;
};

TEST_F(ServerStoryTool, ManyThatHangHoldUpNothingAndLeaveNoZombie) {
  constexpr std::size_t kHanging = 60;
  HangAtSomeStories();
  Start();
  const pid_t server = ServerProcess();
  std::string sent;
  for (std::size_t i = 0; i < kHanging; ++i) sent += "\x01hang\x04";
  ASSERT_TRUE(station_.com1->Write(sent));
  ASSERT_TRUE(WaitUntil([&] { return ChildrenOf(server).size() == kHanging; }, 20000));
  ASSERT_TRUE(station_.com1->Write("\x01later\x04"));
  ASSERT_TRUE(station_.WaitForStories(1));
  EXPECT_EQ(station_.Stories().at(0).text, "later");
  EXPECT_TRUE(WaitUntil([&] { return ChildrenOf(server).size() == kHanging; }, 20000));
  EXPECT_TRUE(IsQuiet(server));
  Release();
  EXPECT_TRUE(station_.WaitForStories(kHanging + 1));
  EXPECT_TRUE(WaitUntil([&] { return ChildrenOf(server).empty(); }, 20000));
}

TEST_F(ServerStoryTool, OneThatHangsOutlivesTheServerAndDoesItsWork) {
  HangAtSomeStories();
  Start();
  ASSERT_TRUE(station_.com1->Write("\x01hang\x04"));
  ASSERT_TRUE(client_.WaitFor(" Processed New Story\r\n"));
  station_.Server().Signal(SIGTERM);
  EXPECT_EQ(station_.Server().ExitCode(), 0);
  EXPECT_TRUE(station_.Stories().empty());
  Release();
  ASSERT_TRUE(station_.WaitForStories(1));
  EXPECT_EQ(station_.Stories().at(0).text, "hang");
}

TEST_F(ServerStoryTool, MissingAndNotExecutableLeaveTheirStoriesAndTheNextIsHandedOn) {
  fs::rename(Tool(), Root() + "/away");
  Start();
  const auto takeStories = [&](const std::string& text, std::size_t count) {
    for (int i = 0; i < 10; ++i) ASSERT_TRUE(station_.com1->Write("\x01" + text + "\x04"));
    ASSERT_TRUE(client_.WaitFor(" Processed New Story\r\n"));
    ASSERT_TRUE(WaitUntil([&] { return station_.StoryFiles(1).size() == count; }));
  };
  takeStories("missing", 10);
  fs::permissions(Root() + "/away", fs::perms(0644));
  fs::rename(Root() + "/away", Tool());
  takeStories("not executable", 20);
  EXPECT_TRUE(IsQuiet(ServerProcess()));
  EXPECT_TRUE(ChildrenOf(ServerProcess()).empty());
  fs::permissions(Tool(), fs::perms(0755));
  ASSERT_TRUE(station_.com1->Write("\x01later\x04"));
  ASSERT_TRUE(station_.WaitForStories(1));
  EXPECT_EQ(station_.Stories().at(0).text, "later");
  EXPECT_EQ(station_.Server().output(), "");
}

// The tool is found in a directory with a blank; what it is given breaks at the blanks of the news directory.
TEST_F(ServerStoryTool, BlankInItsOwnPathHoldsAndBlanksInTheStorysPathPartTheArgument) {
  fs::rename(Root() + "/tools", Root() + "/my tools");
  fs::create_symlink("my tools", Root() + "/tools");
  std::string settings = ReadWholeFile(station_.Home() + "/platform.ini");
  const std::string directory = "Directory=" + Root() + "/";
  settings.replace(settings.find(directory), directory.size(), directory + "my ");
  WriteWholeFile(station_.Home() + "/platform.ini", settings);
  WriteWholeFile(Tool(),
                 "#!/bin/sh\nkept=${0%/*}/kept\nprintf '[%s]' \"$0\" \"$@\" > \"$kept/new.$$\"\n"
                 "mv \"$kept/new.$$\" \"$kept/argument.$$\"\n");
  fs::create_directory(Root() + "/my news");
  WriteWholeFile(Root() + "/my news/vorda.ini", "[General]\r\nName=Wire\r\n");
  WriteWholeFile(station_.Home() + "/vdServer.INI", WallKeys(station_.Wall()) + "[WireFeed1]\r\nNewsPath=" +
                                                        Root() + "/my news\r\nCapturePort=1\r\n");
  Start();
  for (const std::size_t count : {1u, 2u}) {
    ASSERT_TRUE(station_.com1->Write("\x01story\x04"));
    ASSERT_TRUE(station_.WaitForStories(count));
  }
  std::set<std::string> expected;
  for (const auto& entry : fs::directory_iterator(Root() + "/my news")) {
    if (entry.path().extension() != ".RA1") continue;
    EXPECT_EQ(ReadWholeFile(entry.path().string()), "story");
    expected.insert("[" + Root() + "/my tools/ItemFile][" + Root() + "/my][news/" +
                    entry.path().filename().string() + "|" + Root() + "/my][news/vorda.ini]");
  }
  EXPECT_EQ(expected.size(), 2u);
  std::set<std::string> arguments;
  for (const Station::Story& story : station_.Stories()) arguments.insert(story.argument);
  EXPECT_EQ(arguments, expected);
}

}  // namespace
}  // namespace vorda::test
