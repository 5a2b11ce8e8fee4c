// The streaming control on the station's inputs.

#include <QMetaObject>
#include <QObject>
#include <QPointer>

#include <set>
#include <utility>

#include "platform/NativePath.h"
#include "platform/SampleSource.h"
#include "platform/StreamControl.h"
#include "platform/WaveDevices.h"

namespace vorda::platform {
namespace {

constexpr std::string_view kFileDevice = "file:";

constexpr int kMostChannels = 32;

class WaveInStream;

// The streams whose number no input has yet.
std::set<WaveInStream*>& WaitingStreams() {
  static std::set<WaveInStream*> streams;
  return streams;
}

// Has the waiting streams try again whenever inputs come.
void WatchInputs();

class WaveInStream : public StreamControl {
 public:
  ~WaveInStream() override { End(); }

  void StartStream() override {
    End();
    const SampleFormat format{numberchannels, samplerate};
    if (wavedevicenumber < 1 || format.rate < 1) return;
    if (format.channels < 1 || format.channels > kMostChannels) return;
    intake_ = std::make_unique<SampleIntake>(format, [this] { HandOverSoon(); });
    started_ = true;
    Begin();
  }

  void StopStream() override { End(); }

  void EndOfCut() override { HandOver(); }

  std::int16_t StreamLevel() const override {
    return intake_ ? static_cast<std::int16_t>(intake_->Level()) : std::int16_t{0};
  }

  std::int16_t StreamState() const override {
    if (!started_) return kStreamStopped;
    return intake_->Running() ? kStreamRunning : kStreamWaiting;
  }

  // Starts on the input of the present number, or waits until the number has one.
  void Begin() {
    const std::string device = WaveInDeviceName(wavedevicenumber);
    const bool isFile = device.starts_with(kFileDevice);
    // Inputs that the station gets later are to have a number as well.
    if (!isFile) WatchInputs();
    if (device.empty()) {
      WaitingStreams().insert(this);
      return;
    }
    source_ = isFile ? MakeFileSource(NativePath(device.substr(kFileDevice.size())), *intake_)
                     : MakeServerSource(device, *intake_);
  }

 private:
  void End() {
    started_ = false;
    WaitingStreams().erase(this);
    source_.reset();
    intake_.reset();
  }

  void HandOverSoon() {
    QMetaObject::invokeMethod(
        &receiver_, [this] { HandOver(); }, Qt::QueuedConnection);
  }

  // One block at a time out of the common queue: a handler that waits behind a box lets the next call in,
  // which goes on where this one is. The handler may end the stream.
  void HandOver() {
    const QPointer<QObject> alive(&receiver_);
    while (alive && intake_) {
      const SampleBlock block = intake_->Fetch();
      if (block.empty()) return;
      // The intake calls only when it was empty.
      if (intake_->Waiting()) HandOverSoon();
      if (const auto take = AudioData)
        take(reinterpret_cast<const char*>(block.data()),
             static_cast<std::int32_t>(block.size() * sizeof(std::int16_t)));
    }
  }

  QObject receiver_;  // of the other thread's calls; those under way go with it
  bool started_ = false;
  // The source fills the intake and has to end first.
  std::unique_ptr<SampleIntake> intake_;
  std::unique_ptr<SampleSource> source_;
};

void WatchInputs() {
  static bool watching = false;
  if (std::exchange(watching, true)) return;
  WatchWaveInDevices([] {
    for (WaveInStream* stream : std::exchange(WaitingStreams(), {})) stream->Begin();
  });
}

}  // namespace

Hook<std::unique_ptr<StreamControl>()>& StreamControlFactory() {
  static Hook<std::unique_ptr<StreamControl>()> factory(
      [] { return std::unique_ptr<StreamControl>(std::make_unique<WaveInStream>()); });
  return factory;
}

std::unique_ptr<StreamControl> MakeStreamControl() {
  return StreamControlFactory()();
}

}  // namespace vorda::platform
