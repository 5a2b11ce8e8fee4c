#include "platform/FileFault.h"

#include <utility>

namespace vorda::platform {
namespace {

ScopedFileFault* innermost = nullptr;

}  // namespace

ScopedFileFault::ScopedFileFault(FileOperation operation, int systemError, int nth, int times,
                                 std::string pathPart)
    : operation_(operation),
      systemError_(systemError),
      first_(nth),
      times_(times),
      pathPart_(std::move(pathPart)),
      outer_(std::exchange(innermost, this)) {}

ScopedFileFault::~ScopedFileFault() {
  innermost = outer_;
}

bool ScopedFileFault::TakeCall(FileOperation operation, std::string_view path) {
  if (operation != operation_ || path.find(pathPart_) == std::string_view::npos) return false;
  ++calls_;
  return calls_ >= first_ && calls_ - first_ < times_;
}

int FileFault(FileOperation operation, std::string_view path) {
  int systemError = 0;
  for (ScopedFileFault* fault = innermost; fault != nullptr; fault = fault->outer_) {
    if (fault->TakeCall(operation, path)) systemError = fault->systemError_;
  }
  return systemError;
}

}  // namespace vorda::platform
