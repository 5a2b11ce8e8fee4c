// Status clients that do harm, at the real program: stories go on, and the next client is served.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <string>

#include "station/ServerProcess.h"
#include "station/Station.h"
#include "support/EventLoop.h"
#include "support/Loopback.h"
#include "support/PlainClient.h"

namespace vorda::test {
namespace {

constexpr int kPort = 6960;

class ServerStatusClient : public ::testing::Test {
 protected:
  void Start() {
    station_.AddFeed(1, "CapturePort=1\r\n");
    station_.Start();
    // Listens by now, and by then again.
    StatusClient client;
    ASSERT_TRUE(station_.Connect(client)) << station_.Server().output();
  }
  void ExpectStory(const std::string& text) {
    const std::size_t count = station_.Stories().size() + 1;
    ASSERT_TRUE(station_.com1->Write("\x01" + text + "\x04"));
    ASSERT_TRUE(station_.WaitForStories(count));
    const std::vector<Station::Story> stories = station_.Stories();
    EXPECT_TRUE(std::any_of(stories.begin(), stories.end(),
                            [&](const Station::Story& story) { return story.text == text; }));
  }
  // Once the port listens again, a client hears of a later story.
  void ExpectNextIsServed() {
    StatusClient next;
    ASSERT_TRUE(station_.Connect(next)) << station_.Server().output();
    ExpectStory("later");
    EXPECT_TRUE(next.WaitFor(" Processed New Story\r\n"));
    EXPECT_TRUE(IsQuiet(ServerProcess()));
    EXPECT_EQ(station_.Server().output(), "");
  }

  Station station_;
};

TEST_F(ServerStatusClient, SecondIsRefusedAndStoriesGoOn) {
  Start();
  {
    StatusClient first;
    ASSERT_TRUE(station_.Connect(first));
    StatusClient second;
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(second.Connect(OwnLoopbackAddress(), kPort));
    ExpectStory("meanwhile");
    EXPECT_TRUE(first.WaitFor(" Processed New Story\r\n"));
  }
  ExpectNextIsServed();
}

TEST_F(ServerStatusClient, OneThatFloodsAndNeverReadsHoldsUpNoStory) {
  Start();
  {
    PlainClient client;
    client.SetReceiveBuffer(4096);
    ASSERT_TRUE(WaitUntil([&] { return client.Connect(OwnLoopbackAddress(), kPort); }));
    const std::string flood(65536, 'x');
    std::size_t written = 0;
    std::size_t floodedAtTheStory = 0;
    ASSERT_TRUE(station_.com1->Write("\x01meanwhile\x04"));
    EXPECT_TRUE(WaitUntil(
        [&] {
          written += client.Write(flood);
          if (floodedAtTheStory == 0 && !station_.Stories().empty()) floodedAtTheStory = written;
          return floodedAtTheStory > 0 && written > floodedAtTheStory + 16 * 1024 * 1024;
        },
        60000));
    EXPECT_EQ(station_.Stories().at(0).text, "meanwhile");
  }
  ExpectNextIsServed();
}

TEST_F(ServerStatusClient, OneWhoseProgramIsKilledFreesThePort) {
  Start();
  Program client({"bash", "-c",
                  "until exec 3<>/dev/tcp/" + OwnLoopbackAddress() + "/" + std::to_string(kPort) +
                      "; do :; done 2>/dev/null; exec cat <&3"});
  ASSERT_TRUE(
      WaitUntil([&] { return client.output().find("Current Recording") != std::string::npos; }, 20000))
      << client.output();
  ExpectStory("meanwhile");
  client.Signal(SIGKILL);
  ExpectNextIsServed();
}

// Feed 2 is there as soon as feed 1 has tried.
TEST_F(ServerStatusClient, PortInUseAtTheStartIsSilentAndStoriesGoOn) {
  const int other = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int reuse = 1;
  ::setsockopt(other, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(kPort);
  ASSERT_EQ(::inet_pton(AF_INET, OwnLoopbackAddress().c_str(), &address.sin_addr), 1);
  ASSERT_EQ(::bind(other, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(other, 5), 0);
  station_.AddFeed(1, "CapturePort=1\r\n");
  station_.AddFeed(2, "SoundCard=2\r\n");
  station_.Start();
  StatusClient client;
  ASSERT_TRUE(station_.Connect(client, 2)) << station_.Server().output();
  ExpectStory("one");
  EXPECT_TRUE(IsQuiet(ServerProcess()));
  // It had its one chance.
  ::close(other);
  ExpectStory("two");
  StatusClient late;
  EXPECT_FALSE(late.Connect(OwnLoopbackAddress(), kPort));
  EXPECT_TRUE(client.Connected());
  EXPECT_EQ(station_.Server().output(), "");
}

}  // namespace
}  // namespace vorda::test
