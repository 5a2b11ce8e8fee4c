// A TCP listener for one client. Stands in for the socket control MSWinsockLib.Winsock.
//
// Keeps: listen, accept by request, send, close, and the states that matter. The listening socket closes at
// the accept, so that a second client is refused until the owner listens again. What a client sends is
// dropped unread. A client that does not read is closed once 1 MiB waits for it; one that has vanished is
// found out within half a minute, and so is one that takes nothing at all for that long. A request that the
// system has no descriptor for waits until it has.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace vorda::platform {

enum SocketState : int { sckClosed = 0, sckListening = 2, sckConnected = 7 };

class SocketControl {
 public:
  virtual ~SocketControl() = default;

  // The port to listen on; takes effect at the next Listen.
  virtual void SetLocalPort(int port) = 0;
  virtual int LocalPort() const = 0;

  // Listens on the address of the platform settings. False when the port can't be had; the state stays
  // closed.
  virtual bool Listen() = 0;
  // Takes the client whose request was announced; the control must be closed. The state is then sckConnected,
  // or sckClosed when the client has gone already.
  virtual void Accept(std::intptr_t requestId) = 0;
  virtual void SendData(std::string_view bytes) = 0;
  // Ends listening and any connection; what was sent before is still delivered.
  virtual void Close() = 0;
  virtual int State() const = 0;

  // A client asks to be let in: accept it inside the handler or it is turned away.
  std::function<void(std::intptr_t requestId)> ConnectionRequest;
  // The client has gone.
  std::function<void()> Closed;
};

// A socket control on the network, or what a ScopedSocketControls makes.
std::unique_ptr<SocketControl> MakeSocketControl();

// Replaces the making of socket controls for as long as it lives; for tests.
class ScopedSocketControls {
 public:
  using Factory = std::function<std::unique_ptr<SocketControl>()>;
  explicit ScopedSocketControls(Factory factory);
  ~ScopedSocketControls();
  ScopedSocketControls(const ScopedSocketControls&) = delete;
  ScopedSocketControls& operator=(const ScopedSocketControls&) = delete;

 private:
  Factory previous_;
};

}  // namespace vorda::platform
