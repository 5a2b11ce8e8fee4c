// Moving a cart to a number that is taken, and giving its cart the old number in exchange.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/FileFault.h"
#include "platform/ShellOperation.h"
#include "support/FileSteps.h"
#include "support/MoveFixture.h"

namespace vorda {
namespace {

using platform::BoxAnswer;
using platform::FileOperation;
using platform::Pointer;
using platform::ScopedFileFault;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

class SwapCartTest : public test::MoveFixture {
 protected:
  std::int32_t Swap(std::int32_t from, std::int32_t to) {
    ExpectQuestion(from, to, BoxAnswer::No);
    return Move(from, to);
  }
  static std::string Five() { return MarkedRecord("Five", 30, 'x'); }
  static std::string Six() { return MarkedRecord("Six", 10, 'y'); }
  // Carts 5 and 6, or 5 and another one that stands for 6.
  static void GiveBoth(const Names& filesOf5, const Names& filesOfOther, std::int32_t other = 6) {
    SetRecordBytes(5, Five());
    SetRecordBytes(other, Six());
    GiveFiles(5, filesOf5);
    GiveFiles(other, filesOfOther);
  }
  static void ExpectRecordsSwapped(std::int32_t other = 6) {
    EXPECT_EQ(RecordBytes(5), Six());
    EXPECT_EQ(RecordBytes(other), Five());
  }
  // The words for the file that a swap left in a cart, where it finds its name taken.
  void ExpectOldFileTold(const char* words, std::int32_t cart) {
    ExpectTold(words + std::filesystem::path(CartFile(cart, "TMP")).filename().string(), kFileAlreadyExists);
  }
};

TEST_F(SwapCartTest, FilesAndRecordsChangePlaces) {
  GiveBoth({"FLK", "WAV"}, {"Txt", "WAV"});
  EXPECT_EQ(Swap(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()),
              ElementsAre("ORV00005.TMP", "ORV00005.Txt", "ORV00005.WAV", "ORV00006.FLK", "ORV00006.WAV"));
  EXPECT_EQ(Content(5, "WAV"), "cart 6 WAV");
  EXPECT_EQ(Content(6, "WAV"), "cart 5 WAV");
  ExpectRecordsSwapped();
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(SwapCartTest, EmptyFileOfTheSwapEndsAsAFileOfTheSource) {
  GiveBoth({"WAV"}, {"WAV"});
  Swap(5, 6);
  EXPECT_TRUE(std::filesystem::is_regular_file(CartFile(5, "TMP")));
  EXPECT_EQ(std::filesystem::file_size(CartFile(5, "TMP")), 0U);
  EXPECT_THAT(LeftBehindIn(wall_.path()), IsEmpty());
}

TEST_F(SwapCartTest, StepsFollowInTheirOrder) {
  GiveBoth({"WAV"}, {"TXT"});
  const test::FileSteps steps;
  Swap(5, 6);
  EXPECT_THAT(steps.Taken(),
              ElementsAre(MatchesRegex("remove VOR.*\\.TMP"), MatchesRegex("rename to VOR[0-9A-F]{8}\\.TXT"),
                          "rename to ORV00006.WAV", "write Carts1.lst", "write Carts1.lst",
                          "rename to ORV00005.TXT", "rename to ORV00005.TMP", "write Carts1.lst"));
}

TEST_F(SwapCartTest, CartsWithoutFilesSwapTheirRecords) {
  GiveBoth({}, {});
  EXPECT_EQ(Swap(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TMP"));
  ExpectRecordsSwapped();
}

TEST_F(SwapCartTest, PartsInOneDirectorySwapAsOne) {
  GiveBoth({"WAV"}, {"WAV"}, 1005);
  EXPECT_EQ(Swap(5, 1005), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TMP", "ORV00005.WAV", "ORV01005.WAV"));
  EXPECT_EQ(Content(5, "WAV"), "cart 1005 WAV");
  ExpectRecordsSwapped(1005);
}

TEST_F(SwapCartTest, LinkedAudioSurvivesWithinADirectory) {
  AllowLinks();
  GiveBoth({}, {});
  for (const char* name : {"five.wav", "six.wav"}) test::WriteWholeFile(far_ / name, name);
  test::WriteWholeFile(CartFile(5, "FLK"), far_ / "five.wav");
  test::WriteWholeFile(CartFile(6, "FLK"), far_ / "six.wav");
  EXPECT_EQ(Swap(5, 6), 0);
  EXPECT_EQ(CartAudioFileName(5), far_ / "six.wav");
  EXPECT_EQ(CartAudioFileName(6), far_ / "five.wav");
  EXPECT_EQ(test::JoinedNames(far_.path()), "five.wav six.wav");
}

TEST_F(SwapCartTest, IndividualFilesChangePlacesAndTheMissingOneIsTold) {
  UseIndividualFiles();
  GiveBoth({}, {});
  test::WriteWholeFile(CartFile(5, "LST"), Five());
  test::WriteWholeFile(CartFile(6, "LST"), Six());
  ExpectQuestion(5, 6, BoxAnswer::No);
  ExpectTold("removing the information file for cart 5", kFileNotFound);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_EQ(Content(5, "LST"), Six());
  EXPECT_EQ(Content(6, "LST"), Five());
  ExpectRecordsSwapped();
}

TEST_F(SwapCartTest, NextMoveOfASwappedCartTakesTheOldFileAlong) {
  GiveBoth({"WAV"}, {"WAV"});
  Swap(5, 6);
  EXPECT_EQ(Move(5, 7), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.WAV", "ORV00007.TMP", "ORV00007.WAV"));
  EXPECT_EQ(LeftBehindIn(wall_.path()).size(), 1U);
}

TEST_F(SwapCartTest, SecondSwapIsAsGoodAsTheFirst) {
  GiveBoth({"WAV", "TXT"}, {"WAV", "XYZ"});
  Swap(5, 6);
  EXPECT_EQ(Swap(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TMP", "ORV00005.TXT", "ORV00005.WAV",
                                                 "ORV00006.TMP", "ORV00006.WAV", "ORV00006.XYZ"));
  EXPECT_EQ(Content(5, "WAV"), "cart 5 WAV");
  EXPECT_EQ(Content(6, "WAV"), "cart 6 WAV");
  EXPECT_EQ(RecordBytes(5), Five());
  EXPECT_EQ(RecordBytes(6), Six());
}

// The file that an earlier swap left in the destination finds its name taken, as the last one of all: what
// else the carts hold has changed places by then.
TEST_F(SwapCartTest, SwapBackTellsOfTheOldFileAndLosesNothingElse) {
  GiveBoth({"WAV", "TXT"}, {"WAV", "XYZ"});
  Swap(5, 6);
  ExpectQuestion(6, 5, BoxAnswer::No);
  ExpectOldFileTold("renaming the file of the cart to be swapped: ", 5);
  EXPECT_EQ(Move(6, 5), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TMP", "ORV00005.TXT", "ORV00005.WAV",
                                                 "ORV00006.TMP", "ORV00006.WAV", "ORV00006.XYZ"));
  EXPECT_EQ(Content(5, "WAV"), "cart 5 WAV");
  EXPECT_EQ(Content(6, "WAV"), "cart 6 WAV");
  EXPECT_EQ(RecordBytes(5), Five());
  EXPECT_EQ(RecordBytes(6), Six());
}

TEST_F(SwapCartTest, HoweverOftenTwoCartsAreSwappedTheirAudioStays) {
  GiveBoth({"WAV"}, {"WAV"});
  Swap(5, 6);
  Swap(5, 6);
  for (int turn = 0; turn < 4; ++turn) {
    ExpectQuestion(5, 6, BoxAnswer::No);
    ExpectOldFileTold("renaming the file of the cart to be swapped: ", 6);
    ExpectOldFileTold("renaming the file : ", 5);
    EXPECT_EQ(Move(5, 6), 0);
    const bool swapped = turn % 2 == 0;
    EXPECT_EQ(Content(5, "WAV"), swapped ? "cart 6 WAV" : "cart 5 WAV") << turn;
    EXPECT_EQ(Content(6, "WAV"), swapped ? "cart 5 WAV" : "cart 6 WAV") << turn;
    EXPECT_EQ(RecordBytes(5), swapped ? Six() : Five()) << turn;
    EXPECT_THAT(FilesIn(wall_.path()), SizeIs(4)) << turn;
  }
}

TEST_F(SwapCartTest, WhatIsLeftOfTheDestinationCollidesWithTheMove) {
  GiveBoth({"FLK", "TXT", "WAV"}, {"AAA", "TXT", "WAV"});
  // Of the three renamings the second.
  const ScopedFileFault fault(FileOperation::Rename, EACCES, 2, 1, "/VOR");
  ExpectQuestion(5, 6, BoxAnswer::No);
  ExpectTold("renaming the file of the cart to be swapped: ORV00006.TXT", kPermissionDenied);
  ExpectTold("renaming the file : ORV00005.TXT", kFileAlreadyExists);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()),
              ElementsAre("ORV00005.AAA", "ORV00005.TMP", "ORV00006.FLK", "ORV00006.TXT", "ORV00006.WAV"));
  EXPECT_EQ(Content(6, "WAV"), "cart 6 WAV");
  ExpectRecordsSwapped();
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(SwapCartTest, WhatCannotComeBackStaysUnderTheSwapsName) {
  GiveBoth({"WAV"}, {"AAA", "TXT", "WAV"});
  const ScopedFileFault fault(FileOperation::Rename, EACCES, 1, 1, "ORV00005.TXT");
  std::string stem;
  ExpectQuestion(5, 6, BoxAnswer::No, [&] {
    stem = std::filesystem::path(LeftBehindIn(wall_.path()).at(0)).stem();
    ExpectTold("copying the file : " + stem + ".TXT", kPermissionDenied);
  });
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()),
              ElementsAre("ORV00005.AAA", "ORV00006.WAV", stem + ".TMP", stem + ".TXT", stem + ".WAV"));
  EXPECT_EQ(test::ReadWholeFile(wall_ / (stem + ".WAV")), "cart 6 WAV");
  ExpectRecordsSwapped();
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(SwapCartTest, WithoutATemporaryFileTheSwapGoesOn) {
  GiveBoth({"WAV"}, {"WAV"});
  test::WriteWholeFile(wall_ / ".hidden", "none of a cart");
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1000, ".TMP");
  EXPECT_EQ(Swap(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre(".hidden", "ORV00005.WAV", "ORV00006.WAV"));
  EXPECT_EQ(Content(5, "WAV"), "cart 6 WAV");
  ExpectRecordsSwapped();
}

// The files are looked for in the source's directory, where they aren't.
TEST_F(SwapCartTest, SwapAcrossDirectoriesIsToldAndLosesTheDestinationsFiles) {
  SplitWall();
  GiveBoth({"WAV"}, {"TXT", "WAV"}, 1005);
  ExpectQuestion(5, 1005, BoxAnswer::No);
  ExpectTold("renaming the file of the cart to be swapped: ORV01005.TXT", kFileNotFound);
  EXPECT_EQ(Move(5, 1005), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TMP"));
  EXPECT_THAT(FilesIn(far_.path()), ElementsAre("ORV01005.WAV"));
  EXPECT_EQ(Content(1005, "WAV"), "cart 5 WAV");
  ExpectRecordsSwapped(1005);
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(SwapCartTest, StrayNamesakeInTheSourcesDirectoryIsTakenForTheDestinations) {
  SplitWall();
  GiveBoth({"WAV"}, {"wav"}, 1005);
  test::WriteWholeFile(wall_ / "ORV01005.wav", "stray");
  EXPECT_EQ(Swap(5, 1005), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TMP", "ORV00005.wav"));
  EXPECT_EQ(Content(5, "wav"), "stray");
  EXPECT_THAT(FilesIn(far_.path()), ElementsAre("ORV01005.WAV"));
}

TEST_F(SwapCartTest, WhatComesBackAcrossDirectoriesIsCopiedUnderATitleThenDeleted) {
  SplitWall();
  GiveBoth({}, {}, 1005);
  std::vector<std::string> seen;
  const platform::ScopedHook<void(platform::FileCopy&, const platform::ShellOperation&)> hook(
      platform::CopyProgressHook(), [&](platform::FileCopy& copy, const platform::ShellOperation& operation) {
        EXPECT_FALSE(operation.move);
        EXPECT_TRUE(operation.confirm);
        seen.push_back(operation.progressTitle + " to " + operation.destination);
        copy.Result();
      });
  const test::FileSteps steps;
  Swap(5, 1005);
  EXPECT_THAT(seen, ElementsAre("Moving Cart Files to " + CartFile(5, "TMP")));
  EXPECT_THAT(steps.Taken(),
              ElementsAre(MatchesRegex("remove VOR.*\\.TMP"), "write Carts2.lst", "write Carts1.lst",
                          MatchesRegex("copy VOR.*\\.TMP"), "rename to ORV00005.TMP",
                          MatchesRegex("remove VOR.*\\.TMP"), "write Carts1.lst"));
}

TEST_F(SwapCartTest, WhatCannotBeCopiedBackAcrossDirectoriesStaysThere) {
  SplitWall();
  GiveBoth({}, {}, 1005);
  const ScopedFileFault fault(FileOperation::BeginCopy, EAGAIN, 1, 1, "/VOR");
  std::string left;
  ExpectQuestion(5, 1005, BoxAnswer::No, [&] {
    left = LeftBehindIn(far_.path()).at(0);
    ExpectTold("copying the file : " + left, kOutOfMemory);
  });
  EXPECT_EQ(Move(5, 1005), 0);
  EXPECT_THAT(FilesIn(far_.path()), ElementsAre(left));
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  ExpectRecordsSwapped(1005);
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(SwapCartTest, SourceThatCannotBeDeletedEndsASwapAcrossDirectories) {
  SplitWall();
  GiveBoth({"TXT"}, {}, 1005);
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00005.TXT");
  ExpectQuestion(5, 1005, BoxAnswer::No);
  ExpectTold("deleting a cart file: ORV00005.TXT", kPermissionDenied);
  EXPECT_EQ(Move(5, 1005), kPermissionDenied);
  EXPECT_EQ(RecordBytes(1005), Five());
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_THAT(LeftBehindIn(far_.path()), SizeIs(1));
}

}  // namespace
}  // namespace vorda
