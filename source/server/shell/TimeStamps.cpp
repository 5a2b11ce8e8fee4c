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

double SecondsSince(const TimeStamp& stamp) {
  const platform::Moment now = platform::ReadClock();
  const double days = static_cast<double>(now.day) - static_cast<double>(stamp.Day);
  return days * kSecondsPerDay + now.seconds - static_cast<double>(stamp.Seconds);
}

}  // namespace vorda
