// The two stores of cart records: the lists of the parts, and the carts' own files.

#include <span>
#include <string>

#include "carts/CartLists.h"
#include "carts/Orvane_Audio_Routines.h"
#include "platform/Files.h"
#include "platform/NativePath.h"
#include "platform/RandomFiles.h"
#include "platform/RunTimeError.h"
#include "platform/SmallFiles.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

CartInfo gBlankCartInfo;

namespace {

constexpr std::int32_t kRefused = -1;
constexpr float kEmptyLength = -1;

std::string_view BytesOf(const CartRecord& record) {
  return {record.data(), record.size()};
}

std::string IndividualFile(std::int32_t cart) {
  return CartFileStem(cart) + ".LST";
}

int ReadIndividual(std::int32_t cart, CartInfo& info, bool& found) {
  CartRecord record;
  std::size_t count = 0;
  const int error = platform::ReadFileStart(IndividualFile(cart), record, count);
  found = count > 0;
  if (found) UnpackCartInfo(std::span<const char>(record.data(), count), info);
  return error;
}

// A list that ends ahead of the record, or in it, leaves an empty cart's values in what is missing.
int ReadFromList(std::int32_t cart, CartInfo& info) {
  CartRecord record;
  std::size_t count = 0;
  const int number = WallPart(CartLocationIndex(cart)).ListHandle;
  const int error = platform::ReadFromFile(number, CartRecordOffset(cart), record, count);
  if (error == 0) UnpackCartInfo(std::span<const char>(record.data(), count), info);
  return error;
}

int WriteToList(std::int32_t cart, const CartInfo& info) {
  const std::int16_t part = CartLocationIndex(cart);
  const CartRecord record = PackCartInfo(info);
  const int error =
      platform::WriteToFileAt(WallPart(part).ListHandle, CartRecordOffset(cart), BytesOf(record));
  ReopenCartList(part);
  return error;
}

int WriteIndividual(std::int32_t cart, const CartInfo& info) {
  const int number = platform::FreeFileNumber();
  if (const int error = platform::OpenForRandom(number, IndividualFile(cart)); error != 0) return error;
  const CartRecord record = PackCartInfo(info);
  const int error = platform::WriteToFileAt(number, 0, BytesOf(record));
  platform::CloseFile(number);
  return error;
}

// One that was not there counts as an error and is told.
void RemoveIndividual(std::int32_t cart) {
  const int error = platform::RemoveNativeFile(platform::NativePath(IndividualFile(cart)));
  if (error == 0) return;
  ReportProblem("removing the information file for cart " + std::to_string(cart),
                static_cast<std::int16_t>(error));
}

// Plays the whole of the audio.
void PlayWhole(CartInfo& info) {
  info.PlayStart = 0;
  info.PlayEnd = info.AudioLength;
  info.PlayLength = info.PlayEnd - info.PlayStart;
}

std::int16_t Unreadable(CartInfo& info, int error) {
  info = gBlankCartInfo;
  return static_cast<std::int16_t>(error);
}

}  // namespace

void InitBlankCartInfo() {
  const std::int32_t backColor = gBlankCartInfo.BackColor;
  const std::int32_t foreColor = gBlankCartInfo.ForeColor;
  gBlankCartInfo = {};
  SplitCartTitle("", gBlankCartInfo);
  gBlankCartInfo.BackColor = backColor;
  gBlankCartInfo.ForeColor = foreColor;
  gBlankCartInfo.AudioLength = kEmptyLength;
  gBlankCartInfo.PlayLength = kEmptyLength;
  gSelectedPlayerCount = gPlayerCount = gUsablePlayerCount = 0;
}

bool IsEmptyCart(const CartInfo& info) {
  return info.AudioLength == gBlankCartInfo.AudioLength;
}

std::int16_t ReadCartInfo(CartInfo& info, std::int32_t cart) {
  info = gBlankCartInfo;
  if (!IsUsableCart(cart)) return kRefused;
  bool found = false;
  if (gAudioWallSettings.UseIndividualCartListFiles != 0) {
    if (const int error = ReadIndividual(cart, info, found); error != 0) return Unreadable(info, error);
  }
  if (!found) {
    if (const int error = ReadFromList(cart, info); error != 0) return Unreadable(info, error);
  }
  // Not "at or below 0": a time that is no number isn't above 0 either.
  if (!(info.PlayEnd > 0) || !(info.PlayLength > 0)) PlayWhole(info);
  if (IsEmptyCart(info)) info = gBlankCartInfo;
  return 0;
}

std::int32_t WriteCartInfo(CartInfo& info, std::int32_t cart, bool trusted) {
  if (!IsUsableCart(cart)) return kRefused;
  if (!trusted && !UserMayUseCart(cart)) return kRefused;
  // The play length is left alone here, though a reader looks at it as well.
  if (!(info.PlayEnd > 0)) PlayWhole(info);
  std::int32_t result = 0;
  if (gAudioWallSettings.MaintainLegacyCartList != 0) result = WriteToList(cart, info);
  if (gAudioWallSettings.UseIndividualCartListFiles == 0) return result;
  if (IsEmptyCart(info)) {
    RemoveIndividual(cart);
  } else if (WriteIndividual(cart, info) != 0) {
    info = gBlankCartInfo;
    return kRefused;
  }
  return result;
}

platform::Hook<bool(std::int32_t)>& UserMayUseCartHook() {
  static platform::Hook<bool(std::int32_t)> hook([](std::int32_t) { return true; });
  return hook;
}

bool UserMayUseCart(std::int32_t cart) {
  return UserMayUseCartHook()(cart);
}

}  // namespace vorda
