// A terminal at a feed's status port.

#pragma once

#include <QTcpSocket>

#include <cstdint>
#include <string>

#include "support/EventLoop.h"

namespace vorda::test {

class StatusClient {
 public:
  // Connects; false when nobody listens. One attempt.
  bool Connect(const std::string& address, int port) {
    socket_.abort();
    socket_.connectToHost(QString::fromStdString(address), static_cast<std::uint16_t>(port));
    WaitUntil([this] {
      return socket_.state() != QAbstractSocket::HostLookupState &&
             socket_.state() != QAbstractSocket::ConnectingState;
    });
    return Connected();
  }
  bool Connected() const { return socket_.state() == QAbstractSocket::ConnectedState; }
  void Disconnect() { socket_.abort(); }

  // All that has come so far.
  const std::string& Text() {
    received_ += socket_.readAll().toStdString();
    return received_;
  }
  // Waits until `text` has come; false when it hasn't.
  bool WaitFor(const std::string& text) {
    return WaitUntil([&] { return Text().find(text) != std::string::npos; });
  }
  bool WaitForEnd() {
    return WaitUntil([this] { return !Connected(); });
  }

 private:
  QTcpSocket socket_;
  std::string received_;
};

}  // namespace vorda::test
