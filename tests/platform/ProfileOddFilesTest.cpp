// INI files as they come from editors, tools and other machines: what is read of them, and that a write
// leaves every other byte as it was.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>

#include "OtherProcess.h"
#include "platform/FileFault.h"
#include "platform/ProfileFile.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

using namespace std::string_literals;
using test::ReadWholeFile;
using test::WriteWholeFile;

struct OddFile {
  const char* what;
  std::string bytes;
  std::string name;        // the value of [Feed] Name
  std::string changed;     // with [Feed] Name=new
  std::string newKey;      // with [Feed] Added=1
  std::string newSection;  // with [New] Added=1
};
void PrintTo(const OddFile& file, std::ostream* out) {
  *out << file.what;
}

const std::string k300 = std::string(300, 'v');
const std::string kNew = "[New]\r\nAdded=1\r\n";

const OddFile kOddFiles[] = {
    {"Empty", "", "none", "[Feed]\r\nName=new\r\n", "[Feed]\r\nAdded=1\r\n", kNew},
    {"MarkAlone", "\xEF\xBB\xBF", "none", "\xEF\xBB\xBF[Feed]\r\nName=new\r\n",
     "\xEF\xBB\xBF[Feed]\r\nAdded=1\r\n", "\xEF\xBB\xBF" + kNew},
    {"MarkInFront", "\xEF\xBB\xBF[Feed]\r\nName=\xC3\xBC\r\n", "\xC3\xBC",
     "\xEF\xBB\xBF[Feed]\r\nName=new\r\n", "\xEF\xBB\xBF[Feed]\r\nName=\xC3\xBC\r\nAdded=1\r\n",
     "\xEF\xBB\xBF[Feed]\r\nName=\xC3\xBC\r\n" + kNew},
    {"ThreeHundredCharacters", "[Feed]\r\nLong=" + k300 + "\r\nName=" + k300 + "\r\n", std::string(254, 'v'),
     "[Feed]\r\nLong=" + k300 + "\r\nName=new\r\n",
     "[Feed]\r\nLong=" + k300 + "\r\nName=" + k300 + "\r\nAdded=1\r\n",
     "[Feed]\r\nLong=" + k300 + "\r\nName=" + k300 + "\r\n" + kNew},
    {"NoEndOfTheLastLine", "[Feed]\r\nName=old", "old", "[Feed]\r\nName=new",
     "[Feed]\r\nName=old\r\nAdded=1\r\n", "[Feed]\r\nName=old\r\n" + kNew},
    {"LoneReturnAtTheEnd", "[Feed]\r\nName=old\r", "old", "[Feed]\r\nName=new\r",
     "[Feed]\r\nName=old\r\r\nAdded=1\r\n", "[Feed]\r\nName=old\r\r\n" + kNew},
    {"Duplicates", "[Feed]\r\nName=1\r\nNAME=2\r\n[Else]\r\nA=1\r\n[feed]\r\nName=3\r\nAdded=0\r\n", "1",
     "[Feed]\r\nName=new\r\nNAME=2\r\n[Else]\r\nA=1\r\n[feed]\r\nName=3\r\nAdded=0\r\n",
     "[Feed]\r\nName=1\r\nNAME=2\r\nAdded=1\r\n[Else]\r\nA=1\r\n[feed]\r\nName=3\r\nAdded=0\r\n",
     "[Feed]\r\nName=1\r\nNAME=2\r\n[Else]\r\nA=1\r\n[feed]\r\nName=3\r\nAdded=0\r\n" + kNew},
    {"Blanks", " \t[ Feed\t] \r\n \t Name \t = \t a  b \t \r\n\t\r\n \r\n", "a  b",
     " \t[ Feed\t] \r\n \t Name \t =new\r\n\t\r\n \r\n",
     " \t[ Feed\t] \r\n \t Name \t = \t a  b \t \r\nAdded=1\r\n\t\r\n \r\n",
     " \t[ Feed\t] \r\n \t Name \t = \t a  b \t \r\n\t\r\n \r\n" + kNew},
    {"Quotes", "[Feed]\r\n\"Name\"='no'\r\nName=\" old \"\r\nNext='q'\r\n", " old ",
     "[Feed]\r\n\"Name\"='no'\r\nName=new\r\nNext='q'\r\n",
     "[Feed]\r\n\"Name\"='no'\r\nName=\" old \"\r\nNext='q'\r\nAdded=1\r\n",
     "[Feed]\r\n\"Name\"='no'\r\nName=\" old \"\r\nNext='q'\r\n" + kNew},
    {"Nuls", "\0\r\n[Feed]\0\r\nName=a\0b\r\n\0=\0\r\n"s, "a\0b"s, "\0\r\n[Feed]\0\r\nName=new\r\n\0=\0\r\n"s,
     "\0\r\n[Feed]\0\r\nName=a\0b\r\n\0=\0\r\nAdded=1\r\n"s,
     "\0\r\n[Feed]\0\r\nName=a\0b\r\n\0=\0\r\n"s + kNew},
    {"LineFeedsAlone", "; head\n[Feed]\nName=old\nNext=1\n\n[Else]\nA=1\n", "old",
     "; head\n[Feed]\nName=new\nNext=1\n\n[Else]\nA=1\n",
     "; head\n[Feed]\nName=old\nNext=1\nAdded=1\r\n\n[Else]\nA=1\n",
     "; head\n[Feed]\nName=old\nNext=1\n\n[Else]\nA=1\n" + kNew},
    {"AnyCase", "[fEED]\r\nnAME=old\r\n", "old", "[fEED]\r\nnAME=new\r\n",
     "[fEED]\r\nnAME=old\r\nAdded=1\r\n", "[fEED]\r\nnAME=old\r\n" + kNew},
    {"AllBytes", "[Feed]\r\nA=\x01\x02\x1A\x7F\x80\x81\xA0\xFF\r\nName=\xFC\r\n", "\xFC",
     "[Feed]\r\nA=\x01\x02\x1A\x7F\x80\x81\xA0\xFF\r\nName=new\r\n",
     "[Feed]\r\nA=\x01\x02\x1A\x7F\x80\x81\xA0\xFF\r\nName=\xFC\r\nAdded=1\r\n",
     "[Feed]\r\nA=\x01\x02\x1A\x7F\x80\x81\xA0\xFF\r\nName=\xFC\r\n" + kNew},
    {"NoSections", "Name=1\r\nwithout sign\r\n[open\r\n", "none",
     "Name=1\r\nwithout sign\r\n[open\r\n[Feed]\r\nName=new\r\n",
     "Name=1\r\nwithout sign\r\n[open\r\n[Feed]\r\nAdded=1\r\n",
     "Name=1\r\nwithout sign\r\n[open\r\n" + kNew},
};

