// The server's start-up and end inside a test, in a process of its own: for use in EXPECT_EXIT.

#pragma once

#include <QApplication>
#include <QTimer>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

#include "shell/frmVordaServer.h"

namespace vorda::test {

// What the process ends with when the server itself didn't end it.
enum ScenarioEnd : int { kScenarioHeld = 90, kScenarioFailed = 91 };

[[noreturn]] inline void EndScenario() {
  std::fflush(nullptr);
  ::_exit(::testing::Test::HasFailure() ? kScenarioFailed : kScenarioHeld);
}

// What failed before the server ends itself would be lost in its exit code.
inline void EndIfFailed() {
  if (::testing::Test::HasFailure()) EndScenario();
}

// Loads the frame as the program does, from inside the event loop, then runs `then`. Ends the process.
[[noreturn]] inline void RunServer(const std::function<void()>& then = [] {}) {
  QTimer::singleShot(0, [&then] {
    frmVordaServer::Default().Load();
    then();
    EndScenario();
  });
  QApplication::exec();
  EndScenario();
}

}  // namespace vorda::test
