// Files of records: any place in one call, shared, and closed and opened again.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "platform/FileFault.h"
#include "platform/Files.h"
#include "platform/RandomFiles.h"
#include "platform/RunTimeError.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

namespace fs = std::filesystem;
using test::ReadWholeFile;
using test::WriteWholeFile;

class RandomFileTest : public ::testing::Test {
 protected:
  ~RandomFileTest() override { CloseAllFiles(); }

  std::string Read(std::int64_t offset, std::size_t length) {
    std::string bytes(length, '?');
    std::size_t count = 0;
    EXPECT_EQ(ReadFromFile(number_, offset, bytes, count), 0);
    return bytes.substr(0, count);
  }

  test::TempDirectory directory_;
  const std::string path_ = directory_ / "Carts1.lst";
  const int number_ = FreeFileNumber();
};

TEST_F(RandomFileTest, IsMadeWhenMissingAndKeptWhenThere) {
  EXPECT_EQ(OpenForRandom(number_, path_), 0);
  EXPECT_EQ(OpenFileLength(number_), 0);
  CloseFile(number_);
  WriteWholeFile(path_, "there");
  EXPECT_EQ(OpenForRandom(number_, path_), 0);
  EXPECT_EQ(OpenFileLength(number_), 5);
}

TEST_F(RandomFileTest, AnyPlaceIsWrittenAndRead) {
  ASSERT_EQ(OpenForRandom(number_, path_), 0);
  EXPECT_EQ(WriteToFileAt(number_, 6, "three"), 0);
  EXPECT_EQ(WriteToFileAt(number_, 0, "one"), 0);
  EXPECT_EQ(ReadWholeFile(path_), std::string("one\0\0\0three", 11));
  EXPECT_EQ(Read(6, 3), "thr");
  EXPECT_EQ(Read(9, 10), "ee");
  EXPECT_EQ(Read(11, 10), "");
  EXPECT_EQ(Read(5000, 10), "");
}

TEST_F(RandomFileTest, NumbersThatAreNotOpen) {
  std::size_t count = 1;
  std::string bytes(3, '?');
  EXPECT_EQ(ReadFromFile(number_, 0, bytes, count), kBadFileNumber);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(WriteToFileAt(number_, 0, "x"), kBadFileNumber);
  EXPECT_EQ(OpenFileLength(number_), -1);
  EXPECT_EQ(OpenForRandom(0, path_), kBadFileNumber);
  EXPECT_FALSE(fs::exists(path_));
}

TEST_F(RandomFileTest, WhatCannotBeOpened) {
  EXPECT_EQ(OpenForRandom(number_, directory_ / "none/Carts1.lst"), kFileNotFound);
  EXPECT_EQ(OpenForRandom(number_, directory_.path()), kPathFileAccessError);
  EXPECT_EQ(OpenForRandom(number_, "\\Carts1.lst"), kPathNotFound);
  ASSERT_EQ(OpenForRandom(number_, path_), 0);
  EXPECT_EQ(OpenForRandom(number_, directory_ / "other"), kFileAlreadyOpen);
}

TEST_F(RandomFileTest, OneThatMayOnlyBeReadIsReadAndNotWritten) {
  WriteWholeFile(path_, "there");
  const ScopedFileFault readOnly(FileOperation::Open, EROFS);
  ASSERT_EQ(OpenForRandom(number_, path_), 0);
  EXPECT_EQ(Read(0, 5), "there");
  EXPECT_EQ(WriteToFileAt(number_, 0, "x"), kPathFileAccessError);
  EXPECT_EQ(ReadWholeFile(path_), "there");
}

TEST_F(RandomFileTest, FailuresOfTheDisk) {
  ASSERT_EQ(OpenForRandom(number_, path_), 0);
  {
    const ScopedFileFault full(FileOperation::Write, ENOSPC);
    EXPECT_EQ(WriteToFileAt(number_, 0, "x"), kDiskFull);
    EXPECT_EQ(CurrentError(), kDiskFull);
  }
  std::string bytes(3, '?');
  std::size_t count = 1;
  const ScopedFileFault broken(FileOperation::Read, EIO);
  EXPECT_EQ(ReadFromFile(number_, 0, bytes, count), kDeviceIoError);
  EXPECT_EQ(count, 0u);
}

TEST_F(RandomFileTest, ReopeningFollowsTheName) {
  ASSERT_EQ(OpenForRandom(number_, path_), 0);
  WriteWholeFile(directory_ / "new", "new");
  fs::rename(directory_ / "new", path_);
  EXPECT_EQ(Read(0, 3), "");
  EXPECT_EQ(ReopenForRandom(number_, path_), 0);
  EXPECT_EQ(Read(0, 3), "new");
}

TEST_F(RandomFileTest, ReopeningFindsTheNameInAnotherCaseAndMakesAMissingOne) {
  ASSERT_EQ(OpenForRandom(number_, path_), 0);
  fs::remove(path_);
  WriteWholeFile(directory_ / "CARTS1.LST", "new");
  EXPECT_EQ(ReopenForRandom(number_, path_), 0);
  EXPECT_EQ(Read(0, 3), "new");
  fs::remove(directory_ / "CARTS1.LST");
  EXPECT_EQ(ReopenForRandom(number_, path_), 0);
  EXPECT_EQ(test::JoinedNames(directory_.path()), "Carts1.lst");
}

TEST_F(RandomFileTest, ReopeningWhatWasNeverOpenOpensIt) {
  EXPECT_EQ(ReopenForRandom(number_, path_), 0);
  EXPECT_EQ(OpenFileLength(number_), 0);
}

}  // namespace
}  // namespace vorda::platform
