// A TCP client that reads only when it is told to.

#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/filter.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>

namespace vorda::test {

class PlainClient {
 public:
  PlainClient() = default;
  ~PlainClient() { Leave(); }
  PlainClient(const PlainClient&) = delete;
  PlainClient& operator=(const PlainClient&) = delete;

  // What it can take in without reading; to be said ahead of Connect.
  void SetReceiveBuffer(int bytes) { receiveBuffer_ = bytes; }

  // False when nobody listens there. A client may try again.
  bool Connect(const std::string& address, int port) {
    Leave();
    received_.clear();
    descriptor_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (receiveBuffer_ > 0)
      ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer_, sizeof receiveBuffer_);
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(static_cast<std::uint16_t>(port));
    ::inet_pton(AF_INET, address.c_str(), &server.sin_addr);
    const bool connected =
        ::connect(descriptor_, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0;
    ::fcntl(descriptor_, F_SETFL, O_NONBLOCK);
    return connected;
  }

  // Takes in what has arrived; true when the server has closed the connection.
  bool Read() {
    char bytes[65536];
    for (;;) {
      const ssize_t count = ::recv(descriptor_, bytes, sizeof bytes, 0);
      if (count > 0) received_.append(bytes, static_cast<std::size_t>(count));
      if (count == 0) return true;
      if (count < 0) return errno != EAGAIN && errno != EWOULDBLOCK;
    }
  }
  const std::string& Received() const { return received_; }

  // How many of the bytes went out at once.
  std::size_t Write(std::string_view bytes) {
    const ssize_t count = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
  }

  // Vanishes without a word, as one whose cable was pulled: whatever is sent or asked from now on is dropped
  // unanswered. False when the system doesn't let it.
  bool Vanish() {
    sock_filter dropAll = {BPF_RET | BPF_K, 0, 0, 0};
    const sock_fprog program = {1, &dropAll};
    return ::setsockopt(descriptor_, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) == 0;
  }
  // Leaves as a program that was killed with bytes unread does: by a reset.
  void LeaveByReset() {
    const linger atOnce = {1, 0};
    ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    Leave();
  }

  // The server's end of the connection, in a server of this process; -1 when there is none.
  int ServersEnd() const {
    sockaddr_in own{};
    socklen_t length = sizeof own;
    ::getsockname(descriptor_, reinterpret_cast<sockaddr*>(&own), &length);
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
      sockaddr_in6 far{};
      length = sizeof far;
      if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&far), &length) == 0 &&
          far.sin6_port == own.sin_port)
        return descriptor;
    }
    return -1;
  }

  void Leave() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
  }
  // Sends nothing more; what comes is still read.
  void EndSending() { ::shutdown(descriptor_, SHUT_WR); }

 private:
  int descriptor_ = -1;
  int receiveBuffer_ = 0;
  std::string received_;
};

}  // namespace vorda::test
