#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>

#include "ScopedVariable.h"
#include "platform/FileFault.h"
#include "platform/ProfileFile.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

using namespace std::string_literals;
using test::JoinedNames;
using test::ReadWholeFile;
using test::WriteWholeFile;

constexpr int kEver = std::numeric_limits<int>::max();

class ProfileWriteTest : public ::testing::Test {
 protected:
  // The file's bytes after [Feed] Name has been set to "new" in `before`; "false" when that failed.
  std::string Changed(std::string_view before) {
    WriteWholeFile(file_, before);
    return WriteProfileString("Feed", "Name", "new", file_) ? ReadWholeFile(file_) : "false";
  }
  bool Set(std::string_view value) { return WriteProfileString("Feed", "Name", value, file_); }
  mode_t Mode(const std::string& path) const {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
  }

  test::TempDirectory directory_;
  test::ScopedVariable home_{"VORDA_HOME", directory_.path().c_str()};
  std::string file_ = directory_ / "vorda.ini";
};

TEST_F(ProfileWriteTest, LineIsChangedBehindItsSignAndKeepsItsEnd) {
  EXPECT_EQ(Changed("[Feed]\r\n  nAmE \t= old \r\nNext=1\r\n"), "[Feed]\r\n  nAmE \t=new\r\nNext=1\r\n");
  EXPECT_EQ(Changed("[Feed]\nName=old\nNext=1\n"), "[Feed]\nName=new\nNext=1\n");
  EXPECT_EQ(Changed("[Feed]\nName=old"), "[Feed]\nName=new");
  EXPECT_EQ(Changed("[Feed]\r\nName=\r\n"), "[Feed]\r\nName=new\r\n");
  EXPECT_EQ(Changed("[Feed]\r\nName=a=\"b\" ; c\r\n"), "[Feed]\r\nName=new\r\n");
}

TEST_F(ProfileWriteTest, EveryOtherByteStays) {
  const std::string before =
      "\xEF\xBB\xBF; head\n\n[Other]\r\nName=1\r\n\0\xFF\t \r\n[FEED]\n;Name=2\nName="s;
  const std::string after = "\r\n\r\n[Feed]\r\nName=3\r\njunk\0 [\r\n\r\n  "s;
  EXPECT_EQ(Changed(before + "x" + after), before + "new" + after);
}

TEST_F(ProfileWriteTest, FirstOfRepeatedKeysIsChanged) {
  EXPECT_EQ(Changed("[Feed]\r\nName=1\r\nname=2\r\n"), "[Feed]\r\nName=new\r\nname=2\r\n");
}

TEST_F(ProfileWriteTest, NewKeyStandsBehindTheLastLineOfItsSection) {
  EXPECT_EQ(Changed("[Feed]\r\nA=1\r\n\r\n  \r\n[Next]\r\nB=2\r\n"),
            "[Feed]\r\nA=1\r\nName=new\r\n\r\n  \r\n[Next]\r\nB=2\r\n");
  EXPECT_EQ(Changed("[Feed]\r\n[Next]\r\n"), "[Feed]\r\nName=new\r\n[Next]\r\n");
  EXPECT_EQ(Changed("[Feed]\nA=1\n; end\n"), "[Feed]\nA=1\n; end\nName=new\r\n");
}

TEST_F(ProfileWriteTest, NewKeyGoesIntoTheFirstOfRepeatedSections) {
  EXPECT_EQ(Changed("[Feed]\r\nA=1\r\n[B]\r\n[Feed]\r\nName=2\r\n"),
            "[Feed]\r\nA=1\r\nName=new\r\n[B]\r\n[Feed]\r\nName=2\r\n");
}

TEST_F(ProfileWriteTest, NewSectionStandsAtTheFilesEnd) {
  EXPECT_EQ(Changed("[Other]\r\nName=1\r\n"), "[Other]\r\nName=1\r\n[Feed]\r\nName=new\r\n");
  EXPECT_EQ(Changed(""), "[Feed]\r\nName=new\r\n");
  EXPECT_EQ(Changed("\xEF\xBB\xBF"), "\xEF\xBB\xBF[Feed]\r\nName=new\r\n");
  EXPECT_EQ(Changed("[Other]\r\n\r\n"), "[Other]\r\n\r\n[Feed]\r\nName=new\r\n");
}

