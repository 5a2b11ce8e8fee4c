// Moves of carts with odd files, with records of their own, and of numbers beside the wall.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "platform/FileFault.h"
#include "platform/Settings.h"
#include "support/MoveFixture.h"

namespace vorda {
namespace {

using platform::BoxAnswer;
using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MoveCartOddTest : public test::MoveFixture {
 protected:
  void ExpectMissingIndividualFileTold(std::int32_t cart) {
    ExpectTold("removing the information file for cart " + std::to_string(cart), kFileNotFound);
  }
};

TEST_F(MoveCartOddTest, OddFilesMoveAndTheLastExtensionCounts) {
  GiveCart(5, "Five", 30, {"A.B", "", "VERY LONG", "TMP"});
  std::filesystem::create_symlink(wall_ / "nowhere", CartFile(5, "LNK"));
  test::WriteWholeFile(wall_ / "orv00005.wav", "lower");
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.", "ORV00006.B", "ORV00006.LNK",
                                                     "ORV00006.TMP", "ORV00006.VERY LONG", "ORV00006.wav"));
  EXPECT_EQ(std::filesystem::read_symlink(CartFile(6, "LNK")), wall_ / "nowhere");
  EXPECT_EQ(Content(6, "wav"), "lower");
}

TEST_F(MoveCartOddTest, WhatOnlyResemblesACartFileStays) {
  GiveCart(5, "Five", 30);
  test::WriteWholeFile(wall_ / "ORV00005", "no point");
  test::WriteWholeFile(wall_ / "ORV000051.WAV", "longer");
  std::filesystem::create_directory(CartFile(5, "DIR"));
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()),
              ElementsAre("ORV00005", "ORV00005.DIR", "ORV000051.WAV", "ORV00006.WAV"));
}

TEST_F(MoveCartOddTest, OfNamesThatDifferInCaseTheSecondFindsItsNameTaken) {
  GiveCart(5, "Five", 30, {"WAV", "wav"});
  ExpectTold("renaming the file : ORV00005.wav", kFileAlreadyExists);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
  EXPECT_EQ(Content(6, "WAV"), "cart 5 WAV");
}

TEST_F(MoveCartOddTest, DirectoryOfTheNewNameIsInTheWay) {
  GiveCart(5, "Five", 30);
  std::filesystem::create_directory(CartFile(6, "WAV"));
  ExpectTold("renaming the file : ORV00005.WAV", kFileAlreadyExists);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
  EXPECT_TRUE(std::filesystem::is_directory(CartFile(6, "WAV")));
}

// One name is in the bytes of an older station, the other as the server's machine writes it.
TEST_F(MoveCartOddTest, NamesBeyondAsciiMoveLikeOthers) {
  GiveCart(5, "Five", 30, {"\xC4\xD6", "\xC3\xBC"});
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ::testing::SizeIs(2));
  for (const std::string& name : CartFilesIn(wall_.path()))
    EXPECT_TRUE(name.starts_with("ORV00006.")) << name;
  EXPECT_EQ(DeleteCart(6, true, false), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), IsEmpty());
}

