// Faults of the news directory: what the stories lose by them, and that the story behind them is whole.

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>

#include "platform/FileFault.h"
#include "platform/Files.h"
#include "support/HeapInUse.h"
#include "support/ScenarioEnd.h"
#include "support/StoryFixture.h"

namespace vorda {
namespace {

namespace fs = std::filesystem;
using platform::FileOperation;
using platform::ScopedFileFault;

constexpr int kForever = std::numeric_limits<int>::max();

std::ptrdiff_t OpenDescriptors() {
  return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

class NewsDirectoryTest : public test::StoryFixture {
 protected:
  NewsDirectoryTest() {
    fs::create_directory(wire_);
    feed().NewsPath = wire_;
  }
  ~NewsDirectoryTest() override { platform::CloseAllFiles(); }

  // A story in three arrivals, and the line end behind it, which is a story of its own.
  void TakeStory(const std::string& text) {
    Take("\x01" + text.substr(0, text.size() / 2));
    Take(text.substr(text.size() / 2));
    Take("\x04\r\n\x01\x04");
  }
  // A story that comes when all is well again is handed on whole, under a name of its own.
  void ExpectWhole(const std::string& text) {
    handed_.clear();
    Take("\x01" + text + "\x04");
    ASSERT_EQ(Handed(), Texts{text});
    EXPECT_TRUE(handed_[0].path.starts_with(wire_ + "/VOR")) << handed_[0].path;
  }
  // A hundred stories that come to nothing leave nothing behind in the server either.
  void ExpectNothingPilesUp() {
    const auto takeHundred = [this] {
      for (int i = 0; i < 100; ++i) TakeStory("lost");
      processes_.started.clear();
      handed_.clear();
      announced_.clear();
    };
    takeHundred();
    const std::ptrdiff_t descriptors = OpenDescriptors();
    const std::size_t heap = test::HeapInUse();
    takeHundred();
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_LT(test::HeapInUse(), heap + 8192);
  }

  const std::string wire_ = news_ / "wire";
};

TEST_F(NewsDirectoryTest, MissingOneLosesItsStoriesAndTheFirstOnceItIsThereIsWhole) {
  fs::remove(wire_);
  TakeStory("lost");
  EXPECT_EQ(Handed(), (Texts{"", "", ""}));
  ExpectNothingPilesUp();
  fs::create_directory(wire_);
  ExpectWhole("kept");
}

TEST_F(NewsDirectoryTest, FileInItsPlaceIsAMissingOne) {
  fs::remove(wire_);
  test::WriteWholeFile(wire_, "no directory");
  TakeStory("lost");
  ExpectNothingPilesUp();
  EXPECT_EQ(test::ReadWholeFile(wire_), "no directory");
  fs::remove(wire_);
  fs::create_directory(wire_);
  ExpectWhole("kept");
}

TEST_F(NewsDirectoryTest, OneRemovedUnderAnOpenStoryTakesTheStoryAlongAndTheNextOnceItIsBackIsWhole) {
  Take("\x01one ");
  const std::string path = feed().StoryFileName;
  fs::remove_all(wire_);
  Take("two\x04");
  ASSERT_EQ(handed_.size(), 1U);
  EXPECT_EQ(handed_[0].path, path);
  EXPECT_EQ(announced_, Texts{"Processed New Story"});
  TakeStory("lost");
  ExpectNothingPilesUp();
  EXPECT_FALSE(fs::exists(wire_));
  fs::create_directory(wire_);
  ExpectWhole("kept");
}

TEST_F(NewsDirectoryTest, OneRemovedAndMadeAgainUnderAnOpenStoryHasTheNextWhole) {
  Take("\x01one ");
  const std::string path = feed().StoryFileName;
  fs::remove_all(wire_);
  fs::create_directory(wire_);
  Take("two\x04");
  ASSERT_EQ(handed_.size(), 1U);
  EXPECT_EQ(handed_[0].path, path);
  EXPECT_EQ(test::JoinedNames(wire_), "");
  ExpectWhole("kept");
}

// Configured in capitals, the directory is looked for among the names of the one above it.
TEST_F(NewsDirectoryTest, OneOfAnotherCaseIsFoundAgainWhenItIsMadeAnew) {
  feed().NewsPath = news_ / "WIRE";
  ExpectWhole("one");
  for (const char* name : {"Wire", "wire"}) {
    fs::remove_all(wire_);
    fs::remove_all(news_ / "Wire");
    TakeStory("lost");
    fs::create_directory(news_ / name);
    handed_.clear();
    Take("\x01kept\x04");
    EXPECT_EQ(Handed(), Texts{"kept"});
    EXPECT_TRUE(handed_[0].path.starts_with(news_ / (std::string(name) + "/VOR"))) << handed_[0].path;
  }
}

// What a directory that lets nothing be made answers, and a disk that is full.
class RefusingNewsDirectoryTest : public NewsDirectoryTest, public ::testing::WithParamInterface<int> {};

TEST_P(RefusingNewsDirectoryTest, WithoutANameStoriesAreLostAndTheOneBehindIsWhole) {
  {
    const ScopedFileFault fault(FileOperation::Open, GetParam(), 1, kForever, ".TMP");
    TakeStory("lost");
    EXPECT_EQ(Handed(), (Texts{"", "", ""}));
    EXPECT_EQ(fault.calls(), 3);
    ExpectNothingPilesUp();
  }
  EXPECT_EQ(test::JoinedNames(wire_), "");
  ExpectWhole("kept");
}

TEST_P(RefusingNewsDirectoryTest, WithoutAFileEveryArrivalTriesAndTheStoryBehindIsWhole) {
  {
    const ScopedFileFault fault(FileOperation::Open, GetParam(), 1, kForever, ".RA1");
    TakeStory("lost");
    EXPECT_EQ(fault.calls(), 5);  // both codes, and each of the three texts
    EXPECT_TRUE(handed_.empty());
    EXPECT_TRUE(announced_.empty());
    ExpectNothingPilesUp();
  }
  EXPECT_EQ(test::JoinedNames(wire_), "");
  ExpectWhole("kept");
}

TEST_P(RefusingNewsDirectoryTest, WithoutWritesStoriesAreEmptyAndTheOneBehindIsWhole) {
  {
    const ScopedFileFault fault(FileOperation::Write, GetParam(), 1, kForever);
    TakeStory("lost");
    EXPECT_EQ(Handed(), (Texts{"", "", ""}));
    EXPECT_EQ(announced_.size(), 3U);
    ExpectNothingPilesUp();
  }
  ExpectWhole("kept");
}

TEST_P(RefusingNewsDirectoryTest, StoryThatWasOpenGoesOnBehindTheGap) {
  Take("\x01one ");
  {
    const ScopedFileFault write(FileOperation::Write, GetParam(), 1, kForever);
    const ScopedFileFault open(FileOperation::Open, GetParam(), 1, kForever);
    for (int i = 0; i < 10; ++i) Take("lost ");
    EXPECT_EQ(write.calls(), 10);
    EXPECT_EQ(open.calls(), 0);
  }
  Take("two\x04");
  EXPECT_EQ(Handed(), Texts{"one two"});
  ExpectWhole("kept");
}

INSTANTIATE_TEST_SUITE_P(Errors, RefusingNewsDirectoryTest, ::testing::Values(EACCES, EROFS, ENOSPC),
                         [](const auto& error) { return std::string(strerrorname_np(error.param)); });

// The system's own full disk stands where the next story's name will be: every write there fails for real.
TEST_F(NewsDirectoryTest, RealFullDiskLosesTheStoryAndTheNextIsWhole) {
  processes_.atStart = {};
  Take("\x01");
  const std::string name = fs::path(feed().StoryFileName).filename().string();
  Take("\x04");
  char next[32];
  std::snprintf(next, sizeof next, "VOR%08X.RA1",
                static_cast<unsigned>(std::stoul(name.substr(3, 8), nullptr, 16)) + 1);
  fs::create_symlink("/dev/full", wire_ + "/" + next);
  Take("\x01");
  ASSERT_EQ(feed().StoryFileName, wire_ + "/" + next);
  EXPECT_NE(platform::WriteToFile(feed().StoryFileHandle, "lost"), 0);
  for (int i = 0; i < 100; ++i) Take("lost\r\n");
  Take("\x04");
  EXPECT_EQ(announced_.size(), 2U);
  processes_.atStart = [this](const platform::ProcessStart& start) { LookAt(start); };
  ExpectWhole("kept");
}

using NewsDirectoryDeathTest = NewsDirectoryTest;

// The superuser may write everywhere: the fault is an ordinary user's.
TEST_F(NewsDirectoryDeathTest, RealReadOnlyOneLosesItsStoriesAndTheFirstOnceItIsWritableIsWhole) {
  const auto scenario = [this] {
    fs::permissions(news_.path(), fs::perms(0755));
    if (::geteuid() == 0) {
      constexpr uid_t kNobody = 65534;
      ASSERT_EQ(::chown(wire_.c_str(), kNobody, kNobody), 0);
      ASSERT_EQ(::setgroups(0, nullptr), 0);
      ASSERT_EQ(::setegid(kNobody), 0);
      ASSERT_EQ(::seteuid(kNobody), 0);
    }
    ASSERT_EQ(::chmod(wire_.c_str(), 0555), 0);
    TakeStory("lost");
    EXPECT_EQ(Handed(), (Texts{"", "", ""}));
    EXPECT_EQ(test::JoinedNames(wire_), "");
    ASSERT_EQ(::chmod(wire_.c_str(), 0755), 0);
    ExpectWhole("kept");
  };
  EXPECT_EXIT((scenario(), test::EndScenario()), ::testing::ExitedWithCode(test::kScenarioHeld), "");
}

}  // namespace
}  // namespace vorda
