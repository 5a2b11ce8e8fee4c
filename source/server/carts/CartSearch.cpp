// The search for an empty cart.

#include "carts/Orvane_Audio_Routines.h"

namespace vorda {

std::int32_t gLocalEditCart = 0;

// Only the record decides: a stray file under an empty record doesn't stop the search, and a cart that can't
// be read counts as empty.
std::int32_t FindNextEmptyCart(std::int32_t start) {
  platform::SetPointer(platform::Pointer::Hourglass);
  std::int32_t found = 0;
  for (std::int32_t cart = start; cart <= kLastCart; ++cart) {
    CartInfo info;
    ReadCartInfo(info, cart);
    if (IsEmptyCart(info)) {
      found = cart;
      break;
    }
  }
  platform::SetPointer(platform::Pointer::Default);
  return found;
}

}  // namespace vorda
