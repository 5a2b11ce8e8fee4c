#include <gtest/gtest.h>
#include <time.h>

#include <cerrno>
#include <filesystem>

#include "platform/FileFault.h"
#include "platform/FileStamp.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kSecond = 1'000'000'000;

std::int64_t Now() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec * kSecond + now.tv_nsec;
}

// A stamp that changed at the time, which must not be mistaken for one of whole seconds.
FileStamp ChangedAt(std::int64_t time) {
  FileStamp stamp;
  stamp.changed = time % kSecond == 0 ? time + 1 : time;
  return stamp;
}

TEST(FileStampTest, SettledBehindTheTickOfTheFileSystemsClock) {
  EXPECT_FALSE(IsSettled(ChangedAt(Now() + kSecond)));
  EXPECT_FALSE(IsSettled(ChangedAt(Now())));
  EXPECT_TRUE(IsSettled(ChangedAt(Now() - 21 * kMillisecond)));
}

TEST(FileStampTest, WholeSecondsTakeLongerToSettle) {
  FileStamp stamp;
  stamp.changed = Now() / kSecond * kSecond - kSecond;
  EXPECT_FALSE(IsSettled(stamp));
  stamp.changed -= 3 * kSecond;
  EXPECT_TRUE(IsSettled(stamp));
}

TEST(FileStampTest, OnlyTheTimeThatFollowsTheClockCounts) {
  FileStamp stamp = ChangedAt(Now() - kSecond);
  stamp.modified = Now() + 1000 * kSecond;
  EXPECT_TRUE(IsSettled(stamp));
}

TEST(FileStampTest, AnythingElseIsAnotherStamp) {
  const test::TempDirectory directory;
  const std::string path = directory / "a";
  test::WriteWholeFile(path, "1");
  const std::optional<FileStamp> stamp = StampOf(path);
  ASSERT_TRUE(stamp);
  EXPECT_EQ(StampOf(path), stamp);
  EXPECT_EQ(stamp->size, 1);
  test::WriteWholeFile(directory / "b", "1");
  EXPECT_NE(StampOf(directory / "b"), stamp);
  std::filesystem::create_symlink("a", directory / "link");
  EXPECT_EQ(StampOf(directory / "link"), stamp);
}

TEST(FileStampTest, NothingWhenThereIsNothing) {
  const test::TempDirectory directory;
  EXPECT_FALSE(StampOf(directory / "none"));
  const ScopedFileFault fault(FileOperation::Stat, EIO);
  EXPECT_FALSE(StampOf(directory.path()));
}

}  // namespace
}  // namespace vorda::platform
