// A terminal at the status port that sends what it likes and comes and goes: all of it is dropped, and the
// lines still go out.
//
// Input: the feed's name (a text), then steps: a byte each, those that send with what is sent behind it.

#include <QCoreApplication>
#include <QEvent>

#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <string>

#include "Target.h"
#include "feed/StatusPort.h"
#include "platform/Clock.h"
#include "platform/Settings.h"
#include "support/EventLoop.h"
#include "support/Loopback.h"
#include "support/PlainClient.h"

namespace vorda::fuzz {
namespace {

using test::WaitUntil;

constexpr int kPort = 6960;
constexpr int kMostSteps = 40;
constexpr int kHighestDescriptor = 256;
// Longer than any machine takes: a wait that is over by then has failed.
constexpr int kPatience = 20000;

const std::string kStamp = "2026-11-21 23:59:59 ";

// The application, the address and the clock, for all inputs.
struct Surroundings {
  static platform::Settings OnLoopback() {
    platform::Settings settings;
    settings.statusPortAddress = test::OwnLoopbackAddress();
    settings.shortDate = "yyyy-MM-dd";
    return settings;
  }

  int argumentCount = 1;
  char name[5] = "fuzz";
  char* arguments[2] = {name, nullptr};
  QCoreApplication application{argumentCount, arguments};
  platform::ScopedSettings settings{OnLoopback()};
  platform::ScopedClock clock{platform::Moment{platform::DayNumber(2026, 11, 21), 86399.5}};
};

// How much has come from clients that the server hasn't taken. Its ends of the connections are in this very
// process: connected sockets with the port's number at the near end.
int BytesUntaken() {
  int all = 0;
  for (int descriptor = 3; descriptor < kHighestDescriptor; ++descriptor) {
    sockaddr_in near{};
    sockaddr_in far{};
    socklen_t length = sizeof near;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&near), &length) != 0) continue;
    length = sizeof far;
    if (near.sin_port != htons(kPort) ||
        ::getpeername(descriptor, reinterpret_cast<sockaddr*>(&far), &length) != 0)
      continue;
    int untaken = 0;
    if (::ioctl(descriptor, FIONREAD, &untaken) == 0) all += untaken;
  }
  return all;
}

class Visit {
 public:
  explicit Visit(std::string_view feedName) : feedName_(feedName) { status_.Start(0); }
  ~Visit() {
    client_.LeaveByReset();
    status_.Close();
    test::RunPendingEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  Visit(const Visit&) = delete;
  Visit& operator=(const Visit&) = delete;

  void Step(Input& input) {
    switch (input.Byte() % 8) {
      case 0:
        Knock();
        break;
      case 1:
        GoIn();
        break;
      case 2: {
        const std::string_view piece = input.Text();
        SendRepeatedly(piece, 1 + input.Byte());
        break;
      }
      case 3:
        client_.Leave();
        place_ = Away;
        break;
      case 4:
        client_.LeaveByReset();
        place_ = Away;
        break;
      case 5:
        EndSending();
        break;
      case 6:
        Announce(input.Text());
        break;
      default:
        test::RunPendingEvents();
        break;
    }
  }

  void Finish() {
    Announce("still here");
    CheckReceived();
    Require(WaitUntil([] { return BytesUntaken() == 0; }, kPatience), "nothing that a client sent is kept");
  }

 private:
  enum Place { Away, Knocking, In };

  // Asks to be let in and doesn't wait. While one client is in, nobody answers another.
  void Knock() {
    if (place_ == In) {
      test::PlainClient other;
      Require(!other.Connect(test::OwnLoopbackAddress(), kPort), "one client at a time");
    }
    if (place_ == Away && client_.Connect(test::OwnLoopbackAddress(), kPort)) place_ = Knocking;
  }

  // One that comes ahead of the end of the one before is turned away and tries again.
  void GoIn() {
    if (place_ == In) return;
    const std::string rule = kStamp + std::string(54, '-') + "\r\n";
    expected_ = kStamp + "Status Information:\r\n" + rule + kStamp + "Log Name          : " + feedName_ +
                "\r\n" + kStamp + "Last Record       : 9000\r\n" + kStamp + "Current Recording : 9001\r\n" +
                rule + kStamp + "\r\n";
    Require(WaitUntil(
                [this] {
                  Knock();
                  if (place_ == Away) return false;
                  if (client_.Read()) place_ = Away;
                  return place_ == Knocking && client_.Received().size() >= expected_.size();
                },
                kPatience),
            "a client gets in and is told the state");
    place_ = In;
  }

  void SendRepeatedly(std::string_view piece, int times) {
    std::string bytes;
    for (int i = 0; i < times; ++i) bytes += piece;
    std::size_t sent = 0;
    const auto sendOn = [&] {
      sent += client_.Write(std::string_view(bytes).substr(sent));
      return sent == bytes.size();
    };
    if (place_ == Knocking) sendOn();
    if (place_ == In) Require(WaitUntil(sendOn, kPatience), "a client can send as much as it likes");
  }

  void EndSending() {
    if (place_ == Away) return;
    client_.EndSending();
    Require(WaitUntil([this] { return client_.Read(); }, kPatience), "a client that ends is let go");
    Require(place_ != In || client_.Received() == expected_, "with all that was sent to it");
    client_.Leave();
    place_ = Away;
  }

  void Announce(std::string_view text) {
    GoIn();
    status_.Send(text);
    expected_ += kStamp + std::string(text) + "\r\n";
  }

  void CheckReceived() {
    Require(WaitUntil(
                [this] {
                  client_.Read();
                  return client_.Received().size() >= expected_.size();
                },
                kPatience),
            "each line goes out");
    Require(client_.Received() == expected_, "and nothing else does");
  }

  std::string feedName_;
  StatusPort status_{[this] { return StatusPortState{feedName_, 9000, 9001}; }};
  test::PlainClient client_;
  Place place_ = Away;
  std::string expected_;
};

}  // namespace
}  // namespace vorda::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vorda::fuzz;
  static const Surroundings surroundings;
  Input input(bytes, size);
  Visit visit(input.Text());
  for (int step = 0; step < kMostSteps && !input.AtEnd(); ++step) visit.Step(input);
  visit.Finish();
  return 0;
}
