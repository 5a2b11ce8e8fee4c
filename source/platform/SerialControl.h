// Serial ports. Stands in for the serial control MSCommLib.MSComm.
//
// Keeps: one receive event after each arrival, an Input that returns everything that has arrived since the
// last read, and line errors told apart. Drops: break sending, pins as outputs, and the control's own
// replacement of bad characters.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vorda::platform {

// What CommEvent answers in the handler of OnComm.
enum CommEventValue : std::int16_t {
  comEvSend = 1,
  comEvReceive = 2,
  comEvCTS = 3,
  comEvDSR = 4,
  comEvCD = 5,
  comEvRing = 6,
  comEvEOF = 7,
  comEventBreak = 1001,
  comEventCTSTO = 1002,
  comEventDSRTO = 1003,
  comEventFrame = 1004,
  comEventOverrun = 1006,
  comEventCDTO = 1007,
  comEventRxOver = 1008,
  comEventRxParity = 1009,
  comEventTxFull = 1010,
  comEventDCB = 1011,
};

class SerialControl {
 public:
  virtual ~SerialControl() = default;

  // The port's number, 1 for the first; takes effect at the next opening.
  virtual void SetCommPort(std::int16_t number) = 0;
  virtual std::int16_t CommPort() const = 0;

  // "BBBB,P,D,S": baud, parity (N E O M S in either case), data bits, stop bits. An invalid text leaves the
  // former one.
  virtual void SetSettings(std::string_view settings) = 0;
  virtual std::string Settings() const = 0;

  // 0 none, 1 XON-XOFF, 2 RTS, 3 RTS and XON-XOFF. Any other value leaves the former one.
  virtual void SetHandshaking(std::int16_t handshaking) = 0;
  virtual std::int16_t Handshaking() const = 0;

  // 1: a receive event for every arrival; 0: none, what arrives is dropped. Line errors are told at either.
  // Design value 0.
  virtual void SetRThreshold(std::int16_t threshold) = 0;

  // Opens or closes the port. Result: 0, or the run-time error's number: 68 not mapped, out of range or
  // absent, 55 in use, 70 no permission, 57 anything else. Opening an open port is 55's business too. A
  // failure is the current error as well (RunTimeError.h). Closing never waits: what the line hasn't sent by
  // then is dropped.
  virtual int SetPortOpen(bool open) = 0;
  // True while bytes can pass. A port whose device has gone away answers false; it is opened again, silently,
  // when the device is back.
  virtual bool PortOpen() const = 0;

  // All that has arrived since the last read; at most 4096 bytes are taken from the line at once.
  virtual std::string Input() = 0;
  // Sends without ever waiting: what the line doesn't take at once is kept, up to 1 MiB; the rest is dropped,
  // and so is everything while the port isn't open.
  virtual void Output(std::string_view bytes) = 0;

  // Why OnComm was raised; one of CommEventValue, or another number for an unknown event.
  virtual std::int16_t CommEvent() const = 0;
  // Called on the interface thread, once for each event. It may wait in an event loop of its own, where the
  // next events call it again; it may close or destroy the control.
  std::function<void()> OnComm;
};

// True when `settings` is a text that SetSettings takes; the empty text is not.
bool ValidSerialSettings(std::string_view settings);

// A serial control on the devices that the platform settings name, or what a ScopedSerialControls makes.
std::unique_ptr<SerialControl> MakeSerialControl();

// Replaces the making of serial controls for as long as it lives; for tests.
class ScopedSerialControls {
 public:
  using Factory = std::function<std::unique_ptr<SerialControl>()>;
  explicit ScopedSerialControls(Factory factory);
  ~ScopedSerialControls();
  ScopedSerialControls(const ScopedSerialControls&) = delete;
  ScopedSerialControls& operator=(const ScopedSerialControls&) = delete;

 private:
  Factory previous_;
};

}  // namespace vorda::platform
