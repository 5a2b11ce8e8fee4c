// Sends bytes at the line's pace, and keeps a record of what went.

#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "wire/Interrupt.h"
#include "wire/Line.h"

namespace vorda::simulator {

enum class Outcome { Done, Interrupted, LineGone, RecordFailed };

// A file that grows byte for byte with the line; without a name it takes everything and keeps nothing.
class Record {
 public:
  Record() = default;
  ~Record();
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  // Makes or empties the file. False, and `problem` tells why, when it can't.
  bool Open(const std::string& path, std::string& problem);
  bool Append(std::string_view bytes);

 private:
  int descriptor_ = -1;
};

class Sender {
 public:
  // `pace` in bytes a second, 0 = as fast as the line takes them; `chunk` in bytes a write. The line and the
  // record outlive the sender.
  Sender(Line& line, Record& sent, double pace, size_t chunk);

  Outcome Send(std::string_view bytes);
  Outcome Pause(std::chrono::milliseconds length);
  // Waits until somebody listens.
  Outcome AwaitReader();
  // Waits until all that was sent has left; a line that is gone by then has nothing left to wait for.
  Outcome Drain();
  // Keeps the line up until it is interrupted or the reader has gone.
  void Stay();

  std::uint64_t sent() const { return total_; }

 private:
  Outcome AwaitTurn();
  void Advance(size_t count);

  Line& line_;
  Record& sent_;
  double pace_;
  size_t chunk_;
  Instant due_;
  std::uint64_t total_ = 0;
};

}  // namespace vorda::simulator
