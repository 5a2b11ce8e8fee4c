#include "platform/WaveFormats.h"

namespace vorda::platform {

WaveFormat SixteenBitFormat(std::int16_t tag, std::int16_t channels, std::int32_t samplesPerSecond) {
  const std::uint32_t blockAlign = 2 * static_cast<std::uint32_t>(channels);
  const std::uint32_t bytesPerSecond = blockAlign * static_cast<std::uint32_t>(samplesPerSecond);
  return {tag,
          channels,
          samplesPerSecond,
          static_cast<std::int32_t>(bytesPerSecond),
          static_cast<std::int16_t>(blockAlign),
          16,
          0,
          0};
}

int acmFormatSuggest(const WaveFormat& source, WaveFormat& destination) {
  const bool served = destination.wFormatTag == kWaveFormatPcm && source.nChannels >= 1 &&
                      source.nChannels <= 2 && source.nSamplesPerSec > 0;
  if (!served) return kAcmNotPossible;
  destination = SixteenBitFormat(kWaveFormatPcm, source.nChannels, source.nSamplesPerSec);
  return 0;
}

}  // namespace vorda::platform
