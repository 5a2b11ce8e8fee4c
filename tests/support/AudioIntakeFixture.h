// A feed's audio on a wall of the test's own: a stream that the test plays, and a window that only takes
// notes.

#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "config/Vorda_Common_API.h"
#include "feed/AudioIntake.h"
#include "platform/Clock.h"
#include "platform/FileFault.h"
#include "platform/Files.h"
#include "platform/Settings.h"
#include "support/FakeStream.h"
#include "support/WallFixture.h"
#include "support/WaveBytes.h"

namespace vorda::test {

inline constexpr WaveHeader kStreamFormat{1, 2, 1000, 4000, 4, 16};
// What the operator reads of the multimedia errors that are met here.
inline constexpr const char* kInvalidParameterText = "An invalid parameter was passed to a system function.";
inline constexpr const char* kCannotWriteText =
    "The Windows Multimedia Sub-System has returned with an unknown error, the code was: 262";

class AudioIntakeFixture : public WallFixture {
 protected:
  // Carts 1 to 100 are the feed's, the index cart lies in a list of its own.
  AudioIntakeFixture() {
    feed_.FullConfigFile = home_ / "feed.ini";
    feed_.IndexCartNumber = 1900;
    feed_.StartCartNumber = 1;
    feed_.EndCartNumber = 100;
    feed_.ClearCartCount = 3;
    feed_.MaxCutLength = 600;
    feed_.RecordFormat.nAvgBytesPerSec = 1000;
    stream_.numberchannels = 2;
    stream_.samplerate = 1000;
    stream_.AudioData = [this](const char* bytes, std::int32_t length) { intake_.Take(bytes, length); };
    WriteWholeFile(feed_.FullConfigFile, "[AudioCapture]\r\n");
  }

  // What was done so far, in its order; "(open)" while the gate was.
  using Steps = std::vector<std::string>;
  Steps TakeSteps() { return std::exchange(steps_, {}); }
  void Note(const std::string& step) { steps_.push_back(step + (intake_.Recording ? " (open)" : "")); }

  // The nth write to cart 5's file from now on fails, and `times - 1` behind it.
  static platform::ScopedFileFault FailWrite(int nth, int times = 1) {
    return {platform::FileOperation::Write, ENOSPC, nth, times, "ORV00005.WAV"};
  }

  // Blocks of 0.1 s, each of one letter.
  static std::string Block(char letter) { return std::string(400, letter); }
  void Play(char letter) { stream_.Play(Block(letter)); }

  std::string Audio(std::int32_t cart) const { return ReadWholeFile(CartFile(cart, "WAV")); }
  static std::string OpenWave(const std::string& samples) {
    return BareChunk("RIFF", 0, "WAVE") + FormatChunk(kStreamFormat) + BareChunk("data", 0, samples);
  }
  static std::string ClosedWave(const std::string& samples) {
    return Riff(FormatChunk(kStreamFormat) + Chunk("data", samples));
  }
  // The record of a cart that is being filled.
  static std::string RecordingRecord() {
    constexpr std::size_t kBackColorAt = 60;
    std::string record = FullCartRecord("Vorda Server is recording into this cart", 0);
    return record.replace(kBackColorAt, 8, Number(255, 4) + Number(0xFFFFFF, 4));
  }
  static std::string RecordedRecord(const std::string& time, float seconds) {
    return FullCartRecord("Recorded by Vorda Server 09.12.2025 " + time, seconds);
  }
  static std::string IndexRecord(std::int32_t cart) {
    return FullCartRecord("Last recorded cart was : " + std::to_string(cart), 0);
  }
  std::string Ini() const { return ReadWholeFile(feed_.FullConfigFile); }
  std::string Key(const std::string& name) const {
    const std::string ini = Ini();
    const std::size_t place = ini.find(name + "=");
    if (place == std::string::npos) return "none";
    const std::size_t value = place + name.size() + 1;
    return ini.substr(value, ini.find('\r', value) - value);
  }

  static platform::Settings Dates() {
    platform::Settings settings;
    settings.shortDate = "dd.MM.yyyy";
    return settings;
  }

  static constexpr std::uint64_t kPlenty = std::uint64_t{1} << 40;

  WireFeedRecord feed_;
  bool hasFeed_ = true;
  std::uint64_t freeBytes_ = kPlenty;
  std::vector<std::string> askedFor_;                                 // the paths whose free space was asked
  platform::Moment now_{platform::DayNumber(2025, 12, 9), 37859.25};  // 10:30:59
  platform::ScopedClock clock_{[this] { return now_; }};
  platform::ScopedSettings settings_{Dates()};
  platform::ScopedHook<std::uint64_t(const std::string&)> freeHook_{platform::FreeBytesHook(),
                                                                    [this](const std::string& path) {
                                                                      askedFor_.push_back(path);
                                                                      return freeBytes_;
                                                                    }};
  FakeStream stream_{[this](const std::string& call) { Note(call); }};
  platform::StreamControl* streamOfWindow_ = &stream_;
  AudioIntake intake_{{[this] { return hasFeed_ ? &feed_ : nullptr; }, [this] { return streamOfWindow_; },
                       [this](std::string_view line) { Note("line " + std::string(line)); },
                       [this](const std::string& number) { Note("shows \"" + number + "\""); },
                       [this](bool open) { Note(open ? "red" : "grey"); }}};
  platform::ScopedHook<void()> wallHook_{WallChangedHook(), [this] { Note("wall"); }};

 private:
  void NoteFile(platform::FileOperation operation, std::string_view path) {
    const std::string name(path.substr(path.rfind('/') + 1));
    const bool ini = operation == platform::FileOperation::Rename;
    const bool written = operation == platform::FileOperation::Write && name.ends_with(".lst");
    if (ini || written) Note((ini ? "key " : "record ") + name);
    if (operation == platform::FileOperation::Remove) Note("remove " + name);
  }

  Steps steps_;
  platform::ScopedFileFault watch_{[this](platform::FileOperation operation, std::string_view path) {
    NoteFile(operation, path);
    return 0;
  }};
};

}  // namespace vorda::test
