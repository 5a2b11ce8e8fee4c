// File sizes, and names for files that don't exist yet.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>

#include "platform/FileFault.h"
#include "platform/ScopedVariable.h"
#include "platform/Settings.h"
#include "shell/GeneralFunctions.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

using test::JoinedNames;
using ::testing::MatchesRegex;

TEST(FileSizeTest, LengthInBytes) {
  const test::TempDirectory directory;
  test::WriteWholeFile(directory / "five", "12345");
  test::WriteWholeFile(directory / "empty", "");
  EXPECT_EQ(FileSize(directory / "five"), 5.0);
  EXPECT_EQ(FileSize(directory / "empty"), 0.0);
}

TEST(FileSizeTest, LengthPastFourGibibytesIsWhole) {
  const test::TempDirectory directory;
  test::WriteWholeFile(directory / "large", "");
  std::filesystem::resize_file(directory / "large", 5'000'000'001);
  EXPECT_EQ(FileSize(directory / "large"), 5'000'000'001.0);
}

TEST(FileSizeTest, WhatCannotBeReadIsMinusOne) {
  const test::TempDirectory directory;
  EXPECT_EQ(FileSize(directory / "missing"), -1.0);
  EXPECT_EQ(FileSize(directory / "missing/file"), -1.0);
  EXPECT_EQ(FileSize(directory.path()), -1.0);
  EXPECT_EQ(FileSize(""), -1.0);
  EXPECT_EQ(FileSize("Q:\\unmapped\\file"), -1.0);
}

TEST(FileSizeTest, DriveTextsAndAnyCaseAreFound) {
  const test::TempDirectory directory;
  test::WriteWholeFile(directory / "Vorda.ini", "12345");
  platform::Settings settings;
  settings.drives['D'] = directory.path();
  const platform::ScopedSettings scoped(settings);
  EXPECT_EQ(FileSize("d:\\VORDA.INI"), 5.0);
}

class UniqueTempFileNameTest : public ::testing::Test {
 protected:
  // The name of the file that comes `steps` behind the one in `path`, names being counted up.
  std::string NameBehind(const std::string& path, unsigned steps, const std::string& extension) {
    const std::string digits = std::filesystem::path(path).filename().string().substr(3, 8);
    char name[32];
    std::snprintf(name, sizeof name, "VOR%08X.%s",
                  static_cast<unsigned>(std::stoul(digits, nullptr, 16)) + steps, extension.c_str());
    return directory_ / name;
  }

  test::FakeBoxes boxes_;
  test::TempDirectory directory_;
};

TEST_F(UniqueTempFileNameTest, NameHasTheTitlesLettersAndTheExtension) {
  const std::string name = UniqueTempFileName(directory_.path(), "RA1");
  EXPECT_THAT(name.substr(directory_.path().size()), MatchesRegex("/VOR[0-9A-F]{8}\\.RA1"));
  EXPECT_TRUE(name.starts_with(directory_.path() + "/"));
}

TEST_F(UniqueTempFileNameTest, NoFileIsLeft) {
  UniqueTempFileName(directory_.path(), "RA1");
  UniqueTempFileName(directory_.path(), "TMP");
  UniqueTempFileName(directory_.path(), "");
  EXPECT_EQ(JoinedNames(directory_.path()), "");
}

TEST_F(UniqueTempFileNameTest, ThreeCharactersGoWhateverComes) {
  const auto nameOf = [this](const char* extension) {
    return UniqueTempFileName(directory_.path(), extension).substr(directory_.path().size() + 1);
  };
  EXPECT_THAT(nameOf("TMP"), MatchesRegex("VOR[0-9A-F]{8}\\.TMP"));
  EXPECT_THAT(nameOf(""), MatchesRegex("VOR[0-9A-F]{8}\\."));
  EXPECT_THAT(nameOf("x"), MatchesRegex("VOR[0-9A-F]{8}\\.x"));
  EXPECT_THAT(nameOf("wave"), MatchesRegex("VOR[0-9A-F]{8}\\.wave"));
}

TEST_F(UniqueTempFileNameTest, NameNeverComesTwice) {
  std::set<std::string> names;
  for (int i = 0; i < 1000; ++i) names.insert(UniqueTempFileName(directory_.path(), "RA1"));
  EXPECT_EQ(names.size(), 1000U);
}

TEST_F(UniqueTempFileNameTest, NameOfAFileThatHoldsSomethingIsPassedOver) {
  const std::string first = UniqueTempFileName(directory_.path(), "RA1");
  test::WriteWholeFile(NameBehind(first, 1, "RA1"), "story");
  test::WriteWholeFile(NameBehind(first, 2, "RA1"), "story");
  EXPECT_EQ(UniqueTempFileName(directory_.path(), "RA1"), NameBehind(first, 3, "RA1"));
}

TEST_F(UniqueTempFileNameTest, NameOfAnEmptyFileIsTaken) {
  const std::string first = UniqueTempFileName(directory_.path(), "RA1");
  test::WriteWholeFile(NameBehind(first, 1, "RA1"), "");
  EXPECT_EQ(UniqueTempFileName(directory_.path(), "RA1"), NameBehind(first, 1, "RA1"));
}

TEST_F(UniqueTempFileNameTest, FileOfAnotherExtensionIsNoObstacle) {
  const std::string first = UniqueTempFileName(directory_.path(), "RA1");
  test::WriteWholeFile(NameBehind(first, 1, "RA2"), "story");
  EXPECT_EQ(UniqueTempFileName(directory_.path(), "RA1"), NameBehind(first, 1, "RA1"));
}

TEST_F(UniqueTempFileNameTest, OthersTemporaryFilesAreLeftAlone) {
  const std::string first = UniqueTempFileName(directory_.path(), "RA1");
  test::WriteWholeFile(NameBehind(first, 1, "TMP"), "another's");
  EXPECT_EQ(UniqueTempFileName(directory_.path(), "RA1"), NameBehind(first, 2, "RA1"));
  EXPECT_EQ(test::ReadWholeFile(NameBehind(first, 1, "TMP")), "another's");
}

TEST_F(UniqueTempFileNameTest, DirectoryThatIsNotThereGivesNoName) {
  EXPECT_EQ(UniqueTempFileName(directory_ / "missing", "RA1"), "");
  EXPECT_EQ(UniqueTempFileName("Q:\\unmapped", "RA1"), "");
  EXPECT_EQ(UniqueTempFileName("\\", "RA1"), "");
}

TEST_F(UniqueTempFileNameTest, FullDiskGivesNoName) {
  const platform::ScopedFileFault fault(platform::FileOperation::Open, ENOSPC);
  EXPECT_EQ(UniqueTempFileName(directory_.path(), "RA1"), "");
}

TEST_F(UniqueTempFileNameTest, DriveTextIsJoinedByItsOwnSeparator) {
  platform::Settings settings;
  settings.drives['N'] = directory_.path();
  const platform::ScopedSettings scoped(settings);
  std::filesystem::create_directory(directory_ / "wire");
  const std::string name = UniqueTempFileName("N:\\Wire", "RA1");
  EXPECT_TRUE(name.starts_with("N:\\Wire\\VOR")) << name;
}

TEST_F(UniqueTempFileNameTest, EmptyPathIsTheTemporaryDirectory) {
  const test::ScopedVariable temporary("TMPDIR", directory_.path().c_str());
  EXPECT_TRUE(UniqueTempFileName("", "TMP").starts_with(directory_.path() + "/VOR"));
}

TEST_F(UniqueTempFileNameTest, MissingTemporaryDirectoryIsTold) {
  const test::ScopedVariable temporary("TMPDIR", (directory_ / "missing").c_str());
  int boxes = 0;
  const platform::ScopedHook counting(platform::MessageBoxHook(), [&](const platform::BoxRequest& request) {
    ++boxes;
    EXPECT_THAT(request.text, MatchesRegex("Error getting a temporary file name :[1-9][0-9]*"));
    EXPECT_EQ(request.icon, platform::BoxIcon::Critical);
    return platform::BoxAnswer::Ok;
  });
  EXPECT_EQ(UniqueTempFileName("", "TMP"), "");
  EXPECT_EQ(boxes, 1);
}

}  // namespace
}  // namespace vorda
