#include "platform/WaveErrors.h"

#include <algorithm>
#include <iterator>

namespace vorda::platform {

namespace {

struct WaveError {
  std::int32_t code;
  const char* text;
};

constexpr WaveError kErrors[] = {
    {1, "An undefined external error has occurred."},
    {2, "A device ID has been used that is out of range for your system."},
    {3, "The driver was not enabled."},
    {4, "The specified device is already in use. Wait until it is free, and then try again."},
    {5, "The specified device handle is invalid."},
    {6, "There is no driver installed on your system."},
    {7, "There is not enough memory available for this task. Quit one or more programs, and then try again."},
    {8, "This function is not supported. Use the Capabilities function to determine what is supported."},
    {9, "An error number was specified that is not defined in the system."},
    {10, "An invalid flag was passed to a system function."},
    {kMmsysInvalidParameter, "An invalid parameter was passed to a system function."},
    {12, "The specified device handle is being used at the same time by another thread."},
    {32, "The specified format is not supported or cannot be translated."},
    {33, "Cannot perform this operation while media data is still playing."},
    {34, "The wave header was not prepared. Use the Prepare function to prepare the header."},
    {35, "Cannot open the device without the synchronous flag. Use the flag, and then try again."},
};

}  // namespace

std::string WaveErrorText(std::int32_t code) {
  const auto* const found = std::find_if(std::begin(kErrors), std::end(kErrors),
                                         [code](const WaveError& error) { return error.code == code; });
  return found == std::end(kErrors) ? std::string() : found->text;
}

}  // namespace vorda::platform