TEST_F(MoveCartOddTest, DirectoriesByDriveAndInCapitalsAreFound) {
  platform::Settings settings;
  settings.drives['D'] = far_.path();
  const platform::ScopedSettings scoped(settings);
  std::filesystem::create_directory(far_ / "audio");
  MovePart(1, "D:\\AUDIO");
  for (const char* name : {"audio/orv00005.wav", "audio/ORV00006.WAV"})
    test::WriteWholeFile(far_ / name, name);
  for (const std::int32_t cart : {5, 6}) {
    CartInfo info = gBlankCartInfo;
    info.AudioLength = static_cast<float>(cart);
    WriteCartInfo(info, cart, true);
  }
  ExpectQuestion(5, 6, BoxAnswer::No);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(FilesIn(far_ / "audio"), ElementsAre("ORV00005.TMP", "ORV00005.WAV", "ORV00006.wav"));
  EXPECT_EQ(test::ReadWholeFile(far_ / "audio/ORV00006.wav"), "audio/orv00005.wav");
  EXPECT_EQ(Move(6, 1006), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV01006.WAV"));
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_THAT(CartFilesIn(far_ / "audio"), IsEmpty());
}

TEST_F(MoveCartOddTest, EveryMoveWithinADirectoryTellsOfTheMissingIndividualFile) {
  UseIndividualFiles();
  GiveCart(5, "In the list", 30);
  const std::string own = test::FullCartRecord("In the file", 30);
  test::WriteWholeFile(CartFile(5, "LST"), own);
  ExpectMissingIndividualFileTold(5);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.LST", "ORV00006.WAV"));
  EXPECT_EQ(Content(6, "LST"), own);
  EXPECT_EQ(RecordBytes(6), own);
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
}

TEST_F(MoveCartOddTest, IndividualFileGoesAcrossDirectoriesWithoutAWord) {
  SplitWall();
  UseIndividualFiles();
  gAudioWallSettings.MaintainLegacyCartList = 0;
  GiveFile(5, "WAV");
  const std::string own = MarkedRecord("In the file", 30, 'y');
  test::WriteWholeFile(CartFile(5, "LST"), own);
  EXPECT_EQ(Move(5, 1005), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(Content(1005, "LST"), own);
  EXPECT_EQ(RecordBytes(1005), test::BlankCartRecord());
}

TEST_F(MoveCartOddTest, OverwrittenCartLosesItsIndividualFile) {
  UseIndividualFiles();
  GiveCart(5, "Five", 30);
  GiveCart(6, "Six", 10);
  test::WriteWholeFile(CartFile(6, "LST"), test::FullCartRecord("Six", 10));
  ExpectQuestion(5, 6, BoxAnswer::Yes);
  ExpectMissingIndividualFileTold(5);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_EQ(Content(6, "LST"), test::FullCartRecord("Five", 30));
}

TEST_F(MoveCartOddTest, RecordThatCannotBeReadMovesAsAnEmptyOne) {
  GiveCart(5, "Five", 30);
  const ScopedFileFault fault(FileOperation::Read, EIO, 1, 1, "Carts1.lst");
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
}

TEST_F(MoveCartOddTest, DestinationThatCannotBeReadIsTakenForFree) {
  GiveCart(5, "Five", 30);
  GiveCart(6, "Six", 10, {"TXT"});
  const ScopedFileFault fault(FileOperation::Read, EIO, 2, 1, "Carts1.lst");
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.TXT", "ORV00006.WAV"));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(MoveCartOddTest, WithoutATemporaryFileTheMoveGoesOn) {
  GiveCart(5, "Five", 30);
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1000, ".TMP");
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
}

class MoveBesideTheWallTest : public MoveCartOddTest {
 protected:
  // What may change is the scratch folder and what a test gave; the temporary directory is looked at too.
  ~MoveBesideTheWallTest() override {
    EXPECT_THAT(FilesIn(temporary_.path()), IsEmpty());
    for (const char* name : {".MOVED", ".TMP"}) {
      EXPECT_FALSE(std::filesystem::exists(std::filesystem::current_path() / name)) << name;
      EXPECT_FALSE(std::filesystem::exists(std::filesystem::path("/") / name)) << name;
    }
  }
  test::TempDirectory temporary_;
  test::ScopedVariable temporaryVariable_{"TMPDIR", temporary_.path().c_str()};
};

TEST_F(MoveBesideTheWallTest, ToANumberBeyondTheWallEmptiesTheSourceUnasked) {
  GiveCart(5, "Five", 30, {"moved", "WAV"});
  GiveCart(6, "Six", 10);
  EXPECT_EQ(Move(5, 12345), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_EQ(test::JoinedNames(home_.path()), "scratch");
  EXPECT_EQ(test::JoinedNames(home_ / "scratch"), ".MOVED .WAV");
}

TEST_F(MoveBesideTheWallTest, FromANumberBeyondTheWallEmptiesTheDestination) {
  GiveCart(6, "Six", 10);
  ExpectQuestion(10000, 6, BoxAnswer::Yes);
  EXPECT_EQ(Move(10000, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
}

TEST_F(MoveBesideTheWallTest, SwapWithANumberBeyondTheWallLosesTheDestination) {
  GiveCart(6, "Six", 10);
  ExpectQuestion(12345, 6, BoxAnswer::No);
  ExpectTold("renaming the file of the cart to be swapped: ORV00006.WAV", kPathNotFound);
  EXPECT_EQ(Move(12345, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
  EXPECT_EQ(test::JoinedNames(home_ / "scratch"), ".TMP");
}

TEST_F(MoveBesideTheWallTest, BetweenNumbersBeyondTheWallDoesNothing) {
  GiveCart(5, "Five", 30);
  const std::string list = test::ReadWholeFile(ListFileOf(5));
  EXPECT_EQ(Move(10000, 12345), 0);
  EXPECT_EQ(Move(-5, 12345), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
  EXPECT_EQ(test::ReadWholeFile(ListFileOf(5)), list);
  EXPECT_THAT(FilesIn(home_.path()), IsEmpty());
}

TEST_F(MoveBesideTheWallTest, PartWithoutALocationHasNoFiles) {
  const std::string list = test::ReadWholeFile(wall_ / "Carts1.lst");
  gAudioWallParts[0].Location.clear();
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_EQ(CopyCart(5, 6, true, false, nullptr), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_THAT(FilesIn(home_.path()), IsEmpty());
  EXPECT_EQ(test::ReadWholeFile(wall_ / "Carts1.lst").size(), list.size());
}

}  // namespace
}  // namespace vorda
