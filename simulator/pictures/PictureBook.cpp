// Takes the guide's pictures of the windows that come and go: PictureBook FOLDER. Runs offscreen; a bar with
// the window's title stands for the desktop's own.

#include <QApplication>
#include <QDialog>
#include <QFontInfo>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <functional>

#include "StripPictures.h"
#include "carts/Orvane_Audio_Routines.h"
#include "carts/frmCartLocations.h"
#include "carts/frmMoveCopyCart.h"
#include "controls/DesktopServices.h"
#include "controls/Panels.h"
#include "controls/TextBox.h"
#include "platform/MessageBox.h"
#include "platform/Settings.h"
#include "shell/ServerState.h"
#include "shell/frmGoodInputBox.h"
#include "shell/frmSplash.h"

namespace vorda {
namespace {

using platform::BoxButtons;
using platform::BoxIcon;

constexpr int kBarHeight = 26;
constexpr QRgb kBarColour = qRgb(0x3b, 0x4a, 0x5c);
constexpr QRgb kEdgeColour = qRgb(0x80, 0x88, 0x90);

QString gFolder;
int gFailed = 0;

void SavePicture(const QImage& picture, const char* name) {
  const QString file = gFolder + QLatin1Char('/') + QString::fromLatin1(name) + QStringLiteral(".png");
  if (picture.save(file)) return;
  std::fprintf(stderr, "PictureBook: %s can't be written\n", qPrintable(file));
  gFailed = 1;
}

void Save(QWidget& window, const char* name, bool bar = true) {
  const QPixmap inside = window.grab();
  const int top = bar ? kBarHeight : 0;
  QImage picture(inside.width() + 2, inside.height() + top + 2, QImage::Format_RGB32);
  picture.fill(kEdgeColour);
  QPainter painter(&picture);
  if (bar) {
    painter.fillRect(1, 1, inside.width(), top, QColor(kBarColour));
    painter.setPen(Qt::white);
    painter.drawText(QRect(10, 1, inside.width() - 20, top), Qt::AlignVCenter, window.windowTitle());
  }
  painter.drawPixmap(1, top + 1, inside);
  painter.end();
  SavePicture(picture, name);
}

void SaveForm(controls::Form& form, const char* name, bool bar) {
  form.Show();
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible()) Save(*window, name, bar);
  }
  form.Unload();
}

// A box waits for its answer: the picture is taken from behind it.
void SaveBox(const char* name, const platform::BoxRequest& request) {
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, [name] {
    auto* const box = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (box == nullptr || !box->isVisible()) return;
    Save(*box, name);
    box->accept();
  });
  look.start(1);
  platform::ShowMessageBox(request);
}

void SaveCartLocations() {
  for (std::size_t part = 0; part < kAudioWallParts; ++part)
    gAudioWallParts[part].Location = part < 4 ? "W:\\MUSIC" : part < 9 ? "W:\\SPOTS" : "N:\\CARTS";
  SaveForm(frmCartLocations::Default(), "cart-locations", true);
}

// Only a cart with something in it can be moved or copied: it gets a wall of its own for as long.
void SaveMoveCopyCart() {
  constexpr std::int32_t kCart = 120;
  const QTemporaryDir wall;
  gAudioWallSettings.MaintainLegacyCartList = 1;
  InitBlankCartInfo();
  gAudioWallParts.front().Location = wall.path().toStdString();
  ConnectAudioWall(1, true);
  CartInfo info = gBlankCartInfo;
  info.AudioLength = 30;
  WriteCartInfo(info, kCart, true);
  frmMoveCopyCart& form = frmMoveCopyCart::Default();
  form.Control<controls::CaptionLabel>("lblSourceCart")->SetCaption(std::to_string(kCart));
  form.Control<controls::TextBox>("txtDestCart")->SetText("121");
  SaveForm(form, "move-copy-cart", true);
}

void TakePictures() {
  SaveForm(frmSplash::Default(), "splash", false);
  frmGoodInputBox::Default().Ask("Please enter the new title for cart 120 :", "Rename Cart",
                                 "Harbour interview", 60);
  SaveForm(frmGoodInputBox::Default(), "question", true);
  SaveCartLocations();
  SaveMoveCopyCart();
  SavePicture(StripStates(), "strip");
  SaveBox("no-port", {"Couldn't open port 1 for data capture, error : Device unavailable"});
  SaveBox("no-configuration",
          {"Warning : No Vorda information was found in the specifed news directory: N:\\weather\\vorda.ini",
           BoxIcon::Critical});
  SaveBox("run-time-error", {"Run-time error '6':\n\nOverflow", BoxIcon::Critical});
  SaveBox(
      "wall-not-found",
      {"Part 1 of the AudioWall has not been found.\nDo you wish to create it in :\nW:\\MUSIC\\Carts1.lst",
       BoxIcon::Question,
       BoxButtons::YesNoCancel,
       {},
       platform::BoxAnswer::Yes});
}

}  // namespace
}  // namespace vorda

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: PictureBook FOLDER\n");
    return 2;
  }
  vorda::gFolder = QString::fromLocal8Bit(argv[1]);
  QApplication::setQuitOnLastWindowClosed(false);
  vorda::controls::InstallDesktop(vorda::controls::Operator::Present);
  vorda::platform::LoadPlatformSettings();
  vorda::TakePictures();
  return vorda::gFailed;
}
