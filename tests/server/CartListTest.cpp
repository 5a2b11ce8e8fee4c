// A part's list as a file: filled up where it is short, opened anew under its number.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/FileFault.h"
#include "platform/RandomFiles.h"
#include "platform/RunTimeError.h"
#include "support/WallFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;

class CartListTest : public test::WallFixture {
 protected:
  std::string ListOf(int part) const { return wall_ / ("Carts" + std::to_string(part) + ".lst"); }
  static AudioWallPart& Part(int part) { return gAudioWallParts[static_cast<std::size_t>(part) - 1]; }
  static std::string Blanks(std::size_t records) {
    std::string list;
    for (std::size_t i = 0; i < records; ++i) list += test::BlankCartRecord();
    return list;
  }
  static std::string TitleOf(std::int32_t cart) {
    CartInfo info;
    EXPECT_EQ(ReadCartInfo(info, cart), 0);
    std::string title;
    return JoinCartTitle(info, title).substr(0, 3);
  }
  // Another program's list, put in place of a part's.
  void ReplaceList(int part, const std::string& title) {
    test::WriteWholeFile(wall_ / "new", test::FullCartRecord(title, 5) + Blanks(999));
    std::filesystem::rename(wall_ / "new", ListOf(part));
  }
};

struct Length {
  int part;
  std::size_t length;
  std::size_t firstNew;  // record from which on empty carts are written, 0 = none
};

