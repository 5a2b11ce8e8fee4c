// The server with its child windows tiled once they are there, so that all of them can be seen at once: where
// the server itself places four feeds, a frame of the start's size shows two of them and a bit.

#include <QApplication>
#include <QMainWindow>
#include <QMdiArea>
#include <QTimer>

#include "controls/DesktopServices.h"
#include "platform/Settings.h"
#include "shell/ServerState.h"
#include "shell/frmVordaServer.h"

namespace {

void ShowAllFeeds() {
  vorda::frmVordaServer::Default().Load();
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (auto* frame = qobject_cast<QMainWindow*>(window)) frame->findChild<QMdiArea*>()->tileSubWindows();
  }
}

}  // namespace

int main(int argc, char** argv) {
  vorda::TakeCommandLine(0, nullptr);
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  vorda::controls::InstallDesktop(vorda::controls::Operator::Absent);
  vorda::platform::LoadPlatformSettings();
  QTimer::singleShot(0, &application, ShowAllFeeds);
  return QApplication::exec();
}
