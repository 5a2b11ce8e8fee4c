// Cart numbers become directories and names.

#include <cmath>
#include <cstdio>

#include "carts/CartLists.h"
#include "carts/Orvane_Audio_Routines.h"
#include "platform/NativePath.h"
#include "platform/SmallFiles.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

constexpr double kCartsPerPart = 1000;

}  // namespace

bool IsUsableCart(std::int32_t cart) {
  return cart >= 1 && cart <= kLastCart;
}

std::int16_t CartLocationIndex(std::int32_t cart) {
  constexpr std::int32_t kLastNumbered = 10000;
  if (cart < 0 || cart > kLastNumbered) return kAudioWallParts;
  return static_cast<std::int16_t>(std::floor((cart - 1) / kCartsPerPart) + 1);
}

std::string CartDirectory(std::int32_t cart) {
  if (cart < 0 || cart > kLastCart) return {};
  const std::int16_t part = cart == 0 ? kAudioWallParts : CartLocationIndex(cart);
  return gAudioWallParts[static_cast<std::size_t>(part) - 1].Location;
}

std::string CartFileStem(std::int32_t cart) {
  if (!IsUsableCart(cart)) return {};
  char name[16];
  std::snprintf(name, sizeof name, "ORV%05d", cart);
  return platform::JoinPath(CartDirectory(cart), name);
}

std::string CartAudioFileName(std::int32_t cart) {
  if (cart < 0 || cart > kLastCart) return {};
  const std::string stem = CartFileStem(cart);
  if (gAudioWallSettings.AllowAudioFileLinking != 0 && !stem.empty()) {
    if (std::string linked = platform::ReadFirstLine(stem + ".FLK"); !linked.empty()) return linked;
  }
  return stem + ".WAV";
}

std::string CartTextFileName(std::int32_t cart) {
  return IsUsableCart(cart) ? CartFileStem(cart) + ".TXT" : std::string();
}

}  // namespace vorda
