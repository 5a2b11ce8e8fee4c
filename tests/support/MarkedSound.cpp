#include "support/MarkedSound.h"

#include <algorithm>
#include <iterator>
#include <random>

namespace vorda::test {

Samples MarkedSound(unsigned mark, std::size_t samples) {
  constexpr unsigned kLeast = 8000;
  constexpr unsigned kRange = 24000;
  std::mt19937 random(mark);
  Samples sound(samples);
  for (std::int16_t& sample : sound) {
    const auto drawn = static_cast<unsigned>(random());
    const auto size = static_cast<std::int16_t>(kLeast + (drawn >> 1) % kRange);
    sample = drawn % 2 == 0 ? size : static_cast<std::int16_t>(-size);
  }
  return sound;
}

Samples WithoutSilence(const Samples& heard) {
  const auto isSound = [](std::int16_t sample) { return sample != 0; };
  const auto first = std::find_if(heard.begin(), heard.end(), isSound);
  const auto last = std::find_if(heard.rbegin(), heard.rend(), isSound).base();
  return first < last ? Samples(first, last) : Samples();
}

std::optional<std::size_t> PlaceOf(const Samples& piece, const Samples& sound) {
  constexpr std::ptrdiff_t kEnough = 8;
  if (std::ssize(piece) < kEnough) return std::nullopt;
  const auto found = std::search(sound.begin(), sound.end(), piece.begin(), piece.begin() + kEnough);
  if (sound.end() - found < std::ssize(piece)) return std::nullopt;
  if (!std::equal(piece.begin(), piece.end(), found)) return std::nullopt;
  return static_cast<std::size_t>(found - sound.begin());
}

std::string BytesOf(const Samples& samples) {
  std::string bytes;
  bytes.reserve(samples.size() * 2);
  for (const std::int16_t sample : samples) {
    bytes += static_cast<char>(sample & 0xFF);
    bytes += static_cast<char>(sample >> 8 & 0xFF);
  }
  return bytes;
}

Samples SamplesOf(const std::string& bytes) {
  Samples samples(bytes.size() / 2);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const auto low = static_cast<unsigned char>(bytes[2 * i]);
    const auto high = static_cast<unsigned char>(bytes[2 * i + 1]);
    samples[i] = static_cast<std::int16_t>(low | high << 8);
  }
  return samples;
}

}  // namespace vorda::test
