// Kill -9 at random moments of a program that changes an INI file: the file is the old one or the new one.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <random>
#include <string>
#include <thread>

#include "platform/ProfileFile.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

constexpr unsigned kSeed = 20261121;
constexpr int kKills = 40;
constexpr int kLongestMoment = 5000;  // microseconds

std::string FileWithCount(const std::string& count) {
  std::string text;
  for (int feed = 1; feed <= 4; ++feed) {
    text += "[WireFeed" + std::to_string(feed) + "]\r\nNewsPath=/srv/news\r\n";
    for (int i = 0; i < 100; ++i) text += "Key" + std::to_string(i) + "=" + std::string(300, 'v') + "\r\n";
    if (feed == 2) text += "Count=" + count + "\r\n";
  }
  return text;
}

// A process that changes the count over and over, ever higher, until it is killed.
pid_t StartWriter(const std::string& path, int first) {
  const pid_t process = ::fork();
  if (process != 0) return process;
  for (int count = first;; ++count)
    if (!platform::WriteProfileString("WireFeed2", "Count", std::to_string(count), path)) ::_exit(1);
}

std::int32_t CountIn(const std::string& path) {
  return platform::ReadProfileInteger("WireFeed2", "Count", -1, path);
}

TEST(KilledWriter, IniFileIsAlwaysWhole) {
  const TempDirectory directory;
  const std::string path = directory / "server.ini";
  WriteWholeFile(path, FileWithCount("0"));
  std::mt19937 random(kSeed);
  int last = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + ", kill " + std::to_string(kill));
    const pid_t writer = StartWriter(path, last + 1);
    ASSERT_GT(writer, 0);
    const bool underWay = WaitUntil([&] { return CountIn(path) > last; }, 20000);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % kLongestMoment));
    ::kill(writer, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(writer, &status, 0), writer);
    EXPECT_TRUE(WIFSIGNALED(status));
    ASSERT_TRUE(underWay);
    const int now = CountIn(path);
    EXPECT_GT(now, last);
    EXPECT_EQ(ReadWholeFile(path), FileWithCount(std::to_string(now)));
    last = now;
    if (::testing::Test::HasFailure()) return;
  }
  EXPECT_TRUE(platform::WriteProfileString("WireFeed2", "Count", "done", path));
  EXPECT_EQ(ReadWholeFile(path), FileWithCount("done"));
}

}  // namespace
}  // namespace vorda::test
