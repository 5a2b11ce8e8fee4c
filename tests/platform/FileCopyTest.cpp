// A copy as it stands on the disk, whatever happens on the way.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/FileCopy.h"
#include "platform/FileFault.h"
#include "platform/RunTimeError.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

using platform::FileCopy;
using platform::FileOperation;
using platform::ScopedFileFault;

class FileCopyTest : public ::testing::Test {
 protected:
  int Copy(bool replace = false) { return FileCopy({source_, destination_, false, replace}).Result(); }
  int Move(bool replace = false) { return FileCopy({source_, destination_, true, replace}).Result(); }

  TempDirectory directory_;
  const std::string source_ = directory_ / "from.wav";
  const std::string destination_ = directory_ / "to.wav";
};

TEST_F(FileCopyTest, EveryByteOfAFileOfSeveralPieces) {
  std::string bytes(3'000'001, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 % 251);
  WriteWholeFile(source_, bytes);
  FileCopy copy({source_, destination_});
  EXPECT_EQ(copy.Result(), 0);
  EXPECT_TRUE(copy.Ended());
  EXPECT_EQ(copy.Done(), 3'000'001u);
  EXPECT_EQ(copy.Total(), 3'000'001u);
  EXPECT_TRUE(ReadWholeFile(destination_) == bytes);
  EXPECT_TRUE(ReadWholeFile(source_) == bytes);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav to.wav");
}

TEST_F(FileCopyTest, EmptyFile) {
  WriteWholeFile(source_, "");
  EXPECT_EQ(Copy(), 0);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav to.wav");
}

TEST_F(FileCopyTest, CopyIsAsOldAsItsSourceAndHasItsMode) {
  WriteWholeFile(source_, "x");
  const timespec times[] = {{1'000'000'000, 0}, {1'000'000'000, 500}};
  ASSERT_EQ(::utimensat(AT_FDCWD, source_.c_str(), times, 0), 0);
  ASSERT_EQ(::chmod(source_.c_str(), 0640), 0);
  EXPECT_EQ(Copy(), 0);
  struct stat status {};
  ASSERT_EQ(::stat(destination_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 1'000'000'000);
  EXPECT_EQ(status.st_mtim.tv_nsec, 500);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(FileCopyTest, FileOfTheNameStaysUnlessItMayBeReplaced) {
  WriteWholeFile(source_, "new");
  WriteWholeFile(destination_, "old");
  EXPECT_EQ(Copy(), platform::kFileAlreadyExists);
  EXPECT_EQ(Move(), platform::kFileAlreadyExists);
  EXPECT_EQ(ReadWholeFile(destination_), "old");
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav to.wav");
  EXPECT_EQ(Copy(true), 0);
  EXPECT_EQ(ReadWholeFile(destination_), "new");
}

TEST_F(FileCopyTest, MoveTakesTheSourceAway) {
  WriteWholeFile(source_, "new");
  WriteWholeFile(destination_, "old");
  EXPECT_EQ(Move(true), 0);
  EXPECT_EQ(JoinedNames(directory_.path()), "to.wav");
  EXPECT_EQ(ReadWholeFile(destination_), "new");
}

TEST_F(FileCopyTest, MoveToAnotherVolumeCopiesAndRemoves) {
  WriteWholeFile(source_, "bytes");
  const ScopedFileFault elsewhere(FileOperation::Rename, EXDEV);
  EXPECT_EQ(Move(), 0);
  EXPECT_EQ(elsewhere.calls(), 2);
  EXPECT_EQ(JoinedNames(directory_.path()), "to.wav");
  EXPECT_EQ(ReadWholeFile(destination_), "bytes");
}

TEST_F(FileCopyTest, SourceThatCantBeRemovedIsAnErrorAndLeavesBoth) {
  WriteWholeFile(source_, "bytes");
  const ScopedFileFault elsewhere(FileOperation::Rename, EXDEV);
  const ScopedFileFault kept(FileOperation::Remove, EACCES);
  EXPECT_EQ(Move(), platform::kPermissionDenied);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav to.wav");
}

struct Fault {
  const char* name;
  FileOperation operation;
  int systemError;
  int nth;
  int result;
};
void PrintTo(const Fault& fault, std::ostream* out) {
  *out << fault.name;
}
class FileCopyFaultTest : public FileCopyTest, public ::testing::WithParamInterface<Fault> {};

TEST_P(FileCopyFaultTest, LeavesWhatWasThereAndNothingElse) {
  WriteWholeFile(source_, std::string(2'500'000, 'n'));
  WriteWholeFile(destination_, "old");
  const Fault& row = GetParam();
  const ScopedFileFault fault(row.operation, row.systemError, row.nth);
  EXPECT_EQ(Copy(true), row.result);
  EXPECT_EQ(fault.calls(), row.nth);
  EXPECT_EQ(ReadWholeFile(destination_), "old");
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav to.wav");
}

constexpr Fault kFaults[] = {
    {"SourceUnreadable", FileOperation::Open, EACCES, 1, platform::kPermissionDenied},
    {"NoNewFile", FileOperation::Open, EROFS, 2, platform::kPathFileAccessError},
    {"DiskFullAtOnce", FileOperation::Write, ENOSPC, 1, platform::kDiskFull},
    {"DiskFullLater", FileOperation::Write, ENOSPC, 3, platform::kDiskFull},
    {"DeviceFailsAtTheEnd", FileOperation::Sync, EIO, 1, platform::kDeviceIoError},
    {"NameRefused", FileOperation::Rename, EACCES, 1, platform::kPermissionDenied},
};
INSTANTIATE_TEST_SUITE_P(Faults, FileCopyFaultTest, ::testing::ValuesIn(kFaults),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(FileCopyTest, MissingSourceAndFolderAreErrors) {
  EXPECT_EQ(Copy(), platform::kFileNotFound);
  ASSERT_EQ(::mkdir(source_.c_str(), 0755), 0);
  EXPECT_EQ(Copy(), platform::kPathFileAccessError);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav");
}

// A pipe gives the test the moment: the copy waits for what comes next.
TEST_F(FileCopyTest, CancelledCopyLeavesNothing) {
  ASSERT_EQ(::mkfifo(source_.c_str(), 0600), 0);
  FileCopy copy({source_, destination_});
  const int pipe = ::open(source_.c_str(), O_WRONLY);
  ASSERT_GE(pipe, 0);
  ASSERT_EQ(::write(pipe, "first", 5), 5);
  while (copy.Done() < 5) ::sched_yield();
  copy.Cancel();
  EXPECT_FALSE(copy.Ended());
  ::close(pipe);
  EXPECT_EQ(copy.Result(), platform::kCopyCancelled);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav");
}

}  // namespace
}  // namespace vorda::test
