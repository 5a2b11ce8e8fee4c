#include "wire/Sender.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vorda::simulator {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How often is looked whether a reader has come, has gone or has read everything: nothing wakes a waiter for
// those.
constexpr milliseconds kLook(10);
// A sender that was held up makes up for this much, as a line's own buffer would, and no more.
constexpr milliseconds kCatchUp(50);

}  // namespace

Record::~Record() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

bool Record::Open(const std::string& path, std::string& problem) {
  descriptor_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (descriptor_ < 0) problem = path + " can't be written: " + std::strerror(errno);
  return descriptor_ >= 0;
}

bool Record::Append(std::string_view bytes) {
  while (descriptor_ >= 0 && !bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

Sender::Sender(Line& line, Record& sent, double pace, size_t chunk)
    : line_(line), sent_(sent), pace_(pace), chunk_(chunk), due_(steady_clock::now()) {}

Outcome Sender::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    if (const Outcome outcome = AwaitTurn(); outcome != Outcome::Done) return outcome;
    const long written = line_.Write(bytes.data(), std::min(chunk_, bytes.size()));
    if (written < 0) return Outcome::LineGone;
    if (written == 0) {
      WaitFor(line_.descriptor(), POLLOUT, steady_clock::now() + kLook);
      continue;
    }
    const size_t count = static_cast<size_t>(written);
    if (!sent_.Append(bytes.substr(0, count))) return Outcome::RecordFailed;
    bytes.remove_prefix(count);
    Advance(count);
  }
  return Outcome::Done;
}

Outcome Sender::AwaitTurn() {
  if (steady_clock::now() < due_) Wait(nullptr, 0, due_);
  return Interrupted() ? Outcome::Interrupted : Outcome::Done;
}

void Sender::Advance(size_t count) {
  total_ += count;
  if (pace_ <= 0) return;
  const std::chrono::duration<double> length(static_cast<double>(count) / pace_);
  due_ = std::max(due_ + std::chrono::duration_cast<steady_clock::duration>(length),
                  steady_clock::now() - kCatchUp);
}

Outcome Sender::Pause(milliseconds length) {
  due_ = std::max(due_, steady_clock::now()) + length;
  return AwaitTurn();
}

Outcome Sender::AwaitReader() {
  while (!line_.HasReader()) {
    Wait(nullptr, 0, steady_clock::now() + kLook);
    if (Interrupted()) return Outcome::Interrupted;
  }
  return Outcome::Done;
}

Outcome Sender::Drain() {
  // The last bytes may still be on their way into the buffer that is looked at, hence several looks.
  for (int looks = 0; looks < 5 && line_.HasReader();) {
    looks = line_.Drained() ? looks + 1 : 0;
    Wait(nullptr, 0, steady_clock::now() + kLook);
    if (Interrupted()) return Outcome::Interrupted;
  }
  return Outcome::Done;
}

void Sender::Stay() {
  while (!Interrupted() && line_.HasReader()) Wait(nullptr, 0, steady_clock::now() + kLook);
}

}  // namespace vorda::simulator
