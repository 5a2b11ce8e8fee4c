// The status port on the network, as a terminal meets it.

#include <gtest/gtest.h>

#include <string>

#include "server/StatusPortFixture.h"

namespace vorda {
namespace {

using test::PlainClient;
using test::WaitUntil;

class StatusPortSocketTest : public test::StatusPortFixture {};

TEST_F(StatusPortSocketTest, ClientReadsTheBlockAndThenEachLine) {
  PlainClient client;
  ASSERT_TRUE(Connect(client));
  ASSERT_TRUE(Receives(client, kBlock)) << client.Received();
  port_.Send("Processed New Story");
  EXPECT_TRUE(Receives(client, BlockAnd("Processed New Story"))) << client.Received();
}

TEST_F(StatusPortSocketTest, LineSentWithoutAClientIsNeverRepeated) {
  port_.Send("Processed New Story");
  PlainClient client;
  ASSERT_TRUE(Connect(client));
  ASSERT_TRUE(Receives(client, kBlock));
  port_.Send("last");
  EXPECT_TRUE(Receives(client, BlockAnd("last"))) << client.Received();
}

TEST_F(StatusPortSocketTest, SecondClientIsRefusedAndTheFirstStays) {
  PlainClient first;
  ASSERT_TRUE(Connect(first));
  ASSERT_TRUE(Receives(first, kBlock));
  EXPECT_FALSE(SomebodyListens());
  port_.Send("still here");
  EXPECT_TRUE(Receives(first, BlockAnd("still here")));
}

TEST_F(StatusPortSocketTest, ListensAgainAfterTheClientHasLeft) {
  for (int turn = 0; turn < 3; ++turn) {
    PlainClient client;
    ASSERT_TRUE(WaitUntil([&] { return Connect(client); })) << turn;
    ASSERT_TRUE(Receives(client, kBlock)) << turn;
    client.Leave();
  }
}

TEST_F(StatusPortSocketTest, ClientThatConnectsAndLeavesAtOnceDoesNotBlockThePort) {
  EXPECT_TRUE(SomebodyListens());
  // One that comes too early, behind the first and ahead of its end, is turned away and tries again.
  PlainClient client;
  EXPECT_TRUE(WaitUntil([&] {
    if (!Connect(client)) return false;
    bool ended = false;
    WaitUntil([&] { return (ended = client.Read()) || client.Received() == kBlock; });
    return !ended;
  }));
  EXPECT_EQ(client.Received(), kBlock);
}

TEST_F(StatusPortSocketTest, SecondFeedOnTheSamePortFailsSilently) {
  {
    StatusPort second([] { return StatusPortState{"Other", 1, 1}; });
    second.Start(SoundCard());
    second.Send("dropped");
    PlainClient client;
    ASSERT_TRUE(Connect(client));
    EXPECT_TRUE(Receives(client, kBlock)) << client.Received();
    port_.Close();
    ASSERT_TRUE(WaitUntil([&] { return client.Read(); }));
    // It had its one chance: a port that comes free later stays free.
    EXPECT_FALSE(SomebodyListens());
  }
}

TEST_F(StatusPortSocketTest, CloseEndsTheConnectionAndTheListening) {
  PlainClient client;
  ASSERT_TRUE(Connect(client));
  ASSERT_TRUE(Receives(client, kBlock));
  port_.Close();
  EXPECT_TRUE(WaitUntil([&] { return client.Read(); }));
  EXPECT_FALSE(SomebodyListens());
}

TEST_F(StatusPortSocketTest, LastLineAheadOfTheCloseIsDelivered) {
  PlainClient client;
  ASSERT_TRUE(Connect(client));
  ASSERT_TRUE(Receives(client, kBlock));
  port_.Send("Closed Audio File");
  port_.Close();
  ASSERT_TRUE(WaitUntil([&] { return client.Read(); }));
  EXPECT_EQ(client.Received(), BlockAnd("Closed Audio File"));
}

TEST_F(StatusPortSocketTest, WhatTheClientSendsIsDroppedHoweverMuchItIs) {
  PlainClient client;
  ASSERT_TRUE(Connect(client));
  ASSERT_TRUE(Receives(client, kBlock));
  const std::string flood(65536, 'x');
  std::size_t written = 0;
  EXPECT_TRUE(WaitUntil(
      [&] {
        written += client.Write(flood);
        return written >= 16 * 1024 * 1024;
      },
      30000));
  port_.Send("still here");
  EXPECT_TRUE(Receives(client, BlockAnd("still here")));
}

TEST_F(StatusPortSocketTest, ClientThatReadsLateLosesNothingBelowTheBacklog) {
  PlainClient client;
  client.SetReceiveBuffer(4096);
  ASSERT_TRUE(Connect(client));
  ASSERT_TRUE(Receives(client, kBlock));
  std::string expected = kBlock;
  const std::string text(8000, 'x');
  for (int i = 0; i < 100; ++i) {
    port_.Send(text);
    expected += "2026-11-21 23:59:59 " + text + "\r\n";
    test::RunPendingEvents();
  }
  EXPECT_TRUE(Receives(client, expected));
}

TEST_F(StatusPortSocketTest, ClientThatNeverReadsIsClosedAndThePortListensAgain) {
  PlainClient stuck;
  stuck.SetReceiveBuffer(4096);
  ASSERT_TRUE(Connect(stuck));
  ASSERT_TRUE(Receives(stuck, kBlock));
  const std::string text(65536, 'x');
  PlainClient next;
  bool listens = false;
  // The system's own buffers take some megabytes before anything waits here.
  for (int i = 0; i < 1000 && !listens; ++i) {
    port_.Send(text);
    test::RunPendingEvents();
    listens = Connect(next);
  }
  ASSERT_TRUE(listens);
  EXPECT_TRUE(Receives(next, kBlock));
}

}  // namespace
}  // namespace vorda
