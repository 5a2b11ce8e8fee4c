#include "shell/frmVordaServer.h"

#include <QAction>
#include <QGuiApplication>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QScreen>
#include <QScrollBar>

#include <algorithm>

#include "carts/Orvane_Audio_Routines.h"
#include "carts/frmCartLocations.h"
#include "config/ServerConfig.h"
#include "controls/ChildForm.h"
#include "controls/DesktopServices.h"
#include "controls/Twips.h"
#include "platform/Files.h"
#include "platform/ProgramEnd.h"
#include "platform/Text.h"
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
    {"&Settings", "mnuSettingsAudio", "&Cart Locations",
     [] { AskForCartLocations(frmVordaServer::Default()); }},
};

// How far the view has to move for a stretch to be seen; its beginning where it is longer than the view.
int DistanceIntoView(int begin, int end, int view) {
  if (begin < 0) return begin;
  return end > view ? std::min(begin, end - view) : 0;
}

// A third and fourth feed window stand beyond the frame's edge: whoever asks for one by name or by key wants
// to see it.
void BringIntoView(const QMdiArea* area, const QMdiSubWindow* window) {
  const QRect place = window->geometry();
  const QSize view = area->viewport()->size();
  QScrollBar* across = area->horizontalScrollBar();
  QScrollBar* down = area->verticalScrollBar();
  across->setValue(across->value() + DistanceIntoView(place.left(), place.right() + 1, view.width()));
  down->setValue(down->value() + DistanceIntoView(place.top(), place.bottom() + 1, view.height()));
}

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
  // A click is made on what is seen; what was out of sight was reached by key. While the start places the
  // feeds nothing moves.
  QObject::connect(area_, &QMdiArea::subWindowActivated, area_, [this](const QMdiSubWindow* window) {
    const bool outOfSight = window != nullptr && !window->geometry().intersects(area_->viewport()->rect());
    if (started_ && outOfSight) BringIntoView(area_, window);
  });
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
      BringIntoView(area_, window);
    });
  }
}

// The start-up. The steps stand in the order in which other products and the operator know them.
void frmVordaServer::OnLoad() {
  frmSplash::Default().ShowPainted();
  ReadOSVersion();
  if (!ResolveIniFileName()) platform::EndProgram(kExitBadCommandLine);
  ReadAudioWallSettings(gIniFileName);
  Show();
  frmSplash::Default().SetOwner(*this);
  gDefaultWaveFormat = {platform::kWaveFormatPcm, 1, 44100, 0, 0, 16, 0, 0};
  frmHistory::Default().Show();
  if (ReadServerConfig() != 0) ShutDown();
  if (platform::Trim(gAudioWallParts.front().Location).empty()) AskForCartLocations(*this);
  if (ConnectAudioWall(0, false) != 0) ShutDown();
  frmSplash::Default().Unload();
  MakeRoomForScrollBar();
  started_ = true;
}

// Feed windows beyond the right edge bring a scroll bar, which would lift the history over the feet of the
// feeds: the frame grows by as much.
void frmVordaServer::MakeRoomForScrollBar() {
  const QList<QMdiSubWindow*> windows = area_->subWindowList();
  const bool beyond = std::any_of(windows.begin(), windows.end(), [this](const QMdiSubWindow* window) {
    return window->isVisible() && window->geometry().right() >= area_->viewport()->width();
  });
  if (!beyond || Host()->isMaximized() || Host()->isFullScreen()) return;
  Host()->resize(Host()->width(), Host()->height() + area_->horizontalScrollBar()->sizeHint().height());
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

// Nothing stops it: what the recordings' ends have to tell goes to standard error, and every feed's is ended.
void frmVordaServer::ShutDown() {
  controls::InstallDesktop(controls::Operator::Absent);
  ShutDownFeeds();
  platform::CloseAllFiles();
  platform::EndProgram(0);
}

}  // namespace vorda
