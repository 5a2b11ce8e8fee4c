#include "feed/StatusPort.h"

#include <utility>

#include "platform/Clock.h"

namespace vorda {

namespace {
constexpr int kFirstPort = 6960;
constexpr std::string_view kRule = "------------------------------------------------------";
}  // namespace

StatusPort::StatusPort(std::function<StatusPortState()> state)
    : state_(std::move(state)), winSockAudio_(platform::MakeSocketControl()) {
  winSockAudio_->ConnectionRequest = [this](std::intptr_t requestId) { Welcome(requestId); };
  winSockAudio_->Closed = [this] {
    winSockAudio_->Close();
    if (winSockAudio_->State() == platform::sckClosed) winSockAudio_->Listen();
  };
}

void StatusPort::Start(std::int16_t soundCard) {
  winSockAudio_->SetLocalPort(kFirstPort + soundCard);
  winSockAudio_->Listen();
}

void StatusPort::Close() {
  winSockAudio_->Close();
}

void StatusPort::Send(std::string_view text) {
  if (winSockAudio_->State() != platform::sckConnected) return;
  std::string line = platform::FormatDateTimeStamp(platform::ReadClock());
  line += text;
  line += "\r\n";
  winSockAudio_->SendData(line);
}

void StatusPort::Welcome(std::intptr_t requestId) {
  if (winSockAudio_->State() != platform::sckClosed) winSockAudio_->Close();
  winSockAudio_->Accept(requestId);
  if (winSockAudio_->State() != platform::sckConnected) {
    // Nothing will tell of the end of a client that never came in.
    if (winSockAudio_->State() == platform::sckClosed) winSockAudio_->Listen();
    return;
  }
  const StatusPortState state = state_();
  Send("Status Information:");
  Send(kRule);
  Send("Log Name          : " + state.logName);
  Send("Last Record       : " + std::to_string(state.lastRecord));
  Send("Current Recording : " + std::to_string(state.currentRecording));
  Send(kRule);
  Send("");
}

}  // namespace vorda
