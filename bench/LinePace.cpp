// Plays wire copy down several lines at once at the pace of 115,200 baud, in arrivals of 16 bytes.
//
//     LinePace SECONDS DESCRIPTOR...
//
// The descriptors are the near ends of pseudo-terminals. The lines take turns evenly, as unrelated lines
// would. Prints what was sent, what a line didn't take, and how late the middle and the worst arrival were.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Moments.h"
#include "WireSections.h"

namespace {

using namespace vorda::bench;

constexpr std::int64_t kBytesPerSecond = 11520;
constexpr std::size_t kArrivalLength = 16;

struct Line {
  int descriptor = -1;
  std::size_t position = 0;
};

struct Tally {
  std::int64_t sent = 0;
  std::int64_t refused = 0;
  std::vector<std::int64_t> lateness;
};

void Send(Line& line, const std::string& copy, Tally& tally) {
  if (line.position + kArrivalLength > copy.size()) line.position = 0;
  const ssize_t taken = ::write(line.descriptor, copy.data() + line.position, kArrivalLength);
  const std::int64_t sent = std::max<ssize_t>(taken, 0);
  line.position += kArrivalLength;
  tally.sent += sent;
  tally.refused += static_cast<std::int64_t>(kArrivalLength) - sent;
}

// Each line begins in another part of the copy.
std::vector<Line> OpenLines(char** numbers, int count, const std::string& copy) {
  std::vector<Line> lines;
  for (int i = 0; i < count; ++i) {
    const int descriptor = std::atoi(numbers[i]);
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    lines.push_back(
        {descriptor, copy.size() / static_cast<std::size_t>(count) * static_cast<std::size_t>(i)});
  }
  return lines;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const std::string copy = LoadWireSection('A').bytes;
  std::vector<Line> lines = OpenLines(argv + 2, argc - 2, copy);
  const std::int64_t perSecond =
      kBytesPerSecond / static_cast<std::int64_t>(kArrivalLength) * static_cast<std::int64_t>(lines.size());
  const std::int64_t arrivals = perSecond * std::atoi(argv[1]);
  Tally tally;
  tally.lateness.reserve(static_cast<std::size_t>(arrivals));
  const std::int64_t begin = Now();
  for (std::int64_t i = 0; i < arrivals; ++i) {
    const std::int64_t due = begin + i * kSecond / perSecond;
    WaitUntil(due);
    tally.lateness.push_back(Now() - due);
    Send(lines[static_cast<std::size_t>(i) % lines.size()], copy, tally);
  }
  std::sort(tally.lateness.begin(), tally.lateness.end());
  std::printf("{\"sent\": %lld, \"refused\": %lld, \"late_median_us\": %lld, \"late_worst_us\": %lld}\n",
              static_cast<long long>(tally.sent), static_cast<long long>(tally.refused),
              static_cast<long long>(tally.lateness[tally.lateness.size() / 2] / 1000),
              static_cast<long long>(tally.lateness.back() / 1000));
  return 0;
}
