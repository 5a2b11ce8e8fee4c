// The streaming control on the station's inputs.

#include <QMetaObject>
#include <QObject>
#include <QPointer>

#include "platform/NativePath.h"
#include "platform/SampleSource.h"
#include "platform/StreamControl.h"
#include "platform/WaveDevices.h"

namespace vorda::platform {
namespace {

constexpr std::string_view kFileDevice = "file:";

constexpr int kMostChannels = 32;

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

 private:
  // Starts on the input of the present number, or waits until the number has one.
  void Begin() {
    if (source_) return;
    const std::string device = WaveInDeviceName(wavedevicenumber);
    const bool isFile = device.starts_with(kFileDevice);
    // Inputs that the station gets later are to have a number as well.
    if (!isFile && !watch_) watch_ = WatchWaveInDevices([this] { Begin(); });
    if (device.empty()) return;
    source_ = isFile ? MakeFileSource(NativePath(device.substr(kFileDevice.size())), *intake_)
                     : MakeServerSource(device, *intake_);
  }

  void End() {
    started_ = false;
    watch_.reset();
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
  std::unique_ptr<WaveInDevicesWatch> watch_;
  // The source fills the intake and has to end first.
  std::unique_ptr<SampleIntake> intake_;
  std::unique_ptr<SampleSource> source_;
};

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
