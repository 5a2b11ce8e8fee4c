#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "wire/Line.h"

namespace vorda::simulator {
namespace {

constexpr std::array<std::pair<int, speed_t>, 12> kSpeeds = {{{110, B110},
                                                              {300, B300},
                                                              {600, B600},
                                                              {1200, B1200},
                                                              {2400, B2400},
                                                              {4800, B4800},
                                                              {9600, B9600},
                                                              {19200, B19200},
                                                              {38400, B38400},
                                                              {57600, B57600},
                                                              {115200, B115200},
                                                              {230400, B230400}}};

std::optional<speed_t> SpeedOf(int baud) {
  for (const auto& [rate, speed] : kSpeeds) {
    if (rate == baud) return speed;
  }
  return std::nullopt;
}

tcflag_t ParityFlags(char parity) {
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

tcflag_t SizeFlags(int dataBits) {
  constexpr std::array<tcflag_t, 4> kSizes = {CS5, CS6, CS7, CS8};
  return kSizes[static_cast<size_t>(dataBits - 5)];
}

bool ApplySettings(int descriptor, const LineSettings& settings, speed_t speed) {
  termios line = {};
  if (tcgetattr(descriptor, &line) != 0) return false;
  cfmakeraw(&line);
  line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS);
  line.c_cflag |= CLOCAL | CREAD | SizeFlags(settings.dataBits) | ParityFlags(settings.parity);
  if (settings.stopBits > 1) line.c_cflag |= CSTOPB;
  cfsetspeed(&line, speed);
  return tcsetattr(descriptor, TCSANOW, &line) == 0;
}

class Device : public Line {
 public:
  explicit Device(int descriptor) : descriptor_(descriptor) {}
  ~Device() override { ::close(descriptor_); }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  long Write(const char* bytes, size_t count) override {
    const ssize_t written = ::write(descriptor_, bytes, count);
    if (written >= 0) return written;
    return errno == EAGAIN || errno == EINTR ? 0 : -1;
  }
  int descriptor() const override { return descriptor_; }
  bool HasReader() override {
    int waiting = 0;
    return ioctl(descriptor_, TIOCOUTQ, &waiting) == 0;
  }
  bool Drained() override {
    int waiting = 0;
    return ioctl(descriptor_, TIOCOUTQ, &waiting) != 0 || waiting == 0;
  }

 private:
  int descriptor_;
};

}  // namespace

std::unique_ptr<Line> OpenDevice(const std::string& path, const LineSettings& settings,
                                 std::string& problem) {
  const std::optional<speed_t> speed = SpeedOf(settings.baud);
  if (!speed) {
    problem = std::to_string(settings.baud) + " baud is no rate that a device is set to here";
    return nullptr;
  }
  const int descriptor = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) {
    problem = path + " can't be opened: " + std::strerror(errno);
    return nullptr;
  }
  auto device = std::make_unique<Device>(descriptor);
  if (ioctl(descriptor, TIOCEXCL) != 0 || !ApplySettings(descriptor, settings, *speed)) {
    problem = path + " can't be set up as a serial line: " + std::strerror(errno);
    return nullptr;
  }
  return device;
}

}  // namespace vorda::simulator
