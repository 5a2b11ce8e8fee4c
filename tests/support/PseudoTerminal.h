// A pair of pseudo-terminals: the slave is a serial device for the system, the master is the far end of its
// line.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vorda::test {

// The slave's modes, flags as in termios.h.
struct TerminalModes {
  std::uint32_t inputFlags = 0;
  std::uint32_t outputFlags = 0;
  std::uint32_t localFlags = 0;
  std::uint32_t controlFlags = 0;
  std::uint32_t baud = 0;
};

class PseudoTerminal {
 public:
  // With `link`, makes a symbolic link of that name to the slave and takes it away again at the end. The
  // slave starts raw, so that bytes sent before anybody opens it arrive as they are.
  explicit PseudoTerminal(std::string link = "");
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // The slave's own path, and the one to configure: the link if there is one.
  const std::string& slavePath() const { return slavePath_; }
  const std::string& path() const { return link_.empty() ? slavePath_ : link_; }

  // Sends all of `bytes`, running events while the line doesn't take them. False when it hasn't after five
  // seconds or the slave isn't open any more.
  bool Write(std::string_view bytes);
  // What the slave has sent by now; never waits.
  std::string Read();
  // Runs events until the slave has sent `length` bytes; what came in five seconds when it sends less.
  std::string Read(size_t length);

  // Pulls the plug: the slave's users see a hang-up, its path is gone, and the link with it.
  void HangUp();

  TerminalModes Modes() const;
  // Lets FF through to the slave as it is, as if marks had been put in by a real line: FF 00 x is then a bad
  // byte x.
  void WriteMarksAsTheyAre();

 private:
  int master_;
  std::string slavePath_;
  std::string link_;
};

}  // namespace vorda::test
