// Files by number, and how long a file is.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "platform/FileFault.h"
#include "platform/Files.h"
#include "platform/RunTimeError.h"
#include "support/ProcFile.h"
#include "support/ScenarioEnd.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

namespace fs = std::filesystem;

TEST(NativeFileSizeTest, LengthOfAFileAndMinusOneForAnythingElse) {
  const test::TempDirectory directory;
  test::WriteWholeFile(directory / "five", "12345");
  test::WriteWholeFile(directory / "empty", "");
  EXPECT_EQ(NativeFileSize(directory / "five"), 5);
  EXPECT_EQ(NativeFileSize(directory / "empty"), 0);
  EXPECT_EQ(NativeFileSize(directory / "missing"), -1);
  EXPECT_EQ(NativeFileSize(directory.path()), -1);
  EXPECT_EQ(NativeFileSize(""), -1);
  const ScopedFileFault fault(FileOperation::Stat, EACCES);
  EXPECT_EQ(NativeFileSize(directory / "five"), -1);
}

// The superuser may read everything: the question is an ordinary user's.
TEST(NativeFileSizeDeathTest, FileWithoutReadPermissionIsMinusOne) {
  const test::TempDirectory directory;
  test::WriteWholeFile(directory / "readable", "12345");
  test::WriteWholeFile(directory / "closed", "12345");
  fs::permissions(directory.path(), fs::perms(0755));
  fs::permissions(directory / "readable", fs::perms(0444));
  fs::permissions(directory / "closed", fs::perms(0));
  const auto scenario = [&] {
    if (::geteuid() == 0) {
      ASSERT_EQ(::seteuid(65534), 0);
    }
    EXPECT_EQ(NativeFileSize(directory / "readable"), 5);
    EXPECT_EQ(NativeFileSize(directory / "closed"), -1);
  };
  EXPECT_EXIT((scenario(), test::EndScenario()), ::testing::ExitedWithCode(test::kScenarioHeld), "");
}

class WriteToFileTest : public ::testing::Test {
 protected:
  ~WriteToFileTest() override { CloseAllFiles(); }

  test::TempDirectory directory_;
  const std::string path_ = directory_ / "story";
  const int number_ = FreeFileNumber();
};

TEST_F(WriteToFileTest, BytesAreOnTheDiskAtOnceAsTheyStand) {
  ASSERT_EQ(OpenForOutput(number_, path_), 0);
  const std::string bytes("\0\r\n\x1a\xff", 5);
  EXPECT_EQ(WriteToFile(number_, "one "), 0);
  EXPECT_EQ(WriteToFile(number_, ""), 0);
  EXPECT_EQ(WriteToFile(number_, bytes), 0);
  EXPECT_EQ(test::ReadWholeFile(path_), "one " + bytes);
}

TEST_F(WriteToFileTest, NumberWithoutAFileIsABadOne) {
  EXPECT_EQ(WriteToFile(number_, "lost"), kBadFileNumber);
  EXPECT_EQ(CurrentError(), kBadFileNumber);
  ASSERT_EQ(OpenForOutput(number_, path_), 0);
  EXPECT_EQ(OpenForOutput(number_, path_), kFileAlreadyOpen);
  CloseFile(number_);
  EXPECT_EQ(WriteToFile(number_, "lost"), kBadFileNumber);
  EXPECT_EQ(test::ReadWholeFile(path_), "");
}

TEST_F(WriteToFileTest, FailureLeavesWhatWasWrittenAndTheFileOpen) {
  ASSERT_EQ(OpenForOutput(number_, path_), 0);
  const ScopedFileFault fault(FileOperation::Write, ENOSPC, 2);
  EXPECT_EQ(WriteToFile(number_, "one "), 0);
  SetCurrentError(kNoError);
  EXPECT_EQ(WriteToFile(number_, "two "), kDiskFull);
  EXPECT_EQ(CurrentError(), kDiskFull);
  EXPECT_EQ(test::ReadWholeFile(path_), "one ");
  EXPECT_EQ(WriteToFile(number_, "three"), 0);
  EXPECT_EQ(test::ReadWholeFile(path_), "one three");
}

