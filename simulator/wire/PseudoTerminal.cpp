#include <fcntl.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "wire/Line.h"

namespace vorda::simulator {
namespace {

namespace fs = std::filesystem;

// The simulator holds both ends open, so that the reader may come and go and no byte is lost when it is slow
// to open. Who else has the reader's end open is counted from the file system's notices.
class PseudoTerminal : public Line {
 public:
  PseudoTerminal() = default;
  ~PseudoTerminal() override;
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  bool Open();
  bool Publish(const std::string& link);

  long Write(const char* bytes, size_t count) override;
  int descriptor() const override { return near_; }
  bool HasReader() override;
  bool Drained() override;

 private:
  int near_ = -1;
  int far_ = -1;
  int notices_ = -1;
  int readers_ = 0;
  std::string farName_;
  std::string link_;
};

PseudoTerminal::~PseudoTerminal() {
  std::error_code error;
  if (!link_.empty() && fs::read_symlink(link_, error) == farName_) fs::remove(link_, error);
  for (const int end : {near_, far_, notices_}) {
    if (end >= 0) ::close(end);
  }
}

bool PseudoTerminal::Open() {
  near_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  std::array<char, 128> name = {};
  if (near_ < 0 || ::grantpt(near_) != 0 || ::unlockpt(near_) != 0) return false;
  if (::ptsname_r(near_, name.data(), name.size()) != 0) return false;
  farName_ = name.data();
  far_ = ::open(farName_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  termios line = {};
  if (far_ < 0 || tcgetattr(far_, &line) != 0) return false;
  cfmakeraw(&line);
  if (tcsetattr(far_, TCSANOW, &line) != 0) return false;
  notices_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  return notices_ >= 0 && ::inotify_add_watch(notices_, farName_.c_str(), IN_OPEN | IN_CLOSE) >= 0;
}

bool PseudoTerminal::Publish(const std::string& link) {
  std::error_code error;
  if (fs::is_symlink(link, error) && fs::read_symlink(link, error).string().starts_with("/dev/pts/")) {
    fs::remove(link, error);
  }
  if (::symlink(farName_.c_str(), link.c_str()) != 0) return false;
  link_ = link;
  return true;
}

long PseudoTerminal::Write(const char* bytes, size_t count) {
  if (!HasReader()) return -1;
  const ssize_t written = ::write(near_, bytes, count);
  if (written >= 0) return written;
  return errno == EAGAIN || errno == EINTR ? 0 : -1;
}

bool PseudoTerminal::HasReader() {
  alignas(inotify_event) std::array<char, 4096> buffer;
  for (ssize_t count = 0; (count = ::read(notices_, buffer.data(), buffer.size())) > 0;) {
    for (ssize_t at = 0; at < count;) {
      const auto* notice = reinterpret_cast<const inotify_event*>(buffer.data() + at);
      if ((notice->mask & IN_OPEN) != 0) ++readers_;
      if ((notice->mask & IN_CLOSE) != 0) --readers_;
      at += static_cast<ssize_t>(sizeof(inotify_event) + notice->len);
    }
  }
  return readers_ > 0;
}

bool PseudoTerminal::Drained() {
  int unread = 0;
  return ioctl(far_, FIONREAD, &unread) != 0 || unread == 0;
}

}  // namespace

std::unique_ptr<Line> MakePseudoTerminal(const std::string& link, std::string& problem) {
  auto terminal = std::make_unique<PseudoTerminal>();
  if (!terminal->Open()) {
    problem = std::string("no pseudo-terminal can be made: ") + std::strerror(errno);
    return nullptr;
  }
  if (!terminal->Publish(link)) {
    problem = "the link " + link + " can't be made: " + std::strerror(errno);
    return nullptr;
  }
  return terminal;
}

}  // namespace vorda::simulator
