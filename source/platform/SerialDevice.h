// An open serial device: the descriptor, the sole right to it, and output that never waits.

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Descriptor.h"

namespace vorda::platform {

// The run-time error for an errno met while opening a serial device: 68 absent, 55 in use, 70 no permission,
// 57 others.
int SerialErrorFromErrno(int systemError);

// Bytes that are kept while the line doesn't take them.
constexpr size_t kOutputBacklog = size_t{1} << 20;

// Drops what the lines of all open devices have not sent. For the program's end, which closes them without
// their destructors and would wait for it.
void DropUnsentOutput();

class SerialDevice {
 public:
  // Opens the device alone for this control, by whatever path it is reached. Null on failure, with
  // `systemError` the errno; EBUSY when the device is in use, here or in another program.
  static std::unique_ptr<SerialDevice> Open(const std::string& path, int& systemError);
  // Closes without waiting: what the line hasn't sent by then is dropped.
  ~SerialDevice();
  SerialDevice(const SerialDevice&) = delete;
  SerialDevice& operator=(const SerialDevice&) = delete;

  int descriptor() const { return device_.number(); }

  // Writes what the line takes now and keeps the rest, up to kOutputBacklog; beyond that it drops. False when
  // the device has gone away.
  bool Send(std::string_view bytes);
  // Writes what was kept, as far as the line takes it. False when the device has gone away.
  bool SendKept();
  bool HoldsOutput() const { return !kept_.empty(); }

 private:
  SerialDevice(Descriptor device, std::string realPath);
  // Takes what the line accepts off the front of `bytes`. False when the device has gone away.
  bool Write(std::string_view& bytes);

  const Descriptor device_;
  const std::string realPath_;
  std::string kept_;
};

}  // namespace vorda::platform
