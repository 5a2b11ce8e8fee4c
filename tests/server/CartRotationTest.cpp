// Which cart is recorded next, and what is written about it, on a wall of the test's own.

#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <string>
#include <vector>

#include "feed/CartRotation.h"
#include "platform/FileFault.h"
#include "platform/Files.h"
#include "support/CartRotationFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;

class NextCartTest : public test::CartRotationFixture {
 protected:
  std::int32_t Next() { return GetNextRecordCartNumber(feed_); }
};

TEST_F(NextCartTest, FirstEmptyOneBehindTheLastRecording) {
  SetRange(1, 10, 4);
  Fill(5, 6);
  EXPECT_EQ(Next(), 7);
}

TEST_F(NextCartTest, LastCartOfTheRangeBelongsToIt) {
  SetRange(1, 10, 4);
  Fill(1, 9);
  EXPECT_EQ(Next(), 10);
}

TEST_F(NextCartTest, EmptyOneAheadComesBeforeAnyForcing) {
  SetRange(1, 10, 4);
  Fill(1, 10);
  SetRecordBytes(3, test::BlankCartRecord());
  EXPECT_EQ(Next(), 3);
  EXPECT_EQ(FullCarts(1, 10), (Carts{1, 2, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(NextCartTest, WrapBeginsAtTheStart) {
  SetRange(3, 10, 10);
  Fill(3, 10);
  SetRecordBytes(5, test::BlankCartRecord());
  SetRecordBytes(7, test::BlankCartRecord());
  EXPECT_EQ(Next(), 5);
}

TEST_F(NextCartTest, LastRecordingIsNeverTakenThoughItAloneIsEmpty) {
  SetRange(1, 5, 3);
  Fill(1, 5);
  SetRecordBytes(3, test::BlankCartRecord());
  EXPECT_EQ(Next(), 4);
  EXPECT_EQ(FullCarts(1, 5), (Carts{1, 2, 5}));
}

TEST_F(NextCartTest, FullRangeGivesUpTheOneBehindTheLastRecording) {
  SetRange(1, 5, 3);
  Fill(1, 5);
  EXPECT_EQ(Next(), 4);
  EXPECT_EQ(FullCarts(1, 5), (Carts{1, 2, 3, 5}));
  EXPECT_EQ(RecordBytes(4), test::EmptiedCartRecord());
}

TEST_F(NextCartTest, FullRangeWrapsToItsStart) {
  SetRange(1, 5, 5);
  Fill(1, 5);
  EXPECT_EQ(Next(), 1);
  EXPECT_EQ(FullCarts(1, 5), (Carts{2, 3, 4, 5}));
}

TEST_F(NextCartTest, CartThatCannotBeDeletedIsPassedOverInSilence) {
  SetRange(1, 5, 3);
  Fill(1, 5);
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, test::kAlways, AudioName(4));
  EXPECT_EQ(Next(), 5);
  EXPECT_EQ(FullCarts(1, 5), (Carts{1, 2, 3, 4}));
}

TEST_F(NextCartTest, CartThatCannotBeDeletedIsPassedOverBehindTheWrapToo) {
  SetRange(1, 5, 5);
  Fill(1, 5);
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, test::kAlways, AudioName(1));
  EXPECT_EQ(Next(), 2);
}

TEST_F(NextCartTest, NoneWhenNothingCanBeDeleted) {
  SetRange(1, 5, 3);
  Fill(1, 5);
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, test::kAlways);
  EXPECT_EQ(Next(), 0);
  EXPECT_EQ(FullCarts(1, 5), (Carts{1, 2, 3, 4, 5}));
}

// Each deletion fails, and behind the first one's box a recording begins.
TEST_F(NextCartTest, NothingMoreIsForcedOnceARecordingHasBegunMeanwhile) {
  Fill(1, 5);
  for (const std::int32_t last : {2, 4, 5}) {
    SetRange(1, 5, last);
    const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, test::kAlways);
    EXPECT_EQ(GetNextRecordCartNumber(feed_, [&] { return fault.calls() > 0; }), 0);
    EXPECT_EQ(fault.calls(), 1) << last;
  }
  EXPECT_EQ(FullCarts(1, 5), (Carts{1, 2, 3, 4, 5}));
}

