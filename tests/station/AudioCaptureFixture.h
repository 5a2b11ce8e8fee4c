// A station whose feeds take sound in from a sound server of the test's own.

#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "station/Station.h"
#include "support/EventLoop.h"
#include "support/MarkedSound.h"
#include "support/SoundServerProcess.h"
#include "support/WaveBytes.h"

namespace vorda::test {

inline constexpr std::size_t kSecond = 8000;  // samples
inline constexpr int kPatience = 30000;       // ms

// Feed n listens to output n and records into the hundred carts behind its index cart.
inline std::int32_t IndexCart(int feed) {
  return 8900 + 100 * feed;
}
inline std::int32_t FirstCart(int feed) {
  return IndexCart(feed) + 1;
}

class AudioCapture : public ::testing::Test {
 protected:
  // `keys` are further lines of every feed's [AudioCapture], with their line ends.
  void Prepare(int feeds, const std::string& keys = "") {
    sound_ = std::make_unique<SoundServerProcess>(feeds);
    ASSERT_TRUE(sound_->Start()) << sound_->log();
    std::string inputs = "[WaveIn]\r\n";
    for (int feed = 1; feed <= feeds; ++feed) {
      inputs += std::to_string(feed) + "=" + SoundServerProcess::Input(feed) + "\r\n";
      station_.AddFeed(
          feed, "SoundCard=" + std::to_string(feed) + "\r\n",
          "[General]\r\nName=Wire\r\n[RecordAudioFormat]\r\nSampleRate=8000\r\n[AudioCapture]\r\n" + keys +
              "AudioActivationLevel=10\r\nAudioEndDuration=1\r\nIndexCartNumber=" +
              std::to_string(IndexCart(feed)) + "\r\nStartCartNumber=" + std::to_string(FirstCart(feed)) +
              "\r\nEndCartNumber=" + std::to_string(FirstCart(feed) + 98) + "\r\n");
    }
    const std::string settings = station_.Home() + "/platform.ini";
    WriteWholeFile(settings, ReadWholeFile(settings) + inputs);
    feeds_ = feeds;
  }
  // Starts the server, and waits until every feed takes sound in.
  void Start() {
    std::vector<std::string> environment = sound_->Environment();
    environment.emplace_back("QT_QPA_PLATFORM=offscreen");
    station_.StartWith(environment);
    ASSERT_TRUE(WaitForStreams(feeds_)) << station_.Server().output();
  }
  bool WaitForStreams(int count) {
    return WaitUntil([&] { return !station_.Server().Runs() || sound_->Streams() == count; }, kPatience) &&
           station_.Server().Runs();
  }

  // All in the file of a cart's audio; "" when there is none.
  std::string Wave(std::int32_t cart) const {
    return ReadWholeFile(station_.Wall() + "/ORV0" + std::to_string(cart) + ".WAV");
  }
  // The samples of a cart's audio, by the length of the file.
  Samples Recorded(std::int32_t cart) const {
    const std::string wave = Wave(cart);
    return wave.size() < kHeader ? Samples() : SamplesOf(wave.substr(kHeader));
  }
  // Whether a cart's audio is a wave of its samples and nothing else.
  bool IsWhole(std::int32_t cart) const {
    const std::string header = FormatChunk({1, 1, kSecond, 2 * kSecond, 2, 16});
    return Wave(cart) == Riff(header + Chunk("data", BytesOf(Recorded(cart))));
  }
  // Whether it is one that was never closed.
  bool IsUnfinished(std::int32_t cart) const {
    std::string header = Riff(FormatChunk({1, 1, kSecond, 2 * kSecond, 2, 16}) + Chunk("data", ""));
    header.replace(4, 4, Number(0, 4));
    return Wave(cart).starts_with(header);
  }
  std::string Title(std::int32_t cart) const {
    const std::string title = Record(cart).substr(0, 60);
    return title.substr(0, title.find_last_not_of(' ') + 1);
  }
  // The 300 bytes of a cart's record in its list.
  std::string Record(std::int32_t cart) const {
    const int part = (cart - 1) / 1000 + 1;
    const std::string list = ReadWholeFile(station_.Wall() + "/Carts" + std::to_string(part) + ".lst");
    return list.substr(static_cast<std::size_t>(cart - 1 - 1000 * (part - 1)) * 300, 300);
  }
  // A key of [AudioCapture] in the feed's configuration.
  std::string Key(int feed, const std::string& name) const {
    const std::string text = ReadWholeFile(station_.News(feed) + "/vorda.ini");
    const std::size_t place = text.find("\n" + name + "=");
    if (place == std::string::npos) return "";
    const std::size_t value = place + name.size() + 2;
    return text.substr(value, text.find('\r', value) - value);
  }
  bool WaitForKey(int feed, const std::string& name, std::int32_t value) const {
    return WaitUntil([&] { return Key(feed, name) == std::to_string(value); }, kPatience);
  }
  bool WaitForRecording(int feed, std::int32_t cart) const {
    return WaitForKey(feed, "CurrentlyRecordingCartNumber", cart);
  }
  // Waits until a cart is the last one that was recorded, and none is being recorded.
  bool WaitForRecorded(int feed, std::int32_t cart) const {
    return WaitForKey(feed, "LastRecordedCartNumber", cart) && WaitForRecording(feed, 0);
  }
  // Waits until so many samples of sound are in a cart's audio.
  bool WaitForSound(std::int32_t cart, std::size_t count) const {
    return WaitUntil([&] { return WithoutSilence(Recorded(cart)).size() >= count; }, kPatience);
  }

  static constexpr std::size_t kHeader = 44;

  Station station_;
  std::unique_ptr<SoundServerProcess> sound_;
  int feeds_ = 0;
};

}  // namespace vorda::test
