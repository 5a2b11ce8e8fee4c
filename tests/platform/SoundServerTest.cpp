// Streams on a real sound server: what is played into its outputs comes out of their monitors.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Descriptor.h"
#include "platform/SoundServerFixture.h"

namespace vorda::platform {
namespace {

// The interface thread stands still meanwhile.
bool WaitWithoutEvents(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatience);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    ::poll(nullptr, 0, 1);
  }
  return true;
}

class SoundServerTest : public SoundServerFixture {};

TEST_F(SoundServerTest, LevelIsThatOfTheSoundAndNoneInSilence) {
  Start(1);
  NumberInputs(1);
  Listener listener(1);
  ASSERT_TRUE(listener.WaitUntilRuns());
  struct Loudness {
    std::int16_t sample;
    int level;
  };
  constexpr Loudness kLevels[] = {{3277, 10}, {-16384, 50}, {32767, 100}, {-32768, 100}};
  for (const Loudness& loudness : kLevels) {
    const auto player = server_->Play(1, Samples(30 * kSecond, loudness.sample));
    EXPECT_TRUE(WaitUntil([&] { return listener.stream->StreamLevel() == loudness.level; }))
        << loudness.sample;
  }
  EXPECT_TRUE(WaitUntil([&] { return listener.stream->StreamLevel() == 0; }));
  EXPECT_TRUE(listener.Runs());
}

class SoundFormatTest : public SoundServerTest, public ::testing::WithParamInterface<SoundFormat> {};

TEST_P(SoundFormatTest, EverySampleArrivesInOrder) {
  const SoundFormat format = GetParam();
  Start(1, format);
  NumberInputs(1);
  Listener listener(1, format);
  ASSERT_TRUE(listener.WaitUntilRuns());
  const Samples sound =
      MarkedSound(1, static_cast<std::size_t>(format.rate) * static_cast<std::size_t>(format.channels));
  ASSERT_TRUE(PlayOut(1, sound));
  EXPECT_TRUE(listener.WaitFor(sound.size()));
  EXPECT_TRUE(WithoutSilence(listener.heard) == sound);
}

INSTANTIATE_TEST_SUITE_P(Formats, SoundFormatTest,
                         ::testing::Values(SoundFormat{1, 8000}, SoundFormat{1, 44100},
                                           SoundFormat{2, 48000}));

TEST_F(SoundServerTest, OtherRateAndChannelsAreBroughtToTheStreams) {
  Start(1, {2, 48000});
  NumberInputs(1);
  Listener listener(1, {1, 44100});
  ASSERT_TRUE(listener.WaitUntilRuns());
  ASSERT_TRUE(PlayOut(1, Samples(std::size_t{2} * 48000, 16384)));
  EXPECT_TRUE(listener.WaitFor(44000));
  const Samples sound = WithoutSilence(listener.heard);
  EXPECT_NEAR(static_cast<double>(sound.size()), 44100, 200);
  for (std::size_t i = 200; i + 200 < sound.size(); ++i) ASSERT_NEAR(sound[i], 16384, 20) << i;
}

TEST_F(SoundServerTest, NumberThatNoInputHasYetIsWaitedFor) {
  Start(2);
  ASSERT_TRUE(server_->Unplug(2));
  Listener listener(2);
  EXPECT_EQ(listener.stream->StreamState(), kStreamWaiting);
  EXPECT_TRUE(WaitUntil([&] { return test::ReadWholeFile(file_) == "[WaveIn]\r\n1=feed1.monitor\r\n"; }));
  ASSERT_TRUE(PlayOut(1, MarkedSound(1, kSecond)));
  EXPECT_TRUE(listener.heard.empty());
  ASSERT_TRUE(server_->Plug(2));
  ASSERT_TRUE(listener.WaitUntilRuns());
  EXPECT_EQ(test::ReadWholeFile(file_), "[WaveIn]\r\n1=feed1.monitor\r\n2=feed2.monitor\r\n");
  ExpectHeardWhole(listener, 2, 2);
}

