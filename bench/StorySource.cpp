// Plays a file of stories down one or more lines, which take turns.
//
//     StorySource FILE LENGTH PER-SECOND DESCRIPTOR...
//
// The descriptors are the near ends of pseudo-terminals. With a pace of 0 the stories go as fast as the lines
// take them. It waits for a line that has no room, so that no byte is lost here. Prints how late the middle
// and the worst story were when their last byte was in the line.

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "Moments.h"
#include "StoryFile.h"

namespace {

using namespace vorda::bench;

void Send(int line, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t taken = ::write(line, bytes.data(), bytes.size());
    if (taken < 0 && errno == EAGAIN) {
      pollfd room{line, POLLOUT, 0};
      ::poll(&room, 1, -1);
    } else if (taken < 0 && errno != EINTR) {
      std::perror("StorySource");
      std::exit(1);
    } else if (taken > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(taken));
    }
  }
}

// Nanoseconds behind its moment, by story.
std::vector<std::int64_t> SendPaced(const StoryFile& stories, std::int64_t perSecond,
                                    const std::vector<int>& lines) {
  std::vector<std::int64_t> lateness;
  lateness.reserve(stories.Count());
  const std::int64_t begin = Now();
  for (std::size_t i = 0; i < stories.Count(); ++i) {
    const std::int64_t due = begin + static_cast<std::int64_t>(i) * kSecond / perSecond;
    WaitUntil(due);
    Send(lines[i % lines.size()], stories.Framed(i));
    lateness.push_back(Now() - due);
  }
  return lateness;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) return 2;
  const StoryFile stories(argv[1], argv[2]);
  const std::int64_t perSecond = std::atoll(argv[3]);
  std::vector<int> lines;
  for (int i = 4; i < argc; ++i) lines.push_back(std::atoi(argv[i]));
  if (perSecond == 0 && lines.size() == 1) {
    Send(lines.front(), stories.All());
    std::puts("{}");
    return 0;
  }
  if (perSecond <= 0) return 2;
  std::vector<std::int64_t> lateness = SendPaced(stories, perSecond, lines);
  std::sort(lateness.begin(), lateness.end());
  std::printf("{\"late_median_us\": %lld, \"late_worst_us\": %lld}\n",
              static_cast<long long>(lateness[lateness.size() / 2] / 1000),
              static_cast<long long>(lateness.back() / 1000));
  return 0;
}
