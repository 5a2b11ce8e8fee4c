#include "shell/frmVordaServer.h"

#include <QAction>
#include <QGuiApplication>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QScreen>

#include <memory>

#include "config/ServerConfig.h"
#include "controls/ChildForm.h"
#include "controls/Twips.h"
#include "platform/Files.h"
#include "platform/ProgramEnd.h"
#include "shell/FramePlacing.h"
#include "shell/ServerState.h"
#include "shell/frmHistory.h"
#include "shell/frmSplash.h"

namespace vorda {

namespace {

constexpr int kStartWidth = 1024;  // pixels
constexpr int kStartHeight = 720;
constexpr int kExitBadCommandLine = 2;

// A menu entry: its name, what it says and what it does.
struct MenuEntry {
  const char* menu;
  const char* name;
  const char* caption;
  void (*action)();
};

constexpr MenuEntry kMenuEntries[] = {
    {"&File", "mnuExit", "E&xit", [] { frmVordaServer::Default().Unload(); }},
};

}  // namespace

void ShutDownFeeds() {
  for (std::int16_t n = 1; n <= gFeedFormCount; ++n) FeedForm(n).EndRecording();
}

frmVordaServer& frmVordaServer::Default() {
  static auto& form = *new frmVordaServer;  // never destroyed: it would outlive the toolkit
  return form;
}

QWidget* frmVordaServer::MakeHost() {
  auto* frame = new QMainWindow;
  frame->setAttribute(Qt::WA_QuitOnClose, false);
  area_ = new QMdiArea(frame);
  area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  frame->setCentralWidget(area_);
  const QSize screen = QGuiApplication::primaryScreen()->availableSize();
  frame->resize(QSize(kStartWidth, kStartHeight).boundedTo(screen));
  return frame;
}

// The frame's client area is what is seen of the area for child windows.
QWidget* frmVordaServer::MakeClient(QWidget*) {
  return area_->viewport();
}

void frmVordaServer::BuildControls(QWidget*) {
  controls::SetChildArea(area_);
  BuildMenus(static_cast<QMainWindow*>(Host()));
  SetText("Halvorn Vorda Server");
  FrameAreaHook().Swap([this] {
    return FrameArea{ClientWidth(), ClientHeight(), frmHistory::Default().Top()};
  });
}

void frmVordaServer::BuildMenus(QMainWindow* frame) {
  QMenu* menu = nullptr;
  for (const MenuEntry& entry : kMenuEntries) {
    if (menu == nullptr || menu->title() != QLatin1String(entry.menu)) {
      menu = frame->menuBar()->addMenu(QString::fromLatin1(entry.menu));
    }
    QAction* action = menu->addAction(QString::fromLatin1(entry.caption));
    action->setObjectName(QString::fromLatin1(entry.name));
    QObject::connect(action, &QAction::triggered, frame, entry.action);
  }
  QMenu* windows = frame->menuBar()->addMenu(QStringLiteral("&Window"));
  windows->setObjectName(QStringLiteral("mnuWindow"));
  QObject::connect(windows, &QMenu::aboutToShow, frame, [this, windows] { ListChildWindows(windows); });
}

void frmVordaServer::ListChildWindows(QMenu* menu) {
  menu->clear();
  int number = 0;
  for (QMdiSubWindow* window : area_->subWindowList()) {
    if (!window->isVisible()) continue;
    ++number;
    QString title = window->windowTitle();
    title.replace(QLatin1Char('&'), QStringLiteral("&&"));
    QAction* action = menu->addAction(QStringLiteral("&%1 %2").arg(number).arg(title));
    action->setCheckable(true);
    action->setChecked(window == area_->activeSubWindow());
    QObject::connect(action, &QAction::triggered, window, [this, window] {
      if (window->isMinimized()) window->showNormal();
      area_->setActiveSubWindow(window);
    });
  }
}

// The start-up. The steps stand in the order in which other products and the operator know them.
void frmVordaServer::OnLoad() {
  frmSplash::Default().Show();
  ReadOSVersion();
  if (!ResolveIniFileName()) platform::EndProgram(kExitBadCommandLine);
  Show();
  frmSplash::Default().SetOwner(*this);
  gDefaultWaveFormat = {platform::kWaveFormatPcm, 1, 44100, 0, 0, 16, 0, 0};
  frmHistory::Default().Show();
  if (ReadServerConfig() != 0) ShutDown();
  frmSplash::Default().Unload();
}

// Only the history window follows the frame; feed windows keep their place and size.
void frmVordaServer::OnResize() {
  if (Minimized()) return;
  frmHistory& history = frmHistory::Default();
  const TwipRect place = HistoryPlace(ClientWidth(), ClientHeight(), history.Height());
  history.Move(place.left, place.top, place.width, place.height);
}

void frmVordaServer::OnUnload() {
  ShutDown();
}

void frmVordaServer::ShutDown() {
  ShutDownFeeds();
  platform::CloseAllFiles();
  platform::EndProgram(0);
}

}  // namespace vorda
