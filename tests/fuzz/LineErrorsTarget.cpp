// A serial line's stream with marked errors: how it is split into pieces changes nothing.
//
// Input: the lengths of the pieces (a text), what the line's counters do meanwhile (a text), the stream.

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Target.h"
#include "platform/LineErrors.h"

namespace vorda::fuzz {
namespace {

using platform::Arrival;
using platform::CommEventValue;
using platform::LineCounters;
using platform::LineState;
using platform::LineWatch;
using platform::MarkedStream;

constexpr std::size_t kLongestPiece = 4096;

// The stream read as a whole, mark by mark. What an unfinished mark at the end holds is not told yet.
Arrival Plain(std::string_view raw) {
  Arrival plain;
  while (!raw.empty()) {
    const bool mark = raw.front() == '\xFF';
    if (mark && (raw.size() == 1 || raw == std::string_view("\xFF\0", 2))) break;
    std::size_t length = mark ? 2 : 1;
    if (!mark) {
      plain.data += raw.front();
    } else if (raw[1] == '\xFF') {
      plain.data += '\xFF';
    } else if (raw[1] != '\0') {
      plain.data += raw.substr(0, 2);
    } else {
      length = 3;
      plain.breakSeen = plain.breakSeen || raw[2] == '\0';
      plain.badByteSeen = plain.badByteSeen || raw[2] != '\0';
      if (raw[2] != '\0') plain.data += raw[2];
    }
    raw.remove_prefix(length);
  }
  return plain;
}

bool Same(const Arrival& a, const Arrival& b) {
  return a.data == b.data && a.breakSeen == b.breakSeen && a.badByteSeen == b.badByteSeen;
}

std::vector<Arrival> Decoded(const std::vector<std::string_view>& pieces) {
  MarkedStream stream;
  std::vector<Arrival> arrivals;
  for (const std::string_view piece : pieces) arrivals.push_back(stream.Decode(piece));
  return arrivals;
}

Arrival Joined(const std::vector<Arrival>& arrivals) {
  Arrival all;
  for (const Arrival& arrival : arrivals) {
    all.data += arrival.data;
    all.breakSeen = all.breakSeen || arrival.breakSeen;
    all.badByteSeen = all.badByteSeen || arrival.badByteSeen;
  }
  return all;
}

// A line that marks errors and had none.
std::string Marked(std::string_view data) {
  std::string raw;
  for (const char c : data) raw.append(c == '\xFF' ? 2 : 1, c);
  return raw;
}

void CheckStream(std::string_view raw, const std::vector<std::string_view>& pieces) {
  const Arrival whole = MarkedStream().Decode(raw);
  Require(Same(whole, Plain(raw)), "the stream reads as the plain reader reads it");
  Require(Same(Joined(Decoded(pieces)), whole), "a split anywhere changes nothing");
  // A mark that the end has cut in two goes on in what comes then.
  for (const char* next : {"A", "\xFF", ""}) {
    const std::string_view more(next, 1);
    std::vector<std::string_view> longer = pieces;
    longer.push_back(more);
    Require(Same(Joined(Decoded(longer)), Plain(std::string(raw).append(more))), "nor does what comes later");
  }
  Require(Same(MarkedStream().Decode(Marked(raw)), {std::string(raw)}), "every byte passes as data");
}

using Events = std::vector<CommEventValue>;

bool IsPin(CommEventValue event) {
  return event < platform::comEventBreak;
}

void CheckOrder(const Events& events) {
  Require(std::set<CommEventValue>(events.begin(), events.end()).size() == events.size(),
          "one event for each kind");
  Require(std::is_partitioned(events.begin(), events.end(), [](CommEventValue e) { return !IsPin(e); }),
          "errors stand ahead of pins");
}

// What the marks alone say.
Events OfMarks(const Arrival& arrival, bool parityChecked) {
  Events events;
  if (arrival.breakSeen) events.push_back(platform::comEventBreak);
  if (arrival.badByteSeen)
    events.push_back(parityChecked ? platform::comEventRxParity : platform::comEventFrame);
  return events;
}

std::uint32_t& Counter(LineCounters& counters, unsigned number) {
  std::uint32_t* const all[] = {&counters.breaks, &counters.framing, &counters.parity, &counters.overrun,
                                &counters.bufferOverrun};
  return *all[number % std::size(all)];
}

// Each step says in its low bits which counter moves, and in its high ones how far: 0 leaves all as they are.
void CheckWatch(const std::vector<Arrival>& arrivals, std::string_view steps, bool parityChecked) {
  LineState state{LineCounters{}, 0};
  LineWatch watch(state);
  LineWatch blind({});
  bool moved = false;
  for (std::size_t i = 0; i < arrivals.size(); ++i) {
    const unsigned step = i < steps.size() ? static_cast<unsigned char>(steps[i]) : 0U;
    Counter(*state.counters, step & 7U) += step >> 3U;
    moved = moved || step >> 3U != 0;
    const Events events = watch.Events(state, arrivals[i], parityChecked);
    CheckOrder(events);
    const Events ofMarks = OfMarks(arrivals[i], parityChecked);
    Require(blind.Events({}, arrivals[i], parityChecked) == ofMarks, "without counters the marks tell");
    if (!moved) Require(events == ofMarks, "counters that never moved leave the marks to tell");
    if (moved) Require(events.size() == (step >> 3U != 0 ? 1U : 0U), "each move is told once, and no mark");
    Require(watch.Events(state, {}, parityChecked).empty(), "nothing is told twice");
  }
}

}  // namespace
}  // namespace vorda::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vorda::fuzz;
  Input input(bytes, size);
  const std::string_view lengths = input.Text();
  const std::string_view steps = input.Text();
  const std::string_view raw = input.Rest();
  const std::vector<std::string_view> pieces = Pieces(raw, lengths, kLongestPiece);
  CheckStream(raw, pieces);
  CheckWatch(Decoded(pieces), steps, lengths.size() % 2 == 0);
  return 0;
}
