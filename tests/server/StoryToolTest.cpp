// Faults of the story tool, with real starts: what becomes of its stories, and that the story behind them
// reaches a tool that works.

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/FileFault.h"
#include "platform/Process.h"
#include "platform/ScopedVariable.h"
#include "support/EventLoop.h"
#include "support/HeapInUse.h"
#include "support/ProcessCost.h"
#include "support/ScenarioEnd.h"
#include "support/StoryFixture.h"

namespace vorda {
namespace {

namespace fs = std::filesystem;
using test::WaitUntil;

// The start of processes that was in force ahead of the fixture's.
struct FormerProcesses {
  using Start = bool(const platform::ProcessStart&, platform::ProcessInformation&);
  FormerProcesses() : start(platform::ProcessHook().Swap({})) { platform::ProcessHook().Swap(start); }
  platform::Hook<Start>::Function start;
};

class StoryToolTest : private FormerProcesses, public test::StoryFixture {
 protected:
  StoryToolTest() {
    fs::create_directories(tools_ + "/kept");
    test::WriteWholeFile(hold_, "");
    test::WriteWholeFile(feed().FullConfigFile, "");
  }
  ~StoryToolTest() override {
    Release();
    EXPECT_TRUE(WaitUntil([] { return platform::RunningProcessCount() == 0; }, 20000));
  }

  // The tool that keeps the story's text under the story's name. At a story that begins with "hang" it first
  // hangs until Release, or until the test ends, however it ends.
  void InstallTool() {
    Install("cd '" + tools_ + "/kept'\nread text <\"${1%%|*}\"\ncase $text in hang*) flock -s '" + hold_ +
            "' true;; esac\ncp \"${1%%|*}\" part.$$\nmv part.$$ \"$(basename \"${1%%|*}\")\"\n");
  }
  void Install(const std::string& commands) {
    test::WriteWholeFile(tool_ + ".new", "#!/bin/sh\n" + commands);
    fs::permissions(tool_ + ".new", fs::perms(0755));
    fs::remove_all(tool_);
    fs::rename(tool_ + ".new", tool_);
  }
  void Hold() {
    lock_ = ::open(hold_.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(lock_, LOCK_EX), 0);
  }
  void Release() {
    if (lock_ >= 0) ::close(lock_);
    lock_ = -1;
  }
  // A story whose tool can't be started; it stays.
  void ExpectLeft(const std::string& text) {
    Take("\x01" + text);
    const std::string path = feed().StoryFileName;
    const std::size_t lines = announced_.size();
    Take("\x04");
    EXPECT_EQ(announced_.size(), lines + 1);
    EXPECT_EQ(feed().StoryFileHandle, 0);
    EXPECT_EQ(test::ReadWholeFile(path), text);
    EXPECT_EQ(platform::RunningProcessCount(), 0);
  }
  // A story reaches the tool that keeps it.
  void ExpectKept(const std::string& text) {
    Take("\x01" + text);
    const std::string kept = tools_ + "/kept/" + fs::path(feed().StoryFileName).filename().string();
    Take("\x04");
    EXPECT_TRUE(WaitUntil([&] { return fs::exists(kept); }, 20000));
    EXPECT_EQ(test::ReadWholeFile(kept), text);
  }
  std::ptrdiff_t Kept() const {
    return std::distance(fs::directory_iterator(tools_ + "/kept"), fs::directory_iterator());
  }
  static bool HasChildren() {
    siginfo_t ended = {};
    return ::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 || errno != ECHILD;
  }

  const std::string tools_ = news_ / "tools";
  const std::string tool_ = tools_ + "/ItemFile";
  const std::string hold_ = news_ / "hold";
  platform::ScopedSettings toolSettings_{WithProgramsIn(tools_)};
  platform::ScopedHook<Start> real_{platform::ProcessHook(), start};

