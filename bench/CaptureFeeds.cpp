// The way from sound to carts without any window: streams, the level's ticks, recordings on a wall.
//
//     CaptureFeeds WALL CONFIGURATION...
//
// For each configuration it takes the sound input of its number and records from it as a feed does. WALL
// holds the lists of a wall. Runs until it is ended.

#include <QCoreApplication>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "BenchWall.h"
#include "carts/Orvane_Audio_Routines.h"
#include "config/Vorda_Common_API.h"
#include "feed/AudioIntake.h"
#include "feed/CartRotation.h"
#include "feed/LevelMachine.h"
#include "platform/Settings.h"
#include "platform/StreamControl.h"
#include "shell/GeneralFunctions.h"

namespace vorda::bench {
namespace {

constexpr int kInterval = 50;  // milliseconds

class Feed {
 public:
  explicit Feed(std::int16_t number)
      : record_(gWireFeeds[static_cast<std::size_t>(number) - 1]),
        stream_(platform::MakeStreamControl()),
        intake_({[this] { return &record_; }, [this] { return stream_.get(); }, [](std::string_view) {},
                 [](const std::string&) {}, [](bool) {}}) {
    stream_->numberchannels = record_.RecordFormat.nChannels;
    stream_->samplerate = record_.RecordFormat.nSamplesPerSec;
    stream_->wavedevicenumber = number;
    stream_->AudioData = [this](const char* bytes, std::int32_t length) { intake_.Take(bytes, length); };
    stream_->StartStream();
    QObject::connect(&ticks_, &QTimer::timeout, &ticks_, [this] { Tick(); });
    ticks_.start(kInterval);
  }

 private:
  void Tick() {
    const auto level = static_cast<float>(stream_->StreamLevel());
    const TimeStamp now = NowStamp();
    const LevelRules rules{record_.AudioActivationLevel, record_.AudioStartDuration,
                           record_.AudioEndDuration};
    const LevelAction action = level_.Decide(level, intake_.Recording, rules, now);
    if (action == LevelAction::StartRecording) intake_.StartRecording(GetNextRecordCartNumber(record_));
    if (action == LevelAction::EndRecording) intake_.EndRecording();
    level_.Rearm(level, rules, now);
  }

  WireFeedRecord& record_;
  std::unique_ptr<platform::StreamControl> stream_;
  AudioIntake intake_;
  LevelMachine level_;
  QTimer ticks_;
};

}  // namespace
}  // namespace vorda::bench

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  if (argc < 3) return 2;
  vorda::platform::LoadPlatformSettings();
  vorda::bench::UseWall(argv[1]);
  vorda::bench::Require(vorda::ConnectAudioWall(0, true) == 0, "the wall can be connected");
  std::vector<std::unique_ptr<vorda::bench::Feed>> feeds;
  for (int i = 2; i < argc; ++i) {
    const auto number = static_cast<std::int16_t>(i - 1);
    if (vorda::ReadFeedConfig(number, argv[i], false).empty()) return 1;
    feeds.push_back(std::make_unique<vorda::bench::Feed>(number));
  }
  return QCoreApplication::exec();
}