// The server would give it its default input if it were asked for none.
TEST_F(SoundServerTest, InputThatIsntThereIsNoOtherOne) {
  Start(1);
  test::WriteWholeFile(file_, "[WaveIn]\r\n1=microphone\r\n2=feed1.monitor\r\n");
  Listener absent(1);
  Listener present(2);
  ASSERT_TRUE(present.WaitUntilRuns());
  ExpectHeardWhole(present, 1, 1);
  EXPECT_EQ(absent.stream->StreamState(), kStreamWaiting);
  EXPECT_EQ(absent.stream->StreamLevel(), 0);
  EXPECT_TRUE(absent.heard.empty());
}

TEST_F(SoundServerTest, InputThatWasPulledOutIsTakenUpAgainAndNoOtherMeanwhile) {
  Start(2);
  NumberInputs(2);
  Listener listener(1);
  ASSERT_TRUE(listener.WaitUntilRuns());
  const Samples sound = MarkedSound(1, 30 * kSecond);
  auto player = server_->Play(1, sound);
  ASSERT_TRUE(listener.WaitForSound());
  player.reset();
  ASSERT_TRUE(server_->Unplug(1));
  ASSERT_TRUE(listener.WaitUntilWaits());
  test::RunPendingEvents();
  EXPECT_TRUE(PlaceOf(WithoutSilence(listener.heard), sound));
  const std::size_t before = listener.heard.size();
  ASSERT_TRUE(PlayOut(2, MarkedSound(2, kSecond)));
  EXPECT_EQ(listener.heard.size(), before);
  EXPECT_EQ(listener.stream->StreamState(), kStreamWaiting);
  EXPECT_EQ(listener.stream->StreamLevel(), 0);
  ASSERT_TRUE(server_->Plug(1));
  ASSERT_TRUE(listener.WaitUntilRuns());
  ExpectHeardWhole(listener, 1, 3);
}

TEST_F(SoundServerTest, ServerThatWasKilledIsTakenUpAgain) {
  Start(1);
  NumberInputs(1);
  Listener listener(1);
  for (unsigned mark = 1; mark <= 2; ++mark) {
    ASSERT_TRUE(listener.WaitUntilRuns());
    ExpectHeardWhole(listener, 1, mark);
    server_->Kill();
    ASSERT_TRUE(listener.WaitUntilWaits());
    EXPECT_TRUE(WaitUntil([&] { return listener.stream->StreamLevel() == 0; }));
    ASSERT_TRUE(server_->Start()) << server_->log();
  }
}

TEST_F(SoundServerTest, ServerThatIsntThereYetIsWaitedFor) {
  Use(1);
  NumberInputs(1);
  Listener numbered(1);
  Listener unnumbered(2);
  EXPECT_EQ(numbered.stream->StreamState(), kStreamWaiting);
  ASSERT_TRUE(server_->Start()) << server_->log();
  ASSERT_TRUE(numbered.WaitUntilRuns());
  ExpectHeardWhole(numbered, 1, 1);
  EXPECT_EQ(unnumbered.stream->StreamState(), kStreamWaiting);
}

TEST_F(SoundServerTest, StartedAndStoppedManyTimesLeavesNothingBehind) {
  const auto openFiles = [] {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
  };
  Start(1);
  NumberInputs(1);
  Listener listener(1);
  ASSERT_TRUE(listener.WaitUntilRuns());
  const auto before = openFiles();
  for (int i = 0; i < 200; ++i) {
    listener.stream->StopStream();
    listener.stream->StartStream();
    if (i % 20 == 0) {
      ASSERT_TRUE(listener.WaitUntilRuns()) << i;
    }
  }
  ASSERT_TRUE(listener.WaitUntilRuns());
  ExpectHeardWhole(listener, 1, 1);
  EXPECT_EQ(server_->Streams(), 1);
  EXPECT_EQ(openFiles(), before);
  listener.stream->StopStream();
  EXPECT_TRUE(WaitUntil([&] { return server_->Streams() == 0; }));
}

