// A moment as the system keeps it.

#pragma once

#include <cstdint>

namespace vorda {

struct TimeStamp {
  std::int32_t Day = 0;  // day number of the local date, day 0 being 1899-12-30
  float Seconds = 0.0F;  // seconds since midnight; good to about 1/128 s late in the day
};

}  // namespace vorda
