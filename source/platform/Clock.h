// The computer's clock: local date and time of day.
//
// Stands in for the run-time's Date, Timer and Format. Days are numbered in the date serial scale, day 0
// being 1899-12-30. A handler reads the clock once and passes the moment on.

#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace vorda::platform {

struct Moment {
  std::int32_t day = 0;  // day number of the local date
  double seconds = 0.0;  // seconds since local midnight, with the fraction
};

// The present moment, or what a ScopedClock says.
Moment ReadClock();

// The day number of a date of the Gregorian calendar.
std::int32_t DayNumber(int year, int month, int day);

// The date in the system's short form ("ddddd"): platform setting [Formats] ShortDate, else the locale's with
// a four-digit year, else yyyy-MM-dd (in the C locale, and where the code page can't hold the locale's form).
std::string FormatShortDate(std::int32_t day);

// Date and time in the form "ddddd hh:mm:ss " with its trailing blank, as the history and the status port
// show it: 24 hours, the fraction of the second cut.
std::string FormatDateTimeStamp(const Moment& moment);

// Replaces the clock for as long as it lives; for tests.
class ScopedClock {
 public:
  explicit ScopedClock(std::function<Moment()> clock);
  explicit ScopedClock(const Moment& fixed);
  ~ScopedClock();
  ScopedClock(const ScopedClock&) = delete;
  ScopedClock& operator=(const ScopedClock&) = delete;

 private:
  std::function<Moment()> previous_;
};

}  // namespace vorda::platform
