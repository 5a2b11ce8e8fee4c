// What a writer that was killed leaves beside the INI file, and who takes it away.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <string>

#include "OtherProcess.h"
#include "platform/Descriptor.h"
#include "platform/ProfileFile.h"
#include "platform/ReplaceFile.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

class ProfileStrayTest : public ::testing::Test {
 protected:
  ProfileStrayTest() { test::WriteWholeFile(file_, kBefore); }

  // Replaces the file's contents as a writer does, with `atLast` just before the temporary file takes its
  // place.
  bool Replace(const std::function<void()>& atLast) const {
    const Descriptor file = OpenFile(file_, O_RDWR);
    struct stat status {};
    if (::fstat(file.number(), &status) != 0) return false;
    const std::function<Standing()> standing = [&] {
      atLast();
      return Standing::AsRead;
    };
    return ReplaceFile(file_, file, status, {kBefore, "theirs", standing}) == Replacement::Done;
  }
  void KillAWriter() {
    test::OtherProcess writer([this] { return Replace([] { ::raise(SIGKILL); }); });
    EXPECT_FALSE(writer.Succeeded());
  }
  bool SetName(const std::string& value) { return WriteProfileString("Feed", "Name", value, file_); }
  std::string Names() const { return test::JoinedNames(directory_.path()); }

  const std::string kBefore = "[Feed]\r\nName=old\r\n";
  test::TempDirectory directory_;
  std::string file_ = directory_ / "vorda.ini";
};

TEST_F(ProfileStrayTest, NextWriteTakesAKilledWritersFileAway) {
  KillAWriter();
  ASSERT_EQ(Names(), ".vorda-ini-0 vorda.ini");
  ASSERT_EQ(test::ReadWholeFile(file_), kBefore);
  EXPECT_TRUE(SetName("new"));
  EXPECT_EQ(Names(), "vorda.ini");
  EXPECT_EQ(test::ReadWholeFile(file_), "[Feed]\r\nName=new\r\n");
}

TEST_F(ProfileStrayTest, FilesOfSeveralWritersGoTogether) {
  KillAWriter();
  for (const char* name : {".vorda-ini-1", ".vorda-ini-2"})
    std::filesystem::copy_file(directory_ / ".vorda-ini-0", directory_ / name);
  EXPECT_TRUE(SetName("new"));
  EXPECT_EQ(Names(), "vorda.ini");
}

TEST_F(ProfileStrayTest, LookThatWritesNothingTakesNothingAway) {
  KillAWriter();
  EXPECT_TRUE(SetName("old"));
  EXPECT_EQ(ReadProfileString("Feed", "Name", "", file_), "old");
  EXPECT_EQ(Names(), ".vorda-ini-0 vorda.ini");
}

TEST_F(ProfileStrayTest, FileOfAWriterThatRunsStays) {
  test::OtherProcess writer([this] { return Replace([] { ::raise(SIGSTOP); }); });
  ASSERT_TRUE(writer.HasStopped());
  EXPECT_TRUE(SetName("new"));
  EXPECT_EQ(Names(), ".vorda-ini-0 vorda.ini");
  EXPECT_EQ(test::ReadWholeFile(file_), "[Feed]\r\nName=new\r\n");
  writer.GoOn();
  EXPECT_TRUE(writer.Succeeded());
  EXPECT_EQ(Names(), "vorda.ini");
  EXPECT_EQ(test::ReadWholeFile(file_), "theirs");
}

TEST_F(ProfileStrayTest, WhatIsNoFileOfAWritersIsPassedOver) {
  std::filesystem::create_directory(directory_ / ".vorda-ini-0");
  std::filesystem::create_symlink("vorda.ini", directory_ / ".vorda-ini-1");
  EXPECT_TRUE(SetName("new"));
  EXPECT_EQ(Names(), ".vorda-ini-0 .vorda-ini-1 vorda.ini");
  EXPECT_EQ(test::ReadWholeFile(file_), "[Feed]\r\nName=new\r\n");
}

// Wherever the end meets it.
TEST_F(ProfileStrayTest, KilledWriterLeavesAWholeFile) {
  for (int round = 0; round < 15; ++round) {
    const std::string before = test::ReadWholeFile(file_);
    test::OtherProcess writer([this] {
      for (int i = 0; SetName("their value " + std::to_string(i) + " end"); ++i) continue;
      return false;
    });
    ASSERT_TRUE(test::WaitUntil([&] { return test::ReadWholeFile(file_) != before; }, 20000));
    writer.Kill();
    const std::string bytes = test::ReadWholeFile(file_);
    ASSERT_TRUE(bytes.starts_with("[Feed]\r\nName=their value ") && bytes.ends_with(" end\r\n")) << bytes;
    ASSERT_TRUE(SetName("ours"));
    ASSERT_EQ(Names(), "vorda.ini");
  }
}

}  // namespace
}  // namespace vorda::platform
