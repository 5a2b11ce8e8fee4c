#include "platform/Desktop.h"

#include <cstdio>
#include <cstdlib>

namespace vorda::platform {

namespace {
Pointer gPointer = Pointer::Default;
}  // namespace

Hook<void(Pointer)>& PointerHook() {
  static Hook<void(Pointer)> hook([](Pointer) {});
  return hook;
}

void SetPointer(Pointer pointer) {
  gPointer = pointer;
  PointerHook()(pointer);
}

Pointer CurrentPointer() {
  return gPointer;
}

Hook<void()>& BeepHook() {
  static Hook<void()> hook([] {});
  return hook;
}

void Beep() {
  BeepHook()();
}

Hook<std::string(const FolderRequest&)>& FolderPickerHook() {
  static Hook<std::string(const FolderRequest&)> hook([](const FolderRequest& request) -> std::string {
    std::fprintf(stderr, "A folder picker without a desktop: %s\n", request.title.c_str());
    std::abort();
  });
  return hook;
}

std::string PickFolder(const FolderRequest& request) {
  return FolderPickerHook()(request);
}

}  // namespace vorda::platform
