// Listing a cart's files: which names count, in what order, and that a kept listing never lies.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "OtherProcess.h"
#include "platform/DirectoryNames.h"
#include "platform/FileFault.h"
#include "platform/Settings.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

namespace fs = std::filesystem;
using test::WriteWholeFile;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kEver = std::numeric_limits<int>::max();

class FilesWithStemTest : public ::testing::Test {
 protected:
  void Make(const std::string& name) { WriteWholeFile(directory_ / name, "x"); }
  std::vector<std::string> List(const std::string& stem = "ORV00005") {
    return FilesWithStem(directory_ / stem);
  }

  test::TempDirectory directory_;
};

TEST_F(FilesWithStemTest, CaseDoesNotMatterAndNamesComeAsOnDisk) {
  for (const char* name : {"orv00005.wav", "ORV00005.FLK", "Orv00005.Txt"}) Make(name);
  EXPECT_THAT(List(), ElementsAre("ORV00005.FLK", "Orv00005.Txt", "orv00005.wav"));
  EXPECT_THAT(List("orv00005"), ElementsAre("ORV00005.FLK", "Orv00005.Txt", "orv00005.wav"));
}

TEST_F(FilesWithStemTest, PointIsRequiredAndMoreOfThemCount) {
  for (const char* name :
       {"ORV00005", "ORV00005.", "ORV00005.a.b", "ORV000051.WAV", "XORV00005.WAV", "ORV00005X"})
    Make(name);
  EXPECT_THAT(List(), ElementsAre("ORV00005.", "ORV00005.a.b"));
}

TEST_F(FilesWithStemTest, StemWithPointsOfItsOwn) {
  for (const char* name : {"a.b.c", "a.b", "a.bc.d"}) Make(name);
  EXPECT_THAT(List("a.b"), ElementsAre("a.b.c"));
}

TEST_F(FilesWithStemTest, TemporaryFilesComeLastInEitherCase) {
  for (const char* name : {"ORV00005.TMP", "ORV00005.WAV", "ORV00005.tmp", "ORV00005.ZZZ"}) Make(name);
  EXPECT_THAT(List(), ElementsAre("ORV00005.WAV", "ORV00005.ZZZ", "ORV00005.TMP", "ORV00005.tmp"));
}

TEST_F(FilesWithStemTest, DirectoriesAreNoFilesAndLinksToNowhereAre) {
  fs::create_directory(directory_ / "ORV00005.DIR");
  fs::create_directory_symlink(directory_ / "ORV00005.DIR", directory_ / "ORV00005.LNK");
  fs::create_symlink(directory_ / "nowhere", directory_ / "ORV00005.WAV");
  EXPECT_THAT(List(), ElementsAre("ORV00005.WAV"));
}

TEST_F(FilesWithStemTest, NamesOutsideTheCodePageAreListed) {
  Make("ORV00005.\xC3\xA9");      // é
  Make("ORV00005.\xE4\xB8\xAD");  // a letter that ANSI doesn't have
  EXPECT_THAT(List(), ElementsAre("ORV00005.\xE4\xB8\xAD", "ORV00005.\xE9"));
}

TEST_F(FilesWithStemTest, StemsWithoutAPathListNothing) {
  Make(".WAV");
  EXPECT_THAT(FilesWithStem(""), IsEmpty());
  EXPECT_THAT(FilesWithStem("ORV00005"), IsEmpty());
  EXPECT_THAT(FilesWithStem("\\ORV00005"), IsEmpty());
  EXPECT_THAT(FilesWithStem("Q:\\ORV00005"), IsEmpty());
  EXPECT_THAT(List("missing/ORV00005"), IsEmpty());
}

TEST_F(FilesWithStemTest, DrivesAndOtherCaseOfTheDirectory) {
  fs::create_directory(directory_ / "Wall");
  Make("Wall/ORV00005.WAV");
  Settings settings;
  settings.drives['D'] = directory_.path();
  const ScopedSettings mapped(settings);
  EXPECT_THAT(FilesWithStem("D:\\WALL\\ORV00005"), ElementsAre("ORV00005.WAV"));
}

// With the system's notices and without: what changes between two lists is seen at once.
class ChangedListTest : public FilesWithStemTest, public ::testing::WithParamInterface<bool> {
 protected:
  ScopedFileFault noNotices_{FileOperation::Watch, ENOSPC, 1, GetParam() ? 0 : kEver};
};

