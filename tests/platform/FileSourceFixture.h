// Sound files of known samples, and what a source makes of them.

#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/SampleSource.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"
#include "support/WaveBytes.h"

namespace vorda::platform {

using Samples = std::vector<std::int16_t>;
using Clock = std::chrono::steady_clock;

inline constexpr int kRate = 8000;
inline constexpr int kPatience = 20000;  // ms

inline Samples Ramp(std::size_t frames, std::size_t channels = 1) {
  Samples samples;
  for (std::size_t frame = 0; frame < frames; ++frame) {
    for (std::size_t channel = 0; channel < channels; ++channel)
      samples.push_back(static_cast<std::int16_t>(frame + 10000 * channel));
  }
  return samples;
}

inline std::string WaveOf(const Samples& samples, std::uint16_t channels, std::uint32_t rate) {
  std::string bytes;
  for (const std::int16_t sample : samples) bytes += test::Number(static_cast<std::uint16_t>(sample), 2);
  const auto align = static_cast<std::uint16_t>(2 * channels);
  return test::Riff(test::FormatChunk({1, channels, rate, rate * align, align, 16}) +
                    test::Chunk("data", bytes));
}

class FileSourceFixture : public ::testing::Test {
 protected:
  // The first samples that the file gives.
  Samples Play(const Samples& samples, std::uint16_t channels, std::uint32_t rate, SampleFormat format,
               std::size_t count) {
    test::WriteWholeFile(path_, WaveOf(samples, channels, rate));
    SampleIntake intake(format, [] {});
    const auto source = MakeFileSource(path_, intake);
    Samples played = Collect(intake, count);
    played.resize(count);
    return played;
  }
  static Samples Collect(SampleIntake& intake, std::size_t count) {
    Samples played;
    EXPECT_TRUE(test::WaitUntil(
        [&] {
          for (SampleBlock block = intake.Fetch(); !block.empty(); block = intake.Fetch())
            played.insert(played.end(), block.begin(), block.end());
          return played.size() >= count;
        },
        kPatience));
    return played;
  }
  static Samples Twice(Samples samples) {
    const Samples once = samples;
    samples.insert(samples.end(), once.begin(), once.end());
    return samples;
  }

  test::TempDirectory directory_;
  const std::string path_ = directory_ / "sound.wav";
};

}  // namespace vorda::platform