 private:
  int lock_ = -1;
};

TEST_F(StoryToolTest, MissingOneLeavesItsStoriesAndTheFirstOnceItIsThereIsHandedOn) {
  for (int i = 0; i < 20; ++i) ExpectLeft("left " + std::to_string(i));
  InstallTool();
  ExpectKept("kept");
}

TEST_F(StoryToolTest, OneThatMayNotBeExecutedLeavesItsStoriesAndTheFirstOnceItMayIsHandedOn) {
  InstallTool();
  fs::permissions(tool_, fs::perms(0644));
  for (int i = 0; i < 20; ++i) ExpectLeft("left " + std::to_string(i));
  fs::permissions(tool_, fs::perms(0755));
  ExpectKept("kept");
}

TEST_F(StoryToolTest, WhatIsNoProgramLeavesItsStoriesAndTheFirstOnceItIsOneIsHandedOn) {
  test::WriteWholeFile(tool_, "a text");
  fs::permissions(tool_, fs::perms(0755));
  ExpectLeft("text");
  fs::remove(tool_);
  fs::create_directory(tool_);
  ExpectLeft("directory");
  fs::remove(tool_);
  fs::create_symlink("nowhere", tool_);
  ExpectLeft("dangling link");
  Install("");
  test::WriteWholeFile(tool_, "#!/no/such/interpreter\n");
  ExpectLeft("no interpreter");
  test::WriteWholeFile(tool_, "");
  ExpectLeft("empty");
  InstallTool();
  ExpectKept("kept");
}

TEST_F(StoryToolTest, OneThatFailsLeavesNoChildAndTheNextStoryIsHandedOn) {
  Install("kill -SEGV $$\n");
  for (int i = 0; i < 20; ++i) Take("\x01story\x04");
  EXPECT_TRUE(WaitUntil([] { return !HasChildren(); }, 20000));
  EXPECT_EQ(announced_.size(), 20U);
  InstallTool();
  ExpectKept("kept");
}

TEST_F(StoryToolTest, HundredsThatHangHoldUpNothingAndLeaveNoZombie) {
  constexpr int kHanging = 300;
  InstallTool();
  Hold();
  constexpr int kFirst = 50;
  for (int i = 0; i < kFirst; ++i) Take("\x01hang\x04");
  EXPECT_EQ(announced_.size(), static_cast<std::size_t>(kFirst));
  announced_ = {};
  const std::size_t heap = test::HeapInUse();
  for (int i = kFirst; i < kHanging; ++i) Take("\x01hang\x04");
  EXPECT_EQ(announced_.size(), static_cast<std::size_t>(kHanging - kFirst));
  announced_ = {};
  EXPECT_EQ(platform::RunningProcessCount(), kHanging);
  // What the server keeps of each is little more than its number.
  EXPECT_LT(test::HeapInUse(), heap + (kHanging - kFirst) * 256);
  ExpectKept("kept");
  EXPECT_TRUE(WaitUntil([] { return platform::RunningProcessCount() == kHanging; }, 20000));
  EXPECT_EQ(Kept(), 1);
  Release();
  EXPECT_TRUE(WaitUntil([] { return !HasChildren(); }, 30000));
  EXPECT_EQ(platform::RunningProcessCount(), 0);
  ExpectKept("kept too");
  EXPECT_EQ(Kept(), kHanging + 2);
}

using StoryToolDeathTest = StoryToolTest;

// The superuser has no such limit: the fault is an ordinary user's.
TEST_F(StoryToolDeathTest, UserWithTooManyProcessesLeavesItsStoriesAndTheFirstBelowTheLimitIsHandedOn) {
  InstallTool();
  const auto scenario = [this] {
    if (::geteuid() == 0) {
      constexpr uid_t kNobody = 65534;
      for (const std::string& path : {news_.path(), tools_, tools_ + "/kept"})
        ASSERT_EQ(::chown(path.c_str(), kNobody, kNobody), 0);
      ASSERT_EQ(::setgroups(0, nullptr), 0);
      ASSERT_EQ(::setresgid(kNobody, kNobody, kNobody), 0);
      ASSERT_EQ(::setresuid(kNobody, kNobody, kNobody), 0);
    }
    struct rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NPROC, &limit), 0);
    struct rlimit none = limit;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NPROC, &none), 0);
    for (int i = 0; i < 20; ++i) ExpectLeft("left " + std::to_string(i));
    ASSERT_EQ(::setrlimit(RLIMIT_NPROC, &limit), 0);
    ExpectKept("kept");
  };
  EXPECT_EXIT((scenario(), test::EndScenario()), ::testing::ExitedWithCode(test::kScenarioHeld), "");
}

// Has temporary directories in memory, where there is such a place: a hundred thousand files on a disk that
// others use too can take minutes.
struct DirectoriesInMemory {
  std::optional<test::ScopedVariable> variable;
  DirectoriesInMemory() {
    if (fs::is_directory("/dev/shm")) variable.emplace("TMPDIR", "/dev/shm");
  }
};

