// A form's timer. Unlike a QTimer it ticks again while its own handler waits behind a message box.

#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

namespace vorda::platform {

class ReentrantTimer : public QObject {
 public:
  // Enabled from the start. `interval` in milliseconds. Owned by `parent`.
  ReentrantTimer(int interval, std::function<void()> handler, QObject* parent) : QObject(parent) {
    timer_.setSingleShot(true);
    timer_.setInterval(interval);
    // A QTimer stays quiet while its slot sits in a nested loop; a single shot armed anew at the slot's start
    // does not.
    connect(&timer_, &QTimer::timeout, this, [this, handler = std::move(handler)] {
      timer_.start();
      const auto tick = handler;
      tick();
    });
    timer_.start();
  }

  void SetEnabled(bool enabled) {
    if (enabled != timer_.isActive()) enabled ? timer_.start() : timer_.stop();
  }
  bool Enabled() const { return timer_.isActive(); }
  int Interval() const { return timer_.interval(); }

 private:
  QTimer timer_;
};

}  // namespace vorda::platform
