// Moving a whole cart, or swapping it with another.
//
// While a swap goes on, the destination's files bear a name of their own, the swap stem. The empty file that
// the temporary name comes with is left where it is.

#include <string>

#include "carts/CartFiles.h"
#include "carts/Orvane_Audio_Routines.h"
#include "platform/DirectoryNames.h"
#include "platform/FileRename.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

using platform::BoxAnswer;
using platform::Pointer;

constexpr std::int32_t kRefused = -1;

// A move under way.
struct Move {
  std::int32_t from;
  std::int32_t to;
  platform::OwnerWindow window;
  CartInfo source;
  CartInfo destination;
  std::string sourceStem;
  std::string destStem;
  std::string swapStem;
  bool sameDirectory;
};

bool MayMove(std::int32_t from, std::int32_t to) {
  const char* refusal = nullptr;
  if (!UserMayUseCart(from)) {
    refusal = "You do not have permission to move this cart";
  } else if (!UserMayUseCart(to)) {
    refusal = "You do not have permission to alter the destination cart";
  }
  if (refusal != nullptr) platform::ShowMessageBox(refusal, platform::BoxIcon::Information);
  return refusal == nullptr;
}

// Where no temporary name can be had, a fixed one: an empty stem would take in every hidden file.
std::string MakeSwapStem(const std::string& directory) {
  std::string name = FileBaseName(UniqueTempFileName(directory, ""));
  if (name.empty()) name = "VORSWAP";
  std::string stem = platform::JoinPath(directory, name);
  const std::string path = platform::NativePathOfNewFile(stem + ".TMP");
  const int number = platform::FreeFileNumber();
  if (!path.empty() && platform::OpenForOutput(number, path) == 0) platform::CloseFile(number);
  return stem;
}

Move PrepareMove(std::int32_t from, std::int32_t to, platform::OwnerWindow window) {
  Move move{from, to, window, {}, {}, CartFileStem(from), CartFileStem(to), {}, false};
  ReadCartInfo(move.source, from);
  ReadCartInfo(move.destination, to);
  move.swapStem = MakeSwapStem(CartDirectory(to));
  move.sameDirectory = CartDirectory(from) == CartDirectory(to);
  return move;
}

BoxAnswer AskAboutDestination(const Move& move) {
  return platform::ShowMessageBox(
      {"There is already something in cart " + std::to_string(move.to) +
           ", Do you want to overwrite it?\n(If you choose NO, it will be swapped with cart " +
           std::to_string(move.from) + ")",
       platform::BoxIcon::Question,
       platform::BoxButtons::YesNoCancel,
       {},
       BoxAnswer::No});
}

// Renames all files of one stem to another, as if they lay in `directory`, until one can't be.
void RenameFiles(const std::string& stem, const std::string& directory, const std::string& newStem,
                 const char* words) {
  for (const std::string& name : platform::FilesWithStem(stem)) {
    const int error =
        platform::RenameFile(platform::JoinPath(directory, name), newStem + "." + FileExtension(name));
    if (error != 0) {
      ReportFile(words, name, error);
      return;
    }
  }
}

// The files are looked for in the source's directory: a swap works within one directory alone, and says so
// across two.
void SetDestinationAside(const Move& move) {
  RenameFiles(move.destStem, CartDirectory(move.from), move.swapStem,
              "renaming the file of the cart to be swapped: ");
}

// 0, or what stopped the copy or the clearing of the source.
std::int32_t MoveAcross(const Move& move) {
  if (const std::int32_t result = CopyCart(move.from, move.to, true, true, move.window); result != 0)
    return result;
  return DeleteCart(move.from, true, false);
}

void MoveWithin(Move& move) {
  RenameFiles(move.sourceStem, CartDirectory(move.from), move.destStem, "renaming the file : ");
  DeleteCart(move.from, true, true);
  WriteCartInfo(move.source, move.to, true);
}

void CopyBack(const Move& move) {
  for (const std::string& name : platform::FilesWithStem(move.swapStem)) {
    const int error =
        ShellCopy(platform::JoinPath(CartDirectory(move.to), name),
                  CartFileOf(move.sourceStem, FileExtension(name)), "Moving Cart Files", move.window);
    if (error != 0) {
      ReportFile("copying the file : ", name, error);
      return;
    }
    DeleteFileIn(CartDirectory(move.to), name);
  }
}

// What was set aside becomes the source's.
void FinishSwap(Move& move) {
  if (move.sameDirectory) {
    RenameFiles(move.swapStem, CartDirectory(move.to), move.sourceStem, "copying the file : ");
  } else {
    CopyBack(move);
  }
  WriteCartInfo(move.destination, move.from, true);
}

}  // namespace

std::int32_t MoveCart(std::int32_t from, std::int32_t to, platform::OwnerWindow window) {
  if (from == 0 || to == 0 || from == to) return kRefused;
  if (!MayMove(from, to)) return kRefused;
  Move move = PrepareMove(from, to, window);
  bool swap = false;
  if (!IsEmptyCart(move.destination)) {
    const BoxAnswer answer = AskAboutDestination(move);
    if (answer == BoxAnswer::Cancel) return kRefused;
    swap = answer == BoxAnswer::No;
    if (!swap) {
      if (const std::int32_t result = DeleteCart(to, true, true); result != 0) return result;
    }
  }
  platform::SetPointer(Pointer::Hourglass);
  if (swap) SetDestinationAside(move);
  if (move.sameDirectory) {
    MoveWithin(move);
  } else if (const std::int32_t result = MoveAcross(move); result != 0) {
    return result;
  }
  if (swap) FinishSwap(move);
  platform::SetPointer(Pointer::Default);
  return 0;
}

}  // namespace vorda
