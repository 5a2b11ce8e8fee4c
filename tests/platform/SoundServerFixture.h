// Streams on a sound server of the test's own.

#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>

#include "ScopedVariable.h"
#include "platform/StreamControl.h"
#include "support/EventLoop.h"
#include "support/MarkedSound.h"
#include "support/SoundServerProcess.h"
#include "support/TempDirectory.h"

namespace vorda::platform {

using test::MarkedSound;
using test::PlaceOf;
using test::Samples;
using test::SoundFormat;
using test::SoundServerProcess;
using test::WithoutSilence;

inline constexpr int kPatience = 30000;  // ms
inline constexpr std::size_t kSecond = 8000;

inline bool WaitUntil(const std::function<bool()>& condition) {
  return test::WaitUntil(condition, kPatience);
}

// A stream and all that it has delivered.
struct Listener {
  explicit Listener(int number, SoundFormat format = {}) : stream(MakeStreamControl()) {
    stream->numberchannels = static_cast<std::int16_t>(format.channels);
    stream->samplerate = format.rate;
    stream->wavedevicenumber = static_cast<std::int16_t>(number);
    stream->AudioData = [this](const char* bytes, std::int32_t length) {
      const auto count = static_cast<std::size_t>(length) / sizeof(std::int16_t);
      heard.resize(heard.size() + count);
      std::memcpy(heard.data() + heard.size() - count, bytes, count * sizeof(std::int16_t));
    };
    stream->StartStream();
  }
  bool Runs() const { return stream->StreamState() == kStreamRunning; }
  bool WaitUntilRuns() const {
    return WaitUntil([this] { return Runs(); });
  }
  bool WaitUntilWaits() const {
    return WaitUntil([this] { return stream->StreamState() == kStreamWaiting; });
  }
  // Waits for so many samples of sound and the silence behind them.
  bool WaitFor(std::size_t count) const {
    return WaitUntil([&] { return !heard.empty() && heard.back() == 0 && SoundHeard() >= count; });
  }
  bool WaitForSound() const {
    return WaitUntil([this] { return !heard.empty() && heard.back() != 0; });
  }
  std::size_t SoundHeard() const { return WithoutSilence(heard).size(); }

  std::unique_ptr<StreamControl> stream;
  Samples heard;
};

class SoundServerFixture : public ::testing::Test {
 protected:
  void Use(int outputs, SoundFormat format = {}) {
    server_ = std::make_unique<SoundServerProcess>(outputs, format);
    // For good: the connection outlives the test, and must not look for a user's own server behind it.
    for (const std::string& word : server_->Environment()) {
      const std::size_t equals = word.find('=');
      ::setenv(word.substr(0, equals).c_str(), word.substr(equals + 1).c_str(), 1);
    }
  }
  void Start(int outputs, SoundFormat format = {}) {
    Use(outputs, format);
    ASSERT_TRUE(server_->Start()) << server_->log();
  }
  // Gives the monitors the numbers of their outputs.
  void NumberInputs(int count) {
    std::string text = "[WaveIn]\r\n";
    for (int i = 1; i <= count; ++i) text += std::to_string(i) + "=" + SoundServerProcess::Input(i) + "\r\n";
    test::WriteWholeFile(file_, text);
  }
  // Plays to the end.
  bool PlayOut(int output, const Samples& samples) {
    return server_->Play(output, samples)->ExitCode(kPatience) == 0;
  }
  void ExpectHeardWhole(Listener& listener, int output, unsigned mark) {
    const Samples sound = MarkedSound(mark, kSecond);
    listener.heard.clear();
    ASSERT_TRUE(PlayOut(output, sound));
    EXPECT_TRUE(listener.WaitFor(sound.size()));
    EXPECT_TRUE(WithoutSilence(listener.heard) == sound);
  }

  test::TempDirectory home_;
  test::ScopedVariable variable_{"VORDA_HOME", home_.path().c_str()};
  const std::string file_ = home_ / "platform.ini";
  std::unique_ptr<SoundServerProcess> server_;
};

}  // namespace vorda::platform
