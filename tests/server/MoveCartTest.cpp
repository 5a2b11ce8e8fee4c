// Moving a whole cart to a number that is free, or over one that is not.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/FileFault.h"
#include "support/FileSteps.h"
#include "support/MoveFixture.h"

namespace vorda {
namespace {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;
using platform::FileOperation;
using platform::Pointer;
using platform::ScopedFileFault;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

class MoveCartTest : public test::MoveFixture {
 protected:
  void ExpectOneEmptyFileLeftIn(const std::string& directory) {
    const Names left = LeftBehindIn(directory);
    ASSERT_THAT(left, ElementsAre(MatchesRegex("VOR[0-9A-F]{8}\\.TMP")));
    EXPECT_EQ(std::filesystem::file_size(directory + "/" + left[0]), 0U);
  }
};

TEST_F(MoveCartTest, ToItselfOrFromOrToCart0IsRefusedSilently) {
  GiveCart(5, "Five", 30);
  const test::FileSteps steps;
  EXPECT_EQ(Move(5, 5), -1);
  EXPECT_EQ(Move(5, 0), -1);
  EXPECT_EQ(Move(0, 5), -1);
  EXPECT_THAT(steps.Taken(), IsEmpty());
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
}

TEST_F(MoveCartTest, WhoMayNotMoveTheSourceIsTold) {
  GiveCart(5, "Five", 30);
  InstallRule([](std::int32_t) { return false; });
  boxes_.Expect("You do not have permission to move this cart");
  EXPECT_EQ(Move(5, 6), -1);
  EXPECT_EQ(boxes_.Last().buttons, BoxButtons::Ok);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
}

TEST_F(MoveCartTest, WhoMayNotAlterTheDestinationIsTold) {
  GiveCart(5, "Five", 30);
  InstallRule([](std::int32_t cart) { return cart != 6; });
  boxes_.Expect("You do not have permission to alter the destination cart");
  EXPECT_EQ(Move(5, 6), -1);
  EXPECT_EQ(boxes_.Last().buttons, BoxButtons::Ok);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
}

TEST_F(MoveCartTest, FilesTakeTheNewNumberAndKeepTheCaseOfTheirExtensions) {
  GiveCart(5, "Five", 30, {"WAV", "Txt", "flk"});
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.Txt", "ORV00006.WAV", "ORV00006.flk"));
  EXPECT_EQ(Content(6, "WAV"), "cart 5 WAV");
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(MoveCartTest, EveryMoveLeavesAnEmptyFileInTheDestinationsDirectory) {
  SplitWall();
  GiveCart(5, "Five", 30);
  Move(5, 1005);
  ExpectOneEmptyFileLeftIn(far_.path());
  EXPECT_THAT(LeftBehindIn(wall_.path()), IsEmpty());
  Move(1005, 6);
  ExpectOneEmptyFileLeftIn(wall_.path());
  Move(6, 7);
  EXPECT_THAT(LeftBehindIn(wall_.path()), SizeIs(2));
}

TEST_F(MoveCartTest, WholeRecordIsCarriedByteForByte) {
  SplitWall();
  const std::string record = MarkedRecord("Five", 30, 'x');
  SetRecordBytes(5, record);
  Move(5, 6);
  EXPECT_EQ(RecordBytes(6), record);
  Move(6, 1006);
  EXPECT_EQ(RecordBytes(1006), record);
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
}

TEST_F(MoveCartTest, WithinADirectoryFilesAreRenamedThenTheSourceIsEmptiedThenTheRecordWritten) {
  GiveCart(5, "Five", 30, {"TXT", "WAV"});
  const test::FileSteps steps;
  Move(5, 6);
  EXPECT_THAT(steps.Taken(), ElementsAre(MatchesRegex("remove VOR.*\\.TMP"), "rename to ORV00006.TXT",
                                         "rename to ORV00006.WAV", "write Carts1.lst", "write Carts1.lst"));
}

TEST_F(MoveCartTest, AcrossDirectoriesTheCartIsCopiedThenDeleted) {
  SplitWall();
  GiveCart(5, "Five", 30, {"txt", "wav"});
  const test::FileSteps steps;
  EXPECT_EQ(Move(5, 1005), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), IsEmpty());
  EXPECT_THAT(CartFilesIn(far_.path()), ElementsAre("ORV01005.TXT", "ORV01005.WAV"));
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_EQ(RecordBytes(1005), test::FullCartRecord("Five", 30));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
  EXPECT_THAT(steps.Taken(),
              ElementsAre(MatchesRegex("remove VOR.*\\.TMP"), "copy ORV00005.txt", "rename to ORV01005.TXT",
                          "copy ORV00005.wav", "rename to ORV01005.WAV", "write Carts2.lst",
                          "remove ORV00005.wav", "write Carts1.lst", "remove ORV00005.txt"));
}

TEST_F(MoveCartTest, DirectoriesAreOneOnlyWhenTheirTextsAre) {
  MovePart(2, wall_ / ".");
  GiveCart(5, "Five", 30, {"wav"});
  Move(5, 1005);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV01005.WAV"));
}

TEST_F(MoveCartTest, TheQuestionComesBecauseOfTheRecordAndBehindTheTemporaryFile) {
  GiveCart(5, "Five", 30);
  GiveCart(6, "Six", 10, {});
  ExpectQuestion(5, 6, BoxAnswer::Cancel, [this] {
    ExpectOneEmptyFileLeftIn(wall_.path());
    EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
  });
  EXPECT_EQ(Move(5, 6), -1);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Question);
  EXPECT_EQ(boxes_.Last().buttons, BoxButtons::YesNoCancel);
  EXPECT_EQ(boxes_.Last().defaultAnswer, BoxAnswer::No);
  EXPECT_EQ(boxes_.Last().title, "");
}

TEST_F(MoveCartTest, CancelChangesNothingButLeavesTheTemporaryFile) {
  GiveCart(5, "Five", 30);
  GiveCart(6, "Six", 10);
  ExpectQuestion(5, 6, BoxAnswer::Cancel);
  EXPECT_EQ(Move(5, 6), -1);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00005.WAV", "ORV00006.WAV"));
  EXPECT_EQ(Content(6, "WAV"), "cart 6 WAV");
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Six", 10));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
  ExpectOneEmptyFileLeftIn(wall_.path());
}

TEST_F(MoveCartTest, YesDeletesTheDestinationFirst) {
  GiveCart(5, "Five", 30, {"WAV"});
  GiveCart(6, "Six", 10, {"TXT", "WAV"});
  ExpectQuestion(5, 6, BoxAnswer::Yes);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
  EXPECT_EQ(Content(6, "WAV"), "cart 5 WAV");
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
  ExpectOneEmptyFileLeftIn(wall_.path());
}

TEST_F(MoveCartTest, YesDeletesTheAudioThatTheDestinationLinks) {
  AllowLinks();
  GiveCart(5, "Five", 30);
  GiveCart(6, "Six", 10, {});
  test::WriteWholeFile(far_ / "six.wav", "six");
  test::WriteWholeFile(CartFile(6, "FLK"), far_ / "six.wav");
  ExpectQuestion(5, 6, BoxAnswer::Yes);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(FilesIn(far_.path()), IsEmpty());
}

TEST_F(MoveCartTest, DestinationThatCannotBeDeletedEndsItSilently) {
  GiveCart(5, "Five", 30);
  GiveCart(6, "Six", 10, {"TXT", "WAV"});
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00006.TXT");
  ExpectQuestion(5, 6, BoxAnswer::Yes);
  EXPECT_EQ(Move(5, 6), kPermissionDenied);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00005.WAV", "ORV00006.TXT"));
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(MoveCartTest, FileThatCannotBeRenamedIsToldAndGoesWithTheSource) {
  GiveCart(5, "Five", 30, {"FLK", "TXT", "WAV"});
  const ScopedFileFault fault(FileOperation::Rename, EACCES, 1, 1, "ORV00006.TXT");
  ExpectTold("renaming the file : ORV00005.TXT", kPermissionDenied);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.FLK"));
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(MoveCartTest, HourglassComesBackBehindAReport) {
  GiveCart(5, "Five", 30, {"TXT"});
  const ScopedFileFault fault(FileOperation::Rename, EACCES, 1, 1, "ORV00006.TXT");
  std::vector<Pointer> shown;
  const platform::ScopedHook<void(Pointer)> hook(platform::PointerHook(),
                                                 [&](Pointer pointer) { shown.push_back(pointer); });
  ExpectTold("renaming the file : ORV00005.TXT", kPermissionDenied);
  Move(5, 6);
  EXPECT_THAT(shown, ElementsAre(Pointer::Hourglass, Pointer::Default, Pointer::Hourglass, Pointer::Default));
}

TEST_F(MoveCartTest, SourceThatCannotBeEmptiedIsNotLookedAt) {
  GiveCart(5, "Five", 30, {"TXT"});
  const ScopedFileFault renaming(FileOperation::Rename, EACCES, 1, 1, "ORV00006.TXT");
  const ScopedFileFault deleting(FileOperation::Remove, EACCES, 1, 1, "ORV00005.TXT");
  ExpectTold("renaming the file : ORV00005.TXT", kPermissionDenied);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00005.TXT"));
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

// The audio of the source is lost here: it can't take its new name, and then goes with its old one.
TEST_F(MoveCartTest, StrayFileOfAnEmptyDestinationIsInTheWayWithinADirectory) {
  GiveCart(5, "Five", 30);
  GiveFile(6, "WAV");
  ExpectTold("renaming the file : ORV00005.WAV", kFileAlreadyExists);
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
  EXPECT_EQ(Content(6, "WAV"), "cart 6 WAV");
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(MoveCartTest, StrayFileOfAnEmptyDestinationGoesSilentlyAcrossDirectories) {
  SplitWall();
  GiveCart(5, "Five", 30);
  GiveFile(1005, "TXT");
  EXPECT_EQ(Move(5, 1005), 0);
  EXPECT_THAT(CartFilesIn(far_.path()), ElementsAre("ORV01005.WAV"));
}

TEST_F(MoveCartTest, EmptySourceGivesAnEmptyDestination) {
  GiveFile(5, "WAV");
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
}

TEST_F(MoveCartTest, SourceThatCannotBeDeletedAcrossDirectoriesEndsItWithItsError) {
  SplitWall();
  GiveCart(5, "Five", 30, {"TXT", "WAV"});
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00005.TXT");
  ExpectTold("deleting a cart file: ORV00005.TXT", kPermissionDenied);
  EXPECT_EQ(Move(5, 1005), kPermissionDenied);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00005.TXT"));
  EXPECT_THAT(CartFilesIn(far_.path()), ElementsAre("ORV01005.TXT", "ORV01005.WAV"));
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_EQ(RecordBytes(1005), test::FullCartRecord("Five", 30));
}

TEST_F(MoveCartTest, AudioThatCannotBeDeletedAcrossDirectoriesKeepsTheSource) {
  SplitWall();
  GiveCart(5, "Five", 30);
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00005.WAV");
  ExpectTold("deleting the audio file for cart 5", kPermissionDenied);
  EXPECT_EQ(Move(5, 1005), kPermissionDenied);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
  EXPECT_EQ(RecordBytes(1005), test::FullCartRecord("Five", 30));
}

// The files are gone then: the copy's failure is no reason to keep the source.
TEST_F(MoveCartTest, FailedCopyAcrossDirectoriesDoesNotSaveTheSource) {
  SplitWall();
  GiveCart(5, "Five", 30);
  const ScopedFileFault fault(FileOperation::BeginCopy, EAGAIN);
  ExpectTold("clearing a destination cart file: ORV00005.WAV", kOutOfMemory);
  EXPECT_EQ(Move(5, 1005), 0);
  EXPECT_THAT(CartFilesIn(wall_.path()), IsEmpty());
  EXPECT_THAT(CartFilesIn(far_.path()), IsEmpty());
  EXPECT_EQ(RecordBytes(1005), test::FullCartRecord("Five", 30));
}

// The right is taken away while the move goes on.
TEST_F(MoveCartTest, RefusedCopyEndsItWithTheHourglassLeft) {
  SplitWall();
  GiveCart(5, "Five", 30);
  int asked = 0;
  InstallRule([&asked](std::int32_t) { return ++asked < 3; });
  boxes_.Expect("You do not have permission to alter the destination cart");
  EXPECT_EQ(Move(5, 1005), -1);
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Hourglass);
  EXPECT_THAT(CartFilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
}

TEST_F(MoveCartTest, SharedAudioOfALinkIsDeletedAcrossDirectories) {
  SplitWall();
  AllowLinks();
  GiveCart(5, "Five", 30, {});
  test::WriteWholeFile(home_ / "shared.wav", "shared");
  test::WriteWholeFile(CartFile(5, "FLK"), home_ / "shared.wav");
  EXPECT_EQ(Move(5, 1005), 0);
  EXPECT_FALSE(std::filesystem::exists(home_ / "shared.wav"));
  EXPECT_EQ(Content(1005, "FLK"), home_ / "shared.wav");
  EXPECT_THAT(CartFilesIn(wall_.path()), IsEmpty());
}

TEST_F(MoveCartTest, SharedAudioOfALinkStaysWithinADirectory) {
  AllowLinks();
  GiveCart(5, "Five", 30, {});
  test::WriteWholeFile(home_ / "shared.wav", "shared");
  test::WriteWholeFile(CartFile(5, "FLK"), home_ / "shared.wav");
  EXPECT_EQ(Move(5, 6), 0);
  EXPECT_EQ(test::ReadWholeFile(home_ / "shared.wav"), "shared");
  EXPECT_EQ(CartAudioFileName(6), home_ / "shared.wav");
}

}  // namespace
}  // namespace vorda
