// The whole server in a scenario for EXPECT_EXIT: a home with the INI file, feeds, an audio wall.

#pragma once

#include <QApplication>
#include <QMainWindow>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/ScopedVariable.h"
#include "shell/frmVordaServer.h"
#include "support/FeedWindows.h"
#include "support/Scenario.h"
#include "support/WallLists.h"

namespace vorda::test {

class FrameScenario : public FeedWindows {
 protected:
  FrameScenario() { TakeCommandLine(0, nullptr); }
  ~FrameScenario() override { gCommandLine.clear(); }

  // A server INI with these feeds, each on the port of its number, and a wall that is there.
  void WriteIni(const std::vector<int>& feeds) {
    MakeWallLists(Wall());
    WriteIni(feeds, WallKeys(Wall()));
  }
  // The same with whatever `wall` says of the wall.
  void WriteIni(const std::vector<int>& feeds, const std::string& wall,
                const std::string& name = "vdServer.INI") {
    std::string text = wall;
    for (const int number : feeds) {
      std::filesystem::create_directory(News(number));
      WriteWholeFile(News(number) + "/vorda.ini", "[General]\r\nName=A&B " + std::to_string(number) + "\r\n");
      text += "[WireFeed" + std::to_string(number) + "]\r\nNewsPath=" + News(number) +
              "\r\nCapturePort=" + std::to_string(number) + "\r\n";
    }
    WriteWholeFile(home / name, text);
  }
  std::string News(int number) const { return directory / ("news" + std::to_string(number)); }
  std::string Wall() const { return directory / "wall"; }

  static frmVordaServer& Server() { return frmVordaServer::Default(); }
  static QMainWindow* MainWindow() {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->objectName() == QStringLiteral("frmVordaServer")) return qobject_cast<QMainWindow*>(window);
    return nullptr;
  }

  // `scenario` holds in the event loop of a process of its own.
  static void ExpectHolds(const std::function<void()>& scenario) {
    EXPECT_EXIT(RunInEventLoop(scenario), ::testing::ExitedWithCode(kScenarioHeld), "");
  }
  // The same behind the start-up.
  static void ExpectHoldsOnceStarted(const std::function<void()>& scenario) {
    ExpectHolds([&scenario] {
      Server().Load();
      scenario();
    });
  }
  // The program ends itself in the scenario, with that exit code and those words on standard error.
  static void ExpectEnd(int exitCode, const char* told, const std::function<void()>& scenario) {
    EXPECT_EXIT(RunInEventLoop(scenario), ::testing::ExitedWithCode(exitCode), told);
  }

  TempDirectory home;
  ScopedVariable variable{"VORDA_HOME", home.path().c_str()};
  FakeFolderPicker picker;
};

}  // namespace vorda::test
