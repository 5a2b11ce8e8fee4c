// The modes of a terminal line that carry a serial port's settings and handshaking.
//
// Apart from everything else because the header that knows any speed, not only the named ones, can't stand
// beside termios.h.

#pragma once

#include <cstdint>

#include "platform/SerialSettings.h"

namespace vorda::platform {

// What goes into the line's modes; the flags as the kernel numbers them. All other flags are off: the line is
// raw.
struct LineModes {
  std::uint32_t inputFlags = 0;
  std::uint32_t controlFlags = 0;  // with the speed's own bits
  std::uint32_t baud = 0;
};

// `handshaking`: 0 none, 1 XON-XOFF, 2 RTS, 3 both.
LineModes LineModesFor(const SerialSettings& settings, int handshaking);

// Sets the modes at once, without waiting for output. False, with errno set, when the descriptor is no
// working terminal; a mode that the device merely doesn't have is no failure.
bool ApplyLineModes(int descriptor, const LineModes& modes);

}  // namespace vorda::platform
