// Moments of the monotonic clock, in nanoseconds.

#pragma once

#include <time.h>

#include <cstdint>

namespace vorda::bench {

inline constexpr std::int64_t kSecond = 1000000000;

inline std::int64_t Now() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * kSecond + now.tv_nsec;
}

inline void WaitUntil(std::int64_t moment) {
  const timespec until{moment / kSecond, moment % kSecond};
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) != 0) {
  }
}

}  // namespace vorda::bench
