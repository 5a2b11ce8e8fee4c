#include "platform/StandardError.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "platform/Text.h"

namespace vorda::platform {
namespace {

constexpr double kSecondsPerDay = 86400;
constexpr double kPause = 60;  // seconds
constexpr const char* kFurtherTexts = "Too many different messages: the others are left out";

// A clock that was set back counts as a long time.
bool IsWithinPause(const Moment& before, const Moment& now) {
  const double elapsed = (now.day - before.day) * kSecondsPerDay + now.seconds - before.seconds;
  return elapsed >= 0 && elapsed < kPause;
}

bool HasRoom(int descriptor) {
  pollfd question = {descriptor, POLLOUT, 0};
  return ::poll(&question, 1, 0) == 1 && (question.revents & POLLOUT) != 0;
}

}  // namespace

void HoldStandardStreams() {
  int opened = 0;
  while (opened >= 0 && opened <= STDERR_FILENO) opened = ::open("/dev/null", O_RDWR);
  if (opened > STDERR_FILENO) ::close(opened);
}

void WriteToStandardError(const std::string& text) {
  // A pipe that has room at all has room for this much.
  constexpr std::size_t kPiece = 4096;
  const std::string lines = "vdserver: " + ToUtf8(text) + "\n";
  std::string_view rest = lines;
  while (!rest.empty() && HasRoom(STDERR_FILENO)) {
    const ssize_t written = ::write(STDERR_FILENO, rest.data(), std::min(rest.size(), kPiece));
    if (written <= 0) return;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::optional<std::string> RepeatedTexts::Take(const std::string& text, const Moment& now) {
  if (told_.size() >= kMostTexts && !told_.contains(text)) ForgetOldOnes(now);
  const bool room = told_.size() < kMostTexts || told_.contains(text);
  const std::string told = room ? text : kFurtherTexts;
  const auto [entry, isNew] = told_.try_emplace(told, Told{now});
  Told& last = entry->second;
  if (!isNew && IsWithinPause(last.at, now)) {
    ++last.leftOut;
    return {};
  }
  const int leftOut = last.leftOut;
  last = Told{now};
  return leftOut == 0 ? told : told + " (left out since the last time: " + std::to_string(leftOut) + ")";
}

void RepeatedTexts::ForgetOldOnes(const Moment& now) {
  std::erase_if(told_, [&now](const auto& entry) { return !IsWithinPause(entry.second.at, now); });
}

}  // namespace vorda::platform
