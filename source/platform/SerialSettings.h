// The settings text of a serial port, "BBBB,P,D,S", taken apart.

#pragma once

#include <optional>
#include <string_view>

namespace vorda::platform {

struct SerialSettings {
  int baud = 9600;
  char parity = 'N';      // N none, E even, O odd, M mark, S space
  int dataBits = 8;       // 4 to 8
  bool longStop = false;  // one and a half or two stop bits; the data bits decide which the line sends
};

// Nothing when `text` isn't a settings text. Fields are taken as they are, blanks in them are not.
std::optional<SerialSettings> ParseSerialSettings(std::string_view text);

}  // namespace vorda::platform
