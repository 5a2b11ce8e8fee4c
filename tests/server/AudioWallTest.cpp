// Connecting the wall: which lists are opened, what is asked and told, and when the walk ends.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/FileFault.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/RunTimeError.h"
#include "platform/Settings.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"
#include "support/WallLists.h"

namespace vorda {
namespace {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;
using platform::FileOperation;
using platform::ScopedFileFault;

class AudioWallTest : public ::testing::Test {
 protected:
  AudioWallTest() {
    gAudioWallSettings = {};
    gBlankCartInfo.BackColor = static_cast<std::int32_t>(0x8000000F);
    gBlankCartInfo.ForeColor = static_cast<std::int32_t>(0x80000012);
    InitBlankCartInfo();
    for (AudioWallPart& part : gAudioWallParts) part = {wall_.path(), {}, false, 0};
    gAudioWallParts[10].Location.clear();
  }
  ~AudioWallTest() override {
    platform::CloseAllFiles();
    gAudioWallParts = {};
    gBlankCartInfo = {};
    platform::SetCurrentError(platform::kNoError);
  }

  static AudioWallPart& Part(int part) { return gAudioWallParts[static_cast<std::size_t>(part) - 1]; }
  std::string ListOf(int part) const { return wall_ / ("Carts" + std::to_string(part) + ".lst"); }
  void ExpectQuestion(int part, BoxAnswer answer) {
    boxes_.Expect("Part " + std::to_string(part) +
                      " of the AudioWall has not been found.\nDo you wish to create it in :\n" +
                      gAudioWallParts[static_cast<std::size_t>(part) - 1].Location + "/Carts" +
                      std::to_string(part) + ".lst",
                  answer);
  }
  // The report of a list that couldn't be looked up.
  void ExpectReport(int part, const std::string& location, int error) {
    boxes_.Expect("There was a problem connecting part " + std::to_string(part) + " of the AudioWall to : " +
                  location + " and the error's description was reported as : \n\"" +
                  platform::ErrorText(error) + "\" (" + std::to_string(error) + ")");
  }
  static std::string Blanks(int records) {
    std::string list;
    for (int i = 0; i < records; ++i) list += test::BlankCartRecord();
    return list;
  }
  // Which of the eleven parts are connected.
  static std::set<int> Connected() {
    std::set<int> parts;
    for (int part = 1; part <= 11; ++part)
      if (Part(part).Connected) parts.insert(part);
    return parts;
  }

