#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "platform/Text.h"

namespace vorda::platform {
namespace {

std::string AllCodes() {
  std::string codes;
  for (int code = 0; code < 256; ++code) codes += static_cast<char>(code);
  return codes;
}

TEST(TextTest, UpperCaseChangesPlainLettersAlone) {
  EXPECT_EQ(UpperCase("abc xyz `{@[ 019"), "ABC XYZ `{@[ 019");
}

TEST(TextTest, UpperCaseKnowsTheCodePagesLetters) {
  EXPECT_EQ(UpperCase("\xE0\xE4\xE9\xF6\xF8\xFC\xFE"), "\xC0\xC4\xC9\xD6\xD8\xDC\xDE");
  EXPECT_EQ(UpperCase("\x9A\x9C\x9E"), "\x8A\x8C\x8E");  // s with caron, oe, z with caron
  EXPECT_EQ(UpperCase("\xFF"), "\x9F");                  // y with diaeresis
}

TEST(TextTest, CodesWithoutACapitalStay) {
  const std::string unchanged = "\xDF\xB5\xF7\xD7\x83\xAA\xBA\x81\x8D\x8F\x90\x9D\xA0";
  EXPECT_EQ(UpperCase(unchanged), unchanged);
}

TEST(TextTest, SixtyLettersHaveACapital) {
  int changed = 0;
  for (const char c : AllCodes()) changed += UpperCase(c) != c ? 1 : 0;
  EXPECT_EQ(changed, 26 + 30 + 3 + 1);
}

TEST(TextTest, SameTextIsBlindToCaseAndNotToLength) {
  EXPECT_TRUE(SameText("HighLightUnderLine", "HighLightUnderline"));
  EXPECT_TRUE(SameText("\xFF", "\x9F"));
  EXPECT_FALSE(SameText("abc", "abcd"));
  EXPECT_FALSE(SameText("abcd", "abc"));
  EXPECT_FALSE(SameText("\xE4", "a"));
  EXPECT_TRUE(SameText("", ""));
}

TEST(TextTest, TrimTakesBlanksOnly) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(Trim("\ta \r\n"), "\ta \r\n");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(Trim(""), "");
  EXPECT_EQ(Trim("\xA0"), "\xA0");
}

TEST(TextTest, All256CodesSurviveTheWayToUnicodeAndBack) {
  const std::string codes = AllCodes();
  const QString text = ToUnicode(codes);
  EXPECT_EQ(text.size(), 256);
  std::set<char16_t> distinct;
  for (const QChar character : text) distinct.insert(character.unicode());
  EXPECT_EQ(distinct.size(), 256U);
  EXPECT_EQ(FromUnicode(text), codes);
}

TEST(TextTest, All256CodesSurviveTheWayToUtf8AndBack) {
  const std::string codes = AllCodes();
  std::string back;
  ASSERT_TRUE(FromUtf8(ToUtf8(codes), back));
  EXPECT_EQ(back, codes);
}

TEST(TextTest, UpperHalfIsWindows1252) {
  EXPECT_EQ(ToUnicode("\x80\x85\x8A\x92\x99\x9F"),
            QString::fromUtf16(u"\u20AC\u2026\u0160\u2019\u2122\u0178"));
  EXPECT_EQ(ToUnicode("\x81\x9D"), QString(QChar(0x81)) + QChar(0x9D));
  EXPECT_EQ(ToUtf8("a\xE9\x80\x81"), "a\xC3\xA9\xE2\x82\xAC\xC2\x81");
}

TEST(TextTest, OneQuestionMarkForEachCharacterOutsideTheCodePage) {
  EXPECT_EQ(FromUnicode(QString::fromUtf16(u"a\u0416b")), "a?b");
  EXPECT_EQ(FromUnicode(QString::fromUtf16(u"a\U0001F600b")), "a?b");
  EXPECT_EQ(FromUnicode(QString(QChar(0xD800)) + u'x'), "?x");
  EXPECT_EQ(FromUnicode(QString(QChar(0x80))), "?");  // the control code isn't the euro sign
}

TEST(TextTest, FromUtf8LeavesTheResultAloneWhenItRefuses) {
  using namespace std::string_view_literals;
  const std::string_view refused[] = {"\xFF"sv,
                                      "\xC3"sv,
                                      "\xC0\x80"sv,
                                      "\xED\xA0\x80"sv,
                                      "\xD0\x96"sv,
                                      "a\xF6z"sv,
                                      "\xEF\xBB\xBF"
                                      "a"sv,
                                      "\xF0\x9F\x98\x80"sv,
                                      "\xC2\x80"sv,
                                      "\xEF\xBF\xBD"sv,
                                      "\xE0\x82\xA9"sv};
  for (const std::string_view text : refused) {
    std::string ansi = "kept";
    EXPECT_FALSE(FromUtf8(text, ansi)) << ::testing::PrintToString(text);
    EXPECT_EQ(ansi, "kept");
  }
}

TEST(TextTest, FromUtf8TakesNulAndNothing) {
  using namespace std::string_literals;
  std::string ansi = "old";
  EXPECT_TRUE(FromUtf8("\xC3\xBC\0x"s, ansi));
  EXPECT_EQ(ansi, "\xFC\0x"s);
  EXPECT_TRUE(FromUtf8("", ansi));
  EXPECT_EQ(ansi, "");
}

}  // namespace
}  // namespace vorda::platform
