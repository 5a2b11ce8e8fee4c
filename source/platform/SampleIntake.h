// Where samples go from the thread that takes them in, until the interface thread fetches them.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <span>
#include <vector>

namespace vorda::platform {

struct SampleFormat {
  int channels = 1;
  int rate = 44100;  // hertz
};

using SampleBlock = std::vector<std::int16_t>;

// The blocks in order, and the level of the newest of them. Put and SetRunning may be called by any one
// thread, all else by the interface thread.
class SampleIntake {
 public:
  // Holds two minutes, beyond which the newest is dropped. `wake` is called, by the other thread, when there
  // is something to fetch again.
  SampleIntake(SampleFormat format, std::function<void()> wake);

  const SampleFormat& format() const { return format_; }

  // Takes samples over, channels interleaved.
  void Put(std::span<const std::int16_t> samples);
  // Whether the input delivers.
  void SetRunning(bool running) { running_ = running; }
  bool Running() const { return running_; }

  // The oldest block; empty when there is none.
  SampleBlock Fetch();
  // Whether there is another one.
  bool Waiting() const;
  // The peak of the newest 50 ms, 0 to 100 per cent of full scale; 0 when nothing came for 200 ms.
  int Level() const;
  // Samples that found no room.
  std::uint64_t Dropped() const;

 private:
  void Remember(std::span<const std::int16_t> samples);

  const SampleFormat format_;
  const std::function<void()> wake_;
  const std::size_t mostSamples_;
  std::atomic<bool> running_ = false;
  mutable std::mutex mutex_;
  std::deque<SampleBlock> blocks_;
  std::size_t waiting_ = 0;  // samples in them
  std::uint64_t dropped_ = 0;
  std::vector<std::int16_t> newest_;  // a ring of the last 50 ms
  std::size_t newestPlace_ = 0;
  std::int64_t lastPut_ = 0;  // milliseconds of the steady clock
};

// The level of samples: the nearest whole per cent of full scale, at most 100.
int PeakLevel(std::span<const std::int16_t> samples);

}  // namespace vorda::platform
