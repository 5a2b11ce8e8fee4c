#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "platform/RunTimeError.h"

namespace vorda::platform {
namespace {

TEST(RunTimeErrorTest, EveryNumberHasItsText) {
  EXPECT_EQ(ErrorText(6), "Overflow");
  EXPECT_EQ(ErrorText(52), "Bad file name or number");
  EXPECT_EQ(ErrorText(53), "File not found");
  EXPECT_EQ(ErrorText(55), "File already open");
  EXPECT_EQ(ErrorText(57), "Device I/O error");
  EXPECT_EQ(ErrorText(58), "File already exists");
  EXPECT_EQ(ErrorText(61), "Disk full");
  EXPECT_EQ(ErrorText(68), "Device unavailable");
  EXPECT_EQ(ErrorText(70), "Permission denied");
  EXPECT_EQ(ErrorText(75), "Path/File access error");
  EXPECT_EQ(ErrorText(76), "Path not found");
}

TEST(RunTimeErrorTest, NoErrorHasNoTextAndUnknownOnesShareOne) {
  EXPECT_EQ(ErrorText(0), "");
  EXPECT_EQ(ErrorText(999), "Application-defined or object-defined error");
  EXPECT_EQ(ErrorText(-1), "Application-defined or object-defined error");
}

TEST(RunTimeErrorTest, SystemErrorsHaveANumber) {
  EXPECT_EQ(ErrorFromErrno(0), kNoError);
  EXPECT_EQ(ErrorFromErrno(ENOENT), kFileNotFound);
  EXPECT_EQ(ErrorFromErrno(ENOTDIR), kPathNotFound);
  EXPECT_EQ(ErrorFromErrno(EEXIST), kFileAlreadyExists);
  EXPECT_EQ(ErrorFromErrno(EACCES), kPermissionDenied);
  EXPECT_EQ(ErrorFromErrno(EPERM), kPermissionDenied);
  EXPECT_EQ(ErrorFromErrno(EROFS), kPathFileAccessError);
  EXPECT_EQ(ErrorFromErrno(EISDIR), kPathFileAccessError);
  EXPECT_EQ(ErrorFromErrno(ENOSPC), kDiskFull);
  EXPECT_EQ(ErrorFromErrno(EDQUOT), kDiskFull);
  EXPECT_EQ(ErrorFromErrno(EIO), kDeviceIoError);
  EXPECT_EQ(ErrorFromErrno(EBADF), kBadFileNumber);
  EXPECT_EQ(ErrorFromErrno(EBUSY), kFileAlreadyOpen);
  EXPECT_EQ(ErrorFromErrno(ENODEV), kDeviceUnavailable);
  EXPECT_EQ(ErrorFromErrno(ENXIO), kDeviceUnavailable);
  EXPECT_EQ(ErrorFromErrno(ESTALE), kDeviceUnavailable);
}

TEST(RunTimeErrorTest, ErrorNobodyNamedIsAnAccessError) {
  EXPECT_EQ(ErrorFromErrno(EMLINK), kPathFileAccessError);
}

TEST(RunTimeErrorTest, CurrentErrorStaysUntilItIsSetAgain) {
  SetCurrentError(kDiskFull);
  EXPECT_EQ(CurrentError(), 61);
  EXPECT_EQ(CurrentError(), 61);
  SetCurrentError(kNoError);
  EXPECT_EQ(CurrentError(), 0);
}

TEST(RunTimeErrorTest, AnotherThreadsErrorIsNotOurs) {
  SetCurrentError(kNoError);
  std::thread([] { SetCurrentError(kDiskFull); }).join();
  EXPECT_EQ(CurrentError(), kNoError);
}

}  // namespace
}  // namespace vorda::platform
