// Copying a whole cart: what is asked, what is copied, and what goes on when a step fails.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/FileFault.h"
#include "platform/ShellOperation.h"
#include "support/FileSteps.h"
#include "support/WallFixture.h"

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

constexpr int kOutOfMemory = 7;
constexpr int kPermissionDenied = 70;

class CopyCartTest : public test::WallFixture {
 protected:
  static std::int32_t Copy(std::int32_t from, std::int32_t to, bool copyAudio = true, bool noPrompt = false) {
    return CopyCart(from, to, copyAudio, noPrompt, nullptr);
  }
  static std::string Question(std::int32_t to) {
    return "There is already something in cart " + std::to_string(to) + ", Do you want to overwrite it?";
  }
  std::string CannotCopy(const std::string& source, const std::string& target, const std::string& why) {
    return "Cannot copy " + source + "\nto " + target + "\n\n" + why;
  }
  std::string ReplaceQuestion(const std::string& target) {
    return "There is a file already:\n" + target + "\nDo you want to replace it?";
  }
  // A report, behind which the pointer is no hourglass.
  void ExpectTold(const std::string& what, int error) {
    boxes_.Expect(test::ProblemText(what, error), BoxAnswer::Ok,
                  [] { EXPECT_EQ(platform::CurrentPointer(), Pointer::Default); });
  }
  static Names ContentsOf(std::int32_t cart, const std::vector<std::string>& extensions) {
    Names contents;
    for (const std::string& extension : extensions)
      contents.push_back(test::ReadWholeFile(CartFile(cart, extension)));
    return contents;
  }
};

TEST_F(CopyCartTest, FilesAndRecordStandUnderBothNumbers) {
  GiveCart(5, "Five", 30, {"FLK", "TMP", "TXT", "WAV"});
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()),
              ElementsAre("ORV00005.FLK", "ORV00005.TMP", "ORV00005.TXT", "ORV00005.WAV", "ORV00006.FLK",
                          "ORV00006.TMP", "ORV00006.TXT", "ORV00006.WAV"));
  EXPECT_THAT(ContentsOf(6, {"FLK", "TXT", "WAV"}), ElementsAre("cart 5 FLK", "cart 5 TXT", "cart 5 WAV"));
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(CopyCartTest, ExtensionsBecomeCapitals) {
  GiveCart(5, "Five", 30, {"wav", "Txt", "A.b"});
  EXPECT_EQ(Copy(5, 1005), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.A.b", "ORV00005.Txt", "ORV00005.wav", "ORV01005.B",
                                                 "ORV01005.TXT", "ORV01005.WAV"));
  EXPECT_EQ(RecordBytes(1005), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, AudioIsLeftOutWhenItIsNotWanted) {
  GiveCart(5, "Five", 30, {"TXT", "WAV", "wav"});
  EXPECT_EQ(Copy(5, 6, false), 0);
  EXPECT_EQ(ContentsOf(6, {"TXT", "WAV"}), Names({"cart 5 TXT", ""}));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, ProgressIsTitledByWhatIsCopied) {
  GiveCart(5, "Five", 30, {"FLK", "wav"});
  std::vector<std::string> seen;
  const platform::ScopedHook<void(platform::FileCopy&, const platform::ShellOperation&)> hook(
      platform::CopyProgressHook(), [&](platform::FileCopy& copy, const platform::ShellOperation& operation) {
        EXPECT_FALSE(operation.move);
        EXPECT_TRUE(operation.confirm);
        EXPECT_EQ(platform::CurrentPointer(), Pointer::Hourglass);
        seen.push_back(operation.progressTitle + ": " + operation.source + " to " + operation.destination);
        copy.Result();
      });
  Copy(5, 6);
  EXPECT_THAT(seen,
              ElementsAre("Copying Cart Files: " + wall_ / "ORV00005.FLK to " + wall_ / "ORV00006.FLK",
                          "Copying Cart Audio: " + wall_ / "ORV00005.wav to " + wall_ / "ORV00006.WAV"));
}

