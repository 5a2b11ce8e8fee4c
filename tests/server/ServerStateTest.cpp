// The command line, the server INI's name, and what the operating system is called.

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "platform/MessageBox.h"
#include "shell/ServerState.h"
#include "support/FakeDesktop.h"

namespace vorda {
namespace {

class CommandLineTest : public ::testing::Test {
 protected:
  ~CommandLineTest() override {
    gCommandLine.clear();
    gIniFileName = "vdServer.INI";
  }

  static std::string Joined(const std::vector<const char*>& arguments) {
    TakeCommandLine(static_cast<int>(arguments.size()), arguments.data());
    return gCommandLine;
  }

  test::FakeBoxes boxes_;
};

TEST_F(CommandLineTest, ArgumentsAreJoinedByOneBlankInCapitals) {
  EXPECT_EQ(Joined({"/p", "news.ini"}), "/P NEWS.INI");
  EXPECT_EQ(Joined({}), "");
  EXPECT_EQ(Joined({"one"}), "ONE");
}

TEST_F(CommandLineTest, BlanksInsideAnArgumentStayAndThoseAtTheEndsGo) {
  EXPECT_EQ(Joined({" /p", "my  news.ini "}), "/P MY  NEWS.INI");
  EXPECT_EQ(Joined({"/p", "  "}), "/P");
}

TEST_F(CommandLineTest, AccentedLettersArriveInTheCodePageAndInCapitals) {
  EXPECT_EQ(Joined({"m\xC3\xBCnchen.ini"}), "M\xDCNCHEN.INI");
}

struct IniRow {
  const char* commandLine;
  const char* iniFileName;
};
void PrintTo(const IniRow& row, std::ostream* out) {
  *out << row.commandLine;
}
class IniFileNameTest : public CommandLineTest, public ::testing::WithParamInterface<IniRow> {};

TEST_P(IniFileNameTest, NameOutOfTheCommandLine) {
  gCommandLine = GetParam().commandLine;
  gIniFileName = "before";
  EXPECT_TRUE(ResolveIniFileName());
  EXPECT_EQ(gIniFileName, GetParam().iniFileName);
}

constexpr IniRow kIniRows[] = {
    {"", "vdServer.INI"},
    {"NEWS.INI", "vdServer.INI"},
    {"/Q NEWS.INI", "vdServer.INI"},
    {"-P NEWS.INI", "vdServer.INI"},
    {"/P NEWS.INI", "NEWS.INI"},
    {"/P    NEWS.INI", "NEWS.INI"},
    {"/P NEWS.INI OTHER.INI", "NEWS.INI"},
    {"/PXYZ NEWS.INI", "NEWS.INI"},
    {"/PNEWS.INI OTHER.INI", "OTHER.INI"},
    {"OTHER.INI /P NEWS.INI", "NEWS.INI"},
    {"X/P NEWS.INI", "NEWS.INI"},
    {"/P /P NEWS.INI", "/P"},
    {"/SRV/PROGRAMS NEWS.INI", "NEWS.INI"},
    {"/P \"MY NEWS.INI\"", "\"MY"},
    {"/P D:\\NEWS\\V.INI", "D:\\NEWS\\V.INI"},
};
INSTANTIATE_TEST_SUITE_P(CommandLines, IniFileNameTest, ::testing::ValuesIn(kIniRows));

class InvalidIniFileNameTest : public CommandLineTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(InvalidIniFileNameTest, OptionWithNothingBehindItTellsTheCorrectForm) {
  gCommandLine = GetParam();
  boxes_.Expect("Invalid .INI file in command line\nCorrect form : vdserver[.exe] [IniFileName]");
  EXPECT_FALSE(ResolveIniFileName());
  EXPECT_EQ(boxes_.Last().icon, platform::BoxIcon::Critical);
}

INSTANTIATE_TEST_SUITE_P(CommandLines, InvalidIniFileNameTest,
                         ::testing::Values("/P", "/PNEWS.INI", "NEWS.INI /P", "A B /PX"));

TEST_F(CommandLineTest, OptionWithOnlyBlanksBehindItIsInvalidToo) {
  Joined({"/p", "", "  "});
  boxes_.Expect("Invalid .INI file in command line\nCorrect form : vdserver[.exe] [IniFileName]");
  EXPECT_FALSE(ResolveIniFileName());
}

TEST_F(CommandLineTest, OptionIsFoundInEitherCaseSinceTheLineIsInCapitals) {
  Joined({"/p", "news.ini"});
  EXPECT_TRUE(ResolveIniFileName());
  EXPECT_EQ(gIniFileName, "NEWS.INI");
}

struct PlatformRow {
  OSVersionInfo version;
  const char* name;
};
void PrintTo(const PlatformRow& row, std::ostream* out) {
  *out << row.version.platformId << " " << row.version.majorVersion << " " << row.version.minorVersion;
}
class PlatformNameTest : public ::testing::TestWithParam<PlatformRow> {};

TEST_P(PlatformNameTest, NameOfAVersion) {
  EXPECT_EQ(PlatformName(GetParam().version), GetParam().name);
}

constexpr PlatformRow kPlatformRows[] = {
    {{1, 4, 0}, "Windows 95"},
    {{1, 3, 0}, "Windows 95"},
    {{1, 4, 10}, "Windows 98"},
    {{1, 4, 90}, ""},
    {{2, 3, 51}, "Windows NT v3.51"},
    {{2, 3, 0}, "Windows NT v3.0"},
    {{2, 4, 0}, "Windows NT v4"},
    {{2, 4, 5}, "Windows NT v4"},
    {{2, 5, 0}, "Windows 2000"},
    {{2, 5, 1}, "Windows 2000 Server"},
    {{2, 5, 2}, "Windows 2000 Server"},
    {{2, 6, 0}, ""},
    {{2, 2, 0}, ""},
    {{0, 4, 0}, ""},
    {{3, 5, 0}, ""},
};
INSTANTIATE_TEST_SUITE_P(Versions, PlatformNameTest, ::testing::ValuesIn(kPlatformRows));

TEST(ReadOSVersionTest, SystemOfThisBuildHasNoNameInTheList) {
  gOSVersion = {2, 5, 0};
  ReadOSVersion();
  EXPECT_EQ(gOSVersion.platformId, 0U);
  EXPECT_EQ(PlatformName(gOSVersion), "");
}

}  // namespace
}  // namespace vorda
