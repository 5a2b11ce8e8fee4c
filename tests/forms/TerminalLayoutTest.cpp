#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "controls/TerminalLayout.h"

namespace vorda::controls {
namespace {

using testing::ElementsAre;
using namespace std::string_view_literals;

std::vector<std::string> Rows(std::string_view text, std::size_t columns) {
  // Not empty at the start: what was there must go.
  std::vector<TerminalRange> rows{{7, 9}};
  LayOutRows(text, columns, rows);
  std::vector<std::string> shown;
  for (const TerminalRange& row : rows) shown.emplace_back(text.substr(row.begin, row.end - row.begin));
  return shown;
}

TEST(TerminalLayout, EmptyTextIsOneEmptyRow) {
  EXPECT_THAT(Rows("", 80), ElementsAre(""));
}

TEST(TerminalLayout, LineOfExactlyTheWidthIsOneRow) {
  EXPECT_THAT(Rows("abcd", 4), ElementsAre("abcd"));
  EXPECT_THAT(Rows("abcd\r\nx", 4), ElementsAre("abcd", "x"));
  EXPECT_THAT(Rows("abcdabcd", 4), ElementsAre("abcd", "abcd"));
}

TEST(TerminalLayout, OneMoreThanTheWidthWraps) {
  EXPECT_THAT(Rows("abcde", 4), ElementsAre("abcd", "e"));
  EXPECT_THAT(Rows("abcde\r\nx", 4), ElementsAre("abcd", "e", "x"));
}

TEST(TerminalLayout, WidthOneAndWidthNone) {
  EXPECT_THAT(Rows("ab\r\n\r\nc", 1), ElementsAre("a", "b", "", "c"));
  EXPECT_THAT(Rows("ab", 0), ElementsAre("a", "b"));
}

TEST(TerminalLayout, LineEndAtTheEndOpensAnEmptyRow) {
  EXPECT_THAT(Rows("ab\r\n", 4), ElementsAre("ab", ""));
  EXPECT_THAT(Rows("\r\n\r\n", 4), ElementsAre("", "", ""));
}

TEST(TerminalLayout, LoneCarriageReturnAndLineFeedAreCells) {
  EXPECT_THAT(Rows("a\rb", 4), ElementsAre("a\rb"));
  EXPECT_THAT(Rows("a\nb", 4), ElementsAre("a\nb"));
  EXPECT_THAT(Rows("a\n\rb", 4), ElementsAre("a\n\rb"));
  EXPECT_THAT(Rows("abc\r\r\nd", 4), ElementsAre("abc\r", "d"));
}

TEST(TerminalLayout, CarriageReturnAtTheVeryEndIsACell) {
  EXPECT_THAT(Rows("ab\r", 4), ElementsAre("ab\r"));
  EXPECT_THAT(Rows("abcd\r", 4), ElementsAre("abcd", "\r"));
}

TEST(TerminalLayout, RowsHoldEveryByteButLineEnds) {
  std::string text;
  for (int code = 0; code < 256; ++code) text += static_cast<char>(code);
  for (const std::size_t columns : {1U, 3U, 255U, 256U, 257U}) {
    std::string joined;
    for (const std::string& row : Rows(text + "\r\n" + text, columns)) {
      EXPECT_LE(row.size(), columns);
      joined += row;
    }
    EXPECT_EQ(joined, text + text) << columns;
  }
}

TEST(TerminalLayout, RowAtHoldsBothSidesOfAWrapAndOfALineEnd) {
  std::vector<TerminalRange> rows;
  LayOutRows("abcdef\r\n\r\nx", 4, rows);  // abcd | ef | | x
  const std::size_t expected[] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 3, 3};
  for (std::size_t position = 0; position < std::size(expected); ++position) {
    EXPECT_EQ(RowAt(rows, position), expected[position]) << position;
  }
  EXPECT_EQ(RowAt(rows, 1000), 3U);
}

TEST(TerminalLayout, SymbolsAreTheCodesWithoutACharacter) {
  std::string symbols;
  for (int code = 128; code < 256; ++code) {
    if (IsTerminalSymbol(static_cast<char>(code))) symbols += static_cast<char>(code);
  }
  EXPECT_EQ(symbols, "\x81\x8D\x8F\x90\x9D");
  EXPECT_TRUE(IsTerminalSymbol('\0'));
  EXPECT_TRUE(IsTerminalSymbol('\x1F'));
  EXPECT_FALSE(IsTerminalSymbol(' '));
  EXPECT_FALSE(IsTerminalSymbol('~'));
  EXPECT_TRUE(IsTerminalSymbol('\x7F'));
}

std::string Word(std::string_view text, std::size_t position) {
  const TerminalRange word = WordAt(text, position);
  return std::string(text.substr(word.begin, word.end - word.begin));
}

TEST(TerminalLayout, WordStopsAtBlanksPunctuationAndSymbols) {
  const std::string_view text =
      "one  two_3, \x01"
      "caf\xE9\x9C \xA0...\r\nend"sv;
  EXPECT_EQ(Word(text, 0), "one");
  EXPECT_EQ(Word(text, 2), "one");
  EXPECT_EQ(Word(text, 4), "  ");
  EXPECT_EQ(Word(text, text.find("two")), "two_3");
  EXPECT_EQ(Word(text, text.find(',')), ",");
  EXPECT_EQ(Word(text, text.find('\x01')), "\x01");
  EXPECT_EQ(Word(text, text.find("af")), "caf\xE9\x9C");
  EXPECT_EQ(Word(text, text.find('\xA0')), " \xA0");
  EXPECT_EQ(Word(text, text.find('.')), "...");
  EXPECT_EQ(Word(text, text.size() - 1), "end");
  EXPECT_EQ(Word(text, text.size()), "");
}

TEST(TerminalLayout, StepTellsAppendingCuttingAndReplacing) {
  std::string before;
  for (int line = 0; line < 40; ++line) before += "line " + std::to_string(line) + "\r\n";
  EXPECT_EQ(StepBetween(before, before + "more"), (TerminalStep{0, before.size()}));
  EXPECT_EQ(StepBetween(before, before.substr(100) + "more"), (TerminalStep{100, before.size() - 100}));
  EXPECT_EQ(StepBetween(before, before.substr(0, before.size() - 1) + "x"),
            (TerminalStep{0, before.size() - 1}));
  EXPECT_EQ(StepBetween("", "new"), (TerminalStep{0, 0}));
  EXPECT_EQ(StepBetween("old", ""), (TerminalStep{0, 0}));
  EXPECT_EQ(StepBetween("A", "AB"), (TerminalStep{0, 1}));
}

}  // namespace
}  // namespace vorda::controls
