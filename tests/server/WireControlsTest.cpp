// Ten thousand control characters in one arrival: what becomes of them, that the story behind them is whole,
// and that their work grows with their number and not with its square.

#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "feed/CaptureText.h"
#include "support/StoryFixture.h"

namespace vorda {
namespace {

std::string Repeated(std::string_view piece, std::size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

constexpr std::size_t kMany = 10'000;

// With "<" and ">" as the story codes.
struct Burst {
  const char* name;
  std::string piece;
  std::size_t count;
  std::size_t emptyStories;
  // What the open story holds afterwards; no story is open when there is none.
  bool open;
  std::string openText;
};
void PrintTo(const Burst& burst, std::ostream* out) {
  *out << burst.name;
}

class WireBursts : public test::StoryFixture, public ::testing::WithParamInterface<Burst> {};

TEST_P(WireBursts, LeaveTheStoryBehindThemWhole) {
  const Burst& burst = GetParam();
  feed().StartChar = '<';
  feed().EndChar = '>';
  test::WriteWholeFile(feed().FullConfigFile, "[General]\r\n");
  CaptureText text;
  std::string arrival = Repeated(burst.piece, burst.count);
  ASSERT_EQ(arrival.size(), kMany);
  text.Append(arrival);
  Take(arrival);
  EXPECT_EQ(Handed(), Texts(burst.emptyStories, ""));
  ASSERT_EQ(feed().StoryFileHandle > 0, burst.open);
  if (burst.open) {
    EXPECT_EQ(OpenText(), burst.openText);
  }

  arrival = "<later>";
  text.Append(arrival);
  Take(arrival);
  ASSERT_EQ(handed_.size(), burst.emptyStories + (burst.open ? 2 : 1));
  EXPECT_EQ(handed_.back().text, "later");
  EXPECT_EQ(announced_.size(), handed_.size());
  EXPECT_EQ(feed().StoryFileHandle, 0);
}

const Burst kBursts[] = {
    {"Starts", "<", kMany, kMany - 1, true, ""},
    {"Ends", ">", kMany, 0, false, ""},
    {"StartsAndEnds", "<>", kMany / 2, kMany / 2, false, ""},
    {"Backspaces", "\b", kMany, 0, false, ""},
    {"LineFeeds", "\n", kMany, 0, false, ""},
    {"Returns", "\r", kMany, 0, true, Repeated("\r\n", kMany)},
    {"Nuls", std::string(1, '\0'), kMany, 0, true, std::string(kMany, '\0')},
    {"Escapes", "\x1B", kMany, 0, true, std::string(kMany, '\x1B')},
    {"StartsTakenByBackspaces", "<\b", kMany / 2, 0, false, ""},
    {"EndsTakenByBackspaces", ">\b", kMany / 2, 0, false, ""},
    {"ReturnsTakenByBackspaces", "\r\b", kMany / 2, 0, false, ""},
    {"TextTakenByBackspaces", "a\b", kMany / 2, 0, false, ""},
};
INSTANTIATE_TEST_SUITE_P(Bursts, WireBursts, ::testing::ValuesIn(kBursts),
                         [](const auto& test) { return std::string(test.param.name); });

// The processor time of this thread, in nanoseconds.
std::int64_t ThreadTime() {
  timespec used{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return std::int64_t{used.tv_sec} * 1'000'000'000 + used.tv_nsec;
}

std::int64_t QuickestOf(int turns, const std::function<void()>& work) {
  std::int64_t quickest = std::numeric_limits<std::int64_t>::max();
  for (int turn = 0; turn < turns; ++turn) {
    const std::int64_t begin = ThreadTime();
    work();
    quickest = std::min(quickest, ThreadTime() - begin);
  }
  return quickest;
}

constexpr std::size_t kBytes = 30 * kMany;

class WireEffort : public test::StoryFixture {
 protected:
  WireEffort() {
    feed().StartChar = '<';
    feed().EndChar = '>';
  }

  // The same bytes as thirty arrivals and as one. Work that grows with the square of an arrival takes the one
  // thirty times as long.
  void ExpectLinear(const std::string& bytes, const std::function<void(std::string)>& receive) {
    ASSERT_EQ(bytes.size(), kBytes);
    const std::int64_t many = QuickestOf(3, [&] {
      for (std::size_t at = 0; at < bytes.size(); at += kMany) receive(bytes.substr(at, kMany));
    });
    const std::int64_t one = QuickestOf(3, [&] { receive(bytes); });
    EXPECT_LT(one, 5 * many);
  }
  void ExpectLinearFilter(const std::string& piece) {
    ExpectLinear(Repeated(piece, kBytes / piece.size()), [](std::string arrival) {
      CaptureText text;
      text.Append(arrival);
    });
  }
  void ExpectLinearCut(const std::string& piece) {
    std::size_t pieces = 0;
    ExpectLinear(Repeated(piece, kBytes / piece.size()), [&](const std::string& arrival) {
      std::string_view data = arrival;
      for (; !data.empty(); ++pieces) data.remove_prefix(NextStoryPiece(data, '<', '>').length);
    });
    EXPECT_GE(pieces, 6 * kBytes / 2);
  }
};

TEST_F(WireEffort, BackspacesAreWorkedOutInOnePass) {
  ExpectLinearFilter("\b");
  ExpectLinearFilter("a\b");
  ExpectLinearFilter("aaaaa\b\b\b\b\b");
}

TEST_F(WireEffort, BackspacesBehindAsMuchTextAreWorkedOutInOnePass) {
  const std::string text(kBytes / 2, 'a');
  ExpectLinear(text + std::string(kBytes / 2, '\b'), [](std::string arrival) { ResolveBackspaces(arrival); });
}

TEST_F(WireEffort, LineEndsArePutRightInOnePass) {
  ExpectLinearFilter("\r");
  ExpectLinearFilter("\n");
  ExpectLinearFilter("\r\n");
}

// Codes of one kind without any of the other, which a search would look for to the arrival's end.
TEST_F(WireEffort, CodesAreCutInOnePass) {
  ExpectLinearCut("<");
  ExpectLinearCut(">");
  ExpectLinearCut("a<");
  ExpectLinearCut("a>");
  ExpectLinearCut("<>");
}

TEST_F(WireEffort, EndsWithoutAStoryAreTakenInOnePass) {
  ExpectLinear(std::string(kBytes, '>'), [this](const std::string& arrival) { Take(arrival); });
  EXPECT_TRUE(announced_.empty());
  Take("<later>");
  EXPECT_EQ(Handed(), Texts{"later"});
}

}  // namespace
}  // namespace vorda
