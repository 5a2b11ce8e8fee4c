// What is cleared ahead of a recording, and on whose record the carts behind the wrap are judged.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "feed/CartRotation.h"
#include "platform/FileFault.h"
#include "support/CartRotationFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;

class AutoEraseTest : public test::CartRotationFixture {
 protected:
  void Erase(std::int64_t first, std::int32_t count) { AutoErase(feed_, first, count); }
};

TEST_F(AutoEraseTest, ClearsSoManyCartsAndCountsEmptyOnes) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  SetRecordBytes(7, test::BlankCartRecord());
  Erase(6, 3);
  EXPECT_EQ(FullCarts(1, 20), (Carts{1, 2, 3, 4, 5, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}));
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
  EXPECT_TRUE(std::filesystem::exists(CartFile(7, "WAV"))) << "an empty cart is left alone";
}

TEST_F(AutoEraseTest, CartThatCannotBeReadDoesNotCount) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  const ScopedFileFault fault(FileOperation::Read, EIO, 1, 1, "Carts1.lst");
  Erase(6, 3);
  EXPECT_EQ(FullCarts(6, 11), (Carts{6, 10, 11}));
}

TEST_F(AutoEraseTest, FailedDeletionCountsAndIsSilent) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, test::kAlways, AudioName(7));
  Erase(6, 3);
  EXPECT_EQ(FullCarts(6, 11), (Carts{7, 9, 10, 11}));
}

TEST_F(AutoEraseTest, StopsAheadOfTheLastCartOfTheRange) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  Erase(18, 2);
  EXPECT_EQ(FullCarts(1, 20), (Carts{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 20}));
}

TEST_F(AutoEraseTest, FullLastCartHasAllWrappedOnesDeletedEmptyOnesToo) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  SetRecordBytes(18, test::BlankCartRecord());
  SetRecordBytes(2, test::BlankCartRecord());
  Erase(18, 5);
  EXPECT_EQ(FullCarts(1, 20), (Carts{4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 20}));
  EXPECT_FALSE(std::filesystem::exists(CartFile(2, "WAV")));
  EXPECT_TRUE(std::filesystem::exists(CartFile(18, "WAV")));
}

TEST_F(AutoEraseTest, EmptyLastCartSparesAllWrappedOnes) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  SetRecordBytes(19, test::BlankCartRecord());
  Erase(18, 5);
  EXPECT_EQ(FullCarts(1, 20), (Carts{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 20}));
}

TEST_F(AutoEraseTest, WithNoneReadAheadOfTheEndTheWrappedOnesAreDeleted) {
  for (const std::int32_t first : {20, 21}) {
    SetRange(1, 20, 5);
    Fill(1, 20);
    SetRecordBytes(2, test::BlankCartRecord());
    Erase(first, 3);
    EXPECT_EQ(FullCarts(1, 8), (Carts{4, 5, 6, 7, 8})) << first;
    EXPECT_FALSE(std::filesystem::exists(CartFile(2, "WAV"))) << first;
  }
}

TEST_F(AutoEraseTest, LastCartThatCannotBeReadSparesAllWrappedOnes) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  const ScopedFileFault fault(FileOperation::Read, EIO, 1, 1, "Carts1.lst");
  Erase(19, 5);
  EXPECT_EQ(FullCarts(1, 20).size(), 20U);
}

TEST_F(AutoEraseTest, WrapStopsAheadOfTheCartBeingRecorded) {
  SetRange(1, 6, 3);
  Fill(1, 6);
  Erase(5, 100);
  EXPECT_EQ(FullCarts(1, 6), (Carts{4, 6}));
}

TEST_F(AutoEraseTest, WrappedCartThatCannotBeDeletedCounts) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, test::kAlways, AudioName(1));
  Erase(20, 3);
  EXPECT_EQ(FullCarts(1, 5), (Carts{1, 4, 5}));
}