TEST_F(CartListTest, ShortListIsFilledUpFromTheRecordWhereItEnds) {
  const std::vector<Length> rows = {
      {3, 0, 1},
      {3, 1, 1},
      {3, 300, 2},
      {3, 600, 3},
      {3, 149, 1},
      {3, 151, 2},
      {3, 449, 2},
      {3, 451, 3},
      // A half goes to the even record: what was there of it is lost, or left behind with zeros.
      {3, 150, 2},
      {3, 450, 2},
      {3, 750, 4},
      {3, 1050, 4},
      {3, 299'400, 999},
      {3, 299'700, 1000},
      {10, 0, 1},
      {10, 299'400, 999},
      // Short, but the record to begin with lies behind the last one.
      {3, 299'851, 0},
      {3, 299'999, 0},
      {10, 299'550, 0},
      {10, 299'699, 0},
      {3, 299'850, 1000},
      // Long enough.
      {3, 300'000, 0},
      {3, 300'001, 0},
      {3, 450'000, 0},
      {10, 299'700, 0},
      {10, 300'000, 0},
  };
  for (const Length& row : rows) {
    SCOPED_TRACE("part " + std::to_string(row.part) + ", " + std::to_string(row.length));
    const std::string before(row.length, 'x');
    test::WriteWholeFile(ListOf(row.part), before);
    ASSERT_EQ(ConnectAudioWall(static_cast<std::int16_t>(row.part), false), 0);
    std::string expected = before;
    if (row.firstNew > 0) {
      expected.resize((row.firstNew - 1) * 300, '\0');
      expected += Blanks((row.part == 10 ? 999U : 1000U) - row.firstNew + 1);
    }
    EXPECT_TRUE(test::ReadWholeFile(ListOf(row.part)) == expected);
  }
}

TEST_F(CartListTest, NewRecordsHaveTheConfiguredColours) {
  gBlankCartInfo.BackColor = 0x00030201;
  gBlankCartInfo.ForeColor = 0x00060504;
  ASSERT_EQ(ConnectAudioWall(3, true), 0);
  const std::string list = test::ReadWholeFile(ListOf(3));
  using namespace std::string_view_literals;
  EXPECT_EQ(list.substr(60, 8), "\x01\x02\x03\x00\x04\x05\x06\x00"sv);
  EXPECT_EQ(list.substr(299'760, 8), "\x01\x02\x03\x00\x04\x05\x06\x00"sv);
}

// A list made here has its end of play at 0; a cart that was emptied has it at -1.
TEST_F(CartListTest, NewRecordsAreTheBlankValueItself) {
  EXPECT_EQ(RecordBytes(1), test::BlankCartRecord());
  CartInfo blank = gBlankCartInfo;
  EXPECT_EQ(WriteCartInfo(blank, 1, true), 0);
  EXPECT_EQ(RecordBytes(1), test::EmptiedCartRecord());
}

// What was added has to reach the disk that the other stations read, as behind any write.
TEST_F(CartListTest, FilledUpListIsClosedAndOpenedAnew) {
  constexpr int kNever = 1000;
  test::WriteWholeFile(ListOf(3), test::FullCartRecord("One", 5));
  const ScopedFileFault watch(FileOperation::Open, EIO, kNever, 1, "Carts3.lst");
  ASSERT_EQ(ConnectAudioWall(3, false), 0);
  EXPECT_EQ(watch.calls(), 2);
  EXPECT_EQ(TitleOf(2001), "One");
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 3000), 0);
  EXPECT_TRUE(IsEmptyCart(info));
  ASSERT_EQ(ConnectAudioWall(3, false), 0);
  EXPECT_EQ(watch.calls(), 3) << "a full list is opened once";
}

TEST_F(CartListTest, FullDiskWhileFillingUpIsNotTold) {
  const ScopedFileFault fault(FileOperation::Write, ENOSPC, 1, 1000, "Carts3.lst");
  EXPECT_EQ(ConnectAudioWall(3, true), 0);
  EXPECT_GT(fault.calls(), 0);
  EXPECT_TRUE(Part(3).Connected);
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 2001), 0);
  EXPECT_TRUE(IsEmptyCart(info));
}

TEST_F(CartListTest, ListThatMayOnlyBeReadConnectsAndStaysShort) {
  test::WriteWholeFile(ListOf(3), test::FullCartRecord("One", 5));
  const ScopedFileFault fault(FileOperation::Open, EROFS, 1, 1, "Carts3.lst");
  EXPECT_EQ(ConnectAudioWall(3, false), 0);
  EXPECT_TRUE(Part(3).Connected);
  EXPECT_EQ(test::ReadWholeFile(ListOf(3)).size(), 300U);
  EXPECT_EQ(TitleOf(2001), "One");
}

TEST_F(CartListTest, ConnectingAgainKeepsTheNumberAndOpensWhatIsThereNow) {
  const std::int32_t number = Part(1).ListHandle;
  ReplaceList(1, "New");
  EXPECT_TRUE(TitleOf(1) == "   ") << "the file that was opened is still read";
  EXPECT_EQ(ConnectAudioWall(1, false), 0);
  EXPECT_EQ(Part(1).ListHandle, number);
  EXPECT_EQ(TitleOf(1), "New");
}

TEST_F(CartListTest, ConnectingAgainFollowsALocationThatHasChanged) {
  const std::int32_t number = Part(1).ListHandle;
  Part(1).Location = far_.path();
  EXPECT_EQ(ConnectAudioWall(1, true), 0);
  EXPECT_EQ(Part(1).ListHandle, number);
  EXPECT_EQ(test::ReadWholeFile(far_ / "Carts1.lst"), Blanks(1000));
}

// The list is closed before it is opened anew, so what can't be opened is no longer there at all.
TEST_F(CartListTest, ConnectingAgainToAMissingDirectoryLeavesNothingOpen) {
  Part(1).Location = wall_ / "none";
  EXPECT_EQ(ConnectAudioWall(1, true), 0);
  EXPECT_TRUE(Part(1).Connected);
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 1), platform::kBadFileNumber);
}

TEST_F(CartListTest, ReopeningBringsTheFileThatIsThereNow) {
  const std::int32_t number = Part(1).ListHandle;
  ReplaceList(1, "New");
  ReopenCartList(1);
  EXPECT_EQ(Part(1).ListHandle, number);
  EXPECT_EQ(TitleOf(1), "New");
}

TEST_F(CartListTest, ReopeningOpensNothingThatNeverTookANumber) {
  test::WriteWholeFile(ListOf(3), Blanks(1000));
  Part(3).ListFile = ListOf(3);
  const ScopedFileFault watch(FileOperation::Open, EIO);
  ReopenCartList(3);
  EXPECT_EQ(watch.calls(), 0);
  EXPECT_EQ(Part(3).ListHandle, 0);
}

TEST_F(CartListTest, ReopeningAListThatIsGoneMakesAnEmptyOne) {
  std::filesystem::remove(ListOf(1));
  ReopenCartList(1);
  EXPECT_TRUE(std::filesystem::exists(ListOf(1)));
  EXPECT_EQ(test::ReadWholeFile(ListOf(1)), "");
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 1), 0);
  EXPECT_TRUE(IsEmptyCart(info));
}

TEST_F(CartListTest, ReopeningWithoutADirectorySaysNothingAndTheNumberStays) {
  Part(2).Location = wall_ / "part";
  std::filesystem::create_directory(wall_ / "part");
  ASSERT_EQ(ConnectAudioWall(2, true), 0);
  const std::int32_t number = Part(2).ListHandle;
  std::filesystem::rename(wall_ / "part", wall_ / "away");
  ReopenCartList(2);
  EXPECT_EQ(Part(2).ListHandle, number);
  EXPECT_TRUE(Part(2).Connected);
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 1001), platform::kBadFileNumber);
  // Once the share is back, the next reopening finds it.
  std::filesystem::rename(wall_ / "away", wall_ / "part");
  ReopenCartList(2);
  EXPECT_EQ(ReadCartInfo(info, 1001), 0);
}

TEST_F(CartListTest, ReopeningAListThatMayOnlyBeReadLetsItBeRead) {
  SetRecordBytes(1, test::FullCartRecord("One", 5));
  {
    const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, "Carts1.lst");
    ReopenCartList(1);
  }
  EXPECT_EQ(TitleOf(1), "One");
  EXPECT_EQ(platform::WriteToFileAt(Part(1).ListHandle, 0, "x"), platform::kPathFileAccessError);
  EXPECT_EQ(RecordBytes(1), test::FullCartRecord("One", 5));
}

TEST_F(CartListTest, ReopeningLeavesAPendingErrorAsItIs) {
  platform::SetCurrentError(platform::kDiskFull);
  ReopenCartList(1);
  EXPECT_EQ(platform::CurrentError(), platform::kDiskFull);
  const ScopedFileFault fault(FileOperation::Open, EIO, 1, 1000, "Carts1.lst");
  ReopenCartList(1);
  EXPECT_EQ(platform::CurrentError(), platform::kDiskFull);
}

}  // namespace
}  // namespace vorda
