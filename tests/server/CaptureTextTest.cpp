#include <gtest/gtest.h>

#include <string>

#include "feed/CaptureText.h"

namespace vorda {
namespace {

// What an arrival becomes on its way through a text that shows `before`.
std::string Filtered(std::string data, const std::string& before = {}) {
  CaptureText text;
  std::string shown = before;
  text.Append(shown);
  text.Append(data);
  return data;
}

// What is shown after `before` and then each of the arrivals.
std::string Shown(std::initializer_list<std::string> arrivals) {
  CaptureText text;
  for (std::string arrival : arrivals) text.Append(arrival);
  return text.Text();
}

TEST(CaptureTextTest, PlainTextIsShownAndPassesUnchanged) {
  EXPECT_EQ(Filtered("BULLETIN 1"), "BULLETIN 1");
  EXPECT_EQ(Shown({"BULL", "ETIN"}), "BULLETIN");
}

TEST(CaptureTextTest, EmptyArrivalChangesNothing) {
  EXPECT_EQ(Filtered("", "abc"), "");
  EXPECT_EQ(Shown({"abc", ""}), "abc");
}

TEST(CaptureTextTest, LineFeedsGoAndOneComesBehindEveryCarriageReturn) {
  EXPECT_EQ(Filtered("a\r\nb"), "a\r\nb");
  EXPECT_EQ(Filtered("a\rb"), "a\r\nb");
  EXPECT_EQ(Filtered("a\nb"), "ab");
  EXPECT_EQ(Filtered("a\n\rb"), "a\r\nb");
  EXPECT_EQ(Filtered("a\r\r\nb"), "a\r\n\r\nb");
  EXPECT_EQ(Filtered("\n\n\n"), "");
  EXPECT_EQ(Filtered("\r"), "\r\n");
}

TEST(CaptureTextTest, LineEndCutInTwoByArrivalsIsOneLineEnd) {
  EXPECT_EQ(Shown({"a\r", "\nb"}), "a\r\nb");
}

TEST(CaptureTextTest, LinesEndedByLineFeedsOnlyRunTogether) {
  EXPECT_EQ(Shown({"one\ntwo\nthree\n"}), "onetwothree");
}

TEST(CaptureTextTest, BackspaceInsideTakesTheCharacterBeforeIt) {
  EXPECT_EQ(Filtered("ab\bc"), "ac");
  EXPECT_EQ(Filtered("abc\b\bd"), "ad");
  EXPECT_EQ(Filtered("ab\bc\bd"), "ad");
  EXPECT_EQ(Filtered("a\b"), "");
  EXPECT_EQ(Shown({"xy", "ab\bc"}), "xyac");
}

TEST(CaptureTextTest, BackspaceComesBeforeTheLineEnds) {
  // It takes the line feed, which would have gone anyway, and so saves the character ahead of it.
  EXPECT_EQ(Filtered("ab\n\bc"), "abc");
  EXPECT_EQ(Filtered("ab\r\n\bc"), "ab\r\nc");
  // It takes the carriage return, and no line feed comes in its place.
  EXPECT_EQ(Filtered("ab\r\bc"), "abc");
  EXPECT_EQ(Filtered("ab\r\n\b\bc"), "abc");
}

TEST(CaptureTextTest, BackspaceTakesTheStoryCodesToo) {
  EXPECT_EQ(Filtered("\x01\bX"), "X");
  EXPECT_EQ(Filtered("text\x04\b more"), "text more");
}

TEST(CaptureTextTest, BackspaceAtTheFrontTakesTheLastCharacterShownAndNothingOfTheArrival) {
  EXPECT_EQ(Filtered("\bX", "abc"), "X");
  EXPECT_EQ(Shown({"abc", "\bX"}), "abX");
}

TEST(CaptureTextTest, SeveralBackspacesAtTheFrontTakeOneCharacter) {
  EXPECT_EQ(Shown({"abc", "\b\b\bX"}), "abX");
  EXPECT_EQ(Filtered("\b\b\bX", "abc"), "X");
}

TEST(CaptureTextTest, BackspacesThatRunPastTheArrivalsFrontTakeOneCharacterShown) {
  EXPECT_EQ(Shown({"abc", "XY\b\b\b\bZ"}), "abZ");
  EXPECT_EQ(Filtered("XY\b\b\b\bZ", "abc"), "Z");
}

TEST(CaptureTextTest, LoneBackspaceDeletesTheLastCharacter) {
  EXPECT_EQ(Shown({"abc", "\b"}), "ab");
  EXPECT_EQ(Filtered("\b", "abc"), "");
}

TEST(CaptureTextTest, BackspaceOnAnEmptyTextIsDropped) {
  EXPECT_EQ(Filtered("\bX"), "X");
  EXPECT_EQ(Shown({"\b\b", "X"}), "X");
}

TEST(CaptureTextTest, BackspaceAtTheFrontTakesHalfALineEnd) {
  EXPECT_EQ(Shown({"a\r", "\bX"}), "a\rX");
}

TEST(CaptureTextTest, ArrivalOfBackspacesOnlyTakesOneCharacter) {
  EXPECT_EQ(Shown({std::string(12000, 'a'), std::string(10000, '\b')}), std::string(11999, 'a'));
}

TEST(CaptureTextTest, TenThousandBackspacesUndoTenThousandCharacters) {
  EXPECT_EQ(Filtered(std::string(10000, 'a') + std::string(10000, '\b') + "end"), "end");
  EXPECT_EQ(Filtered(std::string(10001, 'a') + std::string(10000, '\b') + "end"), "aend");
}

TEST(CaptureTextTest, AllOtherBytesAreKeptAsTheyAre) {
  std::string all;
  std::string expected;
  for (int code = 0; code < 256; ++code) {
    if (code == 8) continue;
    const char c = static_cast<char>(static_cast<unsigned char>(code));
    all += c;
    if (code != 10) expected += c;
    if (code == 13) expected += '\n';
  }
  EXPECT_EQ(Filtered(all), expected);
  EXPECT_EQ(Shown({all}), expected);
}

TEST(CaptureTextTest, SixteenThousandCharactersStay) {
  EXPECT_EQ(Shown({std::string(16000, 'a'), "b"}), std::string(16000, 'a') + "b");
}

TEST(CaptureTextTest, SixteenThousandAndOneLoseTheirFirst4096) {
  const std::string front(4096, 'a');
  const std::string rest(11905, 'b');
  EXPECT_EQ(Shown({front + rest, "c"}), rest + "c");
}

TEST(CaptureTextTest, TextIsCutBeforeTheInsertionAndNotByIt) {
  // The arrival that takes the text past the limit doesn't cut it; the one behind it does.
  EXPECT_EQ(Shown({std::string(16000, 'a'), "bcd"}).size(), 16003U);
  EXPECT_EQ(Shown({std::string(16000, 'a'), "bcd", "e"}).size(), 11908U);
}

TEST(CaptureTextTest, TextIsCutOnceHoweverLongItIs) {
  EXPECT_EQ(Shown({std::string(30000, 'a'), "b"}).size(), 30000U - 4096U + 1U);
}

// A line that is full for ever brings more with each arrival than the cut takes.
TEST(CaptureTextTest, TextOfMoreThanAQuarterMebibyteKeepsItsLastSixteenThousand) {
  const std::string most(262144, 'a');
  EXPECT_EQ(Shown({most, "b"}).size(), 262144U - 4096U + 1U);
  EXPECT_EQ(Shown({most, std::string(4097, 'b'), "c"}),
            std::string(16000 - 4097, 'a') + std::string(4097, 'b') + "c");
}

TEST(CaptureTextTest, EmptyArrivalCutsALongTextToo) {
  EXPECT_EQ(Shown({std::string(16001, 'a'), ""}).size(), 11905U);
}

TEST(CaptureTextTest, LineEndCountsAsTwoCharacters) {
  // 8000 line ends are 16000 characters and stay; one more character and they lose 2048 line ends.
  EXPECT_EQ(Shown({std::string(8000, '\r'), "x"}).size(), 16001U);
  EXPECT_EQ(Shown({std::string(8000, '\r'), "x", "y"}).size(), 16001U - 4096U + 1U);
}

TEST(CaptureTextTest, BackspaceAtTheFrontMeetsTheTextAsItWasCut) {
  const std::string rest(11905, 'b');
  EXPECT_EQ(Shown({std::string(4096, 'a') + rest, "\bX"}), std::string(11904, 'b') + "X");
}

TEST(CaptureTextTest, FilterDoesNotDependOnWhatIsShown) {
  EXPECT_EQ(Filtered("\bq\rw\n", ""), Filtered("\bq\rw\n", "something"));
}

}  // namespace
}  // namespace vorda
