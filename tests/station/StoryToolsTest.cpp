// The sample story tools from outside, as the server starts them.

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>
#include <vector>

#include "station/Program.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

std::string DateDaysAgo(int days) {
  std::time_t now = std::time(nullptr);
  std::tm local = {};
  ::localtime_r(&now, &local);
  local.tm_mday -= days;
  local.tm_hour = 12;
  now = std::mktime(&local);
  char text[16];
  std::strftime(text, sizeof(text), "%Y-%m-%d", ::localtime_r(&now, &local));
  return text;
}

class StoryToolsTest : public ::testing::Test {
 protected:
  StoryToolsTest() { WriteConfig(""); }

  void WriteConfig(const std::string& text) { WriteWholeFile(config_, text); }
  std::string WriteStory(std::string_view name, std::string_view text) {
    WriteWholeFile(directory_ / name, text);
    return directory_ / name;
  }
  int Run(std::string_view tool, const std::string& argument) {
    return RunToEnd({BuiltProgram(tool), argument});
  }
  int FileStory(const std::string& story) { return Run("ItemFile", story + "|" + config_); }
  void MakeFolder(const std::string& name) {
    fs::create_directories(fs::path(stories_) / name);
    WriteWholeFile(stories_ + "/" + name + "/101112-1-words.txt", "Some words\r\n");
  }
  bool HasFolder(const std::string& name) { return fs::exists(fs::path(stories_) / name); }
  // The filed stories, in the order of their names.
  std::vector<fs::path> Filed() {
    std::vector<fs::path> files;
    if (!fs::exists(stories_)) return files;
    for (const auto& entry : fs::recursive_directory_iterator(stories_)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
    return files;
  }

  TempDirectory directory_;
  const std::string config_ = directory_ / "vorda.ini";
  const std::string stories_ = directory_ / "Stories";
};

TEST_F(StoryToolsTest, StoryIsFiledByteForByteAndIsGoneFromWhereItWas) {
  const std::string text = "\r\n 207 \r\nWWUS82 KJAX 131339\r\n\0\x01\xff"s + std::string(100, 'x');
  const std::string before = DateDaysAgo(0);
  const std::string story = WriteStory("VOR00000001.RA1", text);
  ASSERT_EQ(FileStory(story), 0);
  const auto filed = Filed();
  ASSERT_EQ(filed.size(), 1u);
  EXPECT_EQ(ReadWholeFile(filed[0].string()), text);
  EXPECT_FALSE(fs::exists(story));
  const std::string folder = filed[0].parent_path().filename().string();
  EXPECT_TRUE(folder == before || folder == DateDaysAgo(0)) << folder;
  EXPECT_NE(filed[0].filename().string().find("-207-WWUS82-KJAX-131339-xxxxxxx"), std::string::npos)
      << filed[0];
}

TEST_F(StoryToolsTest, StoryOfOneByteLessThanTheDiscardSizeIsRemoved) {
  ASSERT_EQ(FileStory(WriteStory("small", std::string(69, 'x'))), 0);
  EXPECT_FALSE(fs::exists(directory_ / "small"));
  EXPECT_TRUE(Filed().empty());
  ASSERT_EQ(FileStory(WriteStory("enough", std::string(70, 'x'))), 0);
  EXPECT_EQ(Filed().size(), 1u);
}

TEST_F(StoryToolsTest, DiscardSizeComesFromTheConfiguration) {
  WriteConfig(
      "[Other]\r\nDiscardFileSize=1\r\n[TEXTDATA]\r\n discardfilesize = 4 bytes\r\nDiscardFileSize=9\r\n");
  ASSERT_EQ(FileStory(WriteStory("three", "abc")), 0);
  EXPECT_TRUE(Filed().empty());
  ASSERT_EQ(FileStory(WriteStory("four", "abcd")), 0);
  EXPECT_EQ(Filed().size(), 1u);
}

TEST_F(StoryToolsTest, EmptyStoryIsFiledWhenNothingIsDiscarded) {
  WriteConfig("[TextData]\nDiscardFileSize=0\n");
  ASSERT_EQ(FileStory(WriteStory("empty", "")), 0);
  ASSERT_EQ(Filed().size(), 1u);
  EXPECT_NE(Filed()[0].string().find("-untitled.txt"), std::string::npos);
}

TEST_F(StoryToolsTest, NameTakesOnlySafeCharacters) {
  const std::string text = "\x01../../etc/pass\x08wd \"x\" *?|\xe9t\xe9\r\n" + std::string(70, '-');
  ASSERT_EQ(FileStory(WriteStory("odd", text)), 0);
  ASSERT_EQ(Filed().size(), 1u);
  EXPECT_TRUE(Filed()[0].string().ends_with("-etc-passwd-x-t.txt")) << Filed()[0];
}

TEST_F(StoryToolsTest, ManyAtOnceLoseNothing) {
  std::vector<std::unique_ptr<Program>> tools;
  const std::string text(200, 'x');
  for (int number = 0; number < 50; ++number) {
    const std::string story = WriteStory("VOR" + std::to_string(number) + ".RA1", text);
    tools.push_back(std::make_unique<Program>(std::vector{BuiltProgram("ItemFile"), story + "|" + config_}));
  }
  for (auto& tool : tools) EXPECT_EQ(tool->ExitCode(), 0) << tool->output();
  EXPECT_EQ(Filed().size(), 50u);
  EXPECT_EQ(JoinedNames(directory_.path()), "Stories vorda.ini");
}

TEST_F(StoryToolsTest, StoryThatCannotBeFiledStays) {
  const std::string story = WriteStory("story", std::string(100, 'x'));
  EXPECT_EQ(Run("ItemFile", story), 2);
  EXPECT_EQ(RunToEnd({BuiltProgram("ItemFile"), story, config_}), 2);
  EXPECT_EQ(Run("ItemFile", "|" + config_), 2);
  EXPECT_EQ(FileStory(directory_ / "nothing"), 1);
  WriteWholeFile(stories_, "a file where the folder should be");
  EXPECT_EQ(FileStory(story), 1);
  EXPECT_EQ(ReadWholeFile(story), std::string(100, 'x'));
}

TEST_F(StoryToolsTest, MissingConfigurationMeansDefaults) {
  fs::remove(config_);
  ASSERT_EQ(FileStory(WriteStory("story", std::string(70, 'x'))), 0);
  EXPECT_EQ(Filed().size(), 1u);
}

TEST_F(StoryToolsTest, ExpiryTakesFoldersOlderThanTheLongestCategory) {
  WriteConfig("[Categories]\nName1=Weather\nExpiry1=3\nCode2=s\nExpiry2=12\nExpiry3=90\n");
  for (const int days : {0, 12, 13, 40}) MakeFolder(DateDaysAgo(days));
  MakeFolder("2001-02-30");  // no date
  MakeFolder("archive");
  fs::create_directory_symlink(directory_.path(), stories_ + "/2001-01-01");
  ASSERT_EQ(Run("ItemDrop", config_), 0);
  EXPECT_TRUE(HasFolder(DateDaysAgo(0)) && HasFolder(DateDaysAgo(12)));
  EXPECT_FALSE(HasFolder(DateDaysAgo(13)) || HasFolder(DateDaysAgo(40)));
  EXPECT_TRUE(HasFolder("2001-02-30") && HasFolder("archive") && HasFolder("2001-01-01"));
  EXPECT_TRUE(fs::exists(config_));
}

TEST_F(StoryToolsTest, ExpiryIsTenDaysWithoutCategories) {
  for (const int days : {10, 11}) MakeFolder(DateDaysAgo(days));
  ASSERT_EQ(Run("ItemDrop", config_), 0);
  EXPECT_TRUE(HasFolder(DateDaysAgo(10)));
  EXPECT_FALSE(HasFolder(DateDaysAgo(11)));
}

TEST_F(StoryToolsTest, IndexListsEveryStoryAndReplacesTheOldOne) {
  MakeFolder("2026-01-02");
  MakeFolder("2025-12-31");
  WriteWholeFile(stories_ + "/2026-01-02/.draft", "no story");
  WriteWholeFile(stories_ + "/INDEX.txt", "old");
  ASSERT_EQ(Run("ItemRoll", config_), 0);
  EXPECT_EQ(ReadWholeFile(stories_ + "/INDEX.txt"),
            "2025-12-31\t101112\t12\t2025-12-31/101112-1-words.txt\tSome words\n"
            "2026-01-02\t101112\t12\t2026-01-02/101112-1-words.txt\tSome words\n");
  EXPECT_EQ(JoinedNames(stories_), "2025-12-31 2026-01-02 INDEX.txt tools.log");
}

TEST_F(StoryToolsTest, DailyToolsLeaveTheirLinesInTheLog) {
  ASSERT_EQ(Run("ItemDrop", config_), 0);
  ASSERT_EQ(Run("ItemRoll", config_), 0);
  const std::string log = ReadWholeFile(stories_ + "/tools.log");
  EXPECT_TRUE(log.starts_with("ItemDrop 20")) << log;
  EXPECT_NE(log.find(" removed 0 folders older than 10 days\nItemRoll 20"), std::string::npos) << log;
  EXPECT_TRUE(log.ends_with(" indexed 0 stories\n")) << log;
}

TEST_F(StoryToolsTest, DailyToolsWantOneArgument) {
  EXPECT_EQ(RunToEnd({BuiltProgram("ItemDrop")}), 2);
  EXPECT_EQ(RunToEnd({BuiltProgram("ItemRoll"), config_, config_}), 2);
}

TEST_F(StoryToolsTest, DailyToolThatCannotWriteSaysSo) {
  WriteWholeFile(stories_, "a file where the folder should be");
  EXPECT_EQ(Run("ItemDrop", config_), 1);
  EXPECT_EQ(Run("ItemRoll", config_), 1);
}

}  // namespace
}  // namespace vorda::test
