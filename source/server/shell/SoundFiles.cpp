// Lengths of sound files.

#include "platform/MciDevice.h"
#include "platform/MciErrors.h"
#include "platform/MessageBox.h"
#include "platform/NumericValue.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

void ShowMciError(std::int32_t code) {
  platform::ShowMessageBox({platform::Trim(platform::MciErrorText(code)), platform::BoxIcon::Exclamation,
                            platform::BoxButtons::RetryCancel, "MCI ERROR: " + std::to_string(code)});
}

}  // namespace

float WaveLengthSeconds(const std::string& path) {
  constexpr double kMillisecondsPerSecond = 1000;
  float seconds = 0;
  std::string name = path;
  const std::string quoted = platform::Trim(QuotePath(name));
  if (quoted.empty()) return seconds;
  std::int32_t error = platform::MciSendString("Open " + quoted + " alias lengthtest");
  const bool missing = error == platform::kMciFileNotFound;
  if (error == 0) {
    std::string reply;
    error = platform::MciSendString("status lengthtest length", &reply);
    if (error == 0) seconds = static_cast<float>(platform::NumericValue(reply) / kMillisecondsPerSecond);
  }
  if (error != 0 && !missing) ShowMciError(error);
  platform::MciSendString("Close LengthTest");
  return seconds;
}

}  // namespace vorda
