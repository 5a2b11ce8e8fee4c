// What a sound input's samples come from: a device of the sound server, or a file that stands for one.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/Hook.h"
#include "platform/SampleIntake.h"

namespace vorda::platform {

// Fills its intake from a thread of its own for as long as it lives. What is missing is waited for.
class SampleSource {
 public:
  virtual ~SampleSource() = default;
};

// A device of the sound server by its name there, and never another one. It is taken up again when it, or the
// server, was away.
std::unique_ptr<SampleSource> MakeServerSource(const std::string& device, SampleIntake& intake);

// A sound file (native path) in real time, over and over; brought to the intake's format. One that can't be
// read is looked for again every second. A read that hangs, as on a share, holds up nobody, not even the
// source's end.
std::unique_ptr<SampleSource> MakeFileSource(const std::string& path, SampleIntake& intake);

// What a sound file holds.
struct FileSound {
  std::size_t channels = 1;
  int rate = 0;                       // hertz
  std::vector<std::int16_t> samples;  // whole frames; none when the file can't be read
};

// Reads a sound file, at most 2^28 samples of it, whatever its header promises; called from threads of its
// own. What is no regular file, a pipe say, isn't opened.
Hook<FileSound(const std::string& path)>& FileSoundHook();

}  // namespace vorda::platform
