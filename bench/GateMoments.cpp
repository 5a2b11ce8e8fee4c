// The server, whose sound is loud and quiet as this program says: how long it takes from the moment at which
// the level has been up for the start's duration until the gate is open. Each line of its findings is one
// opening, in nanoseconds; the first line is the first one after the start. Runs until it is ended.
//
//     GateMoments SECONDS       (AudioStartDuration and AudioEndDuration of every feed)

#include <QApplication>
#include <QEvent>
#include <QWidget>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <vector>

#include "BenchWall.h"
#include "Moments.h"
#include "ServerRun.h"
#include "platform/StreamControl.h"

namespace vorda::bench {
namespace {

constexpr std::int16_t kLoud = 90;
// Behind the end of a recording the next tick forgets what was loud before, and a moment is measured alone.
constexpr int kQuietTicks = 3;

class LoudAndQuiet;
std::vector<LoudAndQuiet*> gStreams;  // of the feeds' windows, in the order in which they were made
bool gOpened = false;                 // any gate, ever

// A stream without sound that is loud until its gate opens, and quiet until it has been shut for a while.
// Only the first feed is loud until the first gate has opened: no other waits behind that one's work.
class LoudAndQuiet : public platform::StreamControl {
 public:
  LoudAndQuiet() : mayBeLoud_(gStreams.empty()) { gStreams.push_back(this); }

  void StartStream() override { started_ = true; }
  void StopStream() override { started_ = false; }
  void EndOfCut() override {}
  // The level's tick reads its clock right behind this.
  std::int16_t StreamLevel() const override {
    if (!started_ || open_ || (!mayBeLoud_ && !gOpened) || quiet_ > 0) {
      if (!open_ && quiet_ > 0) --quiet_;
      return 0;
    }
    if (loudSince_ == 0) loudSince_ = Now();
    return kLoud;
  }
  std::int16_t StreamState() const override {
    return started_ ? platform::kStreamRunning : platform::kStreamStopped;
  }

  // The moment at which the level came up.
  std::int64_t GateOpened() {
    Require(!open_ && loudSince_ != 0, "a gate opens behind sound");
    open_ = gOpened = true;
    return loudSince_;
  }
  void GateShut() {
    open_ = false;
    quiet_ = kQuietTicks;
    loudSince_ = 0;
  }

 private:
  const bool mayBeLoud_;
  bool started_ = false;
  bool open_ = false;
  mutable int quiet_ = 0;
  mutable std::int64_t loudSince_ = 0;
};

// The button that ends a recording is enabled while a gate is open.
class GateWatch : public QObject {
 public:
  explicit GateWatch(std::int64_t duration) : duration_(duration) {}

  bool eventFilter(QObject* receiver, QEvent* event) override {
    if (event->type() != QEvent::EnabledChange || receiver->objectName() != "cmdEject") return false;
    const auto* const button = static_cast<QWidget*>(receiver);
    const std::size_t number = numbers_.try_emplace(button, numbers_.size()).first->second;
    LoudAndQuiet& stream = *gStreams.at(number);
    if (button->isEnabled()) {
      const std::int64_t now = Now();
      std::fprintf(findings_, "%lld\n", static_cast<long long>(now - stream.GateOpened() - duration_));
    } else {
      stream.GateShut();
    }
    return false;
  }

 private:
  const std::int64_t duration_;
  std::FILE* const findings_ = OpenFindings();
  std::map<const QWidget*, std::size_t> numbers_;
};

}  // namespace
}  // namespace vorda::bench

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  QApplication application(argc, argv);
  vorda::platform::StreamControlFactory().Swap(
      [] { return std::unique_ptr<vorda::platform::StreamControl>(new vorda::bench::LoudAndQuiet); });
  vorda::bench::GateWatch watch(std::atoi(argv[1]) * vorda::bench::kSecond);
  application.installEventFilter(&watch);
  return vorda::bench::RunServer(application);
}
