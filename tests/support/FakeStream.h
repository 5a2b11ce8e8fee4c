// Sound inputs that a test plays.

#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/StreamControl.h"

namespace vorda::test {

// A stream that runs from StartStream on and delivers what the test plays.
class FakeStream : public platform::StreamControl {
 public:
  // `called` is told each call that is no question: "StartStream", "StopStream", "EndOfCut".
  explicit FakeStream(std::function<void(const std::string& call)> called = [](const std::string&) {})
      : called_(std::move(called)) {}

  std::int16_t level = 0;
  mutable int asked = 0;  // how often the level was asked for

  // Delivers a block at once, as out of the event loop. Behind a box of it the window, and with it the
  // stream, may go.
  void Play(const std::string& bytes) {
    const auto deliver = AudioData;
    if (deliver) deliver(bytes.data(), static_cast<std::int32_t>(bytes.size()));
  }
  // Keeps a block that was taken in and not delivered yet: EndOfCut hands it over.
  void Keep(std::string bytes) { kept_->push_back(std::move(bytes)); }

  void StartStream() override {
    running_ = true;
    called_("StartStream");
  }
  void StopStream() override {
    running_ = false;
    kept_->clear();
    called_("StopStream");
  }
  void EndOfCut() override {
    called_("EndOfCut");
    const auto kept = kept_;
    const auto deliver = AudioData;
    while (!kept->empty()) {
      const std::string block = std::move(kept->front());
      kept->pop_front();
      if (deliver) deliver(block.data(), static_cast<std::int32_t>(block.size()));
    }
  }
  std::int16_t StreamLevel() const override {
    ++asked;
    return running_ ? level : std::int16_t{0};
  }
  std::int16_t StreamState() const override {
    return running_ ? platform::kStreamRunning : platform::kStreamStopped;
  }

 private:
  std::function<void(const std::string&)> called_;
  // Outlives a stream that goes while it hands them over; stopping it has emptied them by then.
  const std::shared_ptr<std::deque<std::string>> kept_ = std::make_shared<std::deque<std::string>>();
  bool running_ = false;
};

// Every stream that is made meanwhile is a fake one.
class FakeStreams {
 public:
  FakeStreams()
      : hook_(platform::StreamControlFactory(), [this] {
          auto stream = std::make_unique<FakeStream>([this](const std::string& call) {
            calls.push_back(call);
            if (atCall) atCall(call);
          });
          made.push_back(stream.get());
          return stream;
        }) {}

  // In the order in which they were made; a window that is gone has taken its own along.
  std::vector<FakeStream*> made;
  // The calls of all of them.
  std::vector<std::string> calls;
  // Runs at each of them.
  std::function<void(const std::string& call)> atCall;

 private:
  platform::ScopedHook<std::unique_ptr<platform::StreamControl>()> hook_;
};

}  // namespace vorda::test