TEST_F(NextCartTest, LastRecordingBelowTheStartBecomesTheOneAheadOfItInMemoryOnly) {
  SetRange(5, 10, 2);
  test::WriteWholeFile(feed_.FullConfigFile, "[AudioCapture]\r\nLastRecordedCartNumber=2\r\n");
  EXPECT_EQ(Next(), 5);
  EXPECT_EQ(feed_.LastRecordedCartNumber, 4);
  EXPECT_EQ(Ini(), "[AudioCapture]\r\nLastRecordedCartNumber=2\r\n");
}

TEST_F(NextCartTest, LastRecordingAboveTheEndSearchesPastTheEnd) {
  SetRange(1, 5, 9);
  Fill(1, 9);
  SetRecordBytes(7, test::BlankCartRecord());
  EXPECT_EQ(Next(), 7);
  EXPECT_EQ(FullCarts(1, 9), (Carts{1, 2, 3, 4, 5, 6, 8, 9}));
}

TEST_F(NextCartTest, LastRecordingAboveTheEndForcesPastTheEndAndSparesItself) {
  SetRange(1, 5, 9);
  Fill(1, 9);
  const ScopedFileFault fault([](FileOperation operation, std::string_view path) {
    const bool kept =
        operation == FileOperation::Remove && !path.ends_with(AudioName(8)) && !path.ends_with(AudioName(9));
    return kept ? EACCES : 0;
  });
  EXPECT_EQ(Next(), 8);
  EXPECT_EQ(Next(), 8);
  EXPECT_TRUE(IsFull(9));
}

TEST_F(NextCartTest, RangeOfOneIsRecordedOnceAndNeverAgain) {
  SetRange(5, 5, 4);
  EXPECT_EQ(Next(), 5);
  Fill(5, 5);
  feed_.LastRecordedCartNumber = 5;
  EXPECT_EQ(Next(), 0);
  EXPECT_EQ(Next(), 0);
  EXPECT_TRUE(IsFull(5));
}

TEST_F(NextCartTest, RangeTheWrongWayRoundHasNone) {
  SetRange(10, 5, 0);
  EXPECT_EQ(Next(), 0);
  EXPECT_EQ(feed_.LastRecordedCartNumber, 9);
}

// The recording refuses number 0.
TEST_F(NextCartTest, RangeOfNoughtHasNone) {
  Fill(1, 3);
  for (const std::int32_t last : {-5, -1, 0}) {
    SetRange(0, 0, last);
    EXPECT_EQ(Next(), 0) << last;
  }
  SetRange(0, 0, 1);
  EXPECT_EQ(Next(), 0) << "but for the numbers up to the last recording, of which there is no cart";
  EXPECT_EQ(FullCarts(1, 3), (Carts{1, 2, 3}));
}

TEST_F(NextCartTest, NothingIsReserved) {
  SetRange(1, 5, 0);
  EXPECT_EQ(Next(), 1);
  EXPECT_EQ(Next(), 1);
}

TEST_F(NextCartTest, RecordAloneTellsWhetherACartIsEmpty) {
  SetRange(1, 5, 0);
  GiveFile(1, "WAV");
  EXPECT_EQ(Next(), 1);
  EXPECT_EQ(FilesIn(wall_.path()), Names{AudioName(1)});
  SetRecordBytes(1, test::FullCartRecord("Recording", 0));
  EXPECT_EQ(Next(), 2) << "a length of 0 is no empty cart";
}

