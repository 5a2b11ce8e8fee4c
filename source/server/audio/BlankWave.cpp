// The header of a wave file without sound.

#include <string>

#include "audio/AudioRoutines.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/RandomFiles.h"
#include "platform/RunTimeError.h"

namespace vorda {

namespace {

constexpr std::uint32_t kRiffSize = 46;
constexpr std::uint32_t kDataSize = 10;
constexpr std::uint32_t kPcm = 1;

// Numbers begin with their lowest byte.
void AppendNumber(std::string& bytes, std::uint32_t number, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
}

std::string BlankHeader(std::uint32_t rate, std::uint32_t bits, std::uint32_t channels) {
  std::string bytes = "RIFF";
  AppendNumber(bytes, kRiffSize, 4);
  bytes += "WAVEfmt ";
  AppendNumber(bytes, bits, 4);  // in the chunk size's place: right for 16 bits
  AppendNumber(bytes, kPcm, 2);
  AppendNumber(bytes, channels, 2);
  AppendNumber(bytes, rate, 4);
  AppendNumber(bytes, rate * channels * bits / 8, 4);
  AppendNumber(bytes, channels * bits / 8, 2);
  AppendNumber(bytes, bits, 2);
  bytes += "data";
  AppendNumber(bytes, kDataSize, 4);
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
