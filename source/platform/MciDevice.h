// Sound files behind media control command strings (MCI).
//
// A command is words parted by blanks, in any case: the command's word, the device, parameters. A word in
// double quotation marks may hold blanks. Paths are configured texts (NativePath).
//
//   open PATH [type waveaudio] [alias NAME]   without an alias the device is called as its path
//   status NAME length                        replies with the length in whole milliseconds, cut
//   close NAME
//   close all
//
// Each may end in "wait" and "notify". For the interface thread only.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorda::platform {

// Runs a command. Result: 0 or an error's number (MciErrors); `reply` takes the text that the command
// answers with, "" when it has none.
std::int32_t MciSendString(std::string_view command, std::string* reply = nullptr);

}  // namespace vorda::platform
