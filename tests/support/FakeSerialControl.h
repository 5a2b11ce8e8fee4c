// Serial controls without a line, for tests of what stands above them.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"

namespace vorda::test {

class FakeSerialControl;

// What the fakes share with the test: it outlives them.
struct FakeSerialRegistry {
  // Every control made, in order; null once it has been destroyed.
  std::vector<FakeSerialControl*> controls;
  // Every port whose opening was tried, in order.
  std::vector<std::int16_t> openingsTried;
  // Ports that can't be opened, with the run-time error's number.
  std::map<std::int16_t, int> failures;
};

class FakeSerialControl : public platform::SerialControl {
 public:
  explicit FakeSerialControl(std::shared_ptr<FakeSerialRegistry> registry) : registry_(std::move(registry)) {
    registry_->controls.push_back(this);
  }
  ~FakeSerialControl() override {
    std::replace(registry_->controls.begin(), registry_->controls.end(), this,
                 static_cast<FakeSerialControl*>(nullptr));
  }
  FakeSerialControl(const FakeSerialControl&) = delete;
  FakeSerialControl& operator=(const FakeSerialControl&) = delete;

  // Bytes come in, as one arrival. Nothing happens on a closed port; without a threshold they are dropped.
  void Arrive(std::string_view bytes) {
    if (!open_ || threshold_ == 0) return;
    input_ += bytes;
    RaiseEvent(platform::comEvReceive);
  }
  // Any event, known or not.
  void RaiseEvent(std::int16_t event) {
    commEvent_ = event;
    const auto handler = OnComm;
    if (handler) handler();
  }
  // The device goes away, or is back.
  void Unplug() { open_ = false; }
  void Replug() { open_ = true; }
  // All that was put out while the port was open, and while it was not.
  const std::string& lost() const { return lost_; }
  const std::string& sent() const { return sent_; }
  std::int16_t threshold() const { return threshold_; }
  // The number that the port was opened by.
  std::int16_t openNumber() const { return openNumber_; }

  void SetCommPort(std::int16_t number) override { number_ = number; }
  std::int16_t CommPort() const override { return number_; }
  void SetSettings(std::string_view settings) override {
    if (platform::ValidSerialSettings(settings)) settings_ = settings;
  }
  std::string Settings() const override { return settings_; }
  void SetHandshaking(std::int16_t handshaking) override {
    if (handshaking >= 0 && handshaking <= 3) handshaking_ = handshaking;
  }
  std::int16_t Handshaking() const override { return handshaking_; }
  void SetRThreshold(std::int16_t threshold) override { threshold_ = threshold; }
  int SetPortOpen(bool open) override;
  bool PortOpen() const override { return open_; }
  std::string Input() override { return std::exchange(input_, {}); }
  void Output(std::string_view bytes) override { (open_ ? sent_ : lost_) += bytes; }
  std::int16_t CommEvent() const override { return commEvent_; }

 private:
  bool InUseElsewhere() const {
    return std::any_of(registry_->controls.begin(), registry_->controls.end(),
                       [this](const FakeSerialControl* other) {
                         return other != nullptr && other->open_ && other->openNumber_ == number_;
                       });
  }

  const std::shared_ptr<FakeSerialRegistry> registry_;
  std::int16_t number_ = 1;
  std::int16_t openNumber_ = 0;
  std::string settings_ = "9600,n,8,1";
  std::int16_t handshaking_ = 0;
  std::int16_t threshold_ = 0;
  std::int16_t commEvent_ = 0;
  bool open_ = false;
  std::string input_;
  std::string sent_;
  std::string lost_;
};

inline int FakeSerialControl::SetPortOpen(bool open) {
  if (!open) {
    open_ = false;
    return platform::kNoError;
  }
  registry_->openingsTried.push_back(number_);
  const auto failure = registry_->failures.find(number_);
  int error = platform::kNoError;
  if (failure != registry_->failures.end()) {
    error = failure->second;
  } else if (number_ < 1 || number_ > 4) {
    error = platform::kDeviceUnavailable;
  } else if (open_ || InUseElsewhere()) {
    error = platform::kFileAlreadyOpen;
  }
  if (error != platform::kNoError) {
    platform::SetCurrentError(error);
    return error;
  }
  open_ = true;
  openNumber_ = number_;
  input_.clear();
  return platform::kNoError;
}

// Makes every serial control a fake for as long as it lives.
class FakeSerialControls {
 public:
  FakeSerialControls()
      : registry_(std::make_shared<FakeSerialRegistry>()),
        scope_([registry = registry_] { return std::make_unique<FakeSerialControl>(registry); }) {}

  // Openings of port `number` fail from now on with the run-time error `error`; 0 lets them succeed again.
  void FailOpenWith(int error, std::int16_t number) {
    if (error == platform::kNoError) {
      registry_->failures.erase(number);
    } else {
      registry_->failures[number] = error;
    }
  }

  // How many have been made, and the one made at `index`, from 0; null once that one is destroyed.
  size_t size() const { return registry_->controls.size(); }
  FakeSerialControl* operator[](size_t index) const { return registry_->controls.at(index); }
  // The control that has port `number` open; null when none has.
  FakeSerialControl* OpenOn(std::int16_t number) const {
    for (FakeSerialControl* control : registry_->controls)
      if (control != nullptr && control->PortOpen() && control->openNumber() == number) return control;
    return nullptr;
  }
  const std::vector<std::int16_t>& openingsTried() const { return registry_->openingsTried; }

 private:
  const std::shared_ptr<FakeSerialRegistry> registry_;
  const platform::ScopedSerialControls scope_;
};

}  // namespace vorda::test
