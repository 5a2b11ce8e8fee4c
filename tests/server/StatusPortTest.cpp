// The status port on a socket control that only notes what is asked of it.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "feed/StatusPort.h"
#include "platform/Clock.h"
#include "platform/Settings.h"
#include "support/FakeDesktop.h"

namespace vorda {
namespace {

using Calls = std::vector<std::string>;

// What the status port did to its socket, and what the socket answers.
struct SocketLog {
  Calls calls;
  std::string sent;
  int port = 0;
  int state = platform::sckClosed;
  bool canListen = true;
  int stateAfterAccept = platform::sckConnected;
  int stateAfterClose = platform::sckClosed;
  platform::SocketControl* socket = nullptr;
};

class NotingSocket : public platform::SocketControl {
 public:
  explicit NotingSocket(SocketLog& log) : log_(log) { log_.socket = this; }
  ~NotingSocket() override { log_.socket = nullptr; }

  void SetLocalPort(int port) override { log_.port = port; }
  int LocalPort() const override { return log_.port; }
  bool Listen() override {
    log_.calls.emplace_back("Listen");
    if (log_.canListen) log_.state = platform::sckListening;
    return log_.canListen;
  }
  void Accept(std::intptr_t requestId) override {
    log_.calls.push_back("Accept " + std::to_string(requestId));
    log_.state = log_.stateAfterAccept;
  }
  void SendData(std::string_view bytes) override { log_.sent += bytes; }
  void Close() override {
    log_.calls.emplace_back("Close");
    log_.state = log_.stateAfterClose;
  }
  int State() const override { return log_.state; }

 private:
  SocketLog& log_;
};

platform::Settings WithShortDate(const std::string& format) {
  platform::Settings settings;
  settings.shortDate = format;
  return settings;
}

class StatusPortTest : public ::testing::Test {
 protected:
  void Connect(std::intptr_t requestId) { log_.socket->ConnectionRequest(requestId); }

  platform::ScopedSettings settings_{WithShortDate("dd.MM.yyyy")};
  platform::Moment now_{platform::DayNumber(2026, 3, 9), 8 * 3600 + 5 * 60 + 7.99};
  platform::ScopedClock clock_{[this] { return now_; }};
  test::FakeBoxes boxes_;
  SocketLog log_;
  platform::ScopedSocketControls sockets_{[this] { return std::make_unique<NotingSocket>(log_); }};
  StatusPortState state_{"Sport & Weather", 9017, 0};
  StatusPort port_{[this] { return state_; }};
};

TEST_F(StatusPortTest, ListensOn6960PlusTheSoundCard) {
  port_.Start(3);
  EXPECT_EQ(log_.port, 6963);
  EXPECT_EQ(log_.calls, Calls{"Listen"});
}

TEST_F(StatusPortTest, FeedWithoutASoundCardListensOn6960) {
  port_.Start(0);
  EXPECT_EQ(log_.port, 6960);
}

TEST_F(StatusPortTest, PortThatCannotBeHadPassesUnnoticed) {
  log_.canListen = false;
  port_.Start(0);
  port_.Send("Started Recording");
  EXPECT_EQ(log_.sent, "");
  EXPECT_EQ(log_.calls, Calls{"Listen"});
}

TEST_F(StatusPortTest, LineIsDateTimeTextAndCarriageReturnLineFeed) {
  log_.state = platform::sckConnected;
  port_.Send("Processed New Story");
  EXPECT_EQ(log_.sent, "09.03.2026 08:05:07 Processed New Story\r\n");
}

TEST_F(StatusPortTest, LineOfBytesAbove127GoesOutAsItIs) {
  log_.state = platform::sckConnected;
  port_.Send("Opened Audio File D:\\M\xFCnchen");
  EXPECT_EQ(log_.sent, "09.03.2026 08:05:07 Opened Audio File D:\\M\xFCnchen\r\n");
}

TEST_F(StatusPortTest, NothingIsSentInAnyOtherStateAndNothingIsRepeated) {
  for (const int state : {0, 1, 2, 3, 4, 5, 6, 8, 9}) {
    log_.state = state;
    port_.Send("dropped");
  }
  EXPECT_EQ(log_.sent, "");
  log_.state = platform::sckConnected;
  port_.Send("sent");
  EXPECT_EQ(log_.sent, "09.03.2026 08:05:07 sent\r\n");
}

TEST_F(StatusPortTest, ConnectionBringsTheStatusBlock) {
  port_.Start(0);
  Connect(17);
  EXPECT_EQ(log_.sent,
            "09.03.2026 08:05:07 Status Information:\r\n"
            "09.03.2026 08:05:07 ------------------------------------------------------\r\n"
            "09.03.2026 08:05:07 Log Name          : Sport & Weather\r\n"
            "09.03.2026 08:05:07 Last Record       : 9017\r\n"
            "09.03.2026 08:05:07 Current Recording : 0\r\n"
            "09.03.2026 08:05:07 ------------------------------------------------------\r\n"
            "09.03.2026 08:05:07 \r\n");
  EXPECT_EQ(log_.calls, (Calls{"Listen", "Close", "Accept 17"}));
}

TEST_F(StatusPortTest, BlockTellsTheStateAtTheConnection) {
  port_.Start(0);
  state_ = {"", -1, 9018};
  Connect(1);
  EXPECT_NE(log_.sent.find("Log Name          : \r\n"), std::string::npos);
  EXPECT_NE(log_.sent.find("Last Record       : -1\r\n"), std::string::npos);
  EXPECT_NE(log_.sent.find("Current Recording : 9018\r\n"), std::string::npos);
}

TEST_F(StatusPortTest, ClosedControlAcceptsWithoutClosing) {
  Connect(5);
  EXPECT_EQ(log_.calls, Calls{"Accept 5"});
}

TEST_F(StatusPortTest, RequestDuringAConnectionEndsTheConnection) {
  port_.Start(0);
  Connect(1);
  log_.calls.clear();
  Connect(2);
  EXPECT_EQ(log_.calls, (Calls{"Close", "Accept 2"}));
}

TEST_F(StatusPortTest, ClientThatLeftBeforeTheAcceptGetsNothingAndTheNextIsLetIn) {
  log_.stateAfterAccept = platform::sckClosed;
  port_.Start(0);
  Connect(1);
  EXPECT_EQ(log_.sent, "");
  EXPECT_EQ(log_.calls, (Calls{"Listen", "Close", "Accept 1", "Listen"}));
  log_.stateAfterAccept = platform::sckConnected;
  Connect(2);
  EXPECT_NE(log_.sent.find("Status Information:"), std::string::npos);
}

TEST_F(StatusPortTest, ListensAgainWhenTheClientHasGone) {
  port_.Start(0);
  Connect(1);
  log_.calls.clear();
  log_.socket->Closed();
  EXPECT_EQ(log_.calls, (Calls{"Close", "Listen"}));
}

TEST_F(StatusPortTest, DoesNotListenAgainOnAControlThatIsNotClosed) {
  port_.Start(0);
  Connect(1);
  log_.calls.clear();
  log_.stateAfterClose = 8;
  log_.socket->Closed();
  EXPECT_EQ(log_.calls, Calls{"Close"});
}

TEST_F(StatusPortTest, ClosingThePortDoesNotListenAgain) {
  port_.Start(0);
  log_.calls.clear();
  port_.Close();
  EXPECT_EQ(log_.calls, Calls{"Close"});
}

}  // namespace
}  // namespace vorda