TEST_F(AutoEraseTest, CountOfNoneOrBelowClearsNothing) {
  SetRange(1, 20, 5);
  Fill(1, 20);
  for (const std::int32_t count : {0, -1, test::kLowestNumber}) {
    Erase(6, count);
    Erase(20, count);
  }
  EXPECT_EQ(FullCarts(1, 20).size(), 20U);
}

// Feeds start ahead of the wall.
TEST_F(AutoEraseTest, UnconnectedWallLosesNothingInMidRange) {
  SetRange(2001, 2010, 2003);
  for (std::int32_t cart = 2001; cart <= 2010; ++cart) GiveFile(cart, "WAV");
  Erase(2004, 10);
  EXPECT_EQ(FilesIn(wall_.path()).size(), 10U);
}

TEST_F(AutoEraseTest, RangeOfOneClearsNothing) {
  SetRange(5, 5, 5);
  Fill(4, 7);
  Erase(6, 10);
  EXPECT_EQ(FullCarts(4, 7), (Carts{4, 5, 6, 7}));
}

// Behind a last recording outside of it the carts from its start up to that one are cleared.
TEST_F(AutoEraseTest, RangeOfNoughtClearsWhatLiesBelowALastRecordingOutsideOfIt) {
  Fill(1, 4);
  for (const std::int32_t last : {-1, 0, 1}) {
    SetRange(0, 0, last);
    Erase(std::int64_t{last} + 1, 10);
    EXPECT_EQ(FullCarts(1, 4), (Carts{1, 2, 3, 4})) << last;
  }
  SetRange(0, 0, 3);
  Erase(4, 10);
  EXPECT_EQ(FullCarts(1, 4), (Carts{3, 4}));
}

TEST_F(AutoEraseTest, RangeTheWrongWayRoundClearsNothing) {
  SetRange(20, 5, 5);
  Fill(1, 20);
  Erase(6, 10);
  EXPECT_EQ(FullCarts(1, 20).size(), 20U);
}

TEST_F(AutoEraseTest, RangeThatBeginsBelowTheWallReadsItsRealCarts) {
  SetRange(-5, 10, -5);
  Fill(1, 10);
  Erase(-4, 2);
  EXPECT_EQ(FullCarts(1, 10), (Carts{3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(AutoEraseTest, RangeBelowTheWallTouchesNothingAndSparesTheWrapped) {
  SetRange(-20, -10, -15);
  Fill(1, 10);
  Erase(-14, 100);
  EXPECT_EQ(FullCarts(1, 10).size(), 10U);
}

// The number behind the wall's last can't be read: what was read last is an empty cart then.
TEST_F(AutoEraseTest, RangeThatEndsBeyondTheWallSparesTheWrapped) {
  Connect(10);
  SetRange(9990, 10010, 9998);
  Fill(9990, 9999);
  Erase(9999, 5);
  EXPECT_EQ(FullCarts(9990, 9999), (Carts{9990, 9991, 9992, 9993, 9994, 9995, 9996, 9997, 9998}));
}

TEST_F(AutoEraseTest, HugeRangesAndCountsEndSoon) {
  Fill(1, 3);
  SetRange(test::kLowestNumber, test::kHighestNumber, test::kLowestNumber);
  Erase(std::int64_t{test::kLowestNumber} + 1, 2);
  EXPECT_EQ(FullCarts(1, 3), Carts{3});
  Fill(1, 3);
  Erase(std::int64_t{test::kHighestNumber} + 1, test::kHighestNumber);
  EXPECT_EQ(FullCarts(1, 3), (Carts{1, 2, 3})) << "the count runs out below the wall";
  SetRange(1, test::kHighestNumber, 0);
  Erase(4, test::kHighestNumber);
  EXPECT_EQ(FullCarts(1, 3), (Carts{1, 2, 3}));
  SetRange(1, 3, 0);
  Erase(test::kHighestNumber, test::kHighestNumber);
  EXPECT_EQ(FullCarts(1, 3), Carts{});
}

}  // namespace
}  // namespace vorda