TEST_P(ChangedListTest, OwnChangesAreSeenAtOnce) {
  EXPECT_THAT(List(), IsEmpty());
  Make("ORV00005.WAV");
  EXPECT_THAT(List(), ElementsAre("ORV00005.WAV"));
  fs::rename(directory_ / "ORV00005.WAV", directory_ / "ORV00005.TXT");
  EXPECT_THAT(List(), ElementsAre("ORV00005.TXT"));
  fs::remove(directory_ / "ORV00005.TXT");
  EXPECT_THAT(List(), IsEmpty());
}

TEST_P(ChangedListTest, AnotherProgramsChangesAreSeenAtOnce) {
  Make("ORV00005.WAV");
  EXPECT_THAT(List(), ElementsAre("ORV00005.WAV"));
  test::OtherProcess other([this] {
    std::ofstream(directory_ / "orv00005.flk") << "x";
    return ::unlink((directory_ / "ORV00005.WAV").c_str()) == 0;
  });
  ASSERT_TRUE(other.Succeeded());
  EXPECT_THAT(List(), ElementsAre("orv00005.flk"));
}

TEST_P(ChangedListTest, DirectoryMadeAnewUnderItsName) {
  fs::create_directory(directory_ / "wall");
  Make("wall/ORV00005.WAV");
  EXPECT_THAT(List("wall/ORV00005"), ElementsAre("ORV00005.WAV"));
  fs::rename(directory_ / "wall", directory_ / "old");
  EXPECT_THAT(List("wall/ORV00005"), IsEmpty());
  fs::create_directory(directory_ / "wall");
  Make("wall/ORV00005.TXT");
  EXPECT_THAT(List("wall/ORV00005"), ElementsAre("ORV00005.TXT"));
  fs::remove_all(directory_ / "wall");
  fs::rename(directory_ / "old", directory_ / "wall");
  EXPECT_THAT(List("wall/ORV00005"), ElementsAre("ORV00005.WAV"));
}

TEST_P(ChangedListTest, TwoPathsOfOneDirectory) {
  fs::create_directory_symlink(directory_.path(), directory_ / "again");
  EXPECT_THAT(List(), IsEmpty());
  EXPECT_THAT(List("again/ORV00005"), IsEmpty());
  Make("ORV00005.WAV");
  EXPECT_THAT(List("again/ORV00005"), ElementsAre("ORV00005.WAV"));
  EXPECT_THAT(List(), ElementsAre("ORV00005.WAV"));
}

INSTANTIATE_TEST_SUITE_P(Notices, ChangedListTest, ::testing::Bool(),
                         [](const auto& test) { return test.param ? "With" : "Without"; });

TEST_F(FilesWithStemTest, LargeDirectoryIsReadOnceForMatchesAndLists) {
  for (int i = 0; i < 100; ++i) Make("ORV" + std::to_string(10000 + i) + ".WAV");
  EXPECT_THAT(List("ORV10007"), ElementsAre("ORV10007.WAV"));
  const ScopedFileFault scans(FileOperation::Open, 0, 1, kEver, directory_.path());
  for (int i = 0; i < 100; ++i) {
    fs::remove(directory_ / ("ORV" + std::to_string(10000 + i) + ".WAV"));
    EXPECT_THAT(List("ORV" + std::to_string(10000 + i)), IsEmpty());
    EXPECT_EQ(MatchDirectoryName(directory_.path(), "orv10099.wav"), i < 99 ? "ORV10099.WAV" : "");
  }
  EXPECT_EQ(scans.calls(), 0);
}

TEST_F(FilesWithStemTest, MoreChangesThanTheSystemKeeps) {
  Make("ORV00005.WAV");
  EXPECT_THAT(List(), ElementsAre("ORV00005.WAV"));
  int most = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> most;
  ASSERT_GT(most, 0);
  for (int i = 0; i <= most / 2; ++i) {
    Make("other");
    fs::remove(directory_ / "other");
  }
  fs::remove(directory_ / "ORV00005.WAV");
  Make("ORV00005.TXT");
  EXPECT_THAT(List(), ElementsAre("ORV00005.TXT"));
}

}  // namespace
}  // namespace vorda::platform
