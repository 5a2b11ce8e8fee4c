// A cart's audio in the station's audio editor.

#include <algorithm>
#include <string>

#include "audio/AudioRoutines.h"
#include "carts/Orvane_Audio_Routines.h"
#include "config/Vorda_Common_API.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/RunTimeError.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

using platform::BoxIcon;

// A wave file of up to this many bytes holds a header and nothing to hear.
constexpr double kEmptyAudioBytes = 100;

bool EditorIsThere() {
  bool found = false;
  platform::LookUpFile(platform::NativePath(gAudioEditor), found);
  if (!found) {
    platform::ShowMessageBox({"You must an Audio Editor in Audio Setup in Orvane Configuration",
                              BoxIcon::Critical, platform::BoxButtons::Ok, "Cannot Run Audio Editor"});
  }
  return found;
}

void MakeAudioToEdit(const std::string& audio) {
  if (FileSize(audio) > 0) return;
  const platform::WaveFormat& format = gWireFeeds.front().RecordFormat;
  CreateBlankWave(audio, format.nSamplesPerSec, format.wBitsPerSample, format.nChannels);
}

void RunEditor(const std::string& audio) {
  std::string path = platform::NativePath(audio);
  platform::ProcessInformation editor;
  RunProcess(gAudioEditor, QuotePath(path), 0, kWaitBlocking, 0, editor);
}

void ClearEmptyAudio(const std::string& audio, std::int32_t cart) {
  const double size = FileSize(audio);
  if (size < 0 || size > kEmptyAudioBytes) return;
  const int error = platform::RemoveNativeFile(platform::NativePath(audio));
  if (error == 0) return;
  platform::ShowMessageBox({"Error Clearing Empty Audio from Cart : " + std::to_string(cart), BoxIcon::None,
                            platform::BoxButtons::Ok, "Cart Error : " + platform::ErrorText(error)});
}

// The end of the marks' range is left where it is, even when the audio became shorter.
void TakeOverLength(CartInfo& info, float length) {
  info.AudioLength = length;
  info.PlayEnd = length;
  info.PlayStart = 0;
  info.PlayLength = info.PlayEnd - info.PlayStart;
  info.CountdownMark = std::min(info.CountdownMark, info.PlayEnd);
  info.MarkStart = std::min(info.MarkStart, info.MarkEnd);
}

}  // namespace

void EditCartAudio(std::int32_t cart) {
  if (cart == 0) {
    platform::ShowMessageBox("You must specify a cart number first");
    return;
  }
  if (platform::Trim(gAudioEditor).empty() || !EditorIsThere() || !UserMayUseCart(cart)) return;
  const std::string audio = CartAudioFileName(cart);
  MakeAudioToEdit(audio);
  WaveLengthSeconds(audio);  // tells of audio that is no wave ahead of the editor
  CartInfo info;
  ReadCartInfo(info, cart);
  RunEditor(audio);
  ClearEmptyAudio(audio, cart);
  const float length = WaveLengthSeconds(audio);
  if (!(length > 0)) return;
  TakeOverLength(info, length);
  WriteCartInfo(info, cart, true);
}

}  // namespace vorda
