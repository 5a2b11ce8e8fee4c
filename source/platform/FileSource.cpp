// A sound file that stands for an input.

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/Descriptor.h"
#include "platform/SampleSource.h"

namespace vorda::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPiece = std::chrono::milliseconds(20);
constexpr auto kLookAgain = std::chrono::seconds(1);

constexpr std::size_t kMostSamples = std::size_t{1} << 28;
constexpr std::size_t kFramesARead = 4096;
constexpr int kMostChannels = 1024;  // as the library's

// Not blocking, and not so much as opened: a pipe would wait for its writer, and take up one that waits.
Descriptor OpenRegularFile(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  Descriptor file = OpenFile(path, O_RDONLY | O_NONBLOCK);
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  return file;
}

// A header may promise any number of frames: only what comes is believed.
FileSound ReadSound(const std::string& path) {
  const Descriptor opened = OpenRegularFile(path);
  if (!opened.isOpen()) return {};
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(
      sf_open_fd(opened.number(), SFM_READ, &info, SF_FALSE), sf_close);
  if (!file || info.channels < 1 || info.channels > kMostChannels || info.samplerate < 1) return {};
  sf_command(file.get(), SFC_SET_SCALE_FLOAT_INT_READ, nullptr, SF_TRUE);
  FileSound sound{static_cast<std::size_t>(info.channels), info.samplerate, {}};
  std::vector<std::int16_t> piece(kFramesARead * sound.channels);
  while (sound.samples.size() + piece.size() <= kMostSamples) {
    const sf_count_t frames = sf_readf_short(file.get(), piece.data(), kFramesARead);
    if (frames < 1) break;
    const auto end = piece.begin() + static_cast<std::ptrdiff_t>(frames) * info.channels;
    sound.samples.insert(sound.samples.end(), piece.begin(), end);
  }
  return sound;
}

// A file's sound in an intake's format, without an end.
class EndlessSound {
 public:
  EndlessSound(FileSound sound, const SampleFormat& format)
      : sound_(std::move(sound)),
        channels_(static_cast<std::size_t>(format.channels)),
        step_(static_cast<double>(sound_.rate) / format.rate),
        fileFrames_(sound_.samples.size() / sound_.channels),
        frames_(static_cast<std::uint64_t>(static_cast<double>(fileFrames_) / step_)) {}

  bool empty() const { return fileFrames_ == 0 || frames_ == 0; }

  SampleBlock Frames(std::uint64_t first, std::size_t count) const {
    SampleBlock block;
    block.reserve(count * channels_);
    for (std::uint64_t i = first; i < first + count; ++i) {
      const std::int16_t* const frame = sound_.samples.data() + FileFrame(i % frames_) * sound_.channels;
      for (std::size_t c = 0; c < channels_; ++c) block.push_back(frame[std::min(c, sound_.channels - 1)]);
    }
    return block;
  }

 private:
  // The nearest frame will do for a stand-in; where the rates agree it is the very one.
  std::size_t FileFrame(std::uint64_t frame) const {
    return std::min(static_cast<std::size_t>(std::llround(static_cast<double>(frame) * step_)),
                    fileFrames_ - 1);
  }

  FileSound sound_;
  std::size_t channels_;
  double step_;
  std::size_t fileFrames_;
  std::uint64_t frames_;
};

// Shared by a source and its thread: nobody waits for a thread that is at the file, which goes on without
// its source then.
class Life {
 public:
  // Ends it. False when the thread is at the file.
  bool End() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    wake_.notify_all();
    return !atFile_;
  }
  // False when it has ended.
  bool GoToFile(bool atFile) {
    const std::lock_guard lock(mutex_);
    atFile_ = atFile && !ended_;
    return !ended_;
  }
  bool WaitUntil(Clock::time_point moment) {
    std::unique_lock lock(mutex_);
    return !wake_.wait_until(lock, moment, [this] { return ended_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable wake_;
  bool ended_ = false;
  bool atFile_ = false;
};

// What is due by the clock, so that a thread that was held up makes up for it and the rate stays true.
void Play(const EndlessSound& sound, SampleIntake& intake, Life& life) {
  const Clock::time_point start = Clock::now();
  const int rate = intake.format().rate;
  std::uint64_t played = 0;  // frames
  for (Clock::time_point next = start + kPiece; life.WaitUntil(next); next += kPiece) {
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    const auto due = static_cast<std::uint64_t>(seconds * rate);
    while (played < due) {
      const auto count = static_cast<std::size_t>(std::min(due - played, static_cast<std::uint64_t>(rate)));
      intake.Put(sound.Frames(played, count));
      played += count;
    }
  }
}

// The intake is there until the life has ended, unless the thread is at the file.
void Run(const std::string& path, const Hook<FileSound(const std::string&)>& read, SampleIntake& intake,
         Life& life) {
  const SampleFormat format = intake.format();
  while (life.GoToFile(true)) {
    const EndlessSound sound(read(path), format);
    if (!life.GoToFile(false)) return;
    if (sound.empty()) {
      if (!life.WaitUntil(Clock::now() + kLookAgain)) return;
      continue;
    }
    intake.SetRunning(true);
    Play(sound, intake, life);
    intake.SetRunning(false);
    return;
  }
}

class FileSource : public SampleSource {
 public:
  FileSource(const std::string& path, SampleIntake& intake)
      : thread_([path, read = FileSoundHook(), &intake, life = life_] { Run(path, read, intake, *life); }) {}

  ~FileSource() override {
    if (life_->End()) {
      thread_.join();
    } else {
      thread_.detach();
    }
  }

 private:
  const std::shared_ptr<Life> life_ = std::make_shared<Life>();
  std::thread thread_;
};

}  // namespace

Hook<FileSound(const std::string&)>& FileSoundHook() {
  static Hook<FileSound(const std::string&)> hook(ReadSound);
  return hook;
}

std::unique_ptr<SampleSource> MakeFileSource(const std::string& path, SampleIntake& intake) {
  return std::make_unique<FileSource>(path, intake);
}

}  // namespace vorda::platform