TEST_F(CopyCartTest, WholeRecordIsCarriedByteForByte) {
  GiveCart(5, "Five", 30);
  std::string record = test::FullCartRecord("Five", 30);
  for (std::size_t place = 68; place < test::kMarkStartAt; ++place)
    record[place] = static_cast<char>(place * 7);
  // Numbers that are none, quiet and signalling, keep their bytes.
  record.replace(212, 8, "\x01\x02\x03\x04\x05\x06\xF0\x7F");
  record.replace(220, 8, "\x01\x02\x03\x04\x05\x06\xF8\xFF");
  record.replace(test::kMarkStartAt, 4, "\x01\x02\x80\x7F");
  record.replace(test::kMarkEndAt, 4, "\x01\x02\xC0\xFF");
  record.replace(290, 10, "reserved.\xFF");
  SetRecordBytes(5, record);
  Copy(5, 1005);
  EXPECT_EQ(RecordBytes(1005), record);
  EXPECT_EQ(RecordBytes(5), record);
}

TEST_F(CopyCartTest, WhoMayNotAlterTheDestinationIsTold) {
  GiveCart(5, "Five", 30);
  InstallRule([](std::int32_t cart) { return cart != 6; });
  boxes_.Expect("You do not have permission to alter the destination cart");
  EXPECT_EQ(Copy(5, 6), -1);
  EXPECT_EQ(boxes_.Last().buttons, BoxButtons::Ok);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
  EXPECT_EQ(RecordBytes(6), test::BlankCartRecord());
}

