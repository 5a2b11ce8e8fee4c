// Two programs that write one INI file, and one that reads it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <thread>

#include "platform/ProfileFile.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

constexpr int kWrites = 1000;
constexpr int kKeys = 20;

// Another process that runs `work` and ends with its result.
class OtherProcess {
 public:
  explicit OtherProcess(const std::function<bool()>& work) : id_(::fork()) {
    if (id_ == 0) ::_exit(work() ? 0 : 1);
  }
  // A test that failed has left the loop that this one may wait for.
  ~OtherProcess() {
    if (id_ <= 0) return;
    ::kill(id_, SIGKILL);
    Succeeded();
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  // Waits for its end.
  bool Succeeded() {
    if (id_ > 0 && ::waitpid(id_, &status_, 0) == id_) id_ = -1;
    return id_ == -1 && WIFEXITED(status_) && WEXITSTATUS(status_) == 0;
  }

 private:
  pid_t id_;
  int status_ = -1;
};

// Sets the keys <who>0..<who>19 in turn and reads each one back.
bool WriteManyTimes(const std::string& who, const std::string& file) {
  for (int i = 0; i < kWrites; ++i) {
    const std::string key = who + std::to_string(i % kKeys);
    // Values of many lengths, so that a torn or shifted file shows.
    const std::string value = std::to_string(i) + ":" + std::string(static_cast<std::size_t>(i % 97), 'x');
    if (!WriteProfileString("Feed", key, value, file)) return false;
    if (ReadProfileString("Feed", key, "", file) != value) return false;
  }
  return true;
}

bool IsWhole(const std::string& bytes) {
  return bytes.starts_with("[Head]\r\nMark=first\r\n[Feed]\r\n") && bytes.ends_with("[End]\r\nMark=last\r\n");
}

TEST(ProfileSharedTest, TwoWritersLoseNothingAndNoReaderSeesHalfAFile) {
  const test::TempDirectory directory;
  const std::string file = directory / "vorda.ini";
  test::WriteWholeFile(file, "[Head]\r\nMark=first\r\n[Feed]\r\n[End]\r\nMark=last\r\n");
  OtherProcess tool([&] { return WriteManyTimes("Theirs", file); });
  OtherProcess reader([&] {
    const std::string last = "Ours" + std::to_string(kKeys - 1) + "=" + std::to_string(kWrites - 1) + ":";
    std::string bytes;
    do {
      bytes = test::ReadWholeFile(file);
      if (!IsWhole(bytes)) return false;
    } while (bytes.find(last) == std::string::npos);
    return true;
  });
  const bool oursKept = WriteManyTimes("Ours", file);
  EXPECT_TRUE(tool.Succeeded());
  ASSERT_TRUE(oursKept);
  EXPECT_TRUE(reader.Succeeded());
  for (int i = kWrites - kKeys; i < kWrites; ++i) {
    const std::string value = std::to_string(i) + ":" + std::string(static_cast<std::size_t>(i % 97), 'x');
    EXPECT_EQ(ReadProfileString("Feed", "Ours" + std::to_string(i % kKeys), "", file), value);
    EXPECT_EQ(ReadProfileString("Feed", "Theirs" + std::to_string(i % kKeys), "", file), value);
  }
  EXPECT_EQ(test::JoinedNames(directory.path()), "vorda.ini");
}

TEST(ProfileSharedTest, TwoWritersOfAMissingFileMakeOne) {
  for (int i = 0; i < 50; ++i) {
    const test::TempDirectory directory;
    const std::string file = directory / "vorda.ini";
    OtherProcess tool([&] { return WriteProfileString("Feed", "Theirs", "1", file); });
    EXPECT_TRUE(WriteProfileString("Feed", "Ours", "1", file));
    EXPECT_TRUE(tool.Succeeded());
    ASSERT_EQ(ReadProfileString("Feed", "Ours", "", file), "1");
    ASSERT_EQ(ReadProfileString("Feed", "Theirs", "", file), "1");
  }
}

TEST(ProfileSharedTest, WriterWaitsForTheLockAndReadsAfresh) {
  const test::TempDirectory directory;
  const std::string file = directory / "vorda.ini";
  test::WriteWholeFile(file, "[Feed]\r\nName=1\r\n");
  const int holder = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(holder, LOCK_EX), 0);
  // Tells by a pipe that the writer is about to begin; its change can only come behind the one made under the
  // lock.
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  OtherProcess writer([&] {
    ::close(holder);
    return ::write(ends[1], "b", 1) == 1 && WriteProfileString("Feed", "Next", "2", file);
  });
  char begun = 0;
  ASSERT_EQ(::read(ends[0], &begun, 1), 1);
  test::WriteWholeFile(file, "[Feed]\r\nName=changed\r\n");
  ::close(holder);
  ::close(ends[0]);
  ::close(ends[1]);
  EXPECT_TRUE(writer.Succeeded());
  EXPECT_EQ(test::ReadWholeFile(file), "[Feed]\r\nName=changed\r\nNext=2\r\n");
}

TEST(ProfileSharedTest, LockThatIsNeverGivenBackDoesNotHoldTheServerUp) {
  const test::TempDirectory directory;
  const std::string file = directory / "vorda.ini";
  test::WriteWholeFile(file, "[Feed]\r\nName=1\r\n");
  const int holder = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(holder, LOCK_EX), 0);
  EXPECT_TRUE(WriteProfileString("Feed", "Name", "2", file));
  EXPECT_EQ(test::ReadWholeFile(file), "[Feed]\r\nName=2\r\n");
  ::close(holder);
}

}  // namespace
}  // namespace vorda::platform