TEST_F(SoundServerTest, InterfaceThatStandsStillForSecondsLosesNothing) {
  Start(1);
  NumberInputs(1);
  Listener listener(1);
  ASSERT_TRUE(listener.WaitUntilRuns());
  const Samples sound = MarkedSound(1, 3 * kSecond);
  const auto player = server_->Play(1, sound);
  ASSERT_TRUE(listener.WaitForSound());
  const std::size_t before = listener.heard.size();
  ASSERT_TRUE(WaitWithoutEvents([&] { return !player->Runs() && listener.stream->StreamLevel() == 0; }));
  EXPECT_EQ(listener.heard.size(), before);
  listener.stream->EndOfCut();
  EXPECT_EQ(WithoutSilence(listener.heard).size(), sound.size());
  EXPECT_TRUE(WithoutSilence(listener.heard) == sound);
}

TEST_F(SoundServerTest, TwoStreamsOnOneInputBothGetItAll) {
  Start(1);
  NumberInputs(1);
  Listener one(1);
  Listener two(1);
  ASSERT_TRUE(one.WaitUntilRuns());
  ASSERT_TRUE(two.WaitUntilRuns());
  const Samples sound = MarkedSound(1, kSecond);
  ASSERT_TRUE(PlayOut(1, sound));
  for (const Listener* listener : {&one, &two}) {
    EXPECT_TRUE(listener->WaitFor(sound.size()));
    EXPECT_TRUE(WithoutSilence(listener->heard) == sound);
  }
  // And the end of one is not the other's.
  one.stream->StopStream();
  ExpectHeardWhole(two, 1, 2);
}

TEST_F(SoundServerTest, FourStreamsOnFourInputsKeepApart) {
  constexpr int kCount = 4;
  Start(kCount);
  NumberInputs(kCount);
  std::vector<std::unique_ptr<Listener>> listeners;
  for (int i = 1; i <= kCount; ++i) listeners.push_back(std::make_unique<Listener>(i));
  for (const auto& listener : listeners) ASSERT_TRUE(listener->WaitUntilRuns());
  std::vector<std::unique_ptr<test::Program>> players;
  for (int i = 1; i <= kCount; ++i)
    players.push_back(server_->Play(i, MarkedSound(static_cast<unsigned>(i), kSecond)));
  for (unsigned mark = 1; mark <= kCount; ++mark) {
    const Listener& listener = *listeners[mark - 1];
    EXPECT_TRUE(listener.WaitFor(kSecond)) << mark;
    EXPECT_TRUE(WithoutSilence(listener.heard) == MarkedSound(mark, kSecond)) << mark;
  }
}

// One that hangs up on everybody: however many streams wait, it is tried twice a second.
TEST_F(SoundServerTest, ServerThatRefusesIsTriedTwiceASecond) {
  Use(1);
  NumberInputs(1);
  const std::string path = home_ / "socket";
  ::setenv("PULSE_SERVER", ("unix:" + path).c_str(), 1);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const Descriptor port(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  ASSERT_EQ(::bind(port.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(port.number(), 100), 0);
  std::vector<std::unique_ptr<Listener>> listeners;
  for (int number = 1; number <= 4; ++number) listeners.push_back(std::make_unique<Listener>(number));
  std::vector<std::chrono::steady_clock::time_point> tries;
  EXPECT_TRUE(WaitUntil([&] {
    const Descriptor client(::accept4(port.number(), nullptr, nullptr, SOCK_CLOEXEC));
    if (client.isOpen()) tries.push_back(std::chrono::steady_clock::now());
    return tries.size() == 5;
  }));
  EXPECT_GE(tries.back() - tries.front(), std::chrono::milliseconds(1900));
}

}  // namespace
}  // namespace vorda::platform
