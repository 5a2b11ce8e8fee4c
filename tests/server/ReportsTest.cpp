#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "platform/Desktop.h"
#include "platform/RunTimeError.h"
#include "shell/GeneralFunctions.h"
#include "support/FakeDesktop.h"

namespace vorda {
namespace {

using platform::BoxAnswer;
using platform::BoxIcon;
using platform::Pointer;

class ReportProblemTest : public ::testing::Test {
 protected:
  ~ReportProblemTest() override {
    platform::SetCurrentError(0);
    platform::SetPointer(Pointer::Default);
  }

  test::FakeBoxes boxes_;
};

TEST_F(ReportProblemTest, WithoutAnErrorNumberOnlyTheSentence) {
  platform::SetCurrentError(70);
  boxes_.Expect("There was a problem copying the file");
  ReportProblem("copying the file", 0);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_EQ(boxes_.Last().buttons, platform::BoxButtons::Ok);
  EXPECT_EQ(boxes_.Last().title, "");
  boxes_.Expect("There was a problem copying the file");
  ReportProblem("copying the file", -1);
}

TEST_F(ReportProblemTest, WithAnErrorNumberItsTextAndTheCurrentErrorsNumber) {
  platform::SetCurrentError(70);
  boxes_.Expect(
      "There was a problem deleting the cart and the error's description was reported as : \n"
      "\"Permission denied\" (70)");
  ReportProblem("deleting the cart", 70);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
}

TEST_F(ReportProblemTest, NumberInBracketsIsTheCurrentErrorsAndNotTheOneAskedFor) {
  platform::SetCurrentError(61);
  boxes_.Expect(
      "There was a problem renaming and the error's description was reported as : \n"
      "\"File not found\" (61)");
  ReportProblem("renaming", 53);
  platform::SetCurrentError(0);
  boxes_.Expect(
      "There was a problem renaming and the error's description was reported as : \n"
      "\"Overflow\" (0)");
  ReportProblem("renaming", 6);
}

TEST_F(ReportProblemTest, FirstErrorNumberIsOne) {
  boxes_.Expect(
      "There was a problem x and the error's description was reported as : \n"
      "\"Application-defined or object-defined error\" (0)");
  ReportProblem("x", 1);
}

TEST_F(ReportProblemTest, ClauseIsTrimmed) {
  boxes_.Expect("There was a problem copying :");
  ReportProblem("  copying : ", 0);
}

TEST_F(ReportProblemTest, HourglassIsAwayWhileTheBoxStandsAndComesBack) {
  platform::SetPointer(Pointer::Hourglass);
  boxes_.Expect("There was a problem x", BoxAnswer::Ok,
                [] { EXPECT_EQ(platform::CurrentPointer(), Pointer::Default); });
  ReportProblem("x", 0);
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Hourglass);
}

TEST_F(ReportProblemTest, DefaultPointerStays) {
  boxes_.Expect("There was a problem x");
  ReportProblem("x", 0);
  EXPECT_EQ(platform::CurrentPointer(), Pointer::Default);
}

class ReportMultimediaErrorTest : public ::testing::Test {
 protected:
  test::FakeBoxes boxes_;
};

TEST_F(ReportMultimediaErrorTest, SaysNothingWithoutAnErrorOrWhenNotAskedTo) {
  EXPECT_EQ(ReportMultimediaError(0, true, "Context"), 0);
  EXPECT_EQ(ReportMultimediaError(11, false, "Context"), 11);
}

TEST_F(ReportMultimediaErrorTest, ShowsTheErrorsTextUnderTheProgramsTitle) {
  boxes_.Expect("An invalid parameter was passed to a system function.");
  EXPECT_EQ(ReportMultimediaError(11, true), 11);
  EXPECT_EQ(boxes_.Last().icon, BoxIcon::Information);
  EXPECT_EQ(boxes_.Last().buttons, platform::BoxButtons::Ok);
  EXPECT_EQ(boxes_.Last().title, "Vorda Server");
}

TEST_F(ReportMultimediaErrorTest, ContextStandsBehindTheTitle) {
  boxes_.Expect("An invalid parameter was passed to a system function.");
  ReportMultimediaError(11, true, "Recording");
  EXPECT_EQ(boxes_.Last().title, "Vorda Server - Recording");
}

TEST_F(ReportMultimediaErrorTest, UnknownNumberIsToldAsSuch) {
  for (const std::int32_t code : {257, -1, 13}) {
    boxes_.Expect("The Windows Multimedia Sub-System has returned with an unknown error, the code was: " +
                  std::to_string(code));
    EXPECT_EQ(ReportMultimediaError(code, true), code);
  }
}

struct FolderRow {
  const char* picked;
  const char* folder;
};
void PrintTo(const FolderRow& row, std::ostream* out) {
  *out << row.picked;
}
class BrowseForFolderTest : public ::testing::TestWithParam<FolderRow> {};

TEST_P(BrowseForFolderTest, FolderOfWhatWasPicked) {
  test::FakeFolderPicker picker;
  picker.Expect("Select Folder", GetParam().picked);
  EXPECT_EQ(BrowseForFolder(nullptr, "Select Folder"), GetParam().folder);
}

constexpr FolderRow kFolderRows[] = {
    {"", ""},
    {"D:\\", "D:"},
    {"D:\\news", "D:\\news"},
    {"D:\\news\\", "D:\\news\\"},
    {"D:", "D:"},
    {"\\", "\\"},
    {"/", "/"},
    {"/srv/news", "/srv/news"},
    {"\\\\server\\share", "\\\\server\\share"},
};
INSTANTIATE_TEST_SUITE_P(Folders, BrowseForFolderTest, ::testing::ValuesIn(kFolderRows));

TEST(BrowseForFolderStartTest, PickerOpensWhereItIsTold) {
  std::string title;
  std::string start;
  const platform::ScopedHook noting(platform::FolderPickerHook(),
                                    [&](const platform::FolderRequest& request) {
                                      title = request.title;
                                      start = request.startFolder;
                                      return std::string();
                                    });
  EXPECT_EQ(BrowseForFolder(nullptr, "Select Folder", "/srv/news"), "");
  EXPECT_EQ(title, "Select Folder");
  EXPECT_EQ(start, "/srv/news");
}

}  // namespace
}  // namespace vorda
