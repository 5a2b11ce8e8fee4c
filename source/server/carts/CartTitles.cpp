// Titles of carts, and a cart's way into a player's slot and back.

#include <algorithm>

#include "carts/Orvane_Audio_Routines.h"

namespace vorda {

namespace {

constexpr std::size_t kTitleLength = 20;
constexpr char kBlank = ' ';

std::array<char, kTitleLength> TitlePiece(std::string_view text, std::size_t from) {
  std::array<char, kTitleLength> piece;
  piece.fill(kBlank);
  const std::string_view characters = text.substr(std::min(from, text.size()), kTitleLength);
  std::copy(characters.begin(), characters.end(), piece.begin());
  return piece;
}

// Copies what a record and a slot have in common.
template <class From, class To>
void CopyDetails(const From& from, To& to) {
  to.Title1 = from.Title1;
  to.Title2 = from.Title2;
  to.Title3 = from.Title3;
  to.MarkStart = from.MarkStart;
  to.MarkEnd = from.MarkEnd;
  to.CountdownMark = from.CountdownMark;
  to.AudioLength = from.AudioLength;
  to.PlayStart = from.PlayStart;
  to.PlayEnd = from.PlayEnd;
  to.PlayLength = from.PlayLength;
}

}  // namespace

void SplitCartTitle(std::string_view text, CartInfo& info) {
  info.Title1 = TitlePiece(text, 0);
  info.Title2 = TitlePiece(text, kTitleLength);
  info.Title3 = TitlePiece(text, 2 * kTitleLength);
}

std::string JoinCartTitle(const CartInfo& info, std::string& text) {
  text.assign(info.Title1.begin(), info.Title1.end());
  text.append(info.Title2.begin(), info.Title2.end());
  text.append(info.Title3.begin(), info.Title3.end());
  return text;
}

std::int16_t CartInfoToPlayer(std::int32_t cart, std::string& audioFile, CartDetails& slot) {
  CartInfo info;
  ReadCartInfo(info, cart);
  CopyDetails(info, slot);
  slot.Text.fill(kBlank);
  audioFile = CartAudioFileName(cart);
  return 0;
}

std::int32_t PlayerToCartInfo(std::int32_t cart, const CartDetails& slot) {
  constexpr std::int32_t kRefused = -1;
  if (!UserMayUseCart(cart)) return kRefused;
  CartInfo info = gBlankCartInfo;
  CopyDetails(slot, info);
  info.ReservedText.fill('\0');
  info.ReservedTail.fill('\0');
  return WriteCartInfo(info, cart, true);
}

}  // namespace vorda
