#include "feed/AudioIntake.h"

#include <utility>

#include "carts/CartLists.h"
#include "carts/Orvane_Audio_Routines.h"
#include "feed/CartRotation.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/LittleEndian.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "shell/GeneralFunctions.h"
#include "shell/TimeText.h"

namespace vorda {

namespace {

constexpr std::int32_t kNoSuchCart = -1;
constexpr std::int32_t kDiskTooFull = -2;
constexpr std::int64_t kSecondsOfRoom = 10;
constexpr std::int16_t kPcm = 1;
constexpr std::int16_t kBitsPerSample = 16;
constexpr std::int32_t kRed = 255;
constexpr std::int32_t kWhite = 0xFFFFFF;
constexpr int kRunningTime = 2;         // FormatSeconds: hours, minutes, whole seconds
constexpr std::size_t kHourMinute = 5;  // characters of it

// A multimedia result; a failure is told to the operator.
std::int32_t Checked(std::int32_t code) {
  return ReportMultimediaError(code, true);
}

// Of the free bytes only the low half counts, taken as a signed number without its sign, and only where the
// high half is 0.
bool HasRoom(const std::string& path, std::int32_t bytesPerSecond) {
  const std::uint64_t free = DiskFreeBytes(path);
  if (free >> 32 != 0) return true;
  std::int64_t low = static_cast<std::int32_t>(static_cast<std::uint32_t>(free));
  if (low < 0) low = -low;
  return low >= kSecondsOfRoom * bytesPerSecond;
}

// The format as the stream has it now, whatever the feed's configuration says.
std::string FormatBytes(const platform::StreamControl& stream) {
  const auto channels = static_cast<std::uint16_t>(stream.numberchannels);
  const auto rate = static_cast<std::uint32_t>(stream.samplerate);
  const std::uint32_t align = kBitsPerSample / 8 * channels;
  std::string bytes;
  platform::AppendLittleEndian(bytes, kPcm, 2);
  platform::AppendLittleEndian(bytes, channels, 2);
  platform::AppendLittleEndian(bytes, rate, 4);
  platform::AppendLittleEndian(bytes, rate * align, 4);
  platform::AppendLittleEndian(bytes, align, 2);
  platform::AppendLittleEndian(bytes, kBitsPerSample, 2);
  return bytes;
}

}  // namespace

platform::Hook<void()>& WallChangedHook() {
  static platform::Hook<void()> hook([] {});
  return hook;
}

AudioIntake::AudioIntake(AudioIntakeHost host) : host_(std::move(host)) {}

std::int32_t AudioIntake::StartRecording(std::int32_t cart) {
  if (!IsUsableCart(cart)) return kNoSuchCart;
  WireFeedRecord* const feed = host_.feed();
  if (feed == nullptr) return 0;
  if (!HasRoom(CartAudioFileName(cart), feed->RecordFormat.nAvgBytesPerSec)) return kDiskTooFull;
  // The caller can't tell a file that couldn't be opened from a success; the operator has been told.
  if (OpenAudioFile(cart) != 0) return 0;
  const platform::MmioHandle handle = AudioFileHandle;
  const std::uint64_t recording = underWay_ = ++begun_;
  newestOfCart_[cart] = recording;
  host_.showCart(std::to_string(cart));
  SetCurrentlyRecordingCart(cart);
  feed->RecordStartStamp = NowStamp();
  feed->ThisItemMaxLength = feed->MaxCutLength;
  MarkCart(cart);
  // Behind a box of the clearing this recording may have been ended, or the next one begun, or have failed
  // to: what that left is not this one's to open, and a gate without its file would stay open for ever.
  const auto overtaken = [&] { return underWay_ != recording || AudioFileHandle != handle; };
  AutoErase(*feed, cart + 1, feed->ClearCartCount, overtaken);
  if (overtaken()) return 0;
  Recording = true;
  host_.showGate(true);
  return 0;
}

// The wall shows at once that the cart is being filled.
void AudioIntake::MarkCart(std::int32_t cart) {
  CartInfo info = gBlankCartInfo;
  info.AudioLength = 0;
  info.PlayLength = 0;
  info.BackColor = kRed;
  info.ForeColor = kWhite;
  SplitCartTitle("Vorda Server is recording into this cart", info);
  WriteCartInfo(info, cart, true);
}

std::int32_t AudioIntake::EndRecording() {
  const std::int32_t cart = CurrentRecordCart;
  const std::uint64_t recording = underWay_;
  if (cart == 0) return 0;
  // While the gate is still open: what was taken in up to now belongs to the cut.
  if (auto* const stream = host_.stream()) stream->EndOfCut();
  // Behind a box of that, a tick may have ended this recording, and even begun the next, into the same cart
  // too.
  if (CurrentRecordCart != cart || underWay_ != recording) return 0;
  underWay_ = 0;
  Recording = false;
  // Of this moment: behind the boxes that follow the window may go, and the next recording begin.
  WireFeedRecord* const feed = host_.feed();
  const TimeStamp start = feed != nullptr ? feed->RecordStartStamp : TimeStamp();
  CloseAudioFile();
  if (!Recording) host_.showCart("");
  FileCart(feed, cart, recording, start);
  if (!Recording) {
    CurrentRecordCart = 0;
    if (feed != nullptr) WriteCurrentlyRecordingCart(*feed, 0);
  }
  if (feed != nullptr) UpdateIndexCart(*feed);
  WallChangedHook()();
  if (!Recording) host_.showGate(false);
  return 0;
}

// What newer recordings have filed stays: the record of a cart that was taken again, and which was the last.
void AudioIntake::FileCart(WireFeedRecord* feed, std::int32_t cart, std::uint64_t recording,
                           const TimeStamp& start) {
  CartInfo info = gBlankCartInfo;
  const float length = WaveLengthSeconds(CartAudioFileName(cart));
  info.CountdownMark = info.AudioLength = info.PlayEnd = info.PlayLength = length;
  info.MarkStart = info.MarkEnd = info.PlayStart = 0;
  if (feed == nullptr) return;
  SplitCartTitle("Recorded by Vorda Server " + platform::FormatShortDate(start.Day) + " " +
                     FormatSeconds(static_cast<double>(start.Seconds), kRunningTime).substr(0, kHourMinute),
                 info);
  if (newestOfCart_[cart] == recording) WriteCartInfo(info, cart, true);
  if (filed_ > recording) return;
  filed_ = recording;
  UpdateLastRecordedCart(*feed, cart);
}

void AudioIntake::SetCurrentlyRecordingCart(std::int32_t cart) {
  CurrentRecordCart = cart;
  if (const WireFeedRecord* const feed = host_.feed()) WriteCurrentlyRecordingCart(*feed, cart);
}

void AudioIntake::Take(const char* bytes, std::int32_t length) {
  if (Recording) WriteAudioData(bytes, length);
}

std::int32_t AudioIntake::OpenAudioFile(std::int32_t cart) {
  const platform::StreamControl* const stream = host_.stream();
  if (stream == nullptr) return kNoSuchCart;
  const std::string path = CartAudioFileName(cart);
  if (FileSize(path) >= 0) {
    if (const int error = platform::RemoveNativeFile(platform::NativePath(path)); error != 0) {
      platform::ShowMessageBox("Cannot delete " + path);
      return error;
    }
  }
  // One that couldn't be closed stays open for no longer than this.
  if (AudioFileHandle != 0) platform::mmioClose(AudioFileHandle, 0);
  // From here on its own handle: behind a box another start may open another file.
  const platform::MmioHandle handle =
      platform::mmioOpenA(path, nullptr, platform::MMIO_CREATE | platform::MMIO_WRITE);
  AudioFileHandle = handle;
  riffChunk_ = {};
  dataChunk_ = {};
  if (handle == 0) platform::ShowMessageBox("Failed to open file.");
  platform::mmioSeek(handle, 0, 0);
  platform::MMCKINFO riff;
  riff.fccType = platform::mmioStringToFOURCCA("WAVE");
  const auto code = Checked(platform::mmioCreateChunk(handle, &riff, platform::MMIO_CREATERIFF));
  if (code != 0) return code;
  return WriteHeader(handle, riff, path, FormatBytes(*stream));
}

std::int32_t AudioIntake::WriteHeader(platform::MmioHandle handle, const platform::MMCKINFO& riff,
                                      const std::string& path, const std::string& format) {
  platform::MMCKINFO formatChunk;
  formatChunk.ckid = platform::mmioStringToFOURCCA("fmt ");
  formatChunk.cksize = static_cast<std::uint32_t>(format.size());
  if (const auto code = Checked(platform::mmioCreateChunk(handle, &formatChunk, 0)); code != 0) return code;
  if (platform::mmioWrite(handle, format.data(), static_cast<std::int32_t>(format.size())) == -1) {
    platform::ShowMessageBox("No Data written during 'Write Wave Format'");
    // Behind the box another start may have opened a file of its own.
    return AudioFileHandle == handle ? 0 : -1;
  }
  if (const auto code = Checked(platform::mmioAscend(handle, &formatChunk, 0)); code != 0) return code;
  platform::MMCKINFO data;
  data.ckid = platform::mmioStringToFOURCCA("data");
  if (const auto code = Checked(platform::mmioCreateChunk(handle, &data, 0)); code != 0) return code;
  riffChunk_ = riff;
  dataChunk_ = data;
  host_.sendStatus("Opened Audio File " + path + ", handle = " + std::to_string(handle));
  return 0;
}

std::int32_t AudioIntake::WriteAudioData(const char* bytes, std::int32_t length) {
  platform::MMIOINFO info;
  if (const auto code = Checked(platform::mmioGetInfo(AudioFileHandle, &info, 0)); code != 0) return code;
  if (platform::mmioWrite(AudioFileHandle, bytes, length) == -1) {
    platform::ShowMessageBox("Failed to write data during 'WriteAudioData'");
    return 0;
  }
  return Checked(platform::mmioGetInfo(AudioFileHandle, &info, 0));
}

std::int32_t AudioIntake::CloseAudioFile() {
  platform::MMIOINFO info;
  const platform::MmioHandle handle = AudioFileHandle;
  if (const auto code = Checked(platform::mmioGetInfo(handle, &info, 0)); code != 0) return code;
  if (const auto code = Checked(platform::mmioAscend(handle, &dataChunk_, 0)); code != 0) return code;
  if (const auto code = Checked(platform::mmioAscend(handle, &riffChunk_, 0)); code != 0) return code;
  if (const auto code = Checked(platform::mmioFlush(handle, 0)); code != 0) return code;
  if (const auto code = Checked(platform::mmioClose(handle, 0)); code != 0) return code;
  AudioFileHandle = 0;
  host_.sendStatus("Closed Audio File");
  return 0;
}

}  // namespace vorda