std::atomic<int> gInterruptions = 0;

// A named pipe in the file's place, which takes only so much at a time, and a thread at its far end that
// interrupts the writer where it waits.
class InterruptedWriteTest : public WriteToFileTest {
 protected:
  InterruptedWriteTest() {
    EXPECT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    reader_ = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    capacity_ = ::fcntl(reader_, F_SETPIPE_SZ, 4096);
    EXPECT_GT(capacity_, 0);
    gInterruptions = 0;
    struct sigaction action = {};
    action.sa_handler = [](int) { ++gInterruptions; };
    ::sigaction(SIGUSR1, &action, &former_);
  }
  ~InterruptedWriteTest() override {
    ::sigaction(SIGUSR1, &former_, nullptr);
    ::close(reader_);
  }

  // Writes while `farEnd` runs in a thread of its own; answers the result of the write.
  int Write(const std::string& bytes, const std::function<void()>& farEnd) {
    EXPECT_EQ(OpenForOutput(number_, path_), 0);
    std::thread thread(farEnd);
    const int result = WriteToFile(number_, bytes);
    through_ = true;
    CloseFile(number_);
    thread.join();
    return result;
  }
  // Waits until the pipe is full and the writer asleep at it, then interrupts it; false when it has got
  // through instead.
  bool Interrupt() {
    const int before = gInterruptions;
    if (!WaitInThread([this] { return Waiting() == capacity_ && WriterSleeps(); })) return false;
    ::pthread_kill(writer_, SIGUSR1);
    return WaitInThread([before] { return gInterruptions > before; });
  }
  // All that comes until the writer has closed its end.
  void ReadToTheEnd() {
    char bytes[1000];
    for (;;) {
      const ssize_t count = ::read(reader_, bytes, sizeof bytes);
      if (count > 0) received_.append(bytes, static_cast<std::size_t>(count));
      if (count == 0) return;
      if (count < 0) std::this_thread::yield();
    }
  }

  int capacity_ = 0;
  std::string received_;

 private:
  bool WaitInThread(const std::function<bool()>& condition) {
    while (!condition()) {
      if (through_) return false;
      std::this_thread::yield();
    }
    return true;
  }
  int Waiting() const {
    int count = 0;
    ::ioctl(reader_, FIONREAD, &count);
    return count;
  }
  // The state stands behind the name in brackets.
  bool WriterSleeps() const {
    const std::string status = test::ReadProcFile("/proc/self/task/" + std::to_string(writerId_) + "/stat");
    const std::size_t state = status.rfind(')');
    return state != std::string::npos && status.substr(state + 1, 2) == " S";
  }

  int reader_ = -1;
  struct sigaction former_ = {};
  const pthread_t writer_ = ::pthread_self();
  const pid_t writerId_ = ::gettid();
  std::atomic<bool> through_ = false;
};

std::string Numbered(std::size_t length) {
  std::string bytes;
  for (int i = 0; bytes.size() < length; ++i) bytes += std::to_string(i) + " ";
  return bytes;
}

// The first interruption cuts the write short, those behind it find nothing written yet.
TEST_F(InterruptedWriteTest, EveryByteArrivesOnce) {
  const std::string bytes = Numbered(50000);
  bool interrupted = true;
  EXPECT_EQ(Write(bytes,
                  [&] {
                    for (int i = 0; i < 3; ++i) interrupted = interrupted && Interrupt();
                    ReadToTheEnd();
                  }),
            0);
  EXPECT_TRUE(interrupted);
  EXPECT_EQ(received_, bytes);
}

TEST_F(InterruptedWriteTest, FailureBehindAPieceLeavesThePiece) {
  const std::string bytes = Numbered(50000);
  const ScopedFileFault fault(FileOperation::Write, ENOSPC, 2);
  EXPECT_EQ(Write(bytes, [&] { EXPECT_TRUE(Interrupt()); }), kDiskFull);
  ReadToTheEnd();
  EXPECT_EQ(received_, bytes.substr(0, static_cast<std::size_t>(capacity_)));
  EXPECT_EQ(fault.calls(), 2);
}

}  // namespace
}  // namespace vorda::platform
