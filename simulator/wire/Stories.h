// What is played: the stories from files, and the noise between them.

#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "wire/Arguments.h"

namespace vorda::simulator {

struct Story {
  std::string name;  // of its file
  std::string text;  // without start and end code
};

// The file's bytes; nothing, and `problem` tells why, when it can't be read.
std::optional<std::string> ReadFileBytes(const std::string& path, std::string& problem);

// Reads files, and the files of directories in the order of their names (hidden ones are passed over), one
// story a file. Nothing, and `problem` tells why, when one can't be read or there is none at all.
std::optional<std::vector<Story>> ReadStories(const std::vector<std::string>& paths, std::string& problem);

// The story between its codes as it goes down the line.
std::string FramedStory(const Story& story, const Framing& framing);

// What real lines carry between stories. Always the same for the same seed, on every machine.
class NoiseMaker {
 public:
  NoiseMaker(unsigned seed, const Framing& framing);
  // The next few bytes, fewer than 25: too short to pass for a story. Never a code of the framing, never a
  // backspace.
  std::string Next();

 private:
  std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(engine_() % limit); }

  std::mt19937 engine_;
  Framing framing_;
};

}  // namespace vorda::simulator