class ProfileOddFileTest : public ::testing::TestWithParam<OddFile> {
 protected:
  std::string AfterWriting(std::string_view section, std::string_view key, std::string_view value) {
    WriteWholeFile(file_, GetParam().bytes);
    return WriteProfileString(section, key, value, file_) ? ReadWholeFile(file_) : "not written";
  }

  test::TempDirectory directory_;
  std::string file_ = directory_ / "vorda.ini";
};

TEST_P(ProfileOddFileTest, IsReadAndKeepsEveryOtherByte) {
  WriteWholeFile(file_, GetParam().bytes);
  EXPECT_EQ(ReadProfileString("Feed", "Name", "none", file_), GetParam().name);
  EXPECT_EQ(AfterWriting("Feed", "Name", "new"), GetParam().changed);
  EXPECT_EQ(AfterWriting("Feed", "Added", "1"), GetParam().newKey);
  EXPECT_EQ(AfterWriting("New", "Added", "1"), GetParam().newSection);
}

INSTANTIATE_TEST_SUITE_P(Files, ProfileOddFileTest, ::testing::ValuesIn(kOddFiles),
                         [](const auto& row) { return std::string(row.param.what); });

class ProfileLargeFileTest : public ::testing::Test {
 protected:
  // Sections of ten keys, a megabyte of them.
  ProfileLargeFileTest() {
    while (text_.size() < 1'000'000) {
      text_ += "[Section" + std::to_string(sections_++) + "]\r\n";
      for (int key = 0; key < 10; ++key) text_ += "Key" + std::to_string(key) + "=" + k300 + "\r\n";
    }
    WriteWholeFile(file_, text_);
  }

  std::string text_;
  int sections_ = 0;
  test::TempDirectory directory_;
  std::string file_ = directory_ / "vorda.ini";
};

TEST_F(ProfileLargeFileTest, OneLineOfAMegabyteIsChanged) {
  std::string expected = text_;
  for (const int section : {0, sections_ / 2, sections_ - 1}) {
    const std::string name = "Section" + std::to_string(section);
    ASSERT_TRUE(WriteProfileString(name, "Key9", "new", file_));
    const std::size_t head = expected.find("[" + name + "]\r\n");
    const std::size_t value = expected.find("Key9=", head) + 5;
    expected.replace(value, k300.size(), "new");
    // Not compared by EXPECT_EQ, which would print both.
    ASSERT_TRUE(ReadWholeFile(file_) == expected) << name;
  }
  ASSERT_TRUE(WriteProfileString("Section0", "Added", "1", file_));
  ASSERT_TRUE(WriteProfileString("New", "Added", "1", file_));
  expected.insert(expected.find("[Section1]"), "Added=1\r\n").append(kNew);
  EXPECT_TRUE(ReadWholeFile(file_) == expected);
}

TEST_F(ProfileLargeFileTest, FileThatHasNotChangedIsNotReadAgain) {
  const std::string last = "Section" + std::to_string(sections_ - 1);
  const auto readsWithoutOpening = [&] {
    const ScopedFileFault opens(FileOperation::Open, EIO, std::numeric_limits<int>::max(), 1, file_);
    for (int key = 0; key < 10; ++key) {
      EXPECT_EQ(ReadProfileString(last, "Key" + std::to_string(key), "", file_).size(), 254U);
    }
    return opens.calls() == 0;
  };
  // A file that changed just now is read each time.
  EXPECT_TRUE(test::WaitUntil(readsWithoutOpening));
}

TEST(ProfileReadOnlyFileTest, IsReadAndKeepsItsBytes) {
  const test::TempDirectory directory;
  const std::string file = directory / "vorda.ini";
  WriteWholeFile(file, "[Feed]\r\nName=old\r\n");
  ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
  ASSERT_EQ(::chmod(directory.path().c_str(), 0777), 0);
  // No mode stops root.
  test::OtherProcess user([&] {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) return false;
    return ReadProfileString("Feed", "Name", "", file) == "old" &&
           !WriteProfileString("Feed", "Name", "new", file);
  });
  EXPECT_TRUE(user.Succeeded());
  EXPECT_EQ(ReadWholeFile(file), "[Feed]\r\nName=old\r\n");
  EXPECT_EQ(test::JoinedNames(directory.path()), "vorda.ini");
}

}  // namespace
}  // namespace vorda::platform
