// A feed and its range of carts on a wall of the test's own.

#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "config/Vorda_Common_API.h"
#include "support/WallFixture.h"

namespace vorda::test {

inline constexpr std::int32_t kLowestNumber = std::numeric_limits<std::int32_t>::min();
inline constexpr std::int32_t kHighestNumber = std::numeric_limits<std::int32_t>::max();
inline constexpr int kAlways = std::numeric_limits<int>::max();

class CartRotationFixture : public WallFixture {
 protected:
  using Carts = std::vector<std::int32_t>;

  CartRotationFixture() {
    feed_.FullConfigFile = home_ / "feed.ini";
    feed_.IndexCartNumber = 900;
  }

  void SetRange(std::int32_t start, std::int32_t end, std::int32_t last) {
    feed_.StartCartNumber = start;
    feed_.EndCartNumber = end;
    feed_.LastRecordedCartNumber = last;
  }
  // Carts that hold a recording.
  static void Fill(std::int32_t from, std::int32_t to) {
    for (std::int32_t cart = from; cart <= to; ++cart) GiveCart(cart, "Old", 30);
  }
  static bool IsFull(std::int32_t cart) {
    return RecordBytes(cart) == FullCartRecord("Old", 30) && std::filesystem::exists(CartFile(cart, "WAV"));
  }
  static Carts FullCarts(std::int32_t from, std::int32_t to) {
    Carts carts;
    for (std::int32_t cart = from; cart <= to; ++cart) {
      if (IsFull(cart)) carts.push_back(cart);
    }
    return carts;
  }
  static std::string AudioName(std::int32_t cart) {
    const std::string path = CartFile(cart, "WAV");
    return path.substr(path.rfind('/') + 1);
  }
  std::string Ini() const { return ReadWholeFile(feed_.FullConfigFile); }

  WireFeedRecord feed_;
};

}  // namespace vorda::test
