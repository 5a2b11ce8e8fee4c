// The line that the copy goes down: a serial device, or a pseudo-terminal that stands in for one.

#pragma once

#include <memory>
#include <string>

#include "wire/LineSettings.h"

namespace vorda::simulator {

class Line {
 public:
  virtual ~Line() = default;
  // Writes without blocking: the number of bytes taken, 0 when the line takes none now, -1 when it is gone.
  virtual long Write(const char* bytes, size_t count) = 0;
  // What to wait on until the line takes bytes again.
  virtual int descriptor() const = 0;
  // Whether somebody listens. A device can't tell and says yes as long as it is there.
  virtual bool HasReader() = 0;
  // Whether all that was written has left: gone down the wire, or read by the reader.
  virtual bool Drained() = 0;
};

// Opens a device, exclusively and raw. Null, and `problem` tells why, when it can't.
std::unique_ptr<Line> OpenDevice(const std::string& path, const LineSettings& settings, std::string& problem);

// Makes a pseudo-terminal and the symbolic link to it; the link goes with the object. A link left over from
// an earlier run is replaced, anything else of that name is not. Null, and `problem` tells why, when it can't
// be made.
std::unique_ptr<Line> MakePseudoTerminal(const std::string& link, std::string& problem);

}  // namespace vorda::simulator
