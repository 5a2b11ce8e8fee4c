// How a finished story is handed on: in which order, to which program, with which arguments.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/StoryFixture.h"

namespace vorda {
namespace {

// Whether this process has the file open.
bool IsOpenHere(const std::string& path) {
  const auto descriptors = std::filesystem::directory_iterator("/proc/self/fd");
  return std::any_of(begin(descriptors), end(descriptors), [&path](const auto& descriptor) {
    std::error_code ignored;
    return std::filesystem::read_symlink(descriptor.path(), ignored) == path;
  });
}

class StoryHandoffTest : public test::StoryFixture {};

TEST_F(StoryHandoffTest, FileIsClosedThenToolThenLineThenTheRecordIsCleared) {
  std::vector<std::string> steps;
  Take("\x01story");
  const std::string path = feed().StoryFileName;
  const std::int32_t handle = feed().StoryFileHandle;
  ASSERT_TRUE(IsOpenHere(path));
  processes_.atStart = [&](const platform::ProcessStart&) {
    steps.emplace_back("tool");
    EXPECT_FALSE(IsOpenHere(path));
    EXPECT_EQ(feed().StoryFileHandle, handle);
    EXPECT_EQ(feed().StoryFileName, path);
  };
  StoryCapture capture([] { return std::string("1"); },
                       [&](std::string_view line) {
                         steps.emplace_back(line);
                         EXPECT_EQ(feed().StoryFileHandle, handle);
                         EXPECT_EQ(feed().StoryFileName, path);
                       });
  capture.Take("\x04");
  EXPECT_EQ(steps, (Texts{"tool", "Processed New Story"}));
  EXPECT_EQ(feed().StoryFileHandle, 0);
  EXPECT_EQ(feed().StoryFileName, "");
}

TEST_F(StoryHandoffTest, OneArgumentOfStoryBarAndConfigurationFile) {
  Take("\x01story");
  const std::string path = feed().StoryFileName;
  Take("\x04");
  ASSERT_EQ(processes_.started.size(), 1U);
  EXPECT_EQ(processes_.started[0].arguments, Texts{path + "|" + news_.path() + "/vorda.ini"});
  EXPECT_FALSE(processes_.started[0].lowestPriority);
}

TEST_F(StoryHandoffTest, ProgramLiesInTheProgramsDirectory) {
  Take("\x01\x04");
  ASSERT_EQ(processes_.started.size(), 1U);
  EXPECT_EQ(processes_.started[0].program, "/opt/tools/ItemFile.exe");
}

TEST_F(StoryHandoffTest, BlankInTheProgramsDirectoryStaysInTheProgram) {
  const platform::ScopedSettings settings(WithProgramsIn("/opt/my tools"));
  Take("\x01\x04");
  ASSERT_EQ(processes_.started.size(), 1U);
  EXPECT_EQ(processes_.started[0].program, "/opt/my tools/ItemFile.exe");
}

TEST_F(StoryHandoffTest, BlanksInPathsPartTheArgument) {
  feed().NewsPath = news_ / "my news";
  feed().FullConfigFile = feed().NewsPath + "/vorda.ini";
  std::filesystem::create_directory(feed().NewsPath);
  processes_.atStart = {};
  Take("\x01story");
  const std::string name = std::filesystem::path(feed().StoryFileName).filename().string();
  Take("\x04");
  ASSERT_EQ(processes_.started.size(), 1U);
  EXPECT_EQ(processes_.started[0].arguments,
            (Texts{news_ / "my", "news/" + name + "|" + (news_ / "my"), "news/vorda.ini"}));
}

TEST_F(StoryHandoffTest, DriveTextsAreKeptInTheRecordAndNativeForTheTool) {
  platform::Settings settings = platform::PlatformSettings();
  settings.drives['N'] = news_.path();
  const platform::ScopedSettings scoped(settings);
  std::filesystem::create_directory(news_ / "Wire");
  feed().NewsPath = "N:\\WIRE";
  feed().FullConfigFile = "N:\\WIRE\\vorda.ini";
  Take("\x01story");
  ASSERT_TRUE(feed().StoryFileName.starts_with("N:\\WIRE\\VOR")) << feed().StoryFileName;
  const std::string name = feed().StoryFileName.substr(std::string("N:\\WIRE\\").size());
  Take("\x04");
  ASSERT_EQ(processes_.started.size(), 1U);
  EXPECT_EQ(processes_.started[0].arguments,
            Texts{news_ / ("Wire/" + name) + "|" + (news_ / "Wire/vorda.ini")});
  EXPECT_EQ(Handed(), Texts{"story"});
}

TEST_F(StoryHandoffTest, ToolThatCannotStartIsSilentAndLeavesTheStory) {
  processes_.canStart = false;
  Take("\x01story");
  const std::string path = feed().StoryFileName;
  Take("\x04");
  EXPECT_EQ(announced_, Texts{"Processed New Story"});
  EXPECT_EQ(feed().StoryFileHandle, 0);
  EXPECT_EQ(test::ReadWholeFile(path), "story");
}

TEST_F(StoryHandoffTest, ToolMayTakeTheFileAwayAtOnce) {
  processes_.atStart = [this](const platform::ProcessStart& start) {
    LookAt(start);
    std::filesystem::remove(handed_.back().path);
  };
  Take("\x01one\x04\x01two\x04");
  EXPECT_EQ(Handed(), (Texts{"one", "two"}));
  EXPECT_EQ(test::JoinedNames(news_.path()), "");
}

TEST_F(StoryHandoffTest, HandlesAreNeverZeroNorUsedTwiceAtATime) {
  SetUpFeed(gWireFeeds[1]);
  StoryCapture second([] { return std::string("2"); }, [](std::string_view) {});
  for (int i = 0; i < 20; ++i) {
    Take("\x01");
    second.Take("\x01");
    ASSERT_GT(gWireFeeds[0].StoryFileHandle, 0);
    ASSERT_GT(gWireFeeds[1].StoryFileHandle, 0);
    ASSERT_NE(gWireFeeds[0].StoryFileHandle, gWireFeeds[1].StoryFileHandle);
  }
}

}  // namespace
}  // namespace vorda
