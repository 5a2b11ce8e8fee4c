// A story whose bytes arrive in two pieces, cut at every place that there is.
//
// Where the second piece begins decides nothing but this: a backspace at its front finds the character that
// it was meant for in the file already, and leaves it there.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "feed/CaptureText.h"
#include "support/StoryFixture.h"

namespace vorda {
namespace {

using Texts = std::vector<std::string>;

class WireSplits : public test::StoryFixture {
 protected:
  // Starts anew, and takes the bytes in two arrivals.
  void ReceiveSplit(std::string_view bytes, std::size_t place) {
    if (feed().StoryFileHandle > 0) capture_.CloseTempTextStoryFile();
    for (const test::HandedStory& story : handed_) std::filesystem::remove(story.path);
    handed_.clear();
    text_ = CaptureText();
    for (const std::string_view piece : {bytes.substr(0, place), bytes.substr(place)}) {
      std::string arrival(piece);
      text_.Append(arrival);
      Take(arrival);
    }
  }

  CaptureText text_;
};

// Small lines whose every split is worked out by hand.
struct Line {
  const char* name;
  std::string bytes;
  Texts stories;
  // Where the split makes a difference: the length of the first piece, and the stories it makes.
  std::map<std::size_t, Texts> otherwise;
};
void PrintTo(const Line& line, std::ostream* out) {
  *out << line.name;
}

class WireSplitLines : public WireSplits, public ::testing::WithParamInterface<Line> {};

TEST_P(WireSplitLines, EverySplit) {
  const Line& line = GetParam();
  feed().StartChar = '<';
  feed().EndChar = '>';
  for (std::size_t place = 0; place <= line.bytes.size(); ++place) {
    ReceiveSplit(line.bytes, place);
    const auto other = line.otherwise.find(place);
    EXPECT_EQ(Handed(), other == line.otherwise.end() ? line.stories : other->second) << "at " << place;
    Take("<later>");
    EXPECT_EQ(Handed().back(), "later") << "at " << place;
  }
}

const Line kLines[] = {
    {"PlainText", "<two words>", {"two words"}, {}},
    {"LineEnd", "<A\r\nB>", {"A\r\nB"}, {}},
    {"LineEndOfTheWire", "<A\r\r\nB>", {"A\r\n\r\nB"}, {}},
    {"LineFeedsAlone", "<A\n\nB>", {"AB"}, {}},
    {"LineFeedAheadOfTheReturn", "<A\n\rB>", {"A\r\nB"}, {}},
    {"LineEndBetweenTwoStories", "<A>\r\n<B>", {"A", "\r\n", "B"}, {}},
    {"TwoStartCodes", "<<A>", {"", "A"}, {}},
    {"EndAndStart", "<A><B>", {"A", "B"}, {}},
    {"Backspace", "<ab\bc>", {"ac"}, {{3, {"abc"}}}},
    {"TwoBackspaces", "<ab\b\bc>", {"c"}, {{2, {"ac"}}, {3, {"abc"}}, {4, {"ac"}}}},
    {"TwoBackspacesApart", "<ab\bc\bd>", {"ad"}, {{3, {"abd"}}, {5, {"acd"}}}},
    {"BackspaceOnAReturn", "<A\r\b\nB>", {"AB"}, {{3, {"A\r\nB"}}}},
    {"BackspaceOnALineFeed", "<A\r\n\bB>", {"A\r\nB"}, {}},
    {"BackspaceOnALoneLineFeed", "<A\n\bB>", {"AB"}, {}},
    {"BackspaceOnTheStartCode", "A<\bB>", {"AB"}, {{2, {"A", "B"}}}},
    {"BackspaceOnTheEndCode", "<A>\bB>", {"AB"}, {{3, {"A", "B"}}}},
    {"BackspaceFirstOfAll", "\bA>", {"A"}, {}},
    {"MoreBackspacesThanText", "ab\b\b\bc>", {"c"}, {{1, {"ac"}}, {2, {"abc"}}, {3, {"ac"}}}},
};
INSTANTIATE_TEST_SUITE_P(Lines, WireSplitLines, ::testing::ValuesIn(kLines),
                         [](const auto& test) { return std::string(test.param.name); });

// Whole stories off the wire, each with the line ends behind it and another story.
struct WireStory {
  const char* name;
  const char* file;    // below the wire's data
  std::size_t offset;  // in the file
  std::size_t length;  // 0: to its end
  std::int16_t endChar;
};
void PrintTo(const WireStory& story, std::ostream* out) {
  *out << story.name;
}

class WireSplitStories : public WireSplits, public ::testing::WithParamInterface<WireStory> {
 protected:
  // What the display's filter makes of bytes in which nothing but a letter, a digit or the like stands ahead
  // of a backspace.
  static std::string AsFiled(std::string_view bytes) {
    std::string filed;
    for (const char c : bytes) {
      if (c == '\b') {
        filed.pop_back();
      } else if (c != '\n') {
        filed += c;
        if (c == '\r') filed += '\n';
      }
    }
    return filed;
  }
};

TEST_P(WireSplitStories, EverySplit) {
  const WireStory& story = GetParam();
  const std::string start = "\x01";
  const std::string end(1, static_cast<char>(story.endChar));
  feed().EndChar = story.endChar;
  const std::string file = test::ReadWholeFile(std::string(VORDA_TEST_DATA "/wire/") + story.file);
  const std::string body = file.substr(story.offset, story.length == 0 ? std::string::npos : story.length);
  ASSERT_GE(body.size(), 60u);
  ASSERT_EQ(body.find_first_of(start + end), std::string::npos);
  const std::string bytes = start + body + end + "\r\r\n" + start + "later\r\r\n" + end;

  int differing = 0;
  for (std::size_t place = 0; place <= bytes.size(); ++place) {
    ReceiveSplit(bytes, place);
    std::string filed = AsFiled(body);
    if (place < bytes.size() && bytes[place] == '\b') {
      // The first piece is in the file; the backspace that follows is dropped.
      filed = AsFiled(body.substr(0, place - 1)) + AsFiled(body.substr(place));
      ++differing;
    }
    ASSERT_EQ(Handed(), (Texts{filed, "\r\n\r\n", "later\r\n\r\n"})) << "at " << place;
    ASSERT_EQ(text_.Text(), start + AsFiled(body) + end + "\r\n\r\n" + start + "later\r\n\r\n" + end)
        << "at " << place;
  }
  EXPECT_EQ(differing, std::count(body.begin(), body.end(), '\b'));
}

constexpr WireStory kStories[] = {
    {"NulAndALineFeed", "soh-etx/07-nullbyte.txt", 0, 0, 3},
    {"BytesAbove127", "soh-etx/03-FFWTWC-tilde.txt", 0, 0, 3},
    {"Report", "soh-etx/06-PIREP.txt", 0, 0, 3},
    {"Statement", "soh-etx/02-SCPPR2.txt", 0, 0, 3},
    {"Roundup", "soh-etx/10-RRSJAN-3.txt", 0, 0, 3},
    {"LineFeedsAlone", "soh-eot/11-CWAAN1.txt", 0, 0, 4},
    {"LineFeedsAndBytesAbove127", "soh-eot/09-LSRSJU.txt", 0, 0, 4},
    {"DelAndRecordSeparators", "soh-eot/04-1139254-SXUS70-KWAL-062005.txt", 0, 0, 4},
    {"Shortest", "soh-eot/20-1410180-SRUS74-KLUB-062007-COR.txt", 0, 0, 4},
    {"Overstruck", "stream/wire-open.raw", 479882, 500, 4},
};
INSTANTIATE_TEST_SUITE_P(Stories, WireSplitStories, ::testing::ValuesIn(kStories),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace vorda