TEST_F(CopyCartTest, SourceNeedsNoPermission) {
  GiveCart(5, "Five", 30);
  InstallRule([](std::int32_t cart) { return cart != 5; });
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, FilesOfTheDestinationAreAskedAboutOnce) {
  GiveCart(5, "Five", 30, {"WAV"});
  GiveCart(6, "Six", 10, {"TXT", "WAV", "XYZ"});
  boxes_.Expect(Question(6), BoxAnswer::Yes, [] { EXPECT_EQ(platform::CurrentPointer(), Pointer::Default); });
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Question);
  EXPECT_EQ(boxes_.Last().buttons, BoxButtons::YesNo);
  EXPECT_EQ(boxes_.Last().defaultAnswer, BoxAnswer::No);
  EXPECT_EQ(boxes_.Last().title, "");
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV", "ORV00006.WAV"));
  EXPECT_EQ(test::ReadWholeFile(CartFile(6, "WAV")), "cart 5 WAV");
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, NoLeavesAllAsItWas) {
  GiveCart(5, "Five", 30, {"TXT"});
  GiveCart(6, "Six", 10, {"WAV"});
  boxes_.Expect(Question(6), BoxAnswer::No);
  EXPECT_EQ(Copy(5, 6), -1);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TXT", "ORV00006.WAV"));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Six", 10));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(CopyCartTest, WithoutPromptTheDestinationGoesUnasked) {
  GiveCart(5, "Five", 30, {"WAV"});
  GiveCart(6, "Six", 10, {"TXT", "WAV"});
  EXPECT_EQ(Copy(5, 6, true, true), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV", "ORV00006.WAV"));
}

TEST_F(CopyCartTest, RecordWithoutFilesIsOverwrittenUnasked) {
  GiveCart(5, "Five", 30);
  GiveCart(6, "Six", 10, {});
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, StrayFileUnderAnEmptyRecordIsAskedAbout) {
  GiveCart(5, "Five", 30);
  GiveFile(6, "TMP");
  boxes_.Expect(Question(6), BoxAnswer::Yes);
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV", "ORV00006.WAV"));
}

TEST_F(CopyCartTest, OnlyCartFilesAreAskedAboutAndCleared) {
  GiveCart(5, "Five", 30);
  std::filesystem::create_directory(CartFile(6, "DIR"));
  test::WriteWholeFile(wall_ / "ORV00006", "no point");
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV", "ORV00006", "ORV00006.DIR", "ORV00006.WAV"));
}

TEST_F(CopyCartTest, DestinationIsClearedThenFilesAreCopiedThenTheRecordIsWritten) {
  GiveCart(5, "Five", 30, {"WAV", "TXT"});
  GiveCart(6, "Six", 10, {"WAV", "FLK"});
  const test::FileSteps steps;
  Copy(5, 6, true, true);
  EXPECT_THAT(steps.Taken(), ElementsAre("remove ORV00006.FLK", "remove ORV00006.WAV", "copy ORV00005.TXT",
                                         "rename to ORV00006.TXT", "copy ORV00005.WAV",
                                         "rename to ORV00006.WAV", "write Carts1.lst"));
}

TEST_F(CopyCartTest, DestinationThatCannotBeClearedIsToldAndTheCopyGoesOn) {
  GiveCart(5, "Five", 30, {"WAV"});
  GiveCart(6, "Six", 10, {"AAA", "TXT", "XYZ"});
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00006.TXT");
  std::vector<Pointer> whileCopying;
  const platform::ScopedHook<void(platform::FileCopy&, const platform::ShellOperation&)> hook(
      platform::CopyProgressHook(), [&](platform::FileCopy& copy, const platform::ShellOperation&) {
        whileCopying.push_back(platform::CurrentPointer());
        copy.Result();
      });
  ExpectTold("clearing a destination cart file: ORV00006.TXT", kPermissionDenied);
  EXPECT_EQ(Copy(5, 6, true, true), 0);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_THAT(FilesIn(wall_.path()),
              ElementsAre("ORV00005.WAV", "ORV00006.TXT", "ORV00006.WAV", "ORV00006.XYZ"));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
  EXPECT_THAT(whileCopying, ElementsAre(Pointer::Hourglass));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(CopyCartTest, FileThatCouldNotBeClearedIsReplacedOnlyWhenTheOperatorSaysSo) {
  GiveCart(5, "Five", 30, {"TXT", "WAV"});
  GiveCart(6, "Six", 10, {"TXT", "WAV"});
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00006.TXT");
  ExpectTold("clearing a destination cart file: ORV00006.TXT", kPermissionDenied);
  boxes_.Expect(ReplaceQuestion(CartFile(6, "TXT")), BoxAnswer::No);
  boxes_.Expect(ReplaceQuestion(CartFile(6, "WAV")), BoxAnswer::Yes);
  EXPECT_EQ(Copy(5, 6, true, true), 0);
  EXPECT_THAT(ContentsOf(6, {"TXT", "WAV"}), ElementsAre("cart 6 TXT", "cart 5 WAV"));
}

TEST_F(CopyCartTest, CopyThatCannotBeginEndsTheCopyingAndTheRecordIsWritten) {
  GiveCart(5, "Five", 30, {"FLK", "TXT", "WAV"});
  const ScopedFileFault fault(FileOperation::BeginCopy, EAGAIN, 1, 1, "ORV00005.TXT");
  ExpectTold("clearing a destination cart file: ORV00005.TXT", kOutOfMemory);
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_THAT(ContentsOf(6, {"FLK", "TXT", "WAV"}), ElementsAre("cart 5 FLK", "", ""));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

TEST_F(CopyCartTest, BothLoopsMayFailInOneCopy) {
  GiveCart(5, "Five", 30, {"WAV"});
  GiveCart(6, "Six", 10, {"TXT"});
  const ScopedFileFault clearing(FileOperation::Remove, EACCES, 1, 1, "ORV00006.TXT");
  const ScopedFileFault copying(FileOperation::BeginCopy, EAGAIN, 1, 1, "ORV00005.WAV");
  ExpectTold("clearing a destination cart file: ORV00006.TXT", kPermissionDenied);
  ExpectTold("clearing a destination cart file: ORV00005.WAV", kOutOfMemory);
  EXPECT_EQ(Copy(5, 6, true, true), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV", "ORV00006.TXT"));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, WhatTheShellTellsItselfDoesNotStopTheOtherFiles) {
  GiveCart(5, "Five", 30, {"TXT", "WAV"});
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, "ORV00005.TXT");
  boxes_.Expect(CannotCopy(CartFile(5, "TXT"), CartFile(6, "TXT"), "Permission denied"));
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_EQ(boxes_.Last().title, "Copying Cart Files");
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.TXT", "ORV00005.WAV", "ORV00006.WAV"));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, FullDiskLeavesNoHalfFileAndTheRecordIsWritten) {
  GiveCart(5, "Five", 30, {"WAV"});
  const ScopedFileFault fault(FileOperation::Sync, ENOSPC);
  boxes_.Expect(CannotCopy(CartFile(5, "WAV"), CartFile(6, "WAV"), "Disk full"));
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV"));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, LinkToNowhereIsToldByTheShell) {
  GiveCart(5, "Five", 30, {"WAV"});
  std::filesystem::create_symlink(wall_ / "nowhere", CartFile(5, "LNK"));
  boxes_.Expect(CannotCopy(CartFile(5, "LNK"), CartFile(6, "LNK"), "File not found"));
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.LNK", "ORV00005.WAV", "ORV00006.WAV"));
}

TEST_F(CopyCartTest, NamesThatDifferInCaseMeetInOneCopy) {
  GiveCart(5, "Five", 30, {"WAV", "wav"});
  boxes_.Expect(ReplaceQuestion(CartFile(6, "WAV")), BoxAnswer::No);
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_EQ(test::ReadWholeFile(CartFile(6, "WAV")), "cart 5 WAV");
  EXPECT_FALSE(std::filesystem::exists(CartFile(6, "wav")));
}

TEST_F(CopyCartTest, LinkIsCopiedAndNoAudioThatIsLinkedIsTouched) {
  AllowLinks();
  GiveCart(5, "Five", 30, {});
  GiveCart(6, "Six", 10, {});
  for (const char* name : {"five.wav", "six.wav"}) test::WriteWholeFile(far_ / name, name);
  test::WriteWholeFile(CartFile(5, "FLK"), far_ / "five.wav");
  test::WriteWholeFile(CartFile(6, "FLK"), far_ / "six.wav");
  EXPECT_EQ(Copy(5, 6, true, true), 0);
  EXPECT_EQ(test::ReadWholeFile(CartFile(6, "FLK")), far_ / "five.wav");
  EXPECT_EQ(test::JoinedNames(far_.path()), "five.wav six.wav");
}

TEST_F(CopyCartTest, CopyOntoItselfDeletesItsFiles) {
  GiveCart(5, "Five", 30, {"TXT", "WAV"});
  boxes_.Expect(Question(5), BoxAnswer::Yes);
  EXPECT_EQ(Copy(5, 5), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(RecordBytes(5), test::FullCartRecord("Five", 30));
}

TEST_F(CopyCartTest, EmptySourceEmptiesTheDestination) {
  GiveCart(6, "Six", 10, {"WAV"});
  EXPECT_EQ(Copy(5, 6, true, true), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
}

TEST_F(CopyCartTest, IndividualFileHoldsTheRecordOfTheSource) {
  UseIndividualFiles();
  GiveCart(5, "In the list", 30, {"WAV"});
  test::WriteWholeFile(CartFile(5, "LST"), test::FullCartRecord("In the file", 30));
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_EQ(test::ReadWholeFile(CartFile(6, "LST")), test::FullCartRecord("In the file", 30));
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("In the file", 30));
}

TEST_F(CopyCartTest, IndividualFileIsMadeThoughTheSourceHasNone) {
  UseIndividualFiles();
  gAudioWallSettings.MaintainLegacyCartList = 0;
  GiveCart(5, "Five", 30);
  EXPECT_EQ(Copy(5, 6), 0);
  EXPECT_EQ(test::ReadWholeFile(CartFile(6, "LST")), test::FullCartRecord("Five", 30));
  EXPECT_EQ(RecordBytes(6), test::BlankCartRecord());
}

TEST_F(CopyCartTest, NumbersBesideTheWallCopyIntoTheScratchFolder) {
  GiveCart(5, "Five", 30, {"copied", "WAV"});
  const std::string list = test::ReadWholeFile(ListFileOf(5));
  EXPECT_EQ(Copy(5, 12345), 0);
  EXPECT_THAT(FilesIn(wall_.path()), ElementsAre("ORV00005.WAV", "ORV00005.copied"));
  EXPECT_EQ(test::ReadWholeFile(ListFileOf(5)), list);
  EXPECT_EQ(test::JoinedNames(home_.path()), "scratch");
  EXPECT_EQ(test::JoinedNames(home_ / "scratch"), ".COPIED .WAV");
  for (const std::filesystem::path& directory : {std::filesystem::current_path(), std::filesystem::path("/")})
    EXPECT_FALSE(std::filesystem::exists(directory / ".COPIED")) << directory;
}

TEST_F(CopyCartTest, SourceBesideTheWallIsAnEmptyOne) {
  GiveCart(6, "Six", 10, {"WAV"});
  boxes_.Expect(Question(6), BoxAnswer::Yes);
  EXPECT_EQ(Copy(10000, 6), 0);
  EXPECT_THAT(FilesIn(wall_.path()), IsEmpty());
  EXPECT_EQ(RecordBytes(6), test::EmptiedCartRecord());
}

}  // namespace
}  // namespace vorda
