// Moments.

#include <cmath>

#include "platform/Clock.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {
constexpr double kSecondsPerDay = 86400.0;
constexpr double kSecondsPerHour = 3600.0;
}  // namespace

TimeStamp NowStamp(bool wholeHour) {
  const platform::Moment now = platform::ReadClock();
  double seconds = now.seconds;
  if (wholeHour) seconds = std::nearbyint(seconds - std::fmod(std::nearbyint(seconds), kSecondsPerHour));
  return {now.day, static_cast<float>(seconds)};
}

double SecondsBetween(const TimeStamp& stamp, const TimeStamp& now) {
  const double days = static_cast<double>(now.Day) - static_cast<double>(stamp.Day);
  return days * kSecondsPerDay + static_cast<double>(now.Seconds) - static_cast<double>(stamp.Seconds);
}

double SecondsSince(const TimeStamp& stamp) {
  return SecondsBetween(stamp, NowStamp());
}

TimeStamp SubtractFromStamp(float duration, const TimeStamp& stamp) {
  constexpr std::int64_t kHundredthsPerDay = 8640000;
  const auto wholeSeconds = static_cast<std::int64_t>(std::nearbyint(static_cast<double>(duration)));
  const auto hundredths = static_cast<std::int64_t>(std::nearbyint(static_cast<double>(duration) * 100.0));
  std::int64_t day = stamp.Day - wholeSeconds / static_cast<std::int64_t>(kSecondsPerDay);
  // In the stamp's own precision: a moment just ahead of midnight may round up to it.
  auto seconds = static_cast<float>(static_cast<double>(stamp.Seconds) -
                                    static_cast<double>(hundredths % kHundredthsPerDay) / 100.0);
  while (seconds < 0) {
    seconds = static_cast<float>(static_cast<double>(seconds) + kSecondsPerDay);
    --day;
  }
  while (static_cast<double>(seconds) >= kSecondsPerDay) {
    seconds = static_cast<float>(static_cast<double>(seconds) - kSecondsPerDay);
    ++day;
  }
  return {static_cast<std::int32_t>(day), seconds};
}

}  // namespace vorda
