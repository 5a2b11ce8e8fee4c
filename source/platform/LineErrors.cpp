#include "platform/LineErrors.h"

#include <linux/serial.h>
#include <sys/ioctl.h>

#include <array>

namespace vorda::platform {
namespace {

struct CounterEvent {
  std::uint32_t LineCounters::*counter;
  CommEventValue event;
};

constexpr std::array kCounterEvents = {
    CounterEvent{&LineCounters::breaks, comEventBreak},
    CounterEvent{&LineCounters::framing, comEventFrame},
    CounterEvent{&LineCounters::parity, comEventRxParity},
    CounterEvent{&LineCounters::overrun, comEventOverrun},
    CounterEvent{&LineCounters::bufferOverrun, comEventRxOver},
};

struct PinEvent {
  int pin;
  CommEventValue event;
};

constexpr std::array kPinEvents = {
    PinEvent{TIOCM_CTS, comEvCTS},
    PinEvent{TIOCM_DSR, comEvDSR},
    PinEvent{TIOCM_CD, comEvCD},
    PinEvent{TIOCM_RNG, comEvRing},
};

}  // namespace

Arrival MarkedStream::Decode(std::string_view raw) {
  Arrival arrival;
  arrival.data.reserve(raw.size());
  for (const char byte : raw) {
    switch (state_) {
      case State::Plain:
        if (byte == '\xFF') {
          state_ = State::AfterFF;
        } else {
          arrival.data += byte;
        }
        break;
      case State::AfterFF:
        state_ = byte == '\0' ? State::AfterFF00 : State::Plain;
        // A lone FF comes from before the line was set to mark errors; it is data like what follows it.
        if (byte == '\xFF') {
          arrival.data += byte;
        } else if (byte != '\0') {
          arrival.data += '\xFF';
          arrival.data += byte;
        }
        break;
      case State::AfterFF00:
        state_ = State::Plain;
        if (byte == '\0') {
          arrival.breakSeen = true;
        } else {
          arrival.badByteSeen = true;
          arrival.data += byte;
        }
        break;
    }
  }
  return arrival;
}

LineState ReadLineState(int descriptor) {
  LineState state;
  serial_icounter_struct counted{};
  if (::ioctl(descriptor, TIOCGICOUNT, &counted) == 0) {
    state.counters =
        LineCounters{static_cast<std::uint32_t>(counted.brk), static_cast<std::uint32_t>(counted.frame),
                     static_cast<std::uint32_t>(counted.parity), static_cast<std::uint32_t>(counted.overrun),
                     static_cast<std::uint32_t>(counted.buf_overrun)};
  }
  int pins = 0;
  if (::ioctl(descriptor, TIOCMGET, &pins) == 0) state.pins = pins;
  return state;
}

std::vector<CommEventValue> LineWatch::Events(const LineState& now, const Arrival& arrival,
                                              bool parityChecked) {
  std::vector<CommEventValue> events;
  if (now.counters && last_.counters) {
    for (const auto& [counter, event] : kCounterEvents)
      if ((*now.counters).*counter != (*last_.counters).*counter) events.push_back(event);
    countersMove_ = countersMove_ || !events.empty();
  }
  // Where counters move, a mark's error is in them, now or since the last look: believing both would tell it
  // twice.
  if (!countersMove_) {
    if (arrival.breakSeen) events.push_back(comEventBreak);
    if (arrival.badByteSeen) events.push_back(parityChecked ? comEventRxParity : comEventFrame);
  }
  if (now.pins && last_.pins) {
    for (const auto& [pin, event] : kPinEvents)
      if ((*now.pins ^ *last_.pins) & pin) events.push_back(event);
  }
  last_ = now;
  return events;
}

}  // namespace vorda::platform
