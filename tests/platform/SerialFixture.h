// Serial controls on pseudo-terminals, for the tests of the real control.

#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/LineErrors.h"
#include "platform/SerialControl.h"
#include "platform/Settings.h"
#include "platform/TermiosPort.h"
#include "support/EventLoop.h"
#include "support/PseudoTerminal.h"

namespace vorda::test {

// Makes `paths` the ports 1, 2 and so on.
inline platform::Settings SettingsWithPorts(std::vector<std::string> paths) {
  platform::Settings settings;
  settings.serialPorts = std::move(paths);
  return settings;
}

// A control with a record of its events, which reads its input at every receive event as its users do.
struct RecordedPort {
  explicit RecordedPort(std::unique_ptr<platform::SerialControl> made = platform::MakeSerialControl())
      : control(std::move(made)) {
    control->SetRThreshold(1);
    control->OnComm = [this] {
      events.push_back(control->CommEvent());
      if (events.back() == platform::comEvReceive) arrivals.push_back(control->Input());
    };
  }

  int Open(std::int16_t number) {
    control->SetCommPort(number);
    return control->SetPortOpen(true);
  }
  std::string Received() const {
    std::string all;
    for (const std::string& arrival : arrivals) all += arrival;
    return all;
  }
  bool Receives(const std::string& bytes) {
    WaitUntil([&] { return Received().size() >= bytes.size(); });
    return Received() == bytes;
  }

  std::unique_ptr<platform::SerialControl> control;
  std::vector<std::int16_t> events;
  std::vector<std::string> arrivals;
};

// Counts how often the event loop has called for any descriptor.
class ActivationCount : public QObject {
 public:
  ActivationCount() { QCoreApplication::instance()->installEventFilter(this); }
  int count() const { return count_; }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::SockAct) ++count_;
    return false;
  }

 private:
  int count_ = 0;
};

// How many descriptors this program has open.
inline std::ptrdiff_t OpenDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

// One pseudo-terminal as port 1.
class SerialTest : public ::testing::Test {
 protected:
  PseudoTerminal terminal_;
  platform::ScopedSettings settings_{SettingsWithPorts({terminal_.path()})};
};

}  // namespace vorda::test
