// The settings of a serial line, written as the feed configuration writes them: "9600,n,8,1".

#pragma once

#include <optional>
#include <string_view>

namespace vorda::simulator {

struct LineSettings {
  int baud = 9600;
  char parity = 'N';  // N, E, O, M or S
  int dataBits = 8;
  double stopBits = 1;
};

// Reads "baud,parity,data bits,stop bits"; nothing when a part is missing or unknown.
std::optional<LineSettings> ParseLineSettings(std::string_view text);

// Bytes a second at full speed: a byte takes a start bit, its data bits, a parity bit if any, and its stop
// bits.
double BytesPerSecond(const LineSettings& settings);

}  // namespace vorda::simulator
