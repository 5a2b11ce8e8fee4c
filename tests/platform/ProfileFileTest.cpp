#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ScopedVariable.h"
#include "platform/FileFault.h"
#include "platform/Hook.h"
#include "platform/MessageBox.h"
#include "platform/ProfileFile.h"
#include "platform/Settings.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

using namespace std::string_literals;
using test::WriteWholeFile;

constexpr int kEver = std::numeric_limits<int>::max();

class ProfileFileTest : public ::testing::Test {
 protected:
  void Write(std::string_view bytes) { WriteWholeFile(file_, bytes); }
  // The value of [Feed] `key`, "none" when there is none.
  std::string Value(std::string_view key, std::string_view section = "Feed") {
    return ReadProfileString(section, key, "none", file_);
  }

  test::TempDirectory directory_;
  test::ScopedVariable home_{"VORDA_HOME", directory_.path().c_str()};
  std::string file_ = directory_ / "vorda.ini";
};

TEST_F(ProfileFileTest, MissingFileGivesTheDefault) {
  EXPECT_EQ(Value("Name"), "none");
  EXPECT_EQ(ReadProfileInteger("Feed", "N", 7, file_), 7);
  EXPECT_TRUE(ReadProfileSection("Feed", file_).empty());
  EXPECT_EQ(ReadProfileString("Feed", "Name", "none", ""), "none");
  EXPECT_EQ(ReadProfileString("Feed", "Name", "none", "\\vorda.ini"), "none");
}

TEST_F(ProfileFileTest, EmptyFileGivesTheDefault) {
  Write("");
  EXPECT_EQ(Value("Name"), "none");
  Write("\xEF\xBB\xBF");
  EXPECT_EQ(Value("Name"), "none");
}

TEST_F(ProfileFileTest, WhatIsNoPlainFileIsAsMissing) {
  std::filesystem::create_directory(file_);
  EXPECT_EQ(Value("Name"), "none");
  std::filesystem::remove(file_);
  ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(Value("Name"), "none");
}

TEST_F(ProfileFileTest, UnreadableFileIsAsMissing) {
  Write("[Feed]\r\nName=a\r\n");
  const ScopedFileFault refused(FileOperation::Open, EACCES, 1, kEver, file_);
  EXPECT_EQ(Value("Name"), "none");
}

TEST_F(ProfileFileTest, NamesMatchWithoutRegardToCase) {
  Write("[tEXTdATA]\r\nHighLightUnderline=-1\r\nk\xE9y=v\r\n");
  EXPECT_EQ(Value("HighLightUnderLine", "TextData"), "-1");
  EXPECT_EQ(Value("K\xC9Y", "TEXTDATA"), "v");
}

TEST_F(ProfileFileTest, KeyMustStandInItsSection) {
  Write("Name=before\r\n[Other]\r\nName=other\r\n[Feed]\r\nTitle=x\r\n");
  EXPECT_EQ(Value("Name"), "none");
  EXPECT_EQ(Value("Name", ""), "none");
  EXPECT_EQ(Value("Name", "Other"), "other");
  EXPECT_EQ(Value("Nam", "Other"), "none");
}

TEST_F(ProfileFileTest, FirstOfRepeatedKeysCounts) {
  Write("[Feed]\r\nName=first\r\nNAME=second\r\n");
  EXPECT_EQ(Value("Name"), "first");
}

TEST_F(ProfileFileTest, FirstOfRepeatedSectionsCountsAlone) {
  Write("[Feed]\r\nName=first\r\n[Other]\r\nA=1\r\n[FEED]\r\nName=second\r\nTitle=lost\r\n");
  EXPECT_EQ(Value("Name"), "first");
  EXPECT_EQ(Value("Title"), "none");
  EXPECT_EQ(Value("A", "Other"), "1");
}

