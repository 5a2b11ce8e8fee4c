// Makes the application object and loads the frame, which is the start-up.

#include <QApplication>
#include <QIcon>
#include <QTimer>

#include <utility>

#include "controls/DesktopServices.h"
#include "platform/Files.h"
#include "platform/ProgramEnd.h"
#include "platform/Settings.h"
#include "platform/StandardError.h"
#include "shell/ServerState.h"
#include "shell/frmVordaServer.h"

namespace {

// True when there is a screen to show windows on, or the user has said what to use instead.
bool HasDisplay() {
  return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || !qEnvironmentVariableIsEmpty("DISPLAY") ||
         !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

// A display that is lost ends the program, but not a recording without its length: what can be filed without
// windows is. Whatever that has to tell goes to standard error.
void ShutDownWithoutDisplay() {
  static bool begun = false;
  if (std::exchange(begun, true)) return;
  vorda::controls::InstallDesktop(vorda::controls::Operator::Absent);
  vorda::ShutDownFeeds();
  vorda::platform::CloseAllFiles();
}

QtMessageHandler gToolkitMessages = nullptr;

// The offscreen platform says each time what it can't do; of what is told on standard error nothing is to be
// missed among that.
void TellToolkitMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  for (const char* noise : {"This plugin does not support", "QStandardPaths: XDG_RUNTIME_DIR"}) {
    if (message.startsWith(QLatin1String(noise))) return;
  }
  gToolkitMessages(type, context, message);
  // A display that is lost or can't be reached: told, and the end, without the picture of a crash. Of a loss
  // the toolkit only warns, and ends the program behind the warning.
  if (type == QtFatalMsg || message.contains(QLatin1String("connection broke"))) {
    ShutDownWithoutDisplay();
    vorda::platform::EndProgram(1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  vorda::platform::HoldStandardStreams();
  vorda::platform::IgnoreBrokenPipes();
  const bool display = HasDisplay();
  if (!display) {
    vorda::platform::WriteToStandardError(
        "no display: running without windows; messages appear here and are answered at once");
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  gToolkitMessages = qInstallMessageHandler(TellToolkitMessage);
  vorda::TakeCommandLine(argc - 1, argv + 1);
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(QIcon(QStringLiteral(":/vorda/vorda.png")));
  vorda::controls::InstallDesktop(display ? vorda::controls::Operator::Present
                                          : vorda::controls::Operator::Absent);
  vorda::platform::LoadPlatformSettings();
  const vorda::platform::TerminationSignals termination([] { vorda::frmVordaServer::ShutDown(); });
  // From inside the event loop, so that the start-up may wait for answers and end the program.
  QTimer::singleShot(0, &application, [] { vorda::frmVordaServer::Default().Load(); });
  const int exitCode = QApplication::exec();
  ShutDownWithoutDisplay();
  return exitCode;
}
