#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "platform/FileFault.h"
#include "platform/FileRename.h"
#include "platform/RunTimeError.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

namespace fs = std::filesystem;
using test::ReadWholeFile;
using test::WriteWholeFile;

class RenameFileTest : public ::testing::Test {
 protected:
  RenameFileTest() { WriteWholeFile(from_, "audio"); }

  test::TempDirectory directory_;
  const std::string from_ = directory_ / "ORV00005.WAV";
  const std::string to_ = directory_ / "ORV00006.WAV";
};

TEST_F(RenameFileTest, TakesTheNewName) {
  EXPECT_EQ(RenameFile(from_, to_), 0);
  EXPECT_EQ(test::JoinedNames(directory_.path()), "ORV00006.WAV");
  EXPECT_EQ(ReadWholeFile(to_), "audio");
}

TEST_F(RenameFileTest, OldNameInAnyCase) {
  EXPECT_EQ(RenameFile(directory_ / "orv00005.wav", to_), 0);
  EXPECT_EQ(ReadWholeFile(to_), "audio");
}

TEST_F(RenameFileTest, NameThatIsTakenIsNeverOverwritten) {
  WriteWholeFile(to_, "other");
  EXPECT_EQ(RenameFile(from_, to_), kFileAlreadyExists);
  EXPECT_EQ(CurrentError(), kFileAlreadyExists);
  EXPECT_EQ(ReadWholeFile(from_), "audio");
  EXPECT_EQ(ReadWholeFile(to_), "other");
}

TEST_F(RenameFileTest, NameInAnotherCaseIsTakenAsWell) {
  WriteWholeFile(directory_ / "orv00006.wav", "other");
  EXPECT_EQ(RenameFile(from_, to_), kFileAlreadyExists);
  EXPECT_EQ(test::JoinedNames(directory_.path()), "ORV00005.WAV orv00006.wav");
}

TEST_F(RenameFileTest, LinkToNowhereIsTakenAndCanBeRenamed) {
  fs::create_symlink(directory_ / "nowhere", to_);
  EXPECT_EQ(RenameFile(from_, to_), kFileAlreadyExists);
  EXPECT_EQ(RenameFile(to_, directory_ / "ORV00007.WAV"), 0);
  EXPECT_TRUE(fs::is_symlink(directory_ / "ORV00007.WAV"));
}

TEST_F(RenameFileTest, MissingFileMissingFolderAndTextsWithoutAPath) {
  EXPECT_EQ(RenameFile(to_, from_), kFileNotFound);
  EXPECT_EQ(RenameFile(from_, directory_ / "none/ORV00006.WAV"), kFileNotFound);
  EXPECT_EQ(RenameFile("\\ORV00005.WAV", to_), kPathNotFound);
  EXPECT_EQ(RenameFile(from_, "Q:\\ORV00006.WAV"), kPathNotFound);
  EXPECT_EQ(ReadWholeFile(from_), "audio");
}

TEST_F(RenameFileTest, RefusalOfTheDirectory) {
  const ScopedFileFault refused(FileOperation::Rename, EACCES);
  EXPECT_EQ(RenameFile(from_, to_), kPermissionDenied);
  EXPECT_EQ(ReadWholeFile(from_), "audio");
}

// Between the look and the step another station may take the name.
TEST_F(RenameFileTest, NameTakenAtTheLastMomentStays) {
  WriteWholeFile(to_, "other");
  EXPECT_EQ(RenameWithoutReplacing(from_, to_), EEXIST);
  EXPECT_EQ(ReadWholeFile(to_), "other");
}

}  // namespace
}  // namespace vorda::platform
