// How a scenario for EXPECT_EXIT ends, without a word of widgets.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

namespace vorda::test {

// What the process ends with when the scenario came to its end.
enum ScenarioEnd : int { kScenarioHeld = 90, kScenarioFailed = 91 };

[[noreturn]] inline void EndScenario() {
  std::fflush(nullptr);
  ::_exit(::testing::Test::HasFailure() ? kScenarioFailed : kScenarioHeld);
}

// What failed before the server ends itself would be lost in its exit code.
inline void EndIfFailed() {
  if (::testing::Test::HasFailure()) EndScenario();
}

}  // namespace vorda::test
