// Which numbers are carts, and where a cart's record lies in the list of its part.

#pragma once

#include <cstdint>

namespace vorda {

// Whether the number is a cart's.
bool IsUsableCart(std::int32_t cart);

// The part's record in gAudioWallParts; `part` 1 to 11.
struct AudioWallPart;
AudioWallPart& WallPart(std::int16_t part);

// The place in bytes of a cart's record in its part's list.
std::int64_t CartRecordOffset(std::int32_t cart);

// How many records the list of a part holds.
std::int32_t CartListRecords(std::int16_t part);

}  // namespace vorda
