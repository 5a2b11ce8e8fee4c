// The server, whose level ticks come one right after the other once all of its streams run: what one costs
// while the sound stays as it is. Each line of its findings is the nanoseconds of the processor's time for
// one tick, taken from a thousand of them in turns over the feeds. Runs until it is ended.
//
//     LevelTicks FEEDS LINES

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QTimerEvent>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "BenchWall.h"
#include "ServerRun.h"
#include "platform/StreamControl.h"

namespace vorda::bench {
namespace {

constexpr int kInterval = 50;  // milliseconds
constexpr int kTicks = 1000;

std::vector<platform::StreamControl*> gStreams;  // of the feeds' windows

std::unique_ptr<platform::StreamControl> MakeNotedStream(
    const platform::Hook<std::unique_ptr<platform::StreamControl>()>::Function& make) {
  std::unique_ptr<platform::StreamControl> stream = make();
  gStreams.push_back(stream.get());
  return stream;
}

// Finds the timers of the levels, and ticks for them.
class Ticker : public QObject {
 public:
  Ticker(std::size_t feeds, int lines) : feeds_(feeds), lines_(lines) {}

  bool eventFilter(QObject* receiver, QEvent* event) override {
    if (measuring_ || event->type() != QEvent::Timer) return false;
    auto* const timer = qobject_cast<QTimer*>(receiver);
    if (timer == nullptr || timer->interval() != kInterval || !timer->isSingleShot()) return false;
    if (std::find(timers_.begin(), timers_.end(), timer) == timers_.end()) timers_.push_back(timer);
    if (timers_.size() == feeds_ && AllStreamsRun()) Measure();
    return false;
  }

 private:
  bool AllStreamsRun() const {
    return gStreams.size() == feeds_ && std::all_of(gStreams.begin(), gStreams.end(), [](const auto* stream) {
             return stream->StreamState() == platform::kStreamRunning;
           });
  }

  void Measure() {
    measuring_ = true;
    for (int line = 0; line < lines_; ++line) {
      const Duration lasted = Lasts([this] {
        for (int tick = 0; tick < kTicks; ++tick) Tick(*timers_[static_cast<std::size_t>(tick) % feeds_]);
      });
      std::fprintf(findings_, "%lld\n", static_cast<long long>(lasted.processor / kTicks));
    }
  }

  static void Tick(QTimer& timer) {
    QTimerEvent event(timer.timerId());
    QCoreApplication::sendEvent(&timer, &event);
  }

  const std::size_t feeds_;
  const int lines_;
  std::FILE* const findings_ = OpenFindings();
  std::vector<QTimer*> timers_;
  bool measuring_ = false;
};

}  // namespace
}  // namespace vorda::bench

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  QApplication application(argc, argv);
  auto& factory = vorda::platform::StreamControlFactory();
  const auto make = factory.Swap({});
  factory.Swap([make] { return vorda::bench::MakeNotedStream(make); });
  vorda::bench::Ticker ticker(static_cast<std::size_t>(std::atoi(argv[1])), std::atoi(argv[2]));
  application.installEventFilter(&ticker);
  return vorda::bench::RunServer(application);
}