TEST_F(ProfileFileTest, BlanksAndTabsAtBothEndsAreNoPart) {
  Write(" \t[ Feed\t] \r\n \t Type A \t=\t  two  words \t\r\nEmpty=   \r\n");
  EXPECT_EQ(Value("Type A"), "two  words");
  EXPECT_EQ(Value(" type a "), "two  words");
  EXPECT_EQ(Value("Empty"), "");
  EXPECT_EQ(Value("TypeA"), "none");
}

TEST_F(ProfileFileTest, OnePairOfQuotationMarksIsTakenOff) {
  Write("[Feed]\nA=\"  padded  \"\nB='x'\nC=\"\"y\"\"\nD=\"z'\nE=\"\nF=\"\"\nG= a\"b\" \nH='\"q\"'\n");
  EXPECT_EQ(Value("A"), "  padded  ");
  EXPECT_EQ(Value("B"), "x");
  EXPECT_EQ(Value("C"), "\"y\"");
  EXPECT_EQ(Value("D"), "\"z'");
  EXPECT_EQ(Value("E"), "\"");
  EXPECT_EQ(Value("F"), "");
  EXPECT_EQ(Value("G"), "a\"b\"");
  EXPECT_EQ(Value("H"), "\"q\"");
}

TEST_F(ProfileFileTest, ValueMayHoldEqualsSignsAndSemicolons) {
  Write("[Feed]\r\nA=b=c ; d\r\nB=[x]\r\n");
  EXPECT_EQ(Value("A"), "b=c ; d");
  EXPECT_EQ(Value("B"), "[x]");
}

TEST_F(ProfileFileTest, CommentsAndOtherLinesArePassedOver) {
  Write(
      "; head\r\n[Feed] ; the feed\r\n;Name=comment\r\n  ;Name=too\r\nwithout "
      "sign\r\n=nameless\r\n[open\r\nName=x\r\n");
  EXPECT_EQ(Value("Name"), "x");
  EXPECT_EQ(Value(";Name"), "none");
  EXPECT_EQ(Value("without sign"), "none");
  EXPECT_EQ(Value(""), "none");
}

TEST_F(ProfileFileTest, LineFeedsAloneEndLines) {
  Write("[Feed]\nName=a\nTitle=b\n");
  EXPECT_EQ(Value("Name"), "a");
  EXPECT_EQ(Value("Title"), "b");
}

TEST_F(ProfileFileTest, LastLineNeedsNoEnd) {
  Write("[Feed]\r\nName=a");
  EXPECT_EQ(Value("Name"), "a");
  Write("[Feed]\r\nName=ab\r");
  EXPECT_EQ(Value("Name"), "ab");
  Write("[Feed]");
  EXPECT_EQ(Value("Name"), "none");
}

TEST_F(ProfileFileTest, CarriageReturnInsideALineIsAByte) {
  Write("[Feed]\r\nName=a\rb\r\n");
  EXPECT_EQ(Value("Name"), "a\rb");
}

TEST_F(ProfileFileTest, NulIsAByte) {
  Write("[Feed]\r\nName=a\0b\r\n\0=x\r\nNext=c\r\n"s);
  EXPECT_EQ(Value("Name"), "a\0b"s);
  EXPECT_EQ(Value("\0"s), "x");
  EXPECT_EQ(Value("Next"), "c");
}

TEST_F(ProfileFileTest, Utf8MarkInFrontIsSkipped) {
  Write("\xEF\xBB\xBF[Feed]\r\nName=a\r\n");
  EXPECT_EQ(Value("Name"), "a");
}

TEST_F(ProfileFileTest, BytesAbove127PassUnchanged) {
  Write("[Feed]\r\nName=\xFC\x80\xA0\xFF\x81\r\n");
  EXPECT_EQ(Value("Name"), "\xFC\x80\xA0\xFF\x81");
}

