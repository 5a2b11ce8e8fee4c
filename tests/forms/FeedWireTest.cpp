// The wire through a whole feed: whatever its story codes are and however it arrives, the bounce port gets
// its bytes, the stories come in order, and the display stays short.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "support/FeedWindows.h"

namespace vorda::test {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

class FeedWire : public FeedWindows {
 protected:
  FeedWire() {
    Record(1).CapturePort = 1;
    Record(1).BouncePort = 2;
    // The story as the tool finds it, and takes it away.
    processes.atStart = [this](const platform::ProcessStart& start) {
      if (!start.program.ends_with("ItemFile.exe")) return;  // a daily tool, which is free to come
      const std::string path = start.arguments.at(0).substr(0, start.arguments.at(0).find('|'));
      stories.push_back(ReadWholeFile(path));
      std::filesystem::remove(path);
    };
  }

  // What the open story's file holds; nothing when none is open.
  static std::optional<std::string> Open() {
    if (Record(1).StoryFileHandle == 0) return std::nullopt;
    return ReadWholeFile(Record(1).StoryFileName);
  }

  Texts stories;
};

// Each line worked out by hand: the filter's rules, then the cutter's.
struct Codes {
  const char* name;
  int start;
  int end;
  Texts arrivals;
  Texts stories;
  std::optional<std::string> open;
  // One more arrival, with a story of its own where the codes allow one: all stories afterwards.
  std::string later;
  Texts storiesLater;
  std::optional<std::string> openLater;
};
void PrintTo(const Codes& codes, std::ostream* out) {
  *out << codes.name;
}

class FeedWireCodes : public FeedWire, public ::testing::WithParamInterface<Codes> {};

TEST_P(FeedWireCodes, CutTheirStoriesAndTheOneBehindThem) {
  const Codes& codes = GetParam();
  Start(1, WriteConfig(1, "[StoryDelimiters]\r\nStartChar=" + std::to_string(codes.start) +
                              "\r\nEndChar=" + std::to_string(codes.end) + "\r\n"));
  std::string sent;
  for (const std::string& arrival : codes.arrivals) {
    Port(1)->Arrive(arrival);
    sent += arrival;
  }
  EXPECT_EQ(stories, codes.stories);
  EXPECT_EQ(Open(), codes.open);
  Port(1)->Arrive(codes.later);
  EXPECT_EQ(stories, codes.storiesLater);
  EXPECT_EQ(Open(), codes.openLater);
  EXPECT_EQ(Port(0)->sent(), sent + codes.later);
}

const Codes kCodes[] = {
    {"Equal", 2, 2, {"\2One\2Two\2"}, {"One", "Two"}, {}, "Later\2", {"One", "Two", "Later"}, {}},
    {"LineFeedStarts", 10, 4, {"\nOne\n\4"}, {"One"}, {}, "\nLater\4", {"One", "Later"}, {}},
    {"LineFeedEnds", 1, 10, {"\1One\n", "\1Two\n"}, {"One"}, "Two", "\1Later\1", {"One", "Two", "Later"}, ""},
    {"LineFeedsOnly", 10, 10, {"\nOne\nTwo\n"}, {}, "OneTwo", "\nLater\n", {}, "OneTwoLater"},
    {"ReturnStarts",
     13,
     4,
     {"\rOne\r\n\4"},
     {"\nOne", "\n"},
     {},
     "\rLater\4",
     {"\nOne", "\n", "\nLater"},
     {}},
    {"ReturnEnds",
     1,
     13,
     {"\1One\r\nTwo\r\n"},
     {"One", "\nTwo"},
     "\n",
     "\1Later\r",
     {"One", "\nTwo", "\n", "Later"},
     "\n"},
    {"ReturnsOnly",
     13,
     13,
     {"\rOne\r", "\nTwo\r\n"},
     {"\nOne", "\nTwo"},
     "\n",
     "Later\r",
     {"\nOne", "\nTwo", "\nLater"},
     "\n"},
    {"BackspaceStarts",
     8,
     4,
     {"\bOne\4", "Two\b\4"},
     {"One", "Tw"},
     {},
     "\bLater\4",
     {"One", "Tw", "Later"},
     {}},
    {"BackspaceEnds", 1, 8, {"\1One\b", "\b"}, {}, "On", "\1Later\1", {"On", "Later"}, ""},
    {"BackspacesOnly", 8, 8, {"\b", "One\b\b\bTwo\b"}, {}, "Tw", "Later\b", {}, "TwLate"},
    {"Above127",
     147,
     255,
     {"\x93One\xFF\xFE", "\x93Two\xFF"},
     {"One", "\xFE", "Two"},
     {},
     "\x93Later\xFF",
     {"One", "\xFE", "Two", "Later"},
     {}},
    {"UndefinedInTheCodePage", 129, 157, {"\x81One\x9D"}, {"One"}, {}, "\x81Later\x9D", {"One", "Later"}, {}},
    {"EqualAbove127", 255, 255, {"\xFFOne\xFF"}, {"One"}, {}, "Later\xFF", {"One", "Later"}, {}},
    {"NulStarts", 0, 4, {"\0One\4"s}, {"One"}, {}, "\0Later\4"s, {"One", "Later"}, {}},
    {"NulEnds", 1, 0, {"\1One\0"s}, {"One"}, {}, "\1Later\0"s, {"One", "Later"}, {}},
    {"OutOfRange", -1, 256, {"\xFFOne\0"s}, {}, "\xFFOne\0"s, "\1Later\4", {}, "\xFFOne\0\1Later\4"s},
};
INSTANTIATE_TEST_SUITE_P(Codes, FeedWireCodes, ::testing::ValuesIn(kCodes),
                         [](const auto& test) { return std::string(test.param.name); });

// What a wire makes of bytes that arrive one by one: nothing stands in front of a backspace, and the end code
// changes where another wire begins.
class WireByteByByte {
 public:
  void Take(char c, int startChar, int endChar) {
    if (c == '\b' || c == '\n') return;
    Cut(c, startChar, endChar);
    if (c == '\r') Cut('\n', startChar, endChar);
  }
  const Texts& stories() const { return stories_; }
  const std::optional<std::string>& open() const { return open_; }

