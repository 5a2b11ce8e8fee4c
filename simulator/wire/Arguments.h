// The command line of the wire simulator.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "wire/LineSettings.h"

namespace vorda::simulator {

struct Framing {
  unsigned char start = 1;
  unsigned char end = 3;
};

struct Arguments {
  std::string port;  // a real device; empty when `ptyLink` is given
  std::string ptyLink;
  LineSettings settings;
  Framing framing;
  std::optional<double> pace;  // bytes a second; 0 = as fast as the line takes them
  long gapMilliseconds = 0;
  size_t chunk = 16;
  long rounds = 1;  // 0 = for ever
  size_t drop = 0;  // number of the story that is left out, counted over the whole run; 0 = none
  bool noise = false;
  unsigned seed = 1;
  bool onEnter = false;
  bool stay = false;
  bool verbose = false;
  bool help = false;
  std::string sentFile;
  std::string planFile;
  std::string rawFile;
  std::vector<std::string> stories;  // files and directories
};

// The text that --help prints.
std::string_view HelpText();

// Reads the command line without the program's name. On failure nothing, and `problem` tells why.
std::optional<Arguments> ParseArguments(const std::vector<std::string>& words, std::string& problem);

}  // namespace vorda::simulator
