// A feed's status port: a terminal that connects is told the feed's state, then a line for each event.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/SocketControl.h"

namespace vorda {

// What the block on connection tells.
struct StatusPortState {
  std::string logName;
  std::int32_t lastRecord = 0;
  std::int32_t currentRecording = 0;
};

class StatusPort {
 public:
  // `state` answers the feed's state at the moment of a connection.
  explicit StatusPort(std::function<StatusPortState()> state);

  // Listens on port 6960 plus the feed's sound card number. A port that can't be had passes unnoticed.
  void Start(std::int16_t soundCard);
  // Ends listening and any connection.
  void Close();
  // Sends date, time, the text and CR LF to the client; with no client connected the text is dropped.
  void Send(std::string_view text);

 private:
  void Welcome(std::intptr_t requestId);

  std::function<StatusPortState()> state_;
  std::unique_ptr<platform::SocketControl> winSockAudio_;
};

}  // namespace vorda