  const std::set<int> kAllTen{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
  test::FakeBoxes boxes_;
  test::TempDirectory wall_;
};

TEST_F(AudioWallTest, ListsThatAreThereConnectWithoutAWord) {
  test::MakeWallLists(wall_.path());
  EXPECT_EQ(ConnectAudioWall(0, false), 0);
  EXPECT_EQ(Connected(), kAllTen);
  std::set<std::int32_t> numbers;
  for (int part = 1; part <= 10; ++part) {
    EXPECT_EQ(Part(part).ListFile, ListOf(part));
    EXPECT_GE(Part(part).ListHandle, 1);
    numbers.insert(Part(part).ListHandle);
  }
  EXPECT_EQ(numbers.size(), 10U) << "each has a number of its own";
  EXPECT_EQ(Part(11).ListHandle, 0);
  EXPECT_EQ(Part(11).ListFile, "");
}

TEST_F(AudioWallTest, MissingListsAreMadeOneByOneAsTheOperatorSaysYes) {
  for (int part = 1; part <= 10; ++part) ExpectQuestion(part, BoxAnswer::Yes);
  EXPECT_EQ(ConnectAudioWall(0, false), 0);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Question);
  EXPECT_EQ(boxes_.Last().buttons, BoxButtons::YesNoCancel);
  EXPECT_EQ(boxes_.Last().title, "");
  EXPECT_EQ(Connected(), kAllTen);
  for (int part = 1; part <= 9; ++part) EXPECT_EQ(test::ReadWholeFile(ListOf(part)), Blanks(1000)) << part;
  EXPECT_EQ(test::ReadWholeFile(ListOf(10)), Blanks(999));
  EXPECT_EQ(test::JoinedNames(wall_.path()),
            "Carts1.lst Carts10.lst Carts2.lst Carts3.lst Carts4.lst Carts5.lst Carts6.lst Carts7.lst "
            "Carts8.lst Carts9.lst");
}

TEST_F(AudioWallTest, SilentMakesMissingListsWithoutAQuestion) {
  EXPECT_EQ(ConnectAudioWall(0, true), 0);
  EXPECT_EQ(Connected(), kAllTen);
  EXPECT_EQ(test::ReadWholeFile(ListOf(1)), Blanks(1000));
  EXPECT_EQ(test::ReadWholeFile(ListOf(10)), Blanks(999));
}

TEST_F(AudioWallTest, EachPartLiesWhereItsLocationSays) {
  const test::TempDirectory other;
  for (int part = 2; part <= 10; part += 2) Part(part).Location = other.path();
  EXPECT_EQ(ConnectAudioWall(0, true), 0);
  EXPECT_EQ(test::JoinedNames(wall_.path()), "Carts1.lst Carts3.lst Carts5.lst Carts7.lst Carts9.lst");
  EXPECT_EQ(test::JoinedNames(other.path()), "Carts10.lst Carts2.lst Carts4.lst Carts6.lst Carts8.lst");
}

TEST_F(AudioWallTest, NoLeavesThePartAloneAndGoesOn) {
  test::MakeWallLists(wall_.path());
  std::filesystem::remove(ListOf(3));
  std::filesystem::remove(ListOf(4));
  ExpectQuestion(3, BoxAnswer::No);
  ExpectQuestion(4, BoxAnswer::Yes);
  EXPECT_EQ(ConnectAudioWall(0, false), 0);
  EXPECT_EQ(Connected(), (std::set<int>{1, 2, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(Part(3).ListHandle, 0);
  EXPECT_FALSE(std::filesystem::exists(ListOf(3)));
}

TEST_F(AudioWallTest, CancelEndsTheWalkAndLeavesTheRestAsItWas) {
  test::MakeWallLists(wall_.path());
  std::filesystem::remove(ListOf(3));
  Part(4).Connected = true;
  Part(5).ListHandle = 4711;
  ExpectQuestion(3, BoxAnswer::Cancel);
  EXPECT_EQ(ConnectAudioWall(0, false), -1);
  EXPECT_EQ(Connected(), (std::set<int>{1, 2, 4}));
  EXPECT_EQ(Part(3).ListHandle, 0);
  EXPECT_EQ(Part(4).ListHandle, 0);
  EXPECT_EQ(Part(5).ListHandle, 4711);
  EXPECT_FALSE(std::filesystem::exists(ListOf(3)));
  EXPECT_EQ(Part(10).ListFile, ListOf(10)) << "the paths were all built ahead of the walk";
}

TEST_F(AudioWallTest, BlankLocationsAreCountedAndNothingIsOpened) {
  test::MakeWallLists(wall_.path());
  Part(2).Location = "";
  Part(7).Location = "   ";
  Part(10).Location.clear();
  const ScopedFileFault watch(FileOperation::Open, EIO);
  boxes_.Expect("3 locations of the AudioWall have not been set : Please check your configuration.");
  EXPECT_EQ(ConnectAudioWall(0, false), -1);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Critical);
  EXPECT_EQ(boxes_.Last().buttons, BoxButtons::Ok);
  EXPECT_EQ(watch.calls(), 0);
  EXPECT_EQ(Connected(), std::set<int>());
  for (int part = 1; part <= 10; ++part) EXPECT_EQ(Part(part).ListHandle, 0);
}

TEST_F(AudioWallTest, BlankLocationsStillGetTheirPaths) {
  Part(2).Location = "";
  Part(7).Location = "   ";
  EXPECT_EQ(ConnectAudioWall(0, true), -1);
  EXPECT_EQ(Part(1).ListFile, ListOf(1));
  EXPECT_EQ(Part(2).ListFile, "\\Carts2.lst");
  EXPECT_EQ(Part(7).ListFile, "   \\Carts7.lst");
  EXPECT_EQ(Part(10).ListFile, ListOf(10));
}

TEST_F(AudioWallTest, SilentSaysNothingOfBlankLocations) {
  test::MakeWallLists(wall_.path());
  Part(1).Location.clear();
  EXPECT_EQ(ConnectAudioWall(0, true), -1);
  EXPECT_EQ(Connected(), std::set<int>());
}

TEST_F(AudioWallTest, OneBlankLocationIsTakenForSeveral) {
  Part(10).Location.clear();
  boxes_.Expect("1 locations of the AudioWall have not been set : Please check your configuration.");
  EXPECT_EQ(ConnectAudioWall(0, false), -1);
}

TEST_F(AudioWallTest, AllTenBlankAreTenAndTheEleventhNeverCounts) {
  for (int part = 1; part <= 10; ++part) Part(part).Location.clear();
  boxes_.Expect("10 locations of the AudioWall have not been set : Please check your configuration.");
  EXPECT_EQ(ConnectAudioWall(0, false), -1);
}

TEST_F(AudioWallTest, OnePartAloneLooksAtNoOther) {
  for (int part = 1; part <= 10; ++part)
    if (part != 5) Part(part).Location.clear();
  ExpectQuestion(5, BoxAnswer::Yes);
  EXPECT_EQ(ConnectAudioWall(5, false), 0);
  EXPECT_EQ(Connected(), std::set<int>{5});
  EXPECT_EQ(Part(4).ListFile, "");
  EXPECT_EQ(test::JoinedNames(wall_.path()), "Carts5.lst");
  boxes_.Expect("1 locations of the AudioWall have not been set : Please check your configuration.");
  EXPECT_EQ(ConnectAudioWall(6, false), -1);
}

TEST_F(AudioWallTest, EleventhPartConnectsWhenAskedForAlone) {
  Part(11).Location = wall_.path();
  EXPECT_EQ(ConnectAudioWall(11, true), 0);
  EXPECT_EQ(Connected(), std::set<int>{11});
  EXPECT_EQ(test::ReadWholeFile(ListOf(11)), Blanks(1000));
}

TEST_F(AudioWallTest, MissingDirectoryConnectsWithoutAListAndWithoutAWord) {
  Part(3).Location = wall_ / "none";
  ExpectQuestion(3, BoxAnswer::Yes);
  EXPECT_EQ(ConnectAudioWall(3, false), 0);
  EXPECT_TRUE(Part(3).Connected);
  EXPECT_GE(Part(3).ListHandle, 1);
  EXPECT_FALSE(std::filesystem::exists(wall_ / "none"));
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 2001), platform::kBadFileNumber);
}

TEST_F(AudioWallTest, DirectoryInTheListsPlaceIsNoList) {
  std::filesystem::create_directory(ListOf(3));
  ExpectQuestion(3, BoxAnswer::Yes);
  EXPECT_EQ(ConnectAudioWall(3, false), 0);
  EXPECT_TRUE(Part(3).Connected);
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 2001), platform::kBadFileNumber);
}

