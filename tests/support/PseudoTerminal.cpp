#include "support/PseudoTerminal.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include "support/EventLoop.h"

namespace vorda::test {
namespace {

struct termios2 ModesOf(int master) {
  struct termios2 modes {};
  if (::ioctl(master, TCGETS2, &modes) != 0) std::abort();
  return modes;
}

void SetModes(int master, const struct termios2& modes) {
  if (::ioctl(master, TCSETS2, &modes) != 0) std::abort();
}

}  // namespace

PseudoTerminal::PseudoTerminal(std::string link)
    : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)), link_(std::move(link)) {
  std::array<char, 128> name{};
  if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
      ::ptsname_r(master_, name.data(), name.size()) != 0)
    std::abort();
  slavePath_ = name.data();
  if (!link_.empty() && ::symlink(slavePath_.c_str(), link_.c_str()) != 0) std::abort();

  auto modes = ModesOf(master_);
  modes.c_iflag = 0;
  modes.c_oflag = 0;
  modes.c_lflag = 0;
  SetModes(master_, modes);
}

PseudoTerminal::~PseudoTerminal() {
  HangUp();
}

bool PseudoTerminal::Write(std::string_view bytes) {
  bool open = master_ >= 0;
  const auto writeSome = [&] {
    const ssize_t written = ::write(master_, bytes.data(), bytes.size());
    if (written > 0) bytes.remove_prefix(static_cast<size_t>(written));
    if (written < 0 && errno != EAGAIN && errno != EINTR) open = false;
    return bytes.empty() || !open;
  };
  return open && WaitUntil(writeSome) && open;
}

std::string PseudoTerminal::Read() {
  std::string bytes;
  std::array<char, 4096> piece;
  ssize_t length = 0;
  while (master_ >= 0 && (length = ::read(master_, piece.data(), piece.size())) > 0)
    bytes.append(piece.data(), static_cast<size_t>(length));
  return bytes;
}

std::string PseudoTerminal::Read(size_t length) {
  std::string bytes;
  WaitUntil([&] {
    bytes += Read();
    return bytes.size() >= length;
  });
  return bytes;
}

void PseudoTerminal::HangUp() {
  if (master_ < 0) return;
  if (!link_.empty()) ::unlink(link_.c_str());
  ::close(master_);
  master_ = -1;
}

TerminalModes PseudoTerminal::Modes() const {
  const auto modes = ModesOf(master_);
  return {modes.c_iflag, modes.c_oflag, modes.c_lflag, modes.c_cflag, modes.c_ospeed};
}

void PseudoTerminal::WriteMarksAsTheyAre() {
  auto modes = ModesOf(master_);
  modes.c_iflag &= ~static_cast<tcflag_t>(PARMRK);
  SetModes(master_, modes);
}

}  // namespace vorda::test
