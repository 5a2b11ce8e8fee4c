#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>

#include "shell/GeneralFunctions.h"

namespace vorda {
namespace {

TEST(FileNamePartTest, IsTheTextBehindTheLastSeparatorOfEitherKind) {
  EXPECT_EQ(FileNamePart("C:\\news\\vorda.ini"), "vorda.ini");
  EXPECT_EQ(FileNamePart("/srv/news/vorda.ini"), "vorda.ini");
  EXPECT_EQ(FileNamePart("C:\\news/vorda.ini"), "vorda.ini");
  EXPECT_EQ(FileNamePart("/srv\\vorda.ini"), "vorda.ini");
  EXPECT_EQ(FileNamePart("vorda.ini"), "vorda.ini");
  EXPECT_EQ(FileNamePart(""), "");
}

TEST(FileNamePartTest, PathThatEndsInASeparatorHasNone) {
  EXPECT_EQ(FileNamePart("C:\\news\\"), "");
  EXPECT_EQ(FileNamePart("/"), "");
}

TEST(FileNamePartTest, DriveAloneIsNoSeparator) {
  EXPECT_EQ(FileNamePart("C:vorda.ini"), "C:vorda.ini");
}

TEST(DirectoryPartTest, IsTheTextAheadOfTheLastSeparatorWithoutIt) {
  EXPECT_EQ(DirectoryPart("C:\\news\\vorda.ini"), "C:\\news");
  EXPECT_EQ(DirectoryPart("/srv/news/vorda.ini"), "/srv/news");
  EXPECT_EQ(DirectoryPart("C:\\news/vorda.ini"), "C:\\news");
  EXPECT_EQ(DirectoryPart("C:\\vorda.ini"), "C:");
  EXPECT_EQ(DirectoryPart("C:\\news\\"), "C:\\news");
}

TEST(DirectoryPartTest, BareNameAndFileOfTheRootHaveNone) {
  EXPECT_EQ(DirectoryPart("vorda.ini"), "");
  EXPECT_EQ(DirectoryPart(""), "");
  EXPECT_EQ(DirectoryPart("/vorda.ini"), "");
}

TEST(FileBaseNameTest, IsTheNameUpToItsLastPoint) {
  EXPECT_EQ(FileBaseName("C:\\news\\story.txt"), "story");
  EXPECT_EQ(FileBaseName("/srv/story.old.txt"), "story.old");
  EXPECT_EQ(FileBaseName("story."), "story");
  EXPECT_EQ(FileBaseName(".hidden"), "");
}

TEST(FileBaseNameTest, NameWithoutAPointIsItsOwnBaseAndItsOwnExtension) {
  EXPECT_EQ(FileBaseName("C:\\news\\story"), "story");
  EXPECT_EQ(FileExtension("C:\\news\\story"), "story");
  EXPECT_EQ(FileBaseName(""), "");
  EXPECT_EQ(FileExtension(""), "");
}

TEST(FileBaseNameTest, PointOfADirectoryDoesNotCount) {
  EXPECT_EQ(FileBaseName("/srv/news.old/story"), "story");
  EXPECT_EQ(FileExtension("/srv/news.old/story"), "story");
  EXPECT_EQ(FileExtension("C:\\news.old\\"), "");
}

TEST(FileExtensionTest, IsTheTextBehindTheLastPoint) {
  EXPECT_EQ(FileExtension("C:\\news\\story.txt"), "txt");
  EXPECT_EQ(FileExtension("story.old.RA1"), "RA1");
  EXPECT_EQ(FileExtension("story."), "");
}

struct QuoteRow {
  const char* path;
  const char* quoted;
  const char* left;
};
void PrintTo(const QuoteRow& row, std::ostream* out) {
  *out << row.path;
}
class QuotePathTest : public ::testing::TestWithParam<QuoteRow> {};

TEST_P(QuotePathTest, QuotesOnlyWhatHasABlankAndNoQuotationMark) {
  std::string path = GetParam().path;
  EXPECT_EQ(QuotePath(path), GetParam().quoted);
  EXPECT_EQ(path, GetParam().left);
}

constexpr QuoteRow kQuoteRows[] = {
    {"C:\\a.wav", "C:\\a.wav", "C:\\a.wav"},
    {"C:\\my a.wav", "\"C:\\my a.wav\"", "C:\\my a.wav"},
    {"  C:\\a.wav  ", "C:\\a.wav", "C:\\a.wav"},
    {"  C:\\my a.wav ", "\"C:\\my a.wav\"", "C:\\my a.wav"},
    {"\"C:\\my a.wav\"", "\"C:\\my a.wav\"", "\"C:\\my a.wav\""},
    {"\"C:\\my a.wav", "\"C:\\my a.wav", "\"C:\\my a.wav"},
    {" \"C:\\my a.wav\" x ", "\"C:\\my a.wav\" x", "\"C:\\my a.wav\" x"},
    {"C:\\my \"a\".wav", "\"C:\\my \"a\".wav\"", "C:\\my \"a\".wav"},
    {"a\tb", "a\tb", "a\tb"},
    {"", "", ""},
    {"   ", "", ""},
};
INSTANTIATE_TEST_SUITE_P(Paths, QuotePathTest, ::testing::ValuesIn(kQuoteRows));

bool IsDigit(int code) {
  return code >= 48 && code <= 57;
}
bool IsLetter(int code) {
  return (code >= 65 && code <= 90) || (code >= 97 && code <= 122);
}

TEST(IsValidTextTest, EveryCharacterOfEveryKind) {
  for (int code = 0; code < 256; ++code) {
    const std::string text(1, static_cast<char>(static_cast<unsigned char>(code)));
    EXPECT_EQ(IsValidText(text, 1), IsDigit(code) ? -1 : 0) << code;
    EXPECT_EQ(IsValidText(text, 2), IsDigit(code) || IsLetter(code) ? -1 : 0) << code;
    EXPECT_EQ(IsValidText(text, 3), IsLetter(code) ? -1 : 0) << code;
    EXPECT_EQ(IsValidText(text, 4), IsDigit(code) || IsLetter(code) || code == 32 ? -1 : 0) << code;
    EXPECT_EQ(IsValidText(text, 5), IsDigit(code) || code == 32 ? -1 : 0) << code;
    for (const std::int16_t other : std::to_array<std::int16_t>({0, 6, -1, 100}))
      EXPECT_EQ(IsValidText(text, other), -1) << code;
  }
}

TEST(IsValidTextTest, OneForbiddenCharacterSpoilsTheText) {
  EXPECT_EQ(IsValidText("12345", 1), -1);
  EXPECT_EQ(IsValidText("x2345", 1), 0);
  EXPECT_EQ(IsValidText("12x45", 1), 0);
  EXPECT_EQ(IsValidText("1234x", 1), 0);
  EXPECT_EQ(IsValidText("M\xFCnchen", 3), 0);
}

TEST(IsValidTextTest, EmptyTextIsValid) {
  for (std::int16_t kind = 0; kind <= 6; ++kind) EXPECT_EQ(IsValidText("", kind), -1) << kind;
}

struct TokenRow {
  const char* text;
  std::int32_t position;
  char delimiter;
  const char* token;
  std::int32_t positionAfter;
  std::int32_t endPosition;
};
void PrintTo(const TokenRow& row, std::ostream* out) {
  *out << row.text << " from " << row.position;
}
// What no token may change.
constexpr std::int32_t kUntouched = -77;

class GetTokenTest : public ::testing::TestWithParam<TokenRow> {};

TEST_P(GetTokenTest, TokenAndItsEnd) {
  const TokenRow& row = GetParam();
  std::int32_t position = row.position;
  std::int32_t endPosition = kUntouched;
  EXPECT_EQ(GetToken(row.text, position, row.delimiter, endPosition), row.token);
  EXPECT_EQ(position, row.positionAfter);
  EXPECT_EQ(endPosition, row.endPosition);
}

constexpr TokenRow kTokenRows[] = {
    {"one,two,three", 1, ',', "one", 1, 4},
    {"one,two,three", 5, ',', "two", 5, 8},
    {"one,two,three", 9, ',', "three", 9, 0},
    {"one,two", 4, ',', "", 4, 4},
    {"one,two", 0, ',', "one", 1, 4},
    {"one,two", -5, ',', "one", 1, 4},
    {"  one , two", 1, ',', "one", 1, 7},
    {"one, two  ", 5, ',', "two", 5, 0},
    {"a b c", 2, ' ', "b", 2, 4},
    {"/P NEWS.INI OTHER.INI", 3, ' ', "NEWS.INI", 3, 12},
    {"/P    NEWS.INI", 3, ' ', "NEWS.INI", 3, 0},
    {"", 1, ',', "", 1, kUntouched},
    {"    ", 1, ',', "", 1, kUntouched},
    {"one  ", 4, ',', "", 4, kUntouched},
    {"one", 4, ',', "", 4, kUntouched},
    {"one", 400, ',', "", 400, kUntouched},
    {",one", 1, ',', "", 1, 1},
    {" \t,one", 1, ',', "\t", 1, 3},
};
INSTANTIATE_TEST_SUITE_P(Texts, GetTokenTest, ::testing::ValuesIn(kTokenRows));

}  // namespace
}  // namespace vorda
