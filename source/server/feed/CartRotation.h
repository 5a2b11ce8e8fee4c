// Which cart of a feed's range is recorded next, and what is cleared ahead of it.
//
// The range turns round and round: one recording a cart, the oldest make way. Where it stands is written to
// the feed's configuration file at once, so that it survives a restart. Nothing here speaks to the operator,
// but for what deleting a cart does.

#pragma once

#include <cstdint>
#include <functional>

#include "config/Vorda_Common_API.h"

namespace vorda {

// Deleting a cart may wait behind a box. Where this is true afterwards a recording has begun meanwhile, and
// cleared for itself: nothing more is deleted.
using Overtaken = std::function<bool()>;
inline bool NeverOvertaken() {
  return false;
}

// The next cart to record into: the first empty one behind the last recording, then the first empty one ahead
// of it; where none is, the first that can be deleted, in the same order. The last recording itself is never
// taken. 0 when no cart can be had. Nothing is reserved.
std::int32_t GetNextRecordCartNumber(WireFeedRecord& feed, const Overtaken& overtaken = NeverOvertaken);

// Empties `count` carts from `first` on, up to but not including the range's last one, and then from the
// range's first one on. The wrapped carts all share the fate of the one that was looked at last.
void AutoErase(const WireFeedRecord& feed, std::int64_t first, std::int32_t count,
               const Overtaken& overtaken = NeverOvertaken);

// Keeps the number of the last recording, and writes it.
void UpdateLastRecordedCart(WireFeedRecord& feed, std::int32_t cart);

// Writes the number of the cart being recorded, 0 for none, for other programs.
void WriteCurrentlyRecordingCart(const WireFeedRecord& feed, std::int32_t cart);

// Has the index cart's title tell which cart was recorded last.
void UpdateIndexCart(const WireFeedRecord& feed);

// Shortens the limit of the recording into `cart` to the seconds that the disk can still take. The limit
// counts from the recording's start, and no allowance is made for what has been recorded.
void UpdateThisItemMaxLength(WireFeedRecord& feed, std::int32_t cart);

}  // namespace vorda
