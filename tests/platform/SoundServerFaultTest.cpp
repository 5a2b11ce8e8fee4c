// Streams on a sound server that hangs, dies or vanishes. What is called on the interface thread returns at
// once all the while.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <vector>

#include "platform/SoundServer.h"
#include "platform/SoundServerFixture.h"

namespace vorda::platform {
namespace {

using namespace std::chrono_literals;

// What would wait for a server that hangs would wait for half a minute.
constexpr auto kAtOnce = 5s;

class SoundServerFaultTest : public SoundServerFixture {
 protected:
  static void ExpectAtOnce(const std::function<void()>& step) {
    const auto start = std::chrono::steady_clock::now();
    step();
    EXPECT_LT(std::chrono::steady_clock::now() - start, kAtOnce);
  }
  // All that a feed does with its stream.
  static void ExpectNothingHeldUp(Listener& listener) {
    ExpectAtOnce([&] {
      for (int i = 0; i < 20; ++i) {
        listener.stream->StopStream();
        listener.stream->StartStream();
        EXPECT_EQ(listener.stream->StreamState(), kStreamWaiting);
      }
    });
    ExpectAtOnce([] { Listener another(1); });
  }
  bool WaitUntilConnected() {
    return WaitUntil([this] { return server_->Connections() == 1; });
  }
  // No more streams than there are listeners, and no connection besides.
  void ExpectNothingLeftBehind(int listeners) {
    EXPECT_TRUE(WaitUntil([&] { return server_->Streams() == listeners; })) << server_->Streams();
    EXPECT_TRUE(WaitUntilConnected()) << server_->Connections();
  }
};

// It takes connections and says nothing.
TEST_F(SoundServerFaultTest, ServerThatHangsHoldsNothingUp) {
  Start(1);
  NumberInputs(1);
  Listener listener(1);
  ASSERT_TRUE(listener.WaitUntilRuns());
  server_->Signal(SIGSTOP);
  EXPECT_TRUE(WaitUntil([&] { return listener.stream->StreamLevel() == 0; }));
  ExpectNothingHeldUp(listener);
  server_->Signal(SIGCONT);
  ASSERT_TRUE(listener.WaitUntilRuns());
  ExpectHeardWhole(listener, 1, 1);
  ExpectNothingLeftBehind(1);
}

TEST_F(SoundServerFaultTest, ServerThatHangsAtTheFirstConnectionHoldsNothingUp) {
  Start(1);
  NumberInputs(1);
  server_->Signal(SIGSTOP);
  std::unique_ptr<Listener> listener;
  ExpectAtOnce([&] { listener = std::make_unique<Listener>(1); });
  ASSERT_TRUE(WaitUntilConnected());
  ExpectNothingHeldUp(*listener);
  server_->Signal(SIGCONT);
  ASSERT_TRUE(listener->WaitUntilRuns());
  ExpectHeardWhole(*listener, 1, 1);
  ExpectNothingLeftBehind(1);
}

TEST_F(SoundServerFaultTest, ServerThatIsKilledAtTheFirstConnectionIsTakenUpWhenItIsBack) {
  Start(1);
  NumberInputs(1);
  server_->Signal(SIGSTOP);
  Listener listener(1);
  ASSERT_TRUE(WaitUntilConnected());
  server_->Kill();
  ExpectNothingHeldUp(listener);
  ASSERT_TRUE(server_->Start()) << server_->log();
  ASSERT_TRUE(listener.WaitUntilRuns());
  ExpectHeardWhole(listener, 1, 1);
  ExpectNothingLeftBehind(1);
}

TEST_F(SoundServerFaultTest, ServerThatIsKilledWhileItMakesAStreamIsTakenUpWhenItIsBack) {
  Start(1);
  NumberInputs(1);
  Listener one(1);
  ASSERT_TRUE(one.WaitUntilRuns());
  server_->Signal(SIGSTOP);
  Listener two(1);
  { Listener another(1); }
  server_->Kill();
  ASSERT_TRUE(one.WaitUntilWaits());
  ASSERT_TRUE(server_->Start()) << server_->log();
  ASSERT_TRUE(one.WaitUntilRuns());
  ASSERT_TRUE(two.WaitUntilRuns());
  ExpectHeardWhole(two, 1, 1);
  ExpectNothingLeftBehind(2);
}

// What it was asked for meanwhile it makes as soon as it goes on, for nobody.
TEST_F(SoundServerFaultTest, ServerThatHungForLongIsLeftNoStreamThatNobodyHas) {
  Start(1);
  NumberInputs(1);
  Listener one(1);
  ASSERT_TRUE(one.WaitUntilRuns());
  server_->Signal(SIGSTOP);
  Listener two(1);
  { Listener another(1); }
  {
    const ScopedSoundServerPulse pulse(200ms);
    ASSERT_TRUE(one.WaitUntilWaits());
  }
  ExpectNothingHeldUp(one);
  server_->Signal(SIGCONT);
  ASSERT_TRUE(one.WaitUntilRuns());
  ASSERT_TRUE(two.WaitUntilRuns());
  ExpectHeardWhole(one, 1, 1);
  ExpectNothingLeftBehind(2);
}

TEST_F(SoundServerFaultTest, ServerThatVanishedWithoutAWordIsTakenUpWhenItIsBack) {
  Start(1);
  NumberInputs(1);
  Listener listener(1);
  ASSERT_TRUE(listener.WaitUntilRuns());
  server_->Vanish();
  ASSERT_TRUE(server_->Start()) << server_->log();
  {
    const ScopedSoundServerPulse pulse(200ms);
    ASSERT_TRUE(WaitUntil([&] { return server_->Streams() == 1; }));
  }
  ASSERT_TRUE(listener.WaitUntilRuns());
  ExpectHeardWhole(listener, 1, 1);
}

TEST_F(SoundServerFaultTest, SoundIsWholeAndInOrderWhenTheServerStoodStillForAMoment) {
  Start(1);
  NumberInputs(1);
  Listener listener(1);
  ASSERT_TRUE(listener.WaitUntilRuns());
  const Samples sound = MarkedSound(1, 3 * kSecond);
  const auto player = server_->Play(1, sound);
  ASSERT_TRUE(listener.WaitForSound());
  server_->Signal(SIGSTOP);
  ASSERT_TRUE(WaitUntil([&] { return listener.stream->StreamLevel() == 0; }));
  EXPECT_TRUE(listener.Runs());
  server_->Signal(SIGCONT);
  EXPECT_TRUE(listener.WaitFor(sound.size()));
  EXPECT_TRUE(WithoutSilence(listener.heard) == sound);
}

TEST_F(SoundServerFaultTest, SuspendedInputKeepsItsStream) {
  Start(1);
  NumberInputs(1);
  Listener listener(1);
  ASSERT_TRUE(listener.WaitUntilRuns());
  ASSERT_TRUE(server_->Suspend(1, true));
  ASSERT_TRUE(WaitUntil([&] { return listener.stream->StreamLevel() == 0; }));
  EXPECT_TRUE(listener.Runs());
  ASSERT_TRUE(server_->Suspend(1, false));
  ExpectHeardWhole(listener, 1, 1);
  EXPECT_EQ(server_->Streams(), 1);
}

// An input has room for so many streams and refuses the next.
TEST_F(SoundServerFaultTest, InputThatRefusesIsTakenUpOnceItHasRoom) {
  constexpr std::size_t kRoom = 256;
  Start(1);
  NumberInputs(1);
  std::vector<std::unique_ptr<Listener>> listeners;
  for (std::size_t i = 0; i < kRoom; ++i) listeners.push_back(std::make_unique<Listener>(1));
  for (const auto& listener : listeners) ASSERT_TRUE(listener->WaitUntilRuns());
  Listener refused(1);
  ASSERT_TRUE(WaitUntil([&] { return server_->log().find("too many") != std::string::npos; }))
      << server_->log();
  EXPECT_EQ(refused.stream->StreamState(), kStreamWaiting);
  listeners.clear();
  ASSERT_TRUE(refused.WaitUntilRuns());
  ExpectHeardWhole(refused, 1, 1);
  ExpectNothingLeftBehind(1);
}

}  // namespace
}  // namespace vorda::platform
