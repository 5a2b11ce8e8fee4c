// The header of a wave file without sound.

#include <string>

#include "audio/AudioRoutines.h"
#include "platform/Files.h"
#include "platform/LittleEndian.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/RandomFiles.h"
#include "platform/RunTimeError.h"

namespace vorda {

namespace {

constexpr std::uint32_t kRiffSize = 46;
constexpr std::uint32_t kDataSize = 10;
constexpr std::uint32_t kPcm = 1;

std::string BlankHeader(std::uint32_t rate, std::uint32_t bits, std::uint32_t channels) {
  std::string bytes = "RIFF";
  platform::AppendLittleEndian(bytes, kRiffSize, 4);
  bytes += "WAVEfmt ";
  platform::AppendLittleEndian(bytes, bits, 4);  // in the chunk size's place: right for 16 bits
  platform::AppendLittleEndian(bytes, kPcm, 2);
  platform::AppendLittleEndian(bytes, channels, 2);
  platform::AppendLittleEndian(bytes, rate, 4);
  platform::AppendLittleEndian(bytes, rate * channels * bits / 8, 4);
  platform::AppendLittleEndian(bytes, channels * bits / 8, 2);
  platform::AppendLittleEndian(bytes, bits, 2);
  bytes += "data";
  platform::AppendLittleEndian(bytes, kDataSize, 4);
  return bytes;
}

}  // namespace

bool CreateBlankWave(const std::string& path, std::int32_t rate, std::int16_t bits, std::int16_t channels) {
  if (path.empty()) return false;
  const std::string header = BlankHeader(static_cast<std::uint32_t>(rate), static_cast<std::uint16_t>(bits),
                                         static_cast<std::uint16_t>(channels));
  const int number = platform::FreeFileNumber();
  int error = platform::OpenForRandom(number, path);
  if (error == 0) error = platform::WriteToFileAt(number, 0, header);
  platform::CloseFile(number);
  if (error == 0) return true;
  platform::ShowMessageBox({"Error Creating Cart : " + path, platform::BoxIcon::Critical,
                            platform::BoxButtons::Ok, "Error: " + platform::ErrorText(error)});
  return false;
}

}  // namespace vorda
