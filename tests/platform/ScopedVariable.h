// An environment variable with another value for as long as this lives; null takes it away.

#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace vorda::test {

class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    Set(value);
  }
  ~ScopedVariable() { Set(before_ ? before_->c_str() : nullptr); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  void Set(const char* value) {
    if (value == nullptr) {
      ::unsetenv(name_);
    } else {
      ::setenv(name_, value, 1);
    }
  }

  const char* name_;
  std::optional<std::string> before_;
};

}  // namespace vorda::test
