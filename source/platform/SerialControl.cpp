#include "platform/SerialControl.h"

#include <utility>

#include "platform/Hook.h"
#include "platform/TermiosPort.h"

namespace vorda::platform {
namespace {

Hook<std::unique_ptr<SerialControl>()>& SerialControlHook() {
  static Hook<std::unique_ptr<SerialControl>()> hook(
      []() -> std::unique_ptr<SerialControl> { return std::make_unique<TermiosPort>(); });
  return hook;
}

}  // namespace

std::unique_ptr<SerialControl> MakeSerialControl() {
  return SerialControlHook()();
}

ScopedSerialControls::ScopedSerialControls(Factory factory)
    : previous_(SerialControlHook().Swap(std::move(factory))) {}

ScopedSerialControls::~ScopedSerialControls() {
  SerialControlHook().Swap(std::move(previous_));
}

}  // namespace vorda::platform
