#include "platform/SerialSettings.h"

#include <array>
#include <string>

#include "platform/SerialControl.h"
#include "platform/Text.h"

namespace vorda::platform {
namespace {

struct Speed {
  std::string_view text;
  int baud;
};

constexpr std::array kSpeeds = {
    Speed{"110", 110},     Speed{"300", 300},       Speed{"600", 600},       Speed{"1200", 1200},
    Speed{"2400", 2400},   Speed{"4800", 4800},     Speed{"9600", 9600},     Speed{"14400", 14400},
    Speed{"19200", 19200}, Speed{"28800", 28800},   Speed{"38400", 38400},   Speed{"56000", 56000},
    Speed{"57600", 57600}, Speed{"115200", 115200}, Speed{"128000", 128000}, Speed{"256000", 256000},
};

// 0 when the text is no speed that a port can have.
int BaudOf(std::string_view text) {
  for (const Speed& speed : kSpeeds)
    if (speed.text == text) return speed.baud;
  return 0;
}

// Cuts the text up to the next comma, or its end, off the front.
std::string_view TakeField(std::string_view& text) {
  const size_t comma = text.find(',');
  const std::string_view field = text.substr(0, comma);
  text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
  return field;
}

}  // namespace

std::optional<SerialSettings> ParseSerialSettings(std::string_view text) {
  const int baud = BaudOf(TakeField(text));
  const std::string_view parity = TakeField(text);
  const std::string_view dataBits = TakeField(text);
  const std::string_view stopBits = text;

  if (baud == 0 || parity.size() != 1 || dataBits.size() != 1) return std::nullopt;
  const char parityLetter = UpperCase(parity[0]);
  if (std::string_view("NEOMS").find(parityLetter) == std::string_view::npos) return std::nullopt;
  if (dataBits[0] < '4' || dataBits[0] > '8') return std::nullopt;
  if (stopBits != "1" && stopBits != "1.5" && stopBits != "2") return std::nullopt;
  return SerialSettings{baud, parityLetter, dataBits[0] - '0', stopBits != "1"};
}

bool ValidSerialSettings(std::string_view settings) {
  return ParseSerialSettings(settings).has_value();
}

}  // namespace vorda::platform
