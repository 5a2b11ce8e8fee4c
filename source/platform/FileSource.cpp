// A sound file that stands for an input.

#include <sndfile.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/SampleSource.h"

namespace vorda::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPiece = std::chrono::milliseconds(20);
constexpr auto kLookAgain = std::chrono::seconds(1);

// The whole file in the intake's format; empty when it can't be read.
std::vector<std::int16_t> ReadSound(const std::string& path, const SampleFormat& format) {
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open(path.c_str(), SFM_READ, &info), sf_close);
  if (!file || info.channels < 1 || info.samplerate < 1 || info.frames < 1) return {};
  sf_command(file.get(), SFC_SET_SCALE_FLOAT_INT_READ, nullptr, SF_TRUE);
  const auto channels = static_cast<std::size_t>(info.channels);
  std::vector<std::int16_t> read(static_cast<std::size_t>(info.frames) * channels);
  const auto frames =
      static_cast<std::size_t>(std::max<sf_count_t>(sf_readf_short(file.get(), read.data(), info.frames), 0));
  const double step = static_cast<double>(info.samplerate) / format.rate;
  const auto wanted = static_cast<std::size_t>(std::floor(static_cast<double>(frames) / step));
  const auto outChannels = static_cast<std::size_t>(format.channels);
  std::vector<std::int16_t> sound(wanted * outChannels);
  // The nearest frame will do for a stand-in; where the rates agree it is the very one.
  for (std::size_t i = 0; i < wanted; ++i) {
    const auto frame =
        std::min(static_cast<std::size_t>(std::lround(static_cast<double>(i) * step)), frames - 1);
    for (std::size_t c = 0; c < outChannels; ++c)
      sound[i * outChannels + c] = read[frame * channels + std::min(c, channels - 1)];
  }
  return sound;
}

class FileSource : public SampleSource {
 public:
  FileSource(std::string path, SampleIntake& intake)
      : path_(std::move(path)), intake_(intake), thread_([this] { Run(); }) {}

  ~FileSource() override {
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
    }
    wake_.notify_all();
    thread_.join();
  }

 private:
  // False when the source is to end.
  bool WaitUntil(Clock::time_point moment) {
    std::unique_lock lock(mutex_);
    return !wake_.wait_until(lock, moment, [this] { return ended_; });
  }

  void Run() {
    std::vector<std::int16_t> sound = ReadSound(path_, intake_.format());
    while (sound.empty()) {
      if (!WaitUntil(Clock::now() + kLookAgain)) return;
      sound = ReadSound(path_, intake_.format());
    }
    intake_.SetRunning(true);
    Play(sound);
    intake_.SetRunning(false);
  }

  // What is due by the clock, so that a thread that was held up makes up for it and the rate stays true.
  void Play(const std::vector<std::int16_t>& sound) {
    const Clock::time_point start = Clock::now();
    const auto channels = static_cast<std::size_t>(intake_.format().channels);
    std::uint64_t played = 0;  // samples
    for (Clock::time_point next = start + kPiece; WaitUntil(next); next += kPiece) {
      const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
      const auto due = static_cast<std::uint64_t>(seconds * intake_.format().rate) * channels;
      while (played < due) {
        const std::size_t place = static_cast<std::size_t>(played % sound.size());
        const std::size_t length =
            static_cast<std::size_t>(std::min<std::uint64_t>(due - played, sound.size() - place));
        intake_.Put(std::span(sound).subspan(place, length));
        played += length;
      }
    }
  }

  const std::string path_;
  SampleIntake& intake_;
  std::mutex mutex_;
  std::condition_variable wake_;
  bool ended_ = false;
  std::thread thread_;
};

}  // namespace

std::unique_ptr<SampleSource> MakeFileSource(const std::string& path, SampleIntake& intake) {
  return std::make_unique<FileSource>(path, intake);
}

}  // namespace vorda::platform