// A tool that is missing for weeks: what is left in the directory makes no story dearer, and no name comes
// twice.
class LeftStoriesTest : private DirectoriesInMemory, public test::StoryFixture {
 protected:
  static constexpr int kStories = 100000;
  static constexpr int kBatch = 1000;

  LeftStoriesTest() {
    processes_.canStart = false;
    test::WriteWholeFile(feed().FullConfigFile, "");
  }

  // Takes a batch of stories and answers what it cost of the processor's time, in milliseconds.
  std::int64_t TakeBatch() {
    processes_.atStart = {};
    const std::int64_t before = test::ProcessorTime();
    for (int i = 0; i < kBatch; ++i) Take("\x01\x04");  // empty, for the memory's sake
    const std::int64_t used = test::ProcessorTime() - before;
    for (const auto& start : processes_.started) {
      const std::string& argument = start.arguments.at(0);
      names_.insert(argument.substr(0, argument.find('|')));
    }
    processes_.started.clear();
    announced_.clear();
    return used;
  }
  // Takes a story, whose file is gone before its end when it is `takenAway`. Answers how often the news
  // directory was read for it.
  int ReadingsForAStory(bool takenAway) {
    processes_.atStart = {};
    // Counts, and fails nothing.
    const platform::ScopedFileFault opened(platform::FileOperation::Open, 0, 1, 0, news_.path());
    const platform::ScopedFileFault files(platform::FileOperation::Open, 0, 1, 0, news_ / "");
    Take("\x01story");
    if (takenAway) fs::remove(feed().StoryFileName);
    Take("\x04");
    return opened.calls() - files.calls();
  }
  // The configuration file that the last story was handed on with.
  std::string LastConfig() const {
    const std::string& argument = processes_.started.back().arguments.at(0);
    return argument.substr(argument.find('|') + 1);
  }

  std::unordered_set<std::string> names_;
};

TEST_F(LeftStoriesTest, HundredThousandMakeNoStoryDearerAndNoNameComesTwice) {
  std::vector<std::int64_t> batches;
  for (int i = 0; i < kStories / kBatch; ++i) batches.push_back(TakeBatch());
  EXPECT_EQ(names_.size(), static_cast<std::size_t>(kStories));
  EXPECT_EQ(std::distance(fs::directory_iterator(news_.path()), fs::directory_iterator()), kStories + 1);
  // The cheapest of ten each, so that what else the machine does doesn't count.
  const std::int64_t first = *std::min_element(batches.begin(), batches.begin() + 10);
  const std::int64_t last = *std::min_element(batches.end() - 10, batches.end());
  EXPECT_LT(last, (first + 1) * 20) << "milliseconds for " << kBatch << " stories; at first " << first;
  processes_.canStart = true;
  processes_.atStart = [this](const platform::ProcessStart& start) { LookAt(start); };
  Take("\x01kept\x04");
  EXPECT_EQ(Handed(), Texts{"kept"});
  EXPECT_FALSE(names_.contains(handed_[0].path));
}

TEST_F(LeftStoriesTest, NoneIsLookedAtForAStory) {
  for (int i = 0; i < 10; ++i) EXPECT_EQ(ReadingsForAStory(false), 0);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(ReadingsForAStory(true), 0);
}

TEST_F(LeftStoriesTest, ConfigurationFileOfAnotherCaseIsLookedForAmongThemOnce) {
  fs::rename(feed().FullConfigFile, news_ / "VORDA.INI");
  EXPECT_GT(ReadingsForAStory(false), 0);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(ReadingsForAStory(i % 2 == 0), 0);
  EXPECT_EQ(LastConfig(), news_ / "VORDA.INI");
  // The system tells of the new name.
  fs::rename(news_ / "VORDA.INI", news_ / "Vorda.ini");
  EXPECT_EQ(ReadingsForAStory(false), 0);
  EXPECT_EQ(LastConfig(), news_ / "Vorda.ini");
  // One whose case is right goes first.
  test::WriteWholeFile(news_ / "vorda.ini", "");
  EXPECT_EQ(ReadingsForAStory(false), 0);
  EXPECT_EQ(LastConfig(), news_ / "vorda.ini");
}

}  // namespace
}  // namespace vorda