TEST_F(ProfileFileTest, At254BytesAStringIsCut) {
  Write("[Feed]\r\nA=" + std::string(254, 'a') + "\r\nB=" + std::string(255, 'b') +
        "\r\nC=" + std::string(300, 'c') + "\r\n");
  EXPECT_EQ(Value("A"), std::string(254, 'a'));
  EXPECT_EQ(Value("B"), std::string(254, 'b'));
  EXPECT_EQ(Value("C"), std::string(254, 'c'));
  EXPECT_EQ(ReadProfileString("Feed", "None", std::string(300, 'd'), file_), std::string(254, 'd'));
}

TEST_F(ProfileFileTest, EmptyValueIsAValueOfAStringAndNoneOfAnInteger) {
  Write("[Feed]\r\nName=\r\n");
  EXPECT_EQ(Value("Name"), "");
  EXPECT_EQ(ReadProfileInteger("Feed", "Name", 10, file_), 10);
}

TEST_F(ProfileFileTest, IntegersAreTheLeadingDigits) {
  Write("[Feed]\nA=12\nB=-1\nC=70 bytes\nD=abc\nE=\"5\"\nF=2147483648\nG=4294967297\nH=+1\nI=0\nJ=-x\n");
  const auto integer = [this](std::string_view key) { return ReadProfileInteger("Feed", key, 99, file_); };
  EXPECT_EQ(integer("A"), 12);
  EXPECT_EQ(integer("B"), -1);
  EXPECT_EQ(integer("C"), 70);
  EXPECT_EQ(integer("D"), 99);
  EXPECT_EQ(integer("E"), 5);
  EXPECT_EQ(integer("F"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(integer("G"), 1);
  EXPECT_EQ(integer("H"), 99);
  EXPECT_EQ(integer("I"), 0);
  EXPECT_EQ(integer("J"), 99);
}

TEST_F(ProfileFileTest, ShortOutOfRangeIsAnOverflowThatStopsTheProgram) {
  Write("[Feed]\nA=32768\nB=-32769\nC=2147483648\n");
  const ScopedHook box(MessageBoxHook(), [](const BoxRequest& request) {
    std::fprintf(stderr, "<%s>", request.text.c_str());
    return BoxAnswer::Ok;
  });
  for (const char* key : {"A", "B", "C"}) {
    EXPECT_EXIT(ReadProfileShort("Feed", key, 0, file_), ::testing::ExitedWithCode(1),
                "<Run-time error '6':\n\nOverflow>");
  }
}

TEST_F(ProfileFileTest, ShortsReachTheirLimits) {
  Write("[Feed]\nA=32767\nB=-32768\nC=4294967295\nD=x\n");
  EXPECT_EQ(ReadProfileShort("Feed", "A", 0, file_), 32767);
  EXPECT_EQ(ReadProfileShort("Feed", "B", 0, file_), -32768);
  EXPECT_EQ(ReadProfileShort("Feed", "C", 0, file_), -1);
  EXPECT_EQ(ReadProfileShort("Feed", "D", 10, file_), 10);
}

TEST_F(ProfileFileTest, SectionIsToldInOrderWithoutRepetitions) {
  Write("[Shares]\n\\\\B\\c = '/mnt/c'\n;x=y\na=" + std::string(300, 'v') + "\nA=2\n[Next]\nb=3\n");
  const std::vector<std::pair<std::string, std::string>> expected = {{"\\\\B\\c", "/mnt/c"},
                                                                     {"a", std::string(300, 'v')}};
  EXPECT_EQ(ReadProfileSection("shares", file_), expected);
}

TEST_F(ProfileFileTest, BareAndRelativeNamesLieInTheOwnDirectory) {
  WriteWholeFile(directory_ / "vdServer.INI", "[WireFeed1]\r\nNewsPath=/news\r\n");
  std::filesystem::create_directory(directory_ / "Sub");
  WriteWholeFile(directory_ / "Sub/x.ini", "[A]\r\nB=c\r\n");
  EXPECT_EQ(ReadProfileString("WireFeed1", "NewsPath", "", "vdServer.INI"), "/news");
  EXPECT_EQ(ReadProfileString("WireFeed1", "NewsPath", "", "VDSERVER.INI"), "/news");
  EXPECT_EQ(ReadProfileString("A", "B", "", "SUB\\X.INI"), "c");
}

TEST_F(ProfileFileTest, DrivesAreMapped) {
  Write("[Feed]\r\nName=a\r\n");
  Settings settings;
  settings.drives['N'] = directory_.path();
  const ScopedSettings scoped(settings);
  EXPECT_EQ(ReadProfileString("Feed", "Name", "", "N:\\VORDA.INI"), "a");
}

TEST_F(ProfileFileTest, MegabyteOfKeysIsReadWhole) {
  std::string text = "[Feed]\r\n";
  int keys = 0;
  for (; text.size() < 1'000'000; ++keys)
    text += "Key" + std::to_string(keys) + "=value " + std::to_string(keys) + "\r\n";
  Write(text + "[Last]\r\nName=end\r\n");
  EXPECT_EQ(Value("Key0"), "value 0");
  EXPECT_EQ(Value("KEY" + std::to_string(keys - 1)), "value " + std::to_string(keys - 1));
  EXPECT_EQ(Value("Name", "Last"), "end");
}

// Of the same length each time, and within one tick of the file system's clock: only the contents tell them
// apart.
TEST_F(ProfileFileTest, AnothersChangeInTheSameTickIsSeen) {
  for (int i = 100; i < 400; ++i) {
    Write("[Feed]\r\nName=" + std::to_string(i) + "\r\n");
    ASSERT_EQ(Value("Name"), std::to_string(i));
  }
}

TEST_F(ProfileFileTest, FileThatChangedJustNowIsNotKept) {
  // Holds when both reads come within the tick of the change, which takes a few tries on a busy machine.
  const auto secondReadOpens = [this] {
    Write("[Feed]\r\nName=a\r\n");
    const ScopedFileFault opens(FileOperation::Open, EIO, kEver, 1, file_);
    return Value("Name") == "a" && Value("Name") == "a" && opens.calls() == 2;
  };
  EXPECT_TRUE(test::WaitUntil(secondReadOpens));
}

TEST_F(ProfileFileTest, OldFilePutInPlaceIsSeen) {
  const std::string old = directory_ / "old.ini";
  WriteWholeFile(old, "[Feed]\r\nName=old\r\n");
  Write("[Feed]\r\nName=new\r\n");
  ASSERT_EQ(Value("Name"), "new");
  std::filesystem::rename(old, file_);
  EXPECT_EQ(Value("Name"), "old");
  std::filesystem::remove(file_);
  EXPECT_EQ(Value("Name"), "none");
}

TEST_F(ProfileFileTest, ChangeThatPutsTheTimeBackIsSeen) {
  Write("[Feed]\r\nName=a\r\n");
  const auto time = std::filesystem::last_write_time(file_);
  const auto readsWithoutOpening = [this] {
    const ScopedFileFault opens(FileOperation::Open, EIO, kEver, 1, file_);
    return Value("Name") == "a" && opens.calls() == 0;
  };
  ASSERT_TRUE(test::WaitUntil(readsWithoutOpening));
  Write("[Feed]\r\nName=b\r\n");
  std::filesystem::last_write_time(file_, time);
  EXPECT_EQ(Value("Name"), "b");
}

TEST_F(ProfileFileTest, MoreFilesThanAreKept) {
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 40; ++i) {
      const std::string name = std::to_string(i) + ".ini";
      WriteWholeFile(directory_ / name, "[Feed]\r\nName=" + name + "\r\n");
      ASSERT_EQ(ReadProfileString("Feed", "Name", "", name), name);
    }
  }
}

}  // namespace
}  // namespace vorda::platform
