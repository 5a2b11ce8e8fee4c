// The stream of real wire copy that lies with the tests' data, by its sections.

#pragma once

#include <string>

namespace vorda::bench {

struct WireSection {
  std::string bytes;
  int startChar = 0;
  int endChar = 0;
  int stories = 0;
};

// The section of that letter; ends the program with a message when the data isn't there.
WireSection LoadWireSection(char letter);

}  // namespace vorda::bench
