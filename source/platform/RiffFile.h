// Wave files as they come: the RIFF chunks that tell the format and the length, read without the sound.
//
// Recordings that broke off, streams that never knew their length and headers by careless writers are taken
// for what they hold.

#pragma once

#include <cstdint>
#include <string>

namespace vorda::platform {

// What the format chunk says. Fields that a short chunk doesn't reach are 0.
struct RiffFormat {
  std::uint16_t wFormatTag = 0;
  std::uint16_t nChannels = 0;
  std::uint32_t nSamplesPerSec = 0;
  std::uint32_t nAvgBytesPerSec = 0;
  std::uint16_t nBlockAlign = 0;
  std::uint16_t wBitsPerSample = 0;
  // The tag that tells how the sound is coded: wFormatTag, or of an extensible format its sub-format's (0
  // when that isn't a tag).
  std::uint16_t coding = 0;
};

struct RiffWave {
  RiffFormat format;
  std::uint64_t dataBegin = 0;  // where the sound begins in the file; 0 = there is no data chunk
  std::uint64_t dataBytes = 0;  // what the file really holds of it
  // The length, cut to whole milliseconds; 0 where the format doesn't tell how to get at one.
  std::uint64_t milliseconds = 0;
};

// The result that says that a file is no wave.
inline constexpr int kNotAWave = -1;

// Reads the header of the file at a native path. Result: 0, an errno, or kNotAWave (also for what is no plain
// file, which is neither waited for nor read); `wave` is then as new.
int ReadRiffWave(const std::string& path, RiffWave& wave);

}  // namespace vorda::platform
