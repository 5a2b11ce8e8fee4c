// Filtering and cutting 16 MB of wire copy in memory, beside the least that any filter would have to do.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "WireSections.h"
#include "feed/CaptureText.h"
#include "feed/StoryCapture.h"

namespace vorda::bench {
namespace {

constexpr std::size_t kArrivalLength = 4096;
constexpr std::size_t kFeedLength = std::size_t{8} << 20;

// What one feed receives: a section of the wire, over and over, in arrivals.
struct FeedCopy {
  WireSection section;
  std::vector<std::string_view> arrivals;
  int stories = 0;
  std::string bytes;
};

FeedCopy MakeFeedCopy(char letter) {
  FeedCopy copy{LoadWireSection(letter), {}, 0, {}};
  while (copy.bytes.size() < kFeedLength) {
    copy.bytes += copy.section.bytes;
    copy.stories += copy.section.stories;
  }
  for (std::string_view rest = copy.bytes; !rest.empty();) {
    copy.arrivals.push_back(rest.substr(0, kArrivalLength));
    rest.remove_prefix(copy.arrivals.back().size());
  }
  return copy;
}

// Both kinds of framing, 8 MB each.
const std::vector<FeedCopy>& Feeds() {
  static const std::vector<FeedCopy> feeds = [] {
    std::vector<FeedCopy> made;
    for (const char letter : {'A', 'B'}) made.push_back(MakeFeedCopy(letter));
    return made;
  }();
  return feeds;
}

void CountBytes(benchmark::State& state) {
  std::size_t bytes = 0;
  for (const FeedCopy& feed : Feeds()) bytes += feed.bytes.size();
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

// How many end codes stand in an arrival, after its way through the filter.
int TakeArrival(CaptureText& text, std::string data, const WireSection& codes) {
  text.Append(data);
  int ends = 0;
  for (std::string_view rest = data; !rest.empty();) {
    const StoryPiece piece = NextStoryPiece(rest, codes.startChar, codes.endChar);
    if (piece.kind == StoryPiece::Kind::End) ++ends;
    if (piece.kind == StoryPiece::Kind::Text) benchmark::DoNotOptimize(rest.data());
    rest.remove_prefix(piece.length);
  }
  return ends;
}

void FilterAndCut(benchmark::State& state) {
  for ([[maybe_unused]] auto turn : state) {
    for (const FeedCopy& feed : Feeds()) {
      CaptureText text;
      int ends = 0;
      for (const std::string_view arrival : feed.arrivals) {
        ends += TakeArrival(text, std::string(arrival), feed.section);
      }
      if (ends != feed.stories) state.SkipWithError("not every story was found");
    }
  }
  CountBytes(state);
}
BENCHMARK(FilterAndCut)->Unit(benchmark::kMillisecond);

// The baseline: line feeds go, one comes behind every carriage return, nothing else.
void Pass(std::string_view arrival, std::string& filtered) {
  filtered.clear();
  for (const char c : arrival) {
    if (c == '\n') continue;
    filtered += c;
    if (c == '\r') filtered += '\n';
  }
}

void BarePass(benchmark::State& state) {
  for ([[maybe_unused]] auto turn : state) {
    // One string for all arrivals, so that the pass pays for no memory but its first.
    std::string filtered;
    for (const FeedCopy& feed : Feeds()) {
      for (const std::string_view arrival : feed.arrivals) {
        Pass(arrival, filtered);
        benchmark::DoNotOptimize(filtered.data());
        benchmark::ClobberMemory();
      }
    }
  }
  CountBytes(state);
}
BENCHMARK(BarePass)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vorda::bench

BENCHMARK_MAIN();
