// Deleting a whole cart.

#include <string>

#include "carts/CartFiles.h"
#include "carts/Orvane_Audio_Routines.h"
#include "platform/DirectoryNames.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

// 0, also when there is no audio; otherwise the error of deleting it.
int DeleteAudio(std::int32_t cart) {
  const std::string audio = CartAudioFileName(cart);
  // Cart 0 has no stem, and its audio no place.
  if (CartFileStem(cart).empty() || FileSize(audio) < 0) return 0;
  return platform::RemoveNativeFile(platform::NativePath(audio));
}

}  // namespace

std::int32_t DeleteCart(std::int32_t cart, bool deleteAudio, bool silent) {
  if (!UserMayUseCart(cart)) {
    platform::ShowMessageBox("You do not have permission to delete this cart",
                             platform::BoxIcon::Information);
    return -1;
  }
  if (const int error = deleteAudio ? DeleteAudio(cart) : 0; error != 0) {
    if (!silent) ReportFile("deleting the audio file for cart ", std::to_string(cart), error);
    return error;
  }
  CartInfo blank = gBlankCartInfo;
  WriteCartInfo(blank, cart, true);
  const std::string stem = CartFileStem(cart);
  // The directory is asked again after each file, since other stations delete as well.
  for (auto names = platform::FilesWithStem(stem); !names.empty(); names = platform::FilesWithStem(stem)) {
    if (const int error = DeleteFileIn(CartDirectory(cart), names.front()); error != 0) {
      if (!silent) ReportFile("deleting a cart file: ", names.front(), error);
      return error;
    }
  }
  return 0;
}

}  // namespace vorda