TEST_F(ProfileWriteTest, LineWithoutAnEndGetsOneBeforeWhatIsAdded) {
  EXPECT_EQ(Changed("[Feed]\nA=1"), "[Feed]\nA=1\r\nName=new\r\n");
  EXPECT_EQ(Changed("[Feed]"), "[Feed]\r\nName=new\r\n");
  EXPECT_EQ(Changed("[Other]\nA=1"), "[Other]\nA=1\r\n[Feed]\r\nName=new\r\n");
}

TEST_F(ProfileWriteTest, ValueIsWrittenAsItStands) {
  WriteWholeFile(file_, "[Feed]\r\nName=x\r\n");
  EXPECT_TRUE(Set(" \"a\" \0\xFC"s));
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName= \"a\" \0\xFC\r\n"s);
  EXPECT_TRUE(Set(""));
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName=\r\n");
  EXPECT_TRUE(Set(std::string(300, 'v')));
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName=" + std::string(300, 'v') + "\r\n");
}

TEST_F(ProfileWriteTest, ValueEndsAtALineFeed) {
  EXPECT_TRUE(Set("a\n[Feed]\nName=b"));
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName=a\r\n");
}

TEST_F(ProfileWriteTest, CarriageReturnsAtAValuesEndAreNotWritten) {
  WriteWholeFile(file_, "[Feed]\nName=old\n");
  EXPECT_TRUE(Set("a\rb\r\r\nc"));
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\nName=a\rb\n");
  EXPECT_TRUE(Set("\r"));
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\nName=\n");
}