 private:
  void Cut(char c, int startChar, int endChar) {
    const bool ends = static_cast<unsigned char>(c) == endChar;
    const bool starts = !ends && static_cast<unsigned char>(c) == startChar;
    if ((ends || starts) && open_) stories_.push_back(*open_);
    if (ends) open_.reset();
    if (starts) open_ = "";
    if (ends || starts) return;
    if (!open_) open_ = "";
    *open_ += c;
  }

  Texts stories_;
  std::optional<std::string> open_;
};

struct Section {
  std::size_t length;
  std::int16_t endChar;
};

// A weather wire of three sections, broken framing and backspaces among them.
TEST_F(FeedWire, WholeStreamByteByByte) {
  const std::string raw = ReadWholeFile(VORDA_TEST_DATA "/wire/stream/wire-open.raw");
  ASSERT_EQ(raw.size(), 808520u);
  frmWireFeed& form = Start(1);
  FakeSerialControl* const capture = Port(1);
  WireByteByByte wire;
  std::size_t at = 0;
  std::size_t longest = 0;
  for (const auto& [length, endChar] : {Section{324472, 3}, Section{396439, 4}, Section{87609, 3}}) {
    Record(1).EndChar = endChar;
    for (const std::size_t end = at + length; at < end; ++at) {
      capture->Arrive(std::string_view(raw).substr(at, 1));
      wire.Take(raw[at], 1, endChar);
      longest = std::max(longest, form.txtCapture()->Text().size());
    }
  }
  ASSERT_EQ(stories.size(), wire.stories().size());
  for (std::size_t i = 0; i < stories.size(); ++i) ASSERT_EQ(stories[i], wire.stories()[i]) << "story " << i;
  EXPECT_EQ(Open(), wire.open());
  EXPECT_LE(longest, 16002u);
  EXPECT_TRUE(Port(0)->sent() == raw);

  capture->Arrive("\1later\3");
  EXPECT_EQ(stories.back(), "later");
  EXPECT_EQ(Open(), std::nullopt);
}

}  // namespace
}  // namespace vorda::test
