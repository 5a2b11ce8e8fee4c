// Numbers read out of text, as the run-time's Val and the profile functions read them.

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vorda::platform {

// The number that `text` begins with: blanks (spaces, tabs, line feeds) are skipped, also behind the sign,
// then digits, point and exponent; 0 when there is none, infinity when it is too large. The locale doesn't
// matter.
double NumericValue(std::string_view text);

// NumericValue rounded half to even into a 32-bit integer; nothing when it doesn't fit.
std::optional<std::int32_t> NumericInteger(std::string_view text);

// The integer of the leading digits, with an optional minus sign, wrapping at 32 bits; nothing when there is
// no digit.
std::optional<std::int32_t> LeadingInteger(std::string_view text);

}  // namespace vorda::platform