TEST_F(ProfileWriteTest, NamesThatNoFileCanHoldAreRefused) {
  for (const char* key : {"", " ", "a=b", "a\nb", ";a", "[a"}) {
    EXPECT_FALSE(WriteProfileString("Feed", key, "x", file_)) << key;
  }
  EXPECT_FALSE(WriteProfileString("a]", "Key", "x", file_));
  EXPECT_FALSE(WriteProfileString("a\nb", "Key", "x", file_));
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(ProfileWriteTest, WhatWasWrittenIsReadBack) {
  ASSERT_TRUE(WriteProfileString("AudioCapture", "LastRecordedCartNumber", "9001", file_));
  EXPECT_EQ(ReadProfileInteger("AudioCapture", "LastRecordedCartNumber", 0, file_), 9001);
  ASSERT_TRUE(WriteProfileString("AUDIOCAPTURE", "lastrecordedcartnumber", "9002", file_));
  EXPECT_EQ(ReadProfileInteger("AudioCapture", "LastRecordedCartNumber", 0, file_), 9002);
}

TEST_F(ProfileWriteTest, MissingFileIsMadeWithTheUsersMask) {
  const mode_t mask = ::umask(027);
  const bool written = Set("new");
  ::umask(mask);
  EXPECT_TRUE(written);
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName=new\r\n");
  EXPECT_EQ(Mode(file_), 0640U);
}

TEST_F(ProfileWriteTest, MissingDirectoryIsNotMade) {
  EXPECT_FALSE(WriteProfileString("Feed", "Name", "x", directory_ / "none/vorda.ini"));
  EXPECT_FALSE(WriteProfileString("Feed", "Name", "x", "none\\vorda.ini"));
  EXPECT_FALSE(WriteProfileString("Feed", "Name", "x", "\\vorda.ini"));
  EXPECT_FALSE(WriteProfileString("Feed", "Name", "x", "Q:\\vorda.ini"));
  EXPECT_FALSE(WriteProfileString("Feed", "Name", "x", ""));
  EXPECT_EQ(JoinedNames(directory_.path()), "");
}

TEST_F(ProfileWriteTest, OwnDirectoryIsMadeWhenFirstWrittenTo) {
  const std::string home = directory_ / "a/b";
  const test::ScopedVariable variable("VORDA_HOME", home.c_str());
  EXPECT_EQ(ReadProfileString("Feed", "Name", "none", "vdServer.INI"), "none");
  EXPECT_FALSE(std::filesystem::exists(home));
  EXPECT_TRUE(WriteProfileString("Feed", "Name", "x", "vdServer.INI"));
  EXPECT_EQ(JoinedNames(home), "vdServer.INI");
}

TEST_F(ProfileWriteTest, NameInCapitalsChangesTheFileThatIsThere) {
  WriteWholeFile(file_, "[Feed]\r\nName=x\r\n");
  EXPECT_TRUE(WriteProfileString("Feed", "Name", "new", "VORDA.INI"));
  EXPECT_EQ(JoinedNames(directory_.path()), "vorda.ini");
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName=new\r\n");
}

TEST_F(ProfileWriteTest, ModeAndOwnerAreKept) {
  WriteWholeFile(file_, "[Feed]\r\nName=x\r\n");
  // Only root can give a file away; for others the owner is the same before and after.
  const uid_t owner = ::geteuid() == 0 ? 12345 : ::geteuid();
  ASSERT_EQ(::chown(file_.c_str(), owner, static_cast<gid_t>(-1)), 0);
  ASSERT_EQ(::chmod(file_.c_str(), 0604), 0);
  ASSERT_TRUE(Set("new"));
  struct stat status {};
  ASSERT_EQ(::stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, owner);
  EXPECT_EQ(Mode(file_), 0604U);
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName=new\r\n");
}

TEST_F(ProfileWriteTest, FileIsReplacedInOneStep) {
  WriteWholeFile(file_, "[Feed]\r\nName=old\r\n");
  std::filesystem::create_hard_link(file_, directory_ / "seen-by-a-reader");
  ASSERT_TRUE(Set("new"));
  EXPECT_EQ(ReadWholeFile(directory_ / "seen-by-a-reader"), "[Feed]\r\nName=old\r\n");
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName=new\r\n");
  EXPECT_EQ(JoinedNames(directory_.path()), "seen-by-a-reader vorda.ini");
}

TEST_F(ProfileWriteTest, LinksAreFollowed) {
  std::filesystem::create_directory(directory_ / "real");
  WriteWholeFile(directory_ / "real/shared.ini", "[Feed]\r\nName=old\r\n");
  std::filesystem::create_symlink("real/shared.ini", file_);
  ASSERT_TRUE(Set("new"));
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_EQ(ReadWholeFile(directory_ / "real/shared.ini"), "[Feed]\r\nName=new\r\n");
  EXPECT_EQ(JoinedNames(directory_ / "real"), "shared.ini");
}

TEST_F(ProfileWriteTest, LinkToAFileThatIsToBeMade) {
  std::filesystem::create_symlink("target.ini", file_);
  ASSERT_TRUE(Set("new"));
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_EQ(ReadWholeFile(directory_ / "target.ini"), "[Feed]\r\nName=new\r\n");
}

TEST_F(ProfileWriteTest, WhatIsNoPlainFileIsRefused) {
  std::filesystem::create_directory(file_);
  EXPECT_FALSE(Set("x"));
  std::filesystem::remove(file_);
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  EXPECT_FALSE(Set("x"));
  EXPECT_EQ(JoinedNames(directory_.path()), "vorda.ini");
}

TEST_F(ProfileWriteTest, LineThatStandsAlreadyIsNotWritten) {
  WriteWholeFile(file_, "[Feed]\r\nName=same\r\n");
  const ScopedFileFault writes(FileOperation::Write, EIO, kEver);
  const ScopedFileFault renames(FileOperation::Rename, EIO, kEver);
  EXPECT_TRUE(Set("same"));
  EXPECT_EQ(writes.calls() + renames.calls(), 0);
}

// Each step may fail; the file is then as it was, and nothing is left beside it.
class ProfileFailureTest : public ProfileWriteTest, public ::testing::WithParamInterface<FileOperation> {};

TEST_P(ProfileFailureTest, FailureLeavesTheOldFile) {
  WriteWholeFile(file_, "[Feed]\r\nName=old\r\n");
  const ScopedFileFault fault(GetParam(), EIO, 1, kEver, "vorda.ini");
  const ScopedFileFault temporary(GetParam(), EIO, 1, kEver, ".vorda-ini-");
  EXPECT_FALSE(Set("new"));
  EXPECT_GT(fault.calls() + temporary.calls(), 0);
  EXPECT_EQ(ReadWholeFile(file_), "[Feed]\r\nName=old\r\n");
  EXPECT_EQ(JoinedNames(directory_.path()), "vorda.ini");
}

TEST_P(ProfileFailureTest, FailureLeavesNoNewFile) {
  const ScopedFileFault fault(GetParam(), ENOSPC, 1, kEver, "vorda.ini");
  const ScopedFileFault temporary(GetParam(), ENOSPC, 1, kEver, ".vorda-ini-");
  EXPECT_FALSE(Set("new"));
  EXPECT_EQ(JoinedNames(directory_.path()), "");
}

INSTANTIATE_TEST_SUITE_P(Steps, ProfileFailureTest,
                         ::testing::Values(FileOperation::Open, FileOperation::Write, FileOperation::Sync,
                                           FileOperation::Rename));

// A directory or share that takes no new file, or lets none be replaced, leaves the way in place.
class ProfileRefusalTest : public ProfileWriteTest, public ::testing::WithParamInterface<int> {};

TEST_P(ProfileRefusalTest, RefusedTemporaryFileIsWrittenInPlace) {
  WriteWholeFile(file_, "[Feed]\r\nName=longer than the new value\r\nNext=1\r\n");
  std::filesystem::create_hard_link(file_, directory_ / "same");
  const ScopedFileFault refusal(FileOperation::Open, GetParam(), 1, kEver, ".vorda-ini-");
  EXPECT_TRUE(Set("new"));
  EXPECT_EQ(refusal.calls(), 1);
  EXPECT_EQ(ReadWholeFile(directory_ / "same"), "[Feed]\r\nName=new\r\nNext=1\r\n");
  EXPECT_EQ(ReadProfileString("Feed", "Name", "", file_), "new");
}

TEST_P(ProfileRefusalTest, RefusedRenameIsWrittenInPlace) {
  WriteWholeFile(file_, "[Feed]\r\nName=old\r\n");
  std::filesystem::create_hard_link(file_, directory_ / "same");
  const ScopedFileFault refusal(FileOperation::Rename, GetParam());
  EXPECT_TRUE(Set("much longer than before"));
  EXPECT_EQ(ReadWholeFile(directory_ / "same"), "[Feed]\r\nName=much longer than before\r\n");
  EXPECT_EQ(JoinedNames(directory_.path()), "same vorda.ini");
}

TEST_P(ProfileRefusalTest, FailureInPlacePutsTheOldBytesBack) {
  const std::string before = "[Feed]\r\nName=old\r\n";
  WriteWholeFile(file_, before);
  const ScopedFileFault refusal(FileOperation::Open, GetParam(), 1, kEver, ".vorda-ini-");
  const ScopedFileFault unsynced(FileOperation::Sync, EIO);
  EXPECT_FALSE(Set("new"));
  EXPECT_EQ(ReadWholeFile(file_), before);
}

INSTANTIATE_TEST_SUITE_P(Errors, ProfileRefusalTest, ::testing::Values(EACCES, EPERM, EROFS));

TEST_F(ProfileWriteTest, FullDiskIsNoReasonToWriteInPlace) {
  WriteWholeFile(file_, "[Feed]\r\nName=old\r\n");
  std::filesystem::create_hard_link(file_, directory_ / "same");
  const ScopedFileFault full(FileOperation::Open, ENOSPC, 1, kEver, ".vorda-ini-");
  EXPECT_FALSE(Set("new"));
  EXPECT_EQ(ReadWholeFile(directory_ / "same"), "[Feed]\r\nName=old\r\n");
}

}  // namespace
}  // namespace vorda::platform
