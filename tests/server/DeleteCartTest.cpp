// Deleting a whole cart: its files, its record and the audio that a link names.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "platform/FileFault.h"
#include "support/FileSteps.h"
#include "support/WallFixture.h"

namespace vorda {
namespace {

using platform::BoxIcon;
using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kPermissionDenied = 70;

class DeleteCartTest : public test::WallFixture {
 protected:
  // The audio that cart 5's link names, in a directory that is none of the wall's.
  std::string LinkCart5() {
    AllowLinks();
    const std::string target = far_ / "shared.wav";
    test::WriteWholeFile(target, "shared");
    test::WriteWholeFile(CartFile(5, "FLK"), target + "\r\nsecond line\r\n");
    return target;
  }
  void ExpectTold(const std::string& what, int error) { boxes_.Expect(test::ProblemText(what, error)); }
};

TEST_F(DeleteCartTest, FilesGoAndTheRecordIsEmptied) {
  GiveCart(5, "Five", 30, {"WAV", "TXT", "FLK", "XYZ"});
  GiveCart(6, "Six", 10);
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00006.WAV"));
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Six", 10));
}

TEST_F(DeleteCartTest, EmptiedRecordEndsItsPlayAtMinusOne) {
  GiveCart(5, "Five", 30);
  EXPECT_EQ(RecordBytes(4).substr(test::kPlayEndAt, 4), std::string(4, '\0'));
  DeleteCart(5, true, false);
  EXPECT_EQ(RecordBytes(5).substr(test::kPlayEndAt, 4), std::string("\0\0\x80\xBF", 4));
}

TEST_F(DeleteCartTest, BlankRecordOfTheRunStaysAsItWas) {
  const CartRecord before = PackCartInfo(gBlankCartInfo);
  GiveCart(5, "Five", 30);
  DeleteCart(5, true, false);
  EXPECT_EQ(PackCartInfo(gBlankCartInfo), before);
}

TEST_F(DeleteCartTest, WhoMayNotIsToldAndChangesNothing) {
  GiveCart(5, "Five", 30);
  InstallRule([](std::int32_t cart) { return cart != 5; });
  boxes_.Expect("You do not have permission to delete this cart");
  EXPECT_EQ(DeleteCart(5, true, false), -1);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_EQ(boxes_.Last().buttons, platform::BoxButtons::Ok);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
}

TEST_F(DeleteCartTest, OwnAudioGoesEvenWhenAudioIsToBeSpared) {
  GiveCart(5, "Five", 30);
  EXPECT_EQ(DeleteCart(5, false, false), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

TEST_F(DeleteCartTest, LinkedAudioGoesWhereverItLies) {
  GiveCart(5, "Five", 30);
  const std::string target = LinkCart5();
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_FALSE(std::filesystem::exists(target));
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

TEST_F(DeleteCartTest, LinkedAudioIsSparedWhenAudioIs) {
  GiveCart(5, "Five", 30);
  const std::string target = LinkCart5();
  EXPECT_EQ(DeleteCart(5, false, false), 0);
  EXPECT_EQ(test::ReadWholeFile(target), "shared");
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

TEST_F(DeleteCartTest, LinkIsAFileLikeAnyOtherWhereLinkingIsNotAllowed) {
  GiveCart(5, "Five", 30);
  const std::string target = LinkCart5();
  gAudioWallSettings.AllowAudioFileLinking = 0;
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_EQ(test::ReadWholeFile(target), "shared");
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

TEST_F(DeleteCartTest, MissingAudioIsNoFault) {
  GiveCart(5, "Five", 30, {"TXT"});
  std::filesystem::remove(LinkCart5());
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
}

TEST_F(DeleteCartTest, AudioGoesFirstThenTheRecordThenTheFiles) {
  GiveCart(5, "Five", 30, {"WAV", "TXT", "FLK"});
  const test::FileSteps steps;
  DeleteCart(5, true, false);
  EXPECT_THAT(steps.Taken(), ElementsAre("remove ORV00005.WAV", "write Carts1.lst", "remove ORV00005.FLK",
                                         "remove ORV00005.TXT"));
}

TEST_F(DeleteCartTest, AudioThatStaysKeepsRecordAndFiles) {
  GiveCart(5, "Five", 30, {"FLK", "WAV"});
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00005.WAV");
  ExpectTold("deleting the audio file for cart 5", kPermissionDenied);
  EXPECT_EQ(DeleteCart(5, true, false), kPermissionDenied);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_EQ(boxes_.Last().title, "");
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.FLK", "ORV00005.WAV"));
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
}

TEST_F(DeleteCartTest, SilenceDropsTheReportOfAudioThatStaysAndNotTheEnd) {
  GiveCart(5, "Five", 30, {"FLK", "WAV"});
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00005.WAV");
  EXPECT_EQ(DeleteCart(5, true, true), kPermissionDenied);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.FLK", "ORV00005.WAV"));
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
}

TEST_F(DeleteCartTest, FileThatStaysEndsItWithTheRecordEmptied) {
  GiveCart(5, "Five", 30, {"FLK", "TXT", "WAV", "XYZ"});
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00005.TXT");
  ExpectTold("deleting a cart file: ORV00005.TXT", kPermissionDenied);
  EXPECT_EQ(DeleteCart(5, false, false), kPermissionDenied);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TXT", "ORV00005.WAV", "ORV00005.XYZ"));
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
}

TEST_F(DeleteCartTest, SilenceDropsTheReportOfAFileThatStaysAndNotTheEnd) {
  GiveCart(5, "Five", 30, {"FLK", "TXT", "WAV", "XYZ"});
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00005.TXT");
  EXPECT_EQ(DeleteCart(5, false, true), kPermissionDenied);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TXT", "ORV00005.WAV", "ORV00005.XYZ"));
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
}

// Another station adds a file while the first one is being deleted.
TEST_F(DeleteCartTest, DirectoryIsAskedAgainAfterEachFile) {
  GiveCart(5, "Five", 30, {"FLK", "TXT"});
  const ScopedFileFault station([](FileOperation operation, std::string_view path) {
    if (operation == FileOperation::Remove && path.ends_with("ORV00005.TXT")) GiveFile(5, "AAA");
    return 0;
  });
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

TEST_F(DeleteCartTest, OddFilesOfTheCartGoToo) {
  GiveCart(5, "Five", 30, {"TMP", "A.B", "", "VERY LONG EXTENSION"});
  for (const char* name : {"orv00005.wav", "Orv00005.Wav", "ORV00005.WAV"})
    test::WriteWholeFile(wall_ / name, name);
  std::filesystem::create_symlink(wall_ / "nowhere", CartFile(5, "LNK"));
  test::WriteWholeFile(far_ / "kept", "kept");
  std::filesystem::create_symlink(far_ / "kept", CartFile(5, "SYM"));
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(test::ReadWholeFile(far_ / "kept"), "kept");
}

TEST_F(DeleteCartTest, WhatOnlyResemblesACartFileStays) {
  GiveCart(5, "Five", 30);
  for (const char* name : {"ORV00005", "ORV000051.WAV", "XORV00005.WAV", "ORV0005.WAV", "ORV00015.WAV"})
    test::WriteWholeFile(wall_ / name, name);
  std::filesystem::create_directory(CartFile(5, "DIR"));
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005", "ORV00005.DIR", "ORV000051.WAV", "ORV00015.WAV",
                                                 "ORV0005.WAV", "XORV00005.WAV"));
}

TEST_F(DeleteCartTest, IndividualFileGoesWithTheRecordAndWithoutAWord) {
  UseIndividualFiles();
  GiveCart(5, "Five", 30, {"WAV"});
  test::WriteWholeFile(CartFile(5, "LST"), test::FullCartRecord("Five", 30));
  const test::FileSteps steps;
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_THAT(steps.Taken(), ElementsAre("remove ORV00005.WAV", "write Carts1.lst", "remove ORV00005.LST"));
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

TEST_F(DeleteCartTest, MissingIndividualFileIsToldEvenBySilentDeletes) {
  UseIndividualFiles();
  GiveCart(5, "Five", 30, {"WAV"});
  constexpr int kFileNotFound = 53;
  ExpectTold("removing the information file for cart 5", kFileNotFound);
  EXPECT_EQ(DeleteCart(5, true, true), 0);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

TEST_F(DeleteCartTest, ListThatIsNotKeptStaysAsItIs) {
  UseIndividualFiles();
  gAudioWallSettings.MaintainLegacyCartList = 0;
  GiveCart(5, "Five", 30, {"LST"});
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

TEST_F(DeleteCartTest, FilesGoThoughThePartIsNotConnected) {
  GiveFile(3005, "WAV");
  EXPECT_EQ(DeleteCart(3005, true, false), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(ListFileOf(3005)));
}

TEST_F(DeleteCartTest, FailedRecordDoesNotKeepTheFiles) {
  GiveCart(5, "Five", 30);
  const ScopedFileFault fault(FileOperation::Write, EIO, 1, 1, "Carts1.lst");
  EXPECT_EQ(DeleteCart(5, true, false), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
}

// A name that such a cart's empty stem would make, in the directories in which it would be looked for.
TEST_F(DeleteCartTest, NumbersBesideTheWallTouchNothing) {
  const std::string here = std::filesystem::current_path() / ".WAV";
  test::WriteWholeFile(here, "here");
  for (const char* name : {".WAV", ".TXT", "ORV00000.WAV", "ORV10000.WAV", "ORV12345.WAV"})
    test::WriteWholeFile(wall_ / name, name);
  const Names before = FilesIn(wall_.path());
  const std::string list = test::ReadWholeFile(ListFileOf(5));
  for (const std::int32_t cart : {0, -1, 10000, 12345}) EXPECT_EQ(DeleteCart(cart, true, false), 0) << cart;
  EXPECT_EQ(test::ReadWholeFile(here), "here");
  EXPECT_EQ(FilesIn(wall_.path()), before);
  EXPECT_EQ(test::ReadWholeFile(ListFileOf(5)), list);
  std::filesystem::remove(here);
}

TEST_F(DeleteCartTest, LastCartOfTheWallIsOneLikeAnyOther) {
  Connect(10);
  GiveCart(9999, "Last", 5);
  EXPECT_EQ(DeleteCart(9999, true, false), 0);
  EXPECT_EQ(RecordBytes(9999), test::EmptiedCartRecord());
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
}

}  // namespace
}  // namespace vorda
