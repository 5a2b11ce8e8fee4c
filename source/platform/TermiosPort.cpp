#include "platform/TermiosPort.h"

#include <QSocketNotifier>

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/LineModes.h"
#include "platform/ReentrantTimer.h"
#include "platform/RunTimeError.h"
#include "platform/SerialDevice.h"
#include "platform/Settings.h"

namespace vorda::platform {
namespace {

// What one look at the line takes at most: the control's input buffer.
constexpr size_t kInputBuffer = 4096;
constexpr int kLookInterval = 250;    // milliseconds
constexpr int kReopenInterval = 500;  // milliseconds

// The device path of a port's number; "" when the number is none or stands for nothing.
std::string DevicePath(std::int16_t number) {
  const auto& ports = PlatformSettings().serialPorts;
  if (number < 1 || static_cast<size_t>(number) > ports.size()) return "";
  return ports[static_cast<size_t>(number) - 1];
}

}  // namespace

// What lasts from an opening to its end. The notifiers come after the device, so that they go before its
// descriptor.
struct TermiosPort::Line {
  Line(std::unique_ptr<SerialDevice> opened, const LineState& atOpening)
      : device(std::move(opened)),
        readable(device->descriptor(), QSocketNotifier::Read),
        writable(device->descriptor(), QSocketNotifier::Write),
        watch(atOpening) {
    writable.setEnabled(false);
  }

  const std::unique_ptr<SerialDevice> device;
  QSocketNotifier readable;
  QSocketNotifier writable;
  MarkedStream stream;
  LineWatch watch;
  std::unique_ptr<ReentrantTimer> looking;
};

TermiosPort::TermiosPort(LineStateReader readLineState) : readLineState_(std::move(readLineState)) {
  reopening_.setInterval(kReopenInterval);
  QObject::connect(&reopening_, &QTimer::timeout, &reopening_, [this] {
    if (OpenLine() == kNoError) reopening_.stop();
  });
}

TermiosPort::~TermiosPort() = default;

void TermiosPort::SetSettings(std::string_view settings) {
  const auto parsed = ParseSerialSettings(settings);
  if (!parsed) return;
  settings_ = *parsed;
  settingsText_ = settings;
  ApplyModes();
}

void TermiosPort::SetHandshaking(std::int16_t handshaking) {
  if (handshaking < 0 || handshaking > 3) return;
  handshaking_ = handshaking;
  ApplyModes();
}

void TermiosPort::ApplyModes() {
  if (line_) ApplyLineModes(line_->device->descriptor(), LineModesFor(settings_, handshaking_));
}

int TermiosPort::SetPortOpen(bool open) {
  if (!open) {
    reopening_.stop();
    line_.reset();
    return kNoError;
  }
  int error = kFileAlreadyOpen;
  if (!line_) {
    reopening_.stop();
    input_.clear();
    path_ = DevicePath(number_);
    error = OpenLine();
  }
  if (error != kNoError) SetCurrentError(error);
  return error;
}

int TermiosPort::OpenLine() {
  if (path_.empty()) return kDeviceUnavailable;
  int systemError = 0;
  auto device = SerialDevice::Open(path_, systemError);
  if (!device) return SerialErrorFromErrno(systemError);
  const int descriptor = device->descriptor();
  if (!ApplyLineModes(descriptor, LineModesFor(settings_, handshaking_))) return SerialErrorFromErrno(errno);

  const LineState state = readLineState_(descriptor);
  line_ = std::make_shared<Line>(std::move(device), state);
  QObject::connect(&line_->readable, &QSocketNotifier::activated, &line_->readable,
                   [this] { TakeArrival(); });
  QObject::connect(&line_->writable, &QSocketNotifier::activated, &line_->writable, [this] { SendKept(); });
  if (state.counters || state.pins)
    line_->looking = std::make_unique<ReentrantTimer>(
        kLookInterval, [this] { LookAtLine(); }, nullptr);
  return kNoError;
}

void TermiosPort::LoseDevice() {
  line_.reset();
  reopening_.start();
}

void TermiosPort::TakeArrival() {
  // Read before anything else: the handler may wait in an event loop of its own, where unread bytes would
  // raise this call over and over.
  char raw[kInputBuffer];
  const int descriptor = line_->device->descriptor();
  const ssize_t length = ::read(descriptor, raw, sizeof raw);
  if (length < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (length <= 0) {
    LoseDevice();
    return;
  }
  Arrival arrival = line_->stream.Decode({raw, static_cast<size_t>(length)});
  std::vector<CommEventValue> events;
  if (threshold_ > 0 && !arrival.data.empty()) {
    input_ += arrival.data;
    events.push_back(comEvReceive);
  }
  if (arrival.breakSeen || arrival.badByteSeen) {
    const auto errors = line_->watch.Events(readLineState_(descriptor), arrival, settings_.parity != 'N');
    events.insert(events.end(), errors.begin(), errors.end());
  }
  Raise(events);
}

void TermiosPort::LookAtLine() {
  Raise(line_->watch.Events(readLineState_(line_->device->descriptor()), Arrival(), settings_.parity != 'N'));
}

void TermiosPort::Raise(const std::vector<CommEventValue>& events) {
  const std::weak_ptr<Line> line = line_;
  for (const CommEventValue event : events) {
    commEvent_ = event;
    const auto handler = OnComm;
    if (handler) handler();
    if (line.expired()) return;
  }
}

std::string TermiosPort::Input() {
  return std::exchange(input_, {});
}

void TermiosPort::Output(std::string_view bytes) {
  if (!line_) return;
  if (!line_->device->Send(bytes)) {
    LoseDevice();
    return;
  }
  line_->writable.setEnabled(line_->device->HoldsOutput());
}

void TermiosPort::SendKept() {
  if (!line_->device->SendKept()) {
    LoseDevice();
    return;
  }
  line_->writable.setEnabled(line_->device->HoldsOutput());
}

}  // namespace vorda::platform
