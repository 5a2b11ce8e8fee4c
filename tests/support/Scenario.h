// A scenario that may end the program, for EXPECT_EXIT.

#pragma once

#include <QApplication>
#include <QTimer>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

#include "support/QuietPlatform.h"

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

// Runs `scenario` in the event loop, as the program runs its start-up, and ends the process.
[[noreturn]] inline void RunInEventLoop(const std::function<void()>& scenario) {
  const QuietPlatform quiet;
  QTimer::singleShot(0, [&scenario] {
    scenario();
    EndScenario();
  });
  QApplication::exec();
  EndScenario();
}

}  // namespace vorda::test
