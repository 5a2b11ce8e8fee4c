// Two programs that write one INI file, and one that reads it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <limits>
#include <string>
#include <utility>

#include "OtherProcess.h"
#include "platform/FileFault.h"
#include "platform/ProfileFile.h"
#include "platform/ProfileStore.h"
#include "platform/ProfileText.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

constexpr int kWrites = 400;
constexpr int kKeys = 20;
constexpr int kEver = std::numeric_limits<int>::max();

// A write that the other one held up for too long is made again.
bool Set(const std::string& key, const std::string& value, const std::string& file) {
  return test::WaitUntil([&] { return WriteProfileString("Feed", key, value, file); }, 20000);
}

// Sets the keys <who>0..<who>19 in turn and reads each one back.
bool WriteManyTimes(const std::string& who, const std::string& file) {
  for (int i = 0; i < kWrites; ++i) {
    const std::string key = who + std::to_string(i % kKeys);
    // Values of many lengths, so that a torn or shifted file shows.
    const std::string value = std::to_string(i) + ":" + std::string(static_cast<std::size_t>(i % 97), 'x');
    if (!Set(key, value, file)) return false;
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
  test::OtherProcess tool([&] { return WriteManyTimes("Theirs", file); });
  test::OtherProcess reader([&] {
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
    test::OtherProcess tool([&] { return Set("Theirs", "1", file); });
    EXPECT_TRUE(Set("Ours", "1", file));
    EXPECT_TRUE(tool.Succeeded());
    ASSERT_EQ(ReadProfileString("Feed", "Ours", "", file), "1");
    ASSERT_EQ(ReadProfileString("Feed", "Theirs", "", file), "1");
  }
}

// Tried again on a machine so busy that all patience is over before the lock is given back.
TEST(ProfileSharedTest, WriterWaitsForTheLockAndReadsAfresh) {
  const test::TempDirectory directory;
  const std::string file = directory / "vorda.ini";
  const auto changesAreBothKept = [&] {
    test::WriteWholeFile(file, "[Feed]\r\nName=1\r\n");
    const int holder = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_EQ(::flock(holder, LOCK_EX), 0);
    test::OtherProcess writer([&] {
      ::close(holder);
      return WriteProfileString("Feed", "Next", "2", file);
    });
    // What the writer puts in place of the file is ready: it is about to do so.
    const std::string ready = directory / ".vorda-ini-0";
    EXPECT_TRUE(test::WaitUntil([&] { return !test::ReadWholeFile(ready).empty(); }));
    test::WriteWholeFile(file, "[Feed]\r\nName=changed\r\n");
    ::close(holder);
    return writer.Succeeded() && test::ReadWholeFile(file) == "[Feed]\r\nName=changed\r\nNext=2\r\n";
  };
  EXPECT_TRUE(test::WaitUntil(changesAreBothKept, 20000));
}

TEST(ProfileSharedTest, WriterThatHangsHoldsNobodyUpAndLosesNothingWhenItGoesOn) {
  const test::TempDirectory directory;
  const std::string file = directory / "vorda.ini";
  test::WriteWholeFile(file, "[Feed]\r\nName=1\r\n");
  test::OtherProcess tool([&] {
    int looks = 0;
    return ChangeProfile(file, [&](const std::string& bytes) {
      if (++looks == 1) ::raise(SIGSTOP);
      return ProfileText(bytes).WithValue("Feed", "Theirs", "1");
    });
  });
  ASSERT_TRUE(tool.HasStopped());
  EXPECT_TRUE(WriteProfileString("Feed", "Ours", "1", file));
  EXPECT_EQ(test::ReadWholeFile(file), "[Feed]\r\nName=1\r\nOurs=1\r\n");
  tool.GoOn();
  EXPECT_TRUE(tool.Succeeded());
  EXPECT_EQ(test::ReadWholeFile(file), "[Feed]\r\nName=1\r\nOurs=1\r\nTheirs=1\r\n");
}

// A lock that isn't given back. What is to be quick is tried again where the machine itself is slow.
class ProfileHungLockTest : public ::testing::Test {
 protected:
  ProfileHungLockTest() { test::WriteWholeFile(file_, "[Feed]\r\nName=old\r\n"); }
  ~ProfileHungLockTest() override { Release(); }

  void Hold() {
    holder_ = ::open(file_.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(holder_, LOCK_EX), 0);
  }
  void Release() { ::close(std::exchange(holder_, -1)); }
  bool Set(const std::string& value) { return WriteProfileString("Feed", "Name", value, file_); }

  // Tries so many changes under a lock that hangs, each time one of another file's: false when one succeeded
  // or they took a second.
  bool FailSoon(int changes) {
    EXPECT_TRUE(Set("file " + std::to_string(++files_)));
    Hold();
    const auto start = std::chrono::steady_clock::now();
    bool failed = true;
    for (int i = 0; i < changes; ++i) failed = !Set(std::to_string(i)) && failed;
    const bool soon = std::chrono::steady_clock::now() - start < std::chrono::seconds(1);
    Release();
    EXPECT_EQ(test::ReadWholeFile(file_), "[Feed]\r\nName=file " + std::to_string(files_) + "\r\n");
    return failed && soon;
  }

  int files_ = 0;
  test::TempDirectory directory_;
  std::string file_ = directory_ / "vorda.ini";
  int holder_ = -1;
};

TEST_F(ProfileHungLockTest, ChangeFailsSoonAndSucceedsWhenItIsGivenBack) {
  EXPECT_TRUE(test::WaitUntil([this] { return FailSoon(1); }, 20000));
  EXPECT_EQ(test::JoinedNames(directory_.path()), "vorda.ini");
  EXPECT_TRUE(Set("new"));
  EXPECT_EQ(test::ReadWholeFile(file_), "[Feed]\r\nName=new\r\n");
}

TEST_F(ProfileHungLockTest, NothingIsWrittenInPlaceEither) {
  const ScopedFileFault refusal(FileOperation::Open, EACCES, 1, kEver, ".vorda-ini-");
  Hold();
  EXPECT_FALSE(Set("new"));
  EXPECT_EQ(test::ReadWholeFile(file_), "[Feed]\r\nName=old\r\n");
}

// A dialog's keys. A wait for each would be three seconds.
TEST_F(ProfileHungLockTest, ManyChangesWaitForItOnce) {
  EXPECT_TRUE(test::WaitUntil([this] { return FailSoon(20); }, 20000));
}

TEST_F(ProfileHungLockTest, LineThatStandsAlreadyNeedsNone) {
  Hold();
  EXPECT_TRUE(Set("old"));
}

}  // namespace
}  // namespace vorda::platform