// Carts from 2001 on lie in a part that isn't connected.
TEST_F(NextCartTest, CartThatCannotBeReadIsNotFoundEmpty) {
  SetRange(1999, 2003, 2000);
  EXPECT_EQ(Next(), 1999);
}

TEST_F(NextCartTest, CartThatCannotBeReadIsForcedAllTheSame) {
  SetRange(1999, 2003, 2000);
  Fill(1999, 2000);
  GiveFile(2001, "WAV");
  EXPECT_EQ(Next(), 2001);
  EXPECT_FALSE(std::filesystem::exists(CartFile(2001, "WAV")));
}

TEST_F(NextCartTest, ReadThatFailsOnceSkipsTheOneCart) {
  SetRange(1, 5, 0);
  const ScopedFileFault fault(FileOperation::Read, EIO, 1, 1, "Carts1.lst");
  EXPECT_EQ(Next(), 2);
}

// The recording refuses such a number.
TEST_F(NextCartTest, NumbersBeyondTheWallAreNoEmptyCartsAndAreDeletedWithoutATrace) {
  SetRange(10000, 10010, 9999);
  EXPECT_EQ(Next(), 10000);
  SetRange(-5, -1, -5);
  EXPECT_EQ(Next(), -4);
}

TEST_F(NextCartTest, RangeThatBeginsBelowTheWallFindsItsRealCarts) {
  SetRange(-3, 2, -10);
  Fill(1, 1);
  EXPECT_EQ(Next(), 2);
}

TEST_F(NextCartTest, HugeRangesEndSoon) {
  SetRange(test::kLowestNumber, test::kHighestNumber, test::kLowestNumber);
  EXPECT_EQ(Next(), 1);
  SetRange(test::kLowestNumber, test::kHighestNumber, test::kHighestNumber);
  EXPECT_EQ(Next(), 1);
  SetRange(2001, test::kHighestNumber, 0);
  EXPECT_EQ(Next(), 2001);
  SetRange(1, test::kLowestNumber, test::kHighestNumber);
  EXPECT_EQ(Next(), 1);
  SetRange(test::kHighestNumber, test::kLowestNumber, test::kLowestNumber);
  EXPECT_EQ(Next(), 0);
}

class CartKeysTest : public test::CartRotationFixture {};

TEST_F(CartKeysTest, LastRecordedCartIsKeptAndWrittenAtOnce) {
  test::WriteWholeFile(feed_.FullConfigFile,
                       "[AudioCapture]\r\nlastrecordedcartnumber = 9001\r\nSoundCard=1\r\n[TextData]\r\n");
  UpdateLastRecordedCart(feed_, 9002);
  EXPECT_EQ(feed_.LastRecordedCartNumber, 9002);
  EXPECT_EQ(Ini(), "[AudioCapture]\r\nlastrecordedcartnumber =9002\r\nSoundCard=1\r\n[TextData]\r\n");
}

TEST_F(CartKeysTest, CartBeingRecordedIsWrittenAtOnce) {
  test::WriteWholeFile(feed_.FullConfigFile, "[AudioCapture]\r\n");
  WriteCurrentlyRecordingCart(feed_, 9002);
  EXPECT_EQ(Ini(), "[AudioCapture]\r\nCurrentlyRecordingCartNumber=9002\r\n");
  WriteCurrentlyRecordingCart(feed_, 0);
  EXPECT_EQ(Ini(), "[AudioCapture]\r\nCurrentlyRecordingCartNumber=0\r\n");
}

TEST_F(CartKeysTest, WriteThatFailsPassesUnnoticed) {
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, test::kAlways);
  UpdateLastRecordedCart(feed_, 9002);
  WriteCurrentlyRecordingCart(feed_, 9002);
  EXPECT_EQ(feed_.LastRecordedCartNumber, 9002);
}

