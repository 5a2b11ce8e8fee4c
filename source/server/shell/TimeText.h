// Seconds as text.

#pragma once

#include <cstdint>
#include <string>

namespace vorda {

// Seconds in one of the layouts that three decimal digits name: hundreds H, tens T, units U.
//
// clang-format off
//   U  0  minutes:seconds.hundredths
//      1  hours:minutes:seconds.hundredths
//      2  hours:minutes:seconds
//      3 and more  minutes:seconds
//   T  with U of 2 or more: 0 rounds to whole seconds, 2 rounds up, 1 and others cut the fraction
//   H  0  two digits everywhere
//      1  fields larger than the value stay blank, hours have no leading zero
//      2 and more  the same, and blank hours and seconds are left out with their colon
// clang-format on
//
// Style 100 leaves all fields blank. Seconds below 0 or above 86400 show "--" in every field. In use are 2 (a
// running time), 3 (a cart's length) and 22 (the time left on a player).
std::string FormatSeconds(double seconds, std::int32_t style);

}  // namespace vorda
