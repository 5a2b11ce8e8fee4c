// The search for an empty cart, which goes by the records alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/FileFault.h"
#include "support/WallFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::Pointer;
using platform::ScopedFileFault;
using ::testing::ElementsAre;

class FindNextEmptyCartTest : public test::WallFixture {
 protected:
  static void Fill(std::int32_t first, std::int32_t last) {
    std::string records;
    for (std::int32_t cart = first; cart <= last; ++cart) records += test::FullCartRecord("Full", 1);
    SetRecordBytes(first, records);
  }
};

TEST_F(FindNextEmptyCartTest, LowestAtOrAboveTheStartWins) {
  Fill(1, 8);
  SetRecordBytes(4, test::EmptiedCartRecord());
  SetRecordBytes(6, test::EmptiedCartRecord());
  EXPECT_EQ(FindNextEmptyCart(1), 4);
  EXPECT_EQ(FindNextEmptyCart(4), 4);
  EXPECT_EQ(FindNextEmptyCart(5), 6);
  EXPECT_EQ(FindNextEmptyCart(7), 9);
}

TEST_F(FindNextEmptyCartTest, GoesOnInTheNextPart) {
  Fill(995, 1000);
  Fill(1001, 1003);
  EXPECT_EQ(FindNextEmptyCart(996), 1004);
}

TEST_F(FindNextEmptyCartTest, NeverWrapsRoundToLowerNumbers) {
  Connect(10);
  Fill(9990, 9999);
  EXPECT_EQ(FindNextEmptyCart(9990), 0);
  SetRecordBytes(9999, test::EmptiedCartRecord());
  EXPECT_EQ(FindNextEmptyCart(9990), 9999);
}

TEST_F(FindNextEmptyCartTest, StartBeyondTheWallFindsNone) {
  EXPECT_EQ(FindNextEmptyCart(10000), 0);
}

TEST_F(FindNextEmptyCartTest, StartAt0FindsCart0AtOnce) {
  const ScopedFileFault reads(FileOperation::Read, EIO);
  EXPECT_EQ(FindNextEmptyCart(0), 0);
  EXPECT_EQ(reads.calls(), 0);
}

TEST_F(FindNextEmptyCartTest, CartThatCannotBeReadCountsAsEmpty) {
  Fill(1, 8);
  const ScopedFileFault fault(FileOperation::Read, EIO, 3, 1, "Carts1.lst");
  EXPECT_EQ(FindNextEmptyCart(1), 3);
}

TEST_F(FindNextEmptyCartTest, CartOfAnUnconnectedPartCountsAsEmpty) {
  Fill(1999, 2000);
  EXPECT_EQ(FindNextEmptyCart(1999), 2001);
}

TEST_F(FindNextEmptyCartTest, StrayAudioDoesNotFillACart) {
  Fill(1, 2);
  GiveFile(3, "WAV");
  EXPECT_EQ(FindNextEmptyCart(1), 3);
}

TEST_F(FindNextEmptyCartTest, OnlyALengthOfMinusOneIsEmpty) {
  Fill(1, 3);
  SetRecordBytes(1, test::FullCartRecord("No audio yet", 0));
  SetRecordBytes(2, test::FullCartRecord("Below", -2));
  std::string titled = test::EmptiedCartRecord();
  titled.replace(0, 5, "Title");
  SetRecordBytes(3, titled);
  EXPECT_EQ(FindNextEmptyCart(1), 3);
}

TEST_F(FindNextEmptyCartTest, IndividualFilesCountWhereTheyAreInUse) {
  test::WriteWholeFile(CartFile(1, "LST"), test::FullCartRecord("One", 1));
  EXPECT_EQ(FindNextEmptyCart(1), 1);
  UseIndividualFiles();
  EXPECT_EQ(FindNextEmptyCart(1), 2);
}

TEST_F(FindNextEmptyCartTest, HourglassStandsForTheSearch) {
  std::vector<Pointer> shown;
  const platform::ScopedHook<void(Pointer)> hook(platform::PointerHook(),
                                                 [&](Pointer pointer) { shown.push_back(pointer); });
  FindNextEmptyCart(1);
  EXPECT_THAT(shown, ElementsAre(Pointer::Hourglass, Pointer::Default));
}

}  // namespace
}  // namespace vorda
