#include "platform/SampleIntake.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace vorda::platform {
namespace {

constexpr std::size_t kSecondsKept = 120;
constexpr std::int64_t kSilentAfter = 200;  // ms
constexpr std::size_t kLevelsPerSecond = 20;
constexpr int kFullScale = 32767;

std::int64_t SteadyMilliseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

// Of all channels, whole frames.
std::size_t Samples(std::size_t frames, const SampleFormat& format) {
  return frames * static_cast<std::size_t>(format.channels);
}

}  // namespace

int PeakLevel(std::span<const std::int16_t> samples) {
  int peak = 0;
  for (const std::int16_t sample : samples) peak = std::max(peak, std::abs(int{sample}));
  return std::min(static_cast<int>(std::lround(peak * 100.0 / kFullScale)), 100);
}

SampleIntake::SampleIntake(SampleFormat format, std::function<void()> wake)
    : format_(format),
      wake_(std::move(wake)),
      mostSamples_(Samples(kSecondsKept * static_cast<std::size_t>(format.rate), format)),
      newest_(Samples(std::max<std::size_t>(static_cast<std::size_t>(format.rate) / kLevelsPerSecond, 1),
                      format)) {}

void SampleIntake::Remember(std::span<const std::int16_t> samples) {
  if (samples.size() > newest_.size()) samples = samples.last(newest_.size());
  // Up to the ring's end, and the rest from its beginning on.
  const std::size_t ahead = std::min(samples.size(), newest_.size() - newestPlace_);
  std::ranges::copy(samples.first(ahead), newest_.begin() + static_cast<std::ptrdiff_t>(newestPlace_));
  std::ranges::copy(samples.subspan(ahead), newest_.begin());
  newestPlace_ = (newestPlace_ + samples.size()) % newest_.size();
}

void SampleIntake::Put(std::span<const std::int16_t> samples) {
  if (samples.empty()) return;
  bool first = false;
  {
    const std::lock_guard lock(mutex_);
    Remember(samples);
    lastPut_ = SteadyMilliseconds();
    if (waiting_ + samples.size() > mostSamples_) {
      dropped_ += samples.size();
      return;
    }
    first = blocks_.empty();
    blocks_.emplace_back(samples.begin(), samples.end());
    waiting_ += samples.size();
  }
  if (first) wake_();
}

SampleBlock SampleIntake::Fetch() {
  const std::lock_guard lock(mutex_);
  if (blocks_.empty()) return {};
  SampleBlock block = std::move(blocks_.front());
  blocks_.pop_front();
  waiting_ -= block.size();
  return block;
}

bool SampleIntake::Waiting() const {
  const std::lock_guard lock(mutex_);
  return !blocks_.empty();
}

int SampleIntake::Level() const {
  const std::lock_guard lock(mutex_);
  return SteadyMilliseconds() - lastPut_ > kSilentAfter ? 0 : PeakLevel(newest_);
}

std::uint64_t SampleIntake::Dropped() const {
  const std::lock_guard lock(mutex_);
  return dropped_;
}

}  // namespace vorda::platform
