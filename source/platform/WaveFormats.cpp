#include "platform/WaveFormats.h"

namespace vorda::platform {

int acmFormatSuggest(const WaveFormat& source, WaveFormat& destination) {
  const bool served = destination.wFormatTag == kWaveFormatPcm && source.nChannels >= 1 &&
                      source.nChannels <= 2 && source.nSamplesPerSec > 0;
  if (!served) return kAcmNotPossible;
  const auto blockAlign = static_cast<std::int16_t>(2 * source.nChannels);
  destination.wBitsPerSample = 16;
  destination.nBlockAlign = blockAlign;
  // A rate beyond a gigahertz wraps as the block's 32-bit field does.
  destination.nAvgBytesPerSec = static_cast<std::int32_t>(static_cast<std::uint32_t>(source.nSamplesPerSec) *
                                                          static_cast<std::uint32_t>(blockAlign));
  destination.cbSize = 0;
  return 0;
}

}  // namespace vorda::platform
