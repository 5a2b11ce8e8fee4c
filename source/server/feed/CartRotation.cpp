#include "feed/CartRotation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <string>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/ProfileFile.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

constexpr const char* kSection = "AudioCapture";

// Cart numbers as the configuration gives them may be anything; sums are made in 64 bits.
using CartNumber = std::int64_t;

struct CartRange {
  CartNumber first;
  CartNumber last;
};

// The carts behind the last recording, and those of the range ahead of it.
CartRange Behind(const WireFeedRecord& feed) {
  return {CartNumber{feed.LastRecordedCartNumber} + 1, feed.EndCartNumber};
}
CartRange Ahead(const WireFeedRecord& feed) {
  return {feed.StartCartNumber, CartNumber{feed.LastRecordedCartNumber} - 1};
}

// The carts that are being deleted, which may wait behind a box: a recording that begins meanwhile must not
// take one of them, or it would lose its file when the deleting goes on.
std::set<std::int32_t>& CartsInHand() {
  static std::set<std::int32_t> carts;
  return carts;
}

std::int32_t DeleteInHand(std::int32_t cart) {
  const bool first = CartsInHand().insert(cart).second;
  const std::int32_t result = DeleteCart(cart, true, true);
  if (first) CartsInHand().erase(cart);
  return result;
}

// Numbers that are no carts can't be read, and so are never found empty.
std::int32_t FirstEmpty(CartRange range) {
  const CartNumber last = std::min<CartNumber>(range.last, kLastCart);
  for (CartNumber cart = std::max<CartNumber>(range.first, 1); cart <= last; ++cart) {
    CartInfo info;
    const auto number = static_cast<std::int32_t>(cart);
    if (CartsInHand().contains(number)) continue;
    if (ReadCartInfo(info, number) == 0 && IsEmptyCart(info)) return number;
  }
  return 0;
}

// A number that is no cart counts as deleted.
std::optional<std::int32_t> FirstDeleted(CartRange range, const Overtaken& overtaken) {
  for (CartNumber cart = range.first; cart <= range.last && !overtaken(); ++cart) {
    const auto number = static_cast<std::int32_t>(cart);
    if (CartsInHand().contains(number)) continue;
    if (DeleteInHand(number) == 0) return number;
  }
  return std::nullopt;
}

void WriteNumber(const WireFeedRecord& feed, const char* key, std::int32_t number) {
  platform::WriteProfileString(kSection, key, std::to_string(number), feed.FullConfigFile);
}

// The carts up to the range's end. `seen` is the record that was read last: all zero, and so not an empty
// cart's, when none was. Result: how many were done.
std::int64_t EraseUpToEnd(const WireFeedRecord& feed, CartNumber first, std::int64_t count, CartInfo& seen,
                          const Overtaken& overtaken) {
  std::int64_t done = 0;
  for (CartNumber cart = first; done < count && cart < feed.EndCartNumber && !overtaken(); ++cart) {
    if (cart < 1 || cart > kLastCart) {
      // No such cart, nor any up to the next border: what a failed read leaves is an empty cart's record.
      seen = gBlankCartInfo;
      if (cart > kLastCart) break;
      cart = std::min<CartNumber>(0, CartNumber{feed.EndCartNumber} - 1);
      continue;
    }
    const auto number = static_cast<std::int32_t>(cart);
    if (ReadCartInfo(seen, number) != 0) continue;
    if (!IsEmptyCart(seen)) DeleteInHand(number);
    ++done;
  }
  return done;
}

void EraseFromStart(const WireFeedRecord& feed, CartNumber first, std::int64_t count, const CartInfo& seen,
                    const Overtaken& overtaken) {
  const CartNumber begin = feed.StartCartNumber;
  const CartNumber end = std::min(first - 1, begin + count);
  if (IsEmptyCart(seen)) return;
  const CartNumber last = std::min<CartNumber>(end - 1, kLastCart);
  for (CartNumber cart = std::max<CartNumber>(begin, 1); cart <= last && !overtaken(); ++cart)
    DeleteInHand(static_cast<std::int32_t>(cart));
}

}  // namespace

std::int32_t GetNextRecordCartNumber(WireFeedRecord& feed, const Overtaken& overtaken) {
  if (feed.LastRecordedCartNumber < feed.StartCartNumber)
    feed.LastRecordedCartNumber = static_cast<std::int32_t>(CartNumber{feed.StartCartNumber} - 1);
  if (const std::int32_t cart = FirstEmpty(Behind(feed)); cart != 0) return cart;
  if (const std::int32_t cart = FirstEmpty(Ahead(feed)); cart != 0) return cart;
  if (const auto cart = FirstDeleted(Behind(feed), overtaken)) return *cart;
  return FirstDeleted(Ahead(feed), overtaken).value_or(0);
}

void AutoErase(const WireFeedRecord& feed, std::int64_t first, std::int32_t count,
               const Overtaken& overtaken) {
  CartInfo seen;
  const std::int64_t done = EraseUpToEnd(feed, first, count, seen, overtaken);
  if (done < count) EraseFromStart(feed, first, count - done, seen, overtaken);
}

void UpdateLastRecordedCart(WireFeedRecord& feed, std::int32_t cart) {
  feed.LastRecordedCartNumber = cart;
  WriteNumber(feed, "LastRecordedCartNumber", cart);
}

void WriteCurrentlyRecordingCart(const WireFeedRecord& feed, std::int32_t cart) {
  WriteNumber(feed, "CurrentlyRecordingCartNumber", cart);
}

void UpdateIndexCart(const WireFeedRecord& feed) {
  CartInfo info = gBlankCartInfo;
  info.AudioLength = 0;
  info.PlayLength = 0;
  SplitCartTitle("Last recorded cart was : " + std::to_string(feed.LastRecordedCartNumber), info);
  WriteCartInfo(info, feed.IndexCartNumber, true);
}

void UpdateThisItemMaxLength(WireFeedRecord& feed, std::int32_t cart) {
  const std::int16_t part = CartLocationIndex(cart);
  if (part < 1 || part > kAudioWallParts) return;
  const std::string& location = gAudioWallParts[static_cast<std::size_t>(part) - 1].Location;
  const double seconds =
      static_cast<double>(DiskFreeBytes(location)) / static_cast<double>(feed.RecordFormat.nAvgBytesPerSec);
  // A rate whose bytes per second have wrapped gives figures below 0, of any size.
  constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
  if (seconds < feed.ThisItemMaxLength)
    feed.ThisItemMaxLength = static_cast<std::int32_t>(std::nearbyint(std::max(seconds, kLowest)));
}

}  // namespace vorda
