// What a serial line says besides its bytes: errors marked in the stream, error counters and pins.

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/SerialControl.h"

namespace vorda::platform {

// Bytes freed of the marks, and the marks that were among them.
struct Arrival {
  std::string data;
  bool breakSeen = false;    // FF 00 00; its NUL is no data
  bool badByteSeen = false;  // FF 00 x, a parity or framing error; x stays data
};

// Decodes a stream with marked errors (PARMRK), in which FF stands doubled. A mark may be split over two
// pieces.
class MarkedStream {
 public:
  Arrival Decode(std::string_view raw);

 private:
  enum class State { Plain, AfterFF, AfterFF00 };
  State state_ = State::Plain;
};

// Errors since the device was there; they count on and wrap.
struct LineCounters {
  std::uint32_t breaks = 0;
  std::uint32_t framing = 0;
  std::uint32_t parity = 0;
  std::uint32_t overrun = 0;
  std::uint32_t bufferOverrun = 0;
};

struct LineState {
  std::optional<LineCounters> counters;
  std::optional<int> pins;  // TIOCM_CTS, TIOCM_DSR, TIOCM_CD, TIOCM_RNG
};

// Asks the device; what it doesn't answer is missing. Tests put their own in its place.
using LineStateReader = std::function<LineState(int descriptor)>;
LineState ReadLineState(int descriptor);

// Turns changes of a line's state and marks into events: one for each kind of error, then one for each pin.
class LineWatch {
 public:
  explicit LineWatch(const LineState& atOpening) : last_(atOpening) {}

  // `parityChecked`: the line carries a parity bit, so that a bad byte counts as a parity error.
  std::vector<CommEventValue> Events(const LineState& now, const Arrival& arrival, bool parityChecked);

 private:
  LineState last_;
  // Some drivers answer with counters that they never move; until one has moved, the marks are believed as
  // well.
  bool countersMove_ = false;
};

}  // namespace vorda::platform
