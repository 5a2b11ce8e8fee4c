#include "platform/LineModes.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>

#include <array>
#include <cerrno>

namespace vorda::platform {
namespace {

struct NamedSpeed {
  int baud;
  std::uint32_t flag;
};

constexpr std::array kNamedSpeeds = {
    NamedSpeed{110, B110},     NamedSpeed{300, B300},       NamedSpeed{600, B600},
    NamedSpeed{1200, B1200},   NamedSpeed{2400, B2400},     NamedSpeed{4800, B4800},
    NamedSpeed{9600, B9600},   NamedSpeed{19200, B19200},   NamedSpeed{38400, B38400},
    NamedSpeed{57600, B57600}, NamedSpeed{115200, B115200},
};

std::uint32_t SpeedFlag(int baud) {
  for (const NamedSpeed& speed : kNamedSpeeds)
    if (speed.baud == baud) return speed.flag;
  return BOTHER;
}

std::uint32_t ParityFlags(char parity) {
  switch (parity) {
    case 'E':
      return PARENB;
    case 'O':
      return PARENB | PARODD;
    case 'M':
      return PARENB | PARODD | CMSPAR;
    case 'S':
      return PARENB | CMSPAR;
    default:
      return 0;
  }
}

// No line driver knows four data bits; five are the nearest.
std::uint32_t DataBitFlags(int dataBits) {
  switch (dataBits) {
    case 8:
      return CS8;
    case 7:
      return CS7;
    case 6:
      return CS6;
    default:
      return CS5;
  }
}

}  // namespace

LineModes LineModesFor(const SerialSettings& settings, int handshaking) {
  LineModes modes;
  // Errors are always marked in the stream, so that one decoder serves every kind of device. Without INPCK a
  // UART would not tell of framing errors either.
  modes.inputFlags = INPCK | PARMRK;
  if (handshaking & 1) modes.inputFlags |= IXON | IXOFF;

  modes.controlFlags = CREAD | CLOCAL | HUPCL | SpeedFlag(settings.baud) | DataBitFlags(settings.dataBits);
  modes.controlFlags |= ParityFlags(settings.parity);
  if (settings.longStop) modes.controlFlags |= CSTOPB;
  if (handshaking & 2) modes.controlFlags |= CRTSCTS;

  modes.baud = static_cast<std::uint32_t>(settings.baud);
  return modes;
}

bool ApplyLineModes(int descriptor, const LineModes& modes) {
  struct termios2 line {};
  if (::ioctl(descriptor, TCGETS2, &line) != 0) return false;
  line.c_iflag = modes.inputFlags;
  line.c_oflag = 0;
  line.c_lflag = 0;
  line.c_cflag = modes.controlFlags;
  line.c_ispeed = modes.baud;
  line.c_ospeed = modes.baud;
  // A read with nothing there must say so; with VMIN 0 it would look like a hang-up.
  line.c_cc[VMIN] = 1;
  line.c_cc[VTIME] = 0;
  line.c_cc[VSTART] = 0x11;
  line.c_cc[VSTOP] = 0x13;
  return ::ioctl(descriptor, TCSETS2, &line) == 0 || errno == EINVAL;
}

}  // namespace vorda::platform
