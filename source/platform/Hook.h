// A replaceable function: the seam through which modules reach the outside world.

#pragma once

#include <functional>
#include <utility>

namespace vorda::platform {

template <class Signature>
class Hook;

// Holds the function in force. A call goes to a copy of it, so that a function may be swapped from inside
// itself.
template <class Result, class... Arguments>
class Hook<Result(Arguments...)> {
 public:
  using Function = std::function<Result(Arguments...)>;

  explicit Hook(Function initial) : function_(std::move(initial)) {}

  Result operator()(Arguments... arguments) const {
    const Function inForce = function_;
    return inForce(std::forward<Arguments>(arguments)...);
  }

  // Puts `replacement` into force and hands back what was.
  Function Swap(Function replacement) { return std::exchange(function_, std::move(replacement)); }

 private:
  Function function_;
};

// Replaces a hook's function for as long as it lives.
template <class Signature>
class ScopedHook {
 public:
  ScopedHook(Hook<Signature>& hook, typename Hook<Signature>::Function replacement)
      : hook_(hook), previous_(hook.Swap(std::move(replacement))) {}
  ~ScopedHook() { hook_.Swap(std::move(previous_)); }
  ScopedHook(const ScopedHook&) = delete;
  ScopedHook& operator=(const ScopedHook&) = delete;

 private:
  Hook<Signature>& hook_;
  typename Hook<Signature>::Function previous_;
};

}  // namespace vorda::platform
