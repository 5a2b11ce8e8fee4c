// The serial control on a terminal device of the system.

#pragma once

#include <QTimer>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/LineErrors.h"
#include "platform/SerialControl.h"
#include "platform/SerialSettings.h"

namespace vorda::platform {

class TermiosPort : public SerialControl {
 public:
  explicit TermiosPort(LineStateReader readLineState = ReadLineState);
  ~TermiosPort() override;

  void SetCommPort(std::int16_t number) override { number_ = number; }
  std::int16_t CommPort() const override { return number_; }
  void SetSettings(std::string_view settings) override;
  std::string Settings() const override { return settingsText_; }
  void SetHandshaking(std::int16_t handshaking) override;
  std::int16_t Handshaking() const override { return handshaking_; }
  void SetRThreshold(std::int16_t threshold) override { threshold_ = threshold; }
  int SetPortOpen(bool open) override;
  bool PortOpen() const override { return line_ != nullptr; }
  std::string Input() override;
  void Output(std::string_view bytes) override;
  std::int16_t CommEvent() const override { return commEvent_; }

 private:
  struct Line;

  // Opens the device at `path_` and listens on it. Result: 0 or the run-time error's number.
  int OpenLine();
  void ApplyModes();
  void TakeArrival();
  void SendKept();
  void LookAtLine();
  void LoseDevice();
  // Calls the handler once for each event. The handler may close or destroy this control: nothing of it may
  // be used afterwards unless the line is known to be there.
  void Raise(const std::vector<CommEventValue>& events);

  const LineStateReader readLineState_;
  std::int16_t number_ = 1;
  std::string settingsText_ = "9600,n,8,1";
  SerialSettings settings_;
  std::int16_t handshaking_ = 0;
  std::int16_t threshold_ = 0;
  std::int16_t commEvent_ = 0;
  std::string input_;
  std::string path_;
  // Runs while the device of a port that had been opened is away.
  QTimer reopening_;
  // Null while closed. Shared only so that Raise can see it go.
  std::shared_ptr<Line> line_;
};

}  // namespace vorda::platform
