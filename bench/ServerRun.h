// The server in a program that looks at what it does.

#pragma once

#include <QApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

#include "controls/DesktopServices.h"
#include "platform/Settings.h"
#include "shell/ServerState.h"
#include "shell/frmVordaServer.h"

namespace vorda::bench {

// Opens the file that a program's findings go to: VORDA_BENCH_TICKS names it. Each line is there once it is
// written. Without one the program ends.
inline std::FILE* OpenFindings() {
  const char* const path = std::getenv("VORDA_BENCH_TICKS");
  std::FILE* const file = path != nullptr ? std::fopen(path, "w") : nullptr;
  if (file == nullptr) std::exit(2);
  std::setvbuf(file, nullptr, _IOLBF, BUFSIZ);
  return file;
}

// Runs the server with its windows in an application of the caller's.
inline int RunServer(QApplication& application) {
  TakeCommandLine(0, nullptr);
  QApplication::setQuitOnLastWindowClosed(false);
  controls::InstallDesktop(controls::Operator::Absent);
  platform::LoadPlatformSettings();
  QTimer::singleShot(0, &application, [] { frmVordaServer::Default().Load(); });
  return QApplication::exec();
}

}  // namespace vorda::bench
