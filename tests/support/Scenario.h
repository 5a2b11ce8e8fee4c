// A scenario that may end the program, for EXPECT_EXIT.

#pragma once

#include <QApplication>
#include <QTimer>

#include <functional>

#include "support/QuietPlatform.h"
#include "support/ScenarioEnd.h"

namespace vorda::test {

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
