#include "platform/FileFault.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace vorda::platform {
namespace {

std::atomic<ScopedFileFault*> innermost = nullptr;
std::mutex counting;

}  // namespace

ScopedFileFault::ScopedFileFault(FileOperation operation, int systemError, int nth, int times,
                                 std::string pathPart)
    : operation_(operation),
      systemError_(systemError),
      first_(nth),
      times_(times),
      pathPart_(std::move(pathPart)),
      outer_(innermost.exchange(this)) {}

ScopedFileFault::ScopedFileFault(Question fault)
    : fault_(std::move(fault)), outer_(innermost.exchange(this)) {}

ScopedFileFault::~ScopedFileFault() {
  innermost = outer_;
}

int ScopedFileFault::TakeCall(FileOperation operation, std::string_view path) {
  if (fault_) {
    ++calls_;
    return fault_(operation, path);
  }
  if (operation != operation_ || path.find(pathPart_) == std::string_view::npos) return 0;
  ++calls_;
  return calls_ >= first_ && calls_ - first_ < times_ ? systemError_ : 0;
}

int ScopedFileFault::calls() const {
  const std::lock_guard lock(counting);
  return calls_;
}

int FileFault(FileOperation operation, std::string_view path) {
  if (innermost == nullptr) return 0;
  const std::lock_guard lock(counting);
  int systemError = 0;
  for (ScopedFileFault* fault = innermost; fault != nullptr; fault = fault->outer_) {
    if (const int error = fault->TakeCall(operation, path); error != 0) systemError = error;
  }
  return systemError;
}

}  // namespace vorda::platform
