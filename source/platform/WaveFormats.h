// The wave format block, and the codec manager's suggestion that completes it.

#pragma once

#include <cstdint>

namespace vorda::platform {

// WAVEFORMATEX and two more bytes: 20 bytes on disk and on the wire.
struct WaveFormat {
  std::int16_t wFormatTag = 0;
  std::int16_t nChannels = 0;
  std::int32_t nSamplesPerSec = 0;
  std::int32_t nAvgBytesPerSec = 0;
  std::int16_t nBlockAlign = 0;
  std::int16_t wBitsPerSample = 0;
  std::int16_t cbSize = 0;
  std::int16_t extra = 0;

  bool operator==(const WaveFormat&) const = default;
};

// A 16-bit format with block alignment and bytes per second worked out; figures too large for their fields
// wrap.
WaveFormat SixteenBitFormat(std::int16_t tag, std::int16_t channels, std::int32_t samplesPerSecond);

inline constexpr std::int16_t kWaveFormatPcm = 1;
// The result that says that no codec serves the request.
inline constexpr int kAcmNotPossible = 512;

// Fills `destination`, whose tag, channels and rate stand, from `source`. There is one codec, 16-bit PCM, for
// one or two channels and any rate above 0. Result: 0, or kAcmNotPossible with `destination` untouched.
int acmFormatSuggest(const WaveFormat& source, WaveFormat& destination);

}  // namespace vorda::platform
