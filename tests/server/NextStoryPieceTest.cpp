#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "feed/StoryCapture.h"

namespace vorda {
namespace {

using Kind = StoryPiece::Kind;

struct Row {
  const char* name;
  std::string data;
  int startChar;
  int endChar;
  Kind kind;
  std::size_t length;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.name;
}

class NextStoryPieceTest : public ::testing::TestWithParam<Row> {};

TEST_P(NextStoryPieceTest, TheFirstPiece) {
  const Row& row = GetParam();
  const StoryPiece piece = NextStoryPiece(row.data, row.startChar, row.endChar);
  EXPECT_EQ(piece.kind, row.kind);
  EXPECT_EQ(piece.length, row.length);
}

using namespace std::string_literals;

const Row kRows[] = {
    {"TextAlone", "abc", 1, 4, Kind::Text, 3},
    {"OneCharacter", "a", 1, 4, Kind::Text, 1},
    {"TextUpToTheStart", "ab\x01zz", 1, 4, Kind::Text, 2},
    {"TextUpToTheEnd", "ab\x04zz", 1, 4, Kind::Text, 2},
    {"TextUpToTheNearerStart", "a\x01zz\x04", 1, 4, Kind::Text, 1},
    {"TextUpToTheNearerEnd", "a\x04zz\x01", 1, 4, Kind::Text, 1},
    {"TextUpToTheFirstOfSeveralStarts", "abc\x01\x01\x04\x04", 1, 4, Kind::Text, 3},
    {"CodeIsTheLastCharacter", "abc\x04", 1, 4, Kind::Text, 3},
    {"Start", "\x01zz", 1, 4, Kind::Start, 1},
    {"StartAheadOfTheEnd", "\x01\x04", 1, 4, Kind::Start, 1},
    {"End", "\x04zz", 1, 4, Kind::End, 1},
    {"EndAheadOfTheStart", "\x04\x01", 1, 4, Kind::End, 1},
    {"LoneStart", "\x01", 1, 4, Kind::Start, 1},
    {"LoneEnd", "\x04", 1, 4, Kind::End, 1},
    {"EqualCodesEnd", "XX", 'X', 'X', Kind::End, 1},
    {"TextUpToEqualCodes", "abXcd", 'X', 'X', Kind::Text, 2},
    {"NulAsStart", "a\0b"s, 0, 4, Kind::Text, 1},
    {"NulStarts", "\0b"s, 0, 4, Kind::Start, 1},
    {"NulEnds", "\0b"s, 1, 0, Kind::End, 1},
    {"NulInTheTextIsText", "a\0b"s, 1, 4, Kind::Text, 3},
    {"CarriageReturnEnds", "\r\nx", 1, 13, Kind::End, 1},
    {"CodeAbove127", "ab\xC8z", 200, 4, Kind::Text, 2},
    {"CodeAbove127Starts", "\xC8z", 200, 4, Kind::Start, 1},
    {"CodeAbove127Ends", "\xFFz", 1, 255, Kind::End, 1},
    {"CodeBelowZeroMatchesNothing", "a\xFF\x01z", -1, 4, Kind::Text, 4},
    {"EndBelowZeroMatchesNothing", "a\xFFz", 1, -1, Kind::Text, 3},
    {"CodeAbove255MatchesNothing", "a\x01z", 257, 4, Kind::Text, 3},
    {"EndAbove255MatchesNothing", "a\x04\0z"s, 1, 260, Kind::Text, 4},
    {"BothOutOfRange", "\x01\x04", 300, -300, Kind::Text, 2},
    {"StartBehindTheFirstWindow", std::string(256, 'x') + "\x01", 1, 4, Kind::Text, 256},
    {"StartAtTheFirstWindowsEnd", std::string(255, 'x') + "\x01z", 1, 4, Kind::Text, 255},
    {"EndInTheSecondWindow", std::string(257, 'x') + "\x04\x01", 1, 4, Kind::Text, 257},
    {"EndAtTheSecondWindowsEnd", std::string(767, 'x') + "\x04z", 1, 4, Kind::Text, 767},
    {"EndBehindTheSecondWindow", std::string(768, 'x') + "\x04z", 1, 4, Kind::Text, 768},
    {"StartInTheThirdWindow", std::string(769, 'x') + "\x01\x04", 1, 4, Kind::Text, 769},
    {"StartAheadOfAnEndInALaterWindow", std::string(300, 'x') + "\x01" + std::string(900, 'x') + "\x04", 1, 4,
     Kind::Text, 300},
    {"EndAheadOfAStartInALaterWindow", std::string(300, 'x') + "\x04" + std::string(900, 'x') + "\x01", 1, 4,
     Kind::Text, 300},
    {"LongTextAlone", std::string(5000, 'x'), 1, 4, Kind::Text, 5000},
    {"NeitherFarOutOfRange", "\x01\x04", 32767, -32768, Kind::Text, 2},
};
INSTANTIATE_TEST_SUITE_P(Pieces, NextStoryPieceTest, ::testing::ValuesIn(kRows),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace vorda
