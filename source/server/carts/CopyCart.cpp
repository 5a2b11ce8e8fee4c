// Copying a whole cart.

#include <string>
#include <vector>

#include "carts/CartFiles.h"
#include "carts/Orvane_Audio_Routines.h"
#include "platform/DirectoryNames.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

using platform::BoxAnswer;
using platform::Pointer;

// The words are the same whether a file of the destination can't be cleared or one of the source not be
// copied: stations know them.
constexpr const char* kFailedWords = "clearing a destination cart file: ";

bool MayOverwrite(std::int32_t to) {
  const BoxAnswer answer = platform::ShowMessageBox(
      {"There is already something in cart " + std::to_string(to) + ", Do you want to overwrite it?",
       platform::BoxIcon::Question,
       platform::BoxButtons::YesNo,
       {},
       BoxAnswer::No});
  return answer == BoxAnswer::Yes;
}

void ReportAndGoOn(const std::string& name, int error) {
  platform::SetPointer(Pointer::Default);
  ReportFile(kFailedWords, name, error);
}

void ClearDestination(std::int32_t to, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (const int error = DeleteFileIn(CartDirectory(to), name); error != 0) {
      ReportAndGoOn(name, error);
      return;
    }
  }
}

void CopyFiles(std::int32_t from, std::int32_t to, bool copyAudio, platform::OwnerWindow window) {
  for (const std::string& name : platform::FilesWithStem(CartFileStem(from))) {
    const std::string extension = platform::UpperCase(FileExtension(name));
    const bool audio = extension == "WAV";
    if (audio && !copyAudio) continue;
    const int error =
        ShellCopy(platform::JoinPath(CartDirectory(from), name), CartFileOf(CartFileStem(to), extension),
                  audio ? "Copying Cart Audio" : "Copying Cart Files", window);
    if (error != 0) {
      ReportAndGoOn(name, error);
      return;
    }
  }
}

}  // namespace

std::int32_t CopyCart(std::int32_t from, std::int32_t to, bool copyAudio, bool noPrompt,
                      platform::OwnerWindow window) {
  constexpr std::int32_t kRefused = -1;
  if (!UserMayUseCart(to)) {
    platform::ShowMessageBox("You do not have permission to alter the destination cart",
                             platform::BoxIcon::Information);
    return kRefused;
  }
  CartInfo source;
  ReadCartInfo(source, from);
  const std::vector<std::string> there = platform::FilesWithStem(CartFileStem(to));
  if (!there.empty() && !noPrompt && !MayOverwrite(to)) return kRefused;
  platform::SetPointer(Pointer::Hourglass);
  ClearDestination(to, there);
  platform::SetPointer(Pointer::Hourglass);
  CopyFiles(from, to, copyAudio, window);
  // Whatever became of the files.
  WriteCartInfo(source, to, true);
  platform::SetPointer(Pointer::Default);
  return 0;
}

}  // namespace vorda