TEST_F(AudioWallTest, UnmappedDriveIsReportedAndTheWalkGoesOn) {
  test::MakeWallLists(wall_.path());
  Part(3).Location = "Q:\\AUDIO ";
  Part(3).Connected = true;
  ExpectReport(3, "Q:\\AUDIO", platform::kPathNotFound);
  EXPECT_EQ(ConnectAudioWall(0, false), 0);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_EQ(Connected(), (std::set<int>{1, 2, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(Part(3).ListHandle, 0);
}

TEST_F(AudioWallTest, FailedLookupIsReportedWithItsError) {
  test::MakeWallLists(wall_.path());
  const ScopedFileFault fault(FileOperation::Stat, EIO, 1, 1000, "Carts3.lst");
  ExpectReport(3, wall_.path(), platform::kDeviceIoError);
  EXPECT_EQ(ConnectAudioWall(0, false), 0);
  EXPECT_EQ(Connected(), (std::set<int>{1, 2, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(Part(3).ListHandle, 0);
}

TEST_F(AudioWallTest, LocationIsReportedWithoutTheBlanksRoundIt) {
  Part(3).Location = "  audio ";
  const ScopedFileFault fault(FileOperation::Stat, EIO, 1, 1000, "Carts3.lst");
  ExpectReport(3, "audio", platform::kDeviceIoError);
  EXPECT_EQ(ConnectAudioWall(3, false), 0);
}

TEST_F(AudioWallTest, FailedLookupLeavesAListThatIsOpenAsItIs) {
  test::MakeWallLists(wall_.path());
  EXPECT_EQ(ConnectAudioWall(3, false), 0);
  const std::int32_t number = Part(3).ListHandle;
  const ScopedFileFault fault(FileOperation::Stat, EACCES, 1, 1000, "Carts3.lst");
  ExpectReport(3, wall_.path(), platform::kPermissionDenied);
  EXPECT_EQ(ConnectAudioWall(3, false), 0);
  EXPECT_FALSE(Part(3).Connected);
  EXPECT_EQ(Part(3).ListHandle, number);
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 2001), 0);
}

TEST_F(AudioWallTest, SilentSaysNothingOfAFailedLookupAndStopsThePartAllTheSame) {
  test::MakeWallLists(wall_.path());
  const ScopedFileFault fault(FileOperation::Stat, EIO, 1, 1000, "Carts3.lst");
  EXPECT_EQ(ConnectAudioWall(0, true), 0);
  EXPECT_GT(fault.calls(), 0);
  EXPECT_EQ(Connected(), (std::set<int>{1, 2, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(AudioWallTest, ErrorsOfAPartDoNotOutliveIt) {
  Part(3).Location = "Q:\\AUDIO";
  ExpectReport(3, "Q:\\AUDIO", platform::kPathNotFound);
  EXPECT_EQ(ConnectAudioWall(3, false), 0);
  EXPECT_EQ(platform::CurrentError(), platform::kNoError);
  Part(3).Location = wall_ / "none";
  EXPECT_EQ(ConnectAudioWall(3, true), 0);
  EXPECT_EQ(platform::CurrentError(), platform::kNoError);
}

TEST_F(AudioWallTest, TrailingSeparatorsFindTheSameList) {
  test::MakeWallLists(wall_.path());
  platform::Settings settings;
  settings.drives['D'] = wall_.path();
  const platform::ScopedSettings scoped(settings);
  Part(1).Location = wall_.path() + "/";
  Part(2).Location = "D:\\";
  Part(3).Location = "D:";
  EXPECT_EQ(ConnectAudioWall(0, false), 0);
  EXPECT_EQ(Part(1).ListFile, wall_.path() + "//Carts1.lst");
  EXPECT_EQ(Part(2).ListFile, "D:\\\\Carts2.lst");
  EXPECT_EQ(Part(3).ListFile, "D:\\Carts3.lst");
  EXPECT_EQ(Connected(), kAllTen);
}

TEST_F(AudioWallTest, OtherCaseOnDiskIsTheSameList) {
  const std::string directory = wall_ / "Audio";
  test::MakeWallLists(directory);
  std::filesystem::rename(directory + "/Carts3.lst", directory + "/CARTS3.LST");
  std::string record = test::BlankCartRecord();
  record.replace(0, 5, "Title");
  record.replace(274, 4, std::string(4, '\0'));
  test::WriteWholeFile(directory + "/CARTS3.LST", record);
  Part(3).Location = wall_ / "AUDIO";
  EXPECT_EQ(ConnectAudioWall(3, false), 0);
  EXPECT_EQ(test::ReadWholeFile(directory + "/CARTS3.LST"), record + Blanks(999));
  EXPECT_FALSE(std::filesystem::exists(directory + "/Carts3.lst"));
  EXPECT_EQ(test::JoinedNames(wall_.path()), "Audio");
}

}  // namespace
}  // namespace vorda
