// What a sound input's samples come from: a device of the sound server, or a file that stands for one.

#pragma once

#include <memory>
#include <string>

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
// read is looked for again every second.
std::unique_ptr<SampleSource> MakeFileSource(const std::string& path, SampleIntake& intake);

}  // namespace vorda::platform
