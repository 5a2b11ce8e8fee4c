// The files that stories are written to: their names, and what is left when one can't be had.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "platform/FileFault.h"
#include "support/StoryFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::MatchesRegex;

class StoryFilesTest : public test::StoryFixture {};

TEST_F(StoryFilesTest, NameIsUniqueWithTheFeedNumberInItsExtension) {
  Take("\x01");
  const std::string name = std::filesystem::path(feed().StoryFileName).filename().string();
  EXPECT_THAT(name, MatchesRegex("VOR[0-9A-F]{8}\\.RA1"));
  EXPECT_EQ(feed().StoryFileName, news_ / name);
  EXPECT_EQ(test::JoinedNames(news_.path()), name);
}

TEST_F(StoryFilesTest, TwoFeedsInOneDirectoryAreKeptApart) {
  SetUpFeed(gWireFeeds[1]);
  StoryCapture second([] { return std::string("2"); }, [](std::string_view) {});
  Take("\x01one");
  second.Take("\x01two");
  EXPECT_THAT(gWireFeeds[0].StoryFileName, ::testing::EndsWith(".RA1"));
  EXPECT_THAT(gWireFeeds[1].StoryFileName, ::testing::EndsWith(".RA2"));
  EXPECT_NE(gWireFeeds[0].StoryFileHandle, gWireFeeds[1].StoryFileHandle);
  EXPECT_EQ(test::ReadWholeFile(gWireFeeds[0].StoryFileName), "one");
  EXPECT_EQ(test::ReadWholeFile(gWireFeeds[1].StoryFileName), "two");
}

TEST_F(StoryFilesTest, FourthFeedHasItsExtension) {
  tag_ = "4";
  SetUpFeed(gWireFeeds[3]);
  Take("x");
  EXPECT_THAT(gWireFeeds[3].StoryFileName, ::testing::EndsWith(".RA4"));
}

TEST_F(StoryFilesTest, EveryStoryHasAFileOfItsOwn) {
  Take(
      "\x01"
      "1\x04\x01"
      "2\x04\x01"
      "3\x04");
  ASSERT_EQ(handed_.size(), 3U);
  EXPECT_NE(handed_[0].path, handed_[1].path);
  EXPECT_NE(handed_[1].path, handed_[2].path);
  EXPECT_EQ(test::ReadWholeFile(handed_[0].path), "1");
}

// Without a news directory there is not even a name. The story counts as open all the same.
class StoryWithoutANameTest : public test::StoryFixture {
 protected:
  StoryWithoutANameTest() { feed().NewsPath = news_ / "missing"; }
};

TEST_F(StoryWithoutANameTest, StoryCountsAsOpenWithoutAFile) {
  Take("\x01lost");
  EXPECT_GT(feed().StoryFileHandle, 0);
  EXPECT_EQ(feed().StoryFileName, "");
}

TEST_F(StoryWithoutANameTest, NothingIsRetriedOnceTheDirectoryIsThere) {
  Take("\x01lost");
  const std::int32_t handle = feed().StoryFileHandle;
  std::filesystem::create_directory(feed().NewsPath);
  Take("lost too");
  EXPECT_EQ(feed().StoryFileHandle, handle);
  EXPECT_EQ(test::JoinedNames(feed().NewsPath), "");
}

TEST_F(StoryWithoutANameTest, CloseHandsOnAStoryWithNoFileName) {
  processes_.atStart = {};
  Take("\x01lost\x04");
  ASSERT_EQ(processes_.started.size(), 1U);
  EXPECT_EQ(processes_.started[0].arguments, Texts{"|" + feed().FullConfigFile});
  EXPECT_EQ(announced_, Texts{"Processed New Story"});
  EXPECT_EQ(feed().StoryFileHandle, 0);
}

TEST_F(StoryWithoutANameTest, NextStoryIsWholeOnceTheDirectoryIsThere) {
  processes_.atStart = {};
  Take("\x01lost\x04");
  std::filesystem::create_directory(feed().NewsPath);
  Take("\x01kept");
  EXPECT_EQ(OpenText(), "kept");
}

TEST_F(StoryWithoutANameTest, FailingTemporaryFileLeavesNoNameEither) {
  feed().NewsPath = news_.path();
  const ScopedFileFault fault(FileOperation::Open, ENOSPC, 1, 1, ".TMP");
  Take("\x01lost");
  EXPECT_EQ(fault.calls(), 1);
  EXPECT_GT(feed().StoryFileHandle, 0);
  EXPECT_EQ(feed().StoryFileName, "");
}

TEST_F(StoryFilesTest, FailedOpeningLeavesNoStoryOpen) {
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, ".RA1");
  Take("\x01");
  EXPECT_EQ(fault.calls(), 1);
  EXPECT_EQ(feed().StoryFileHandle, 0);
  EXPECT_EQ(feed().StoryFileName, "");
  Take("\x04");
  EXPECT_TRUE(processes_.started.empty());
  EXPECT_TRUE(announced_.empty());
}

TEST_F(StoryFilesTest, TextTriesAgainAfterAFailedOpening) {
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, ".RA1");
  Take("\x01story\x04");
  EXPECT_EQ(fault.calls(), 2);
  EXPECT_EQ(Handed(), Texts{"story"});
}

TEST_F(StoryFilesTest, TextIsLostWithAFailedOpeningAndTheNextArrivalTriesAgain) {
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, ".RA1");
  Take("lost");
  EXPECT_EQ(feed().StoryFileHandle, 0);
  Take("kept\x04");
  EXPECT_EQ(Handed(), Texts{"kept"});
}

TEST_F(StoryFilesTest, EveryArrivalTriesForAsLongAsOpeningFails) {
  const ScopedFileFault fault(FileOperation::Open, ENOSPC, 1, 5, ".RA1");
  for (int i = 0; i < 5; ++i) Take("lost");
  EXPECT_EQ(fault.calls(), 5);
  Take("kept\x04");
  EXPECT_EQ(Handed(), Texts{"kept"});
}

TEST_F(StoryFilesTest, FailedOpeningOfTheNextStoryStillHandsOnTheLast) {
  Take("\x01one");
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, ".RA1");
  Take("\x01");
  EXPECT_EQ(Handed(), Texts{"one"});
  EXPECT_EQ(feed().StoryFileHandle, 0);
}

TEST_F(StoryFilesTest, FailedWriteLeavesAGapAndTheStoryGoesOn) {
  Take("\x01one ");
  {
    const ScopedFileFault fault(FileOperation::Write, ENOSPC);
    Take("two ");
    EXPECT_EQ(fault.calls(), 1);
  }
  Take("three\x04");
  EXPECT_EQ(Handed(), Texts{"one three"});
  EXPECT_EQ(announced_.size(), 1U);
}

}  // namespace
}  // namespace vorda
