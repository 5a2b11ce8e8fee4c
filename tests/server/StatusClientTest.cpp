// Clients of the status port that do harm: what they do to the server, and that the next one is served.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "server/StatusPortFixture.h"
#include "support/HeapInUse.h"
#include "support/WakeUps.h"

namespace vorda {
namespace {

using test::PlainClient;
using test::WaitUntil;

constexpr std::size_t kMebibyte = 1024 * 1024;

class StatusClientTest : public test::StatusPortFixture {
 protected:
  static bool ComesIn(PlainClient& client) { return Connect(client) && Receives(client, kBlock); }
  // Once the port listens again, a client gets the block and what comes later. One that comes too early,
  // behind another and ahead of its end, is turned away and tries again.
  void ExpectNextIsServed() {
    PlainClient next;
    bool connected = false;
    ASSERT_TRUE(WaitUntil([&] {
      if (!connected || next.Read()) connected = Connect(next);
      return connected && next.Received() == kBlock;
    }));
    port_.Send("later");
    EXPECT_TRUE(Receives(next, BlockAnd("later"))) << next.Received();
    EXPECT_LT(test::WakeUps(), test::kQuiet);
  }
  // Whether all that a client has sent has been taken in.
  static bool IsDrained(const PlainClient& client) {
    int unread = -1;
    return ::ioctl(client.ServersEnd(), FIONREAD, &unread) == 0 && unread == 0;
  }
  static int Option(int descriptor, int level, int name) {
    int value = -1;
    socklen_t length = sizeof value;
    EXPECT_EQ(::getsockopt(descriptor, level, name, &value, &length), 0);
    return value;
  }
};

TEST_F(StatusClientTest, SecondIsRefusedAndTheFirstAndTheNextAreServed) {
  {
    PlainClient first;
    ASSERT_TRUE(ComesIn(first));
    for (int i = 0; i < 20; ++i) EXPECT_FALSE(SomebodyListens());
    EXPECT_LT(test::WakeUps(), test::kQuiet);
    port_.Send("still here");
    EXPECT_TRUE(Receives(first, BlockAnd("still here")));
  }
  ExpectNextIsServed();
}

TEST_F(StatusClientTest, FloodIsDroppedWithoutGrowingAndLeavesNothingSpinning) {
  {
    PlainClient client;
    ASSERT_TRUE(ComesIn(client));
    const std::string flood(65536, 'x');
    const std::size_t heap = test::HeapInUse();
    std::size_t most = heap;
    std::size_t written = 0;
    EXPECT_TRUE(WaitUntil(
        [&] {
          written += client.Write(flood);
          most = std::max(most, test::HeapInUse());
          return written >= 16 * kMebibyte;
        },
        60000));
    EXPECT_LT(most, heap + 65536);
    port_.Send("still here");
    EXPECT_TRUE(Receives(client, BlockAnd("still here")));
    EXPECT_TRUE(WaitUntil([&] { return IsDrained(client); }, 20000));
    EXPECT_LT(test::WakeUps(), test::kQuiet);
  }
  ExpectNextIsServed();
}

// In one go, with no turn of the event loop in between.
TEST_F(StatusClientTest, OneThatNeverReadsIsKeptNoMoreThanTheBacklogAndIsClosed) {
  PlainClient stuck;
  stuck.SetReceiveBuffer(4096);
  ASSERT_TRUE(ComesIn(stuck));
  const std::string text(8192, 'x');
  const std::size_t heap = test::HeapInUse();
  std::size_t most = heap;
  for (int i = 0; i < 4000; ++i) {
    port_.Send(text);
    most = std::max(most, test::HeapInUse());
  }
  EXPECT_GT(most, heap + kMebibyte);
  EXPECT_LT(most, heap + 3 * kMebibyte / 2);
  EXPECT_FALSE(SomebodyListens());
  ExpectNextIsServed();
  EXPECT_LT(test::HeapInUse(), heap + 65536);
}

TEST_F(StatusClientTest, OneThatNeverReadsAndFloodsIsClosedToo) {
  PlainClient stuck;
  stuck.SetReceiveBuffer(4096);
  ASSERT_TRUE(ComesIn(stuck));
  const std::string text(65536, 'x');
  PlainClient next;
  bool listens = false;
  for (int i = 0; i < 1000 && !listens; ++i) {
    port_.Send(text);
    stuck.Write(text);
    test::RunPendingEvents();
    listens = Connect(next);
  }
  ASSERT_TRUE(listens);
  ASSERT_TRUE(Receives(next, kBlock));
  port_.Send("later");
  EXPECT_TRUE(Receives(next, BlockAnd("later")));
}

TEST_F(StatusClientTest, OneThatIsKilledFreesThePort) {
  for (int turn = 0; turn < 3; ++turn) {
    PlainClient client;
    ASSERT_TRUE(WaitUntil([&] { return Connect(client); }));
    ASSERT_TRUE(Receives(client, kBlock));
    port_.Send("unread");
    client.LeaveByReset();
    // To one that has gone, which the server may not know yet.
    port_.Send("dropped");
    port_.Send("dropped");
  }
  ExpectNextIsServed();
}

TEST_F(StatusClientTest, OneThatIsKilledAheadOfItsAcceptFreesThePort) {
  for (int turn = 0; turn < 3; ++turn) {
    PlainClient client;
    ASSERT_TRUE(WaitUntil([&] { return Connect(client); }));
    client.LeaveByReset();
  }
  ExpectNextIsServed();
}

// 10 s of silence and three probes 5 s apart; 25 s for what was sent and never acknowledged.
TEST_F(StatusClientTest, ConnectionAsksAfterItsClientWithinHalfAMinute) {
  PlainClient client;
  ASSERT_TRUE(ComesIn(client));
  const int server = client.ServersEnd();
  ASSERT_GE(server, 0);
  EXPECT_EQ(Option(server, SOL_SOCKET, SO_KEEPALIVE), 1);
  EXPECT_EQ(Option(server, IPPROTO_TCP, TCP_KEEPIDLE), 10);
  EXPECT_EQ(Option(server, IPPROTO_TCP, TCP_KEEPINTVL), 5);
  EXPECT_EQ(Option(server, IPPROTO_TCP, TCP_KEEPCNT), 3);
  EXPECT_EQ(Option(server, IPPROTO_TCP, TCP_USER_TIMEOUT), 25000);
}

// In real time, half a minute for both: one that nothing is sent to, and one that a line waits for.
TEST_F(StatusClientTest, VanishedOnesAreFoundOutAndThePortsListenAgain) {
  StatusPort second([] { return StatusPortState{"Feed", 9000, 9001}; });
  second.Start(static_cast<std::int16_t>(SoundCard() + 1));
  PlainClient silent;
  ASSERT_TRUE(ComesIn(silent));
  PlainClient spokenTo;
  ASSERT_TRUE(spokenTo.Connect(Address(), 6960 + SoundCard() + 1));
  ASSERT_TRUE(Receives(spokenTo, kBlock));
  ASSERT_TRUE(silent.Vanish());
  ASSERT_TRUE(spokenTo.Vanish());
  second.Send("lost");
  PlainClient next;
  EXPECT_TRUE(WaitUntil([&] { return Connect(next); }, 60000));
  PlainClient nextOfSecond;
  EXPECT_TRUE(WaitUntil([&] { return nextOfSecond.Connect(Address(), 6960 + SoundCard() + 1); }, 60000));
  ASSERT_TRUE(Receives(next, kBlock));
  ASSERT_TRUE(Receives(nextOfSecond, kBlock));
  port_.Send("later");
  second.Send("later");
  EXPECT_TRUE(Receives(next, BlockAnd("later")));
  EXPECT_TRUE(Receives(nextOfSecond, BlockAnd("later")));
}

// A program that has no descriptor left for a client takes it in when it has.
TEST_F(StatusClientTest, OneThatComesWhileDescriptorsAreShortIsServedLater) {
  PlainClient client;
  // A sanitizer looks at each kind of object once, and needs a descriptor for it.
  test::WakeUps();
  {
    struct rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    ASSERT_TRUE(Connect(client));
    const int next = ::dup(0);
    ::close(next);
    struct rlimit none = limit;
    none.rlim_cur = static_cast<rlim_t>(next);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_LT(test::WakeUps(), test::kQuiet);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  }
  EXPECT_TRUE(Receives(client, kBlock)) << client.Received();
  client.Leave();
  ExpectNextIsServed();
}

}  // namespace
}  // namespace vorda