TEST_F(CartKeysTest, IndexCartTellsTheLastRecordingAndIsNotEmpty) {
  feed_.LastRecordedCartNumber = 9099;
  Fill(900, 900);
  UpdateIndexCart(feed_);
  EXPECT_EQ(RecordBytes(900), test::FullCartRecord("Last recorded cart was : 9099", 0));
  EXPECT_TRUE(std::filesystem::exists(CartFile(900, "WAV"))) << "its files are none of this";
  CartInfo info;
  ASSERT_EQ(ReadCartInfo(info, 900), 0);
  EXPECT_FALSE(IsEmptyCart(info));
}

TEST_F(CartKeysTest, IndexCartOfANumberThatIsNoneWritesNothing) {
  const std::string before = test::ReadWholeFile(ListFileOf(1));
  for (const std::int32_t cart : {0, -1, 10000, test::kLowestNumber, test::kHighestNumber}) {
    feed_.IndexCartNumber = cart;
    UpdateIndexCart(feed_);
  }
  EXPECT_EQ(test::ReadWholeFile(ListFileOf(1)), before);
}

class ItemLengthTest : public test::CartRotationFixture {
 protected:
  ItemLengthTest() {
    feed_.RecordFormat.nAvgBytesPerSec = 1000;
    feed_.ThisItemMaxLength = 600;
  }
  std::int32_t LimitWith(std::uint64_t bytes, std::int32_t cart = 5) {
    free_ = bytes;
    UpdateThisItemMaxLength(feed_, cart);
    return feed_.ThisItemMaxLength;
  }

  std::uint64_t free_ = 0;
  std::vector<std::string> asked_;
  platform::ScopedHook<std::uint64_t(const std::string&)> hook_{platform::FreeBytesHook(),
                                                                [this](const std::string& path) {
                                                                  asked_.push_back(path);
                                                                  return free_;
                                                                }};
};

TEST_F(ItemLengthTest, RoomForLessThanTheLimitIsTheLimit) {
  EXPECT_EQ(LimitWith(600000), 600);
  EXPECT_EQ(LimitWith(599400), 599);
  EXPECT_EQ(LimitWith(20000), 20);
  EXPECT_EQ(LimitWith(0), 0);
}

TEST_F(ItemLengthTest, LimitNeverRises) {
  EXPECT_EQ(LimitWith(20000), 20);
  EXPECT_EQ(LimitWith(500000), 20);
  EXPECT_EQ(LimitWith(std::numeric_limits<std::uint64_t>::max()), 20);
}

TEST_F(ItemLengthTest, HalvesAreRoundedToTheEvenSecond) {
  EXPECT_EQ(LimitWith(599500), 600);
  EXPECT_EQ(LimitWith(21500), 22);
  EXPECT_EQ(LimitWith(20500), 20);
  EXPECT_EQ(LimitWith(500), 0);
}

TEST_F(ItemLengthTest, VolumeOfTheCartsPartIsAsked) {
  MovePart(2, far_.path());
  LimitWith(1, 1000);
  LimitWith(1, 1001);
  EXPECT_EQ(asked_, (std::vector<std::string>{wall_.path(), far_.path()}));
}

TEST_F(ItemLengthTest, WithoutACartNothingIsAskedAndNothingChanges) {
  EXPECT_EQ(LimitWith(0, 0), 600);
  EXPECT_TRUE(asked_.empty());
}

TEST_F(ItemLengthTest, FormatWithoutBytesNeverStopsARecording) {
  feed_.RecordFormat.nAvgBytesPerSec = 0;
  EXPECT_EQ(LimitWith(20000), 600);
  EXPECT_EQ(LimitWith(0), 600);
}

// Bytes per second that have wrapped.
TEST_F(ItemLengthTest, FormatOfNegativeBytesGivesTheLowestLimitThereIs) {
  feed_.RecordFormat.nAvgBytesPerSec = -2;
  EXPECT_EQ(LimitWith(1'000'000'000'000), test::kLowestNumber);
}

}  // namespace
}  // namespace vorda
