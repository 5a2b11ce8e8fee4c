#include "platform/SocketControl.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/Hook.h"
#include "platform/Settings.h"
#include "platform/Text.h"

namespace vorda::platform {

namespace {

constexpr qint64 kSendBacklog = 1024 * 1024;
constexpr qint64 kReceiveBuffer = 4096;
// How long a listener rests that found no descriptor or no memory for a client.
constexpr int kAcceptRetryInterval = 1000;  // milliseconds

// Hands each request on as it comes, one at a time: once the owner has accepted, the listener is closed and
// asks no more.
class RequestListener : public QTcpServer {
 public:
  RequestListener() {
    // The toolkit's listener stops for good at an accept that fails.
    connect(this, &QTcpServer::acceptError, this, [this] {
      QTimer::singleShot(kAcceptRetryInterval, this, [this] {
        if (isListening()) resumeAccepting();
      });
    });
  }

  std::function<void(qintptr)> request;

 protected:
  void incomingConnection(qintptr descriptor) override { request(descriptor); }
};

// 10 s of silence, then three probes 5 s apart; the same bound for what was sent and never acknowledged.
void FindOutVanishedClient(int descriptor) {
  const auto set = [descriptor](int level, int option, int value) {
    ::setsockopt(descriptor, level, option, &value, sizeof value);
  };
  set(SOL_SOCKET, SO_KEEPALIVE, 1);
  set(IPPROTO_TCP, TCP_KEEPIDLE, 10);
  set(IPPROTO_TCP, TCP_KEEPINTVL, 5);
  set(IPPROTO_TCP, TCP_KEEPCNT, 3);
  set(IPPROTO_TCP, TCP_USER_TIMEOUT, 25000);
}

// Null for a text that is no address: listening on all interfaces instead would open what was meant to be
// restricted.
QHostAddress ListeningAddress() {
  const std::string& configured = PlatformSettings().statusPortAddress;
  if (configured.empty()) return QHostAddress(QHostAddress::Any);
  if (SameText(configured, "localhost")) return QHostAddress(QHostAddress::LocalHost);
  return QHostAddress(QString::fromStdString(configured));
}

class TcpControl : public SocketControl {
 public:
  ~TcpControl() override { TcpControl::Close(); }

  void SetLocalPort(int port) override { port_ = port; }
  int LocalPort() const override { return port_; }

  bool Listen() override {
    if (State() != sckClosed || port_ < 0 || port_ > 65535) return false;
    auto listener = std::make_unique<RequestListener>();
    listener->request = [this](qintptr descriptor) { Announce(descriptor); };
    const QHostAddress address = ListeningAddress();
    if (address.isNull() || !listener->listen(address, static_cast<quint16>(port_))) return false;
    listener_ = listener.release();
    return true;
  }

  void Accept(std::intptr_t requestId) override {
    if (requestId != pending_) return;
    pending_ = -1;
    auto* client = new QTcpSocket;
    if (!client->setSocketDescriptor(requestId)) {
      ::close(static_cast<int>(requestId));
      delete client;
      return;
    }
    FindOutVanishedClient(static_cast<int>(requestId));
    client->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    client->setReadBufferSize(kReceiveBuffer);
    QObject::connect(client, &QTcpSocket::readyRead, client,
                     [client] { client->skip(client->bytesAvailable()); });
    QObject::connect(client, &QTcpSocket::disconnected, client, [this] { AnnounceClosed(); });
    client_ = client;
  }

  void SendData(std::string_view bytes) override {
    // One whose end is on its way gets no more.
    if (State() != sckConnected || client_->bytesToWrite() > kSendBacklog) return;
    client_->write(bytes.data(), static_cast<qint64>(bytes.size()));
    // Aborted from the event loop, so that a sender never finds its own connection gone half-way through its
    // lines.
    if (client_->bytesToWrite() > kSendBacklog) {
      QMetaObject::invokeMethod(
          client_.data(), [client = client_.data()] { client->abort(); }, Qt::QueuedConnection);
    }
    // At once and not at the next turn of the loop: the program's end waits for nobody.
    client_->flush();
  }

  void Close() override {
    // Either may be in the middle of a signal of its own: they are cut off now and deleted later.
    if (listener_ != nullptr) {
      listener_->close();
      listener_->deleteLater();
      listener_ = nullptr;
    }
    if (client_ != nullptr) {
      client_->disconnect();
      client_->disconnectFromHost();
      if (client_->state() == QAbstractSocket::UnconnectedState) {
        client_->deleteLater();
      } else {
        QObject::connect(client_.data(), &QTcpSocket::disconnected, client_.data(), &QObject::deleteLater);
      }
      client_ = nullptr;
    }
  }

  int State() const override {
    if (client_ != nullptr)
      return client_->state() == QAbstractSocket::ConnectedState ? sckConnected : sckClosing;
    return listener_ != nullptr ? sckListening : sckClosed;
  }

 private:
  static constexpr int sckClosing = 8;

  void Announce(qintptr descriptor) {
    pending_ = descriptor;
    if (ConnectionRequest) ConnectionRequest(descriptor);
    if (pending_ == descriptor) {
      ::close(static_cast<int>(descriptor));
      pending_ = -1;
    }
  }

  void AnnounceClosed() {
    if (const auto closed = Closed) closed();
  }

  int port_ = 0;
  std::intptr_t pending_ = -1;
  QPointer<RequestListener> listener_;
  QPointer<QTcpSocket> client_;
};

Hook<std::unique_ptr<SocketControl>()>& FactoryHook() {
  static Hook<std::unique_ptr<SocketControl>()> hook([] { return std::make_unique<TcpControl>(); });
  return hook;
}

}  // namespace

std::unique_ptr<SocketControl> MakeSocketControl() {
  return FactoryHook()();
}

ScopedSocketControls::ScopedSocketControls(Factory factory)
    : previous_(FactoryHook().Swap(std::move(factory))) {}
ScopedSocketControls::~ScopedSocketControls() {
  FactoryHook().Swap(std::move(previous_));
}

}  // namespace vorda::platform
