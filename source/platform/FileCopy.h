// One file copied or moved in a thread of its own, so that a large file or a slow share never holds up the
// interface thread.
//
// The copy grows under a name of its own beside the destination and takes the destination's name when all of
// it is on the disk: no other program ever sees half a file, and a failure leaves what was there. Paths are
// native.

#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

#include "platform/Descriptor.h"

namespace vorda::platform {

struct FileCopyTask {
  std::string source;
  std::string destination;
  bool move = false;     // the source goes when the destination stands
  bool replace = false;  // whether a file of the destination's name may be replaced
};

// The result of a copy that was cancelled.
inline constexpr int kCopyCancelled = 1223;

class FileCopy {
 public:
  // Begins at once.
  explicit FileCopy(FileCopyTask task);
  // Cancels and waits.
  ~FileCopy();
  FileCopy(const FileCopy&) = delete;
  FileCopy& operator=(const FileCopy&) = delete;

  // The interface thread's event loop is woken when this turns true.
  bool Ended() const { return ended_; }
  // Takes effect at the next piece. A copy that has ended by then stands.
  void Cancel() { cancelled_ = true; }
  // Bytes copied so far, and in all (0 until known).
  std::uint64_t Done() const { return done_; }
  std::uint64_t Total() const { return total_; }

  // Waits for the end. 0, a run-time error's number (58 when the destination exists and may not be replaced),
  // or kCopyCancelled.
  int Result();

 private:
  void Run();
  int CopyOrMove();
  int Copy();
  int CopyBytes(int source, const Descriptor& destination);

  const FileCopyTask task_;
  std::atomic<bool> cancelled_ = false;
  std::atomic<bool> ended_ = false;
  std::atomic<std::uint64_t> done_ = 0;
  std::atomic<std::uint64_t> total_ = 0;
  int result_ = 0;
  std::thread thread_;
};

}  // namespace vorda::platform
