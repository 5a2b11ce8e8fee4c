// The wall's parts and their lists.

#include <cmath>
#include <string>

#include "carts/CartLists.h"
#include "carts/Orvane_Audio_Routines.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/RandomFiles.h"
#include "platform/RunTimeError.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

std::array<AudioWallPart, kAudioWallParts> gAudioWallParts;

namespace {

constexpr std::int32_t kCartsPerPart = 1000;

struct PartRange {
  std::int16_t first;
  std::int16_t last;
};

std::int32_t CountBlankLocations(PartRange parts) {
  std::int32_t blank = 0;
  for (std::int16_t part = parts.first; part <= parts.last; ++part) {
    AudioWallPart& wall = WallPart(part);
    if (platform::Trim(wall.Location).empty()) ++blank;
    wall.ListFile = platform::JoinPath(wall.Location, "Carts" + std::to_string(part) + ".lst");
  }
  return blank;
}

// Looks the list up. 0, with `found`, or a run-time error's number.
int FindList(const AudioWallPart& wall, bool& found) {
  found = false;
  const std::string path = platform::NativePath(wall.ListFile);
  if (path.empty()) {
    platform::SetCurrentError(platform::kPathNotFound);
    return platform::kPathNotFound;
  }
  return platform::LookUpFile(path, found);
}

platform::BoxAnswer AskToCreate(std::int16_t part, const AudioWallPart& wall) {
  return platform::ShowMessageBox(
      {"Part " + std::to_string(part) +
           " of the AudioWall has not been found.\nDo you wish to create it in :\n" + wall.ListFile,
       platform::BoxIcon::Question,
       platform::BoxButtons::YesNoCancel,
       {},
       platform::BoxAnswer::Yes});
}

// Fills the list up with empty carts, from the record at which the file ends. All of them in one piece.
void FillUpList(const AudioWallPart& wall, std::int32_t wanted) {
  const std::int64_t length = platform::OpenFileLength(wall.ListHandle);
  const double records = static_cast<double>(length) / kCartRecordSize;
  if (length < 0 || records >= wanted) return;
  const auto first = static_cast<std::int64_t>(std::nearbyint(records + 1));
  const CartRecord blank = PackCartInfo(gBlankCartInfo);
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(wanted - first + 1) * blank.size());
  for (std::int64_t record = first; record <= wanted; ++record) bytes.append(blank.data(), blank.size());
  platform::WriteToFileAt(wall.ListHandle, (first - 1) * std::int64_t{kCartRecordSize}, bytes);
  platform::ReopenForRandom(wall.ListHandle, wall.ListFile);
}

void ConnectPart(std::int16_t part, AudioWallPart& wall) {
  if (wall.ListHandle < 1) {
    wall.ListHandle = platform::FreeFileNumber();
  } else {
    platform::CloseFile(wall.ListHandle);
  }
  platform::OpenForRandom(wall.ListHandle, wall.ListFile);
  wall.Connected = true;
  FillUpList(wall, CartListRecords(part));
}

// False when the operator cancelled.
bool WalkPart(std::int16_t part, bool silent) {
  AudioWallPart& wall = WallPart(part);
  platform::BoxAnswer answer = platform::BoxAnswer::Yes;
  bool found = false;
  const int error = FindList(wall, found);
  if (error != 0 && !silent) {
    ReportProblem(
        "connecting part " + std::to_string(part) + " of the AudioWall to : " + platform::Trim(wall.Location),
        static_cast<std::int16_t>(error));
    wall.Connected = false;
  } else if (!found && !silent) {
    answer = AskToCreate(part, wall);
    if (answer == platform::BoxAnswer::Cancel) return false;
  }
  if (error == 0 && answer == platform::BoxAnswer::Yes) ConnectPart(part, wall);
  platform::SetCurrentError(platform::kNoError);
  return true;
}

}  // namespace

AudioWallPart& WallPart(std::int16_t part) {
  return gAudioWallParts[static_cast<std::size_t>(part) - 1];
}

std::int64_t CartRecordOffset(std::int32_t cart) {
  const std::int32_t record = cart - kCartsPerPart * (CartLocationIndex(cart) - 1);
  return (record - 1) * std::int64_t{kCartRecordSize};
}

std::int32_t CartListRecords(std::int16_t part) {
  const bool last = part == CartLocationIndex(kLastCart);
  return last ? kLastCart - kCartsPerPart * (part - 1) : kCartsPerPart;
}

std::int32_t ConnectAudioWall(std::int16_t part, bool silent) {
  constexpr std::int32_t kStopped = -1;
  if (part < 0 || part > kAudioWallParts) return kStopped;
  const PartRange parts = part == 0 ? PartRange{1, CartLocationIndex(kLastCart)} : PartRange{part, part};
  if (const std::int32_t blank = CountBlankLocations(parts); blank > 0) {
    if (!silent) {
      platform::ShowMessageBox(
          std::to_string(blank) +
              " locations of the AudioWall have not been set : Please check your configuration.",
          platform::BoxIcon::Critical);
    }
    return kStopped;
  }
  for (std::int16_t walked = parts.first; walked <= parts.last; ++walked) {
    if (!WalkPart(walked, silent)) return kStopped;
  }
  return 0;
}

void ReopenCartList(std::int16_t part) {
  const AudioWallPart& wall = WallPart(part);
  if (wall.ListHandle < 1) return;
  const int pending = platform::CurrentError();
  platform::ReopenForRandom(wall.ListHandle, wall.ListFile);
  platform::SetCurrentError(pending);
}

}  // namespace vorda
