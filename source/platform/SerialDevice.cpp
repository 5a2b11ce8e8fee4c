#include "platform/SerialDevice.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <map>
#include <utility>

#include "platform/RunTimeError.h"

namespace vorda::platform {
namespace {

// Real paths of the devices that this program holds, with their descriptors. The system's own exclusiveness
// doesn't bind root, and not every file system has locks.
std::map<std::string, int>& HeldDevices() {
  static std::map<std::string, int> held;
  return held;
}

// A line that its far end holds back would keep the close waiting for half a minute.
void DropUnsent(int descriptor) {
  int unsent = 0;
  if (::ioctl(descriptor, TIOCOUTQ, &unsent) == 0 && unsent > 0) ::tcflush(descriptor, TCOFLUSH);
}

// "" with errno set when there is no such path.
std::string RealPath(const std::string& path) {
  char* resolved = ::realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return "";
  std::string real = resolved;
  std::free(resolved);
  return real;
}

// False with errno EBUSY when another program holds the device.
bool Claim(int descriptor) {
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    errno = EBUSY;
    return false;
  }
  return ::ioctl(descriptor, TIOCEXCL) == 0;
}

}  // namespace

int SerialErrorFromErrno(int systemError) {
  switch (systemError) {
    case ENOENT:
    case ENOTDIR:
    case ENXIO:
    case ENODEV:
    // A port of the numbered row whose chip isn't there opens, and then answers this.
    case EIO:
      return kDeviceUnavailable;
    case EBUSY:
      return kFileAlreadyOpen;
    case EACCES:
    case EPERM:
      return kPermissionDenied;
    default:
      return kDeviceIoError;
  }
}

void DropUnsentOutput() {
  for (const auto& [path, descriptor] : HeldDevices()) DropUnsent(descriptor);
}

std::unique_ptr<SerialDevice> SerialDevice::Open(const std::string& path, int& systemError) {
  std::string realPath = RealPath(path);
  systemError = realPath.empty() ? errno : EBUSY;
  if (realPath.empty() || HeldDevices().contains(realPath)) return nullptr;

  Descriptor device = OpenFile(realPath, O_RDWR | O_NONBLOCK);
  if (!device.isOpen() || !Claim(device.number())) {
    systemError = errno;
    return nullptr;
  }
  systemError = 0;
  return std::unique_ptr<SerialDevice>(new SerialDevice(std::move(device), std::move(realPath)));
}

SerialDevice::SerialDevice(Descriptor device, std::string realPath)
    : device_(std::move(device)), realPath_(std::move(realPath)) {
  HeldDevices().emplace(realPath_, descriptor());
}

SerialDevice::~SerialDevice() {
  DropUnsent(descriptor());
  // The terminal of a pair outlives this end, and so would the exclusiveness.
  ::ioctl(descriptor(), TIOCNXCL);
  HeldDevices().erase(realPath_);
}

bool SerialDevice::Write(std::string_view& bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor(), bytes.data(), bytes.size());
    if (written > 0) {
      bytes.remove_prefix(static_cast<size_t>(written));
    } else if (written == 0 || errno == EAGAIN) {
      break;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool SerialDevice::Send(std::string_view bytes) {
  if (kept_.empty() && !Write(bytes)) return false;
  kept_.append(bytes.substr(0, kOutputBacklog - kept_.size()));
  return true;
}

bool SerialDevice::SendKept() {
  std::string_view rest = kept_;
  const bool there = Write(rest);
  kept_.erase(0, kept_.size() - rest.size());
  return there;
}

}  // namespace vorda::platform
