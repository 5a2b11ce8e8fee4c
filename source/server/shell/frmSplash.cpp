#include "shell/frmSplash.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFontInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

#include "controls/FormBuilder.h"
#include "controls/Panels.h"
#include "controls/Twips.h"
#include "platform/NativePath.h"
#include "platform/ProgramVersion.h"
#include "platform/Settings.h"
#include "shell/GeneralFunctions.h"
#include "shell/ServerState.h"

namespace vorda {

namespace {

using controls::CaptionLabel;
using controls::ControlKind;
using controls::ControlSpec;

constexpr double kWidth = 7500;
constexpr double kHeight = 4650;
constexpr int kLongestPaint = 500;  // ms
constexpr int kPaintLook = 5;       // ms

constexpr const char* kWarning =
    "Warning: This computer program is protected under international copyright law. Unauthorised "
    "reproduction of this "
    "program or any part of it is expressly forbidden and any such actions may result in civil and criminal "
    "prosecution to "
    "the maximum extent of the law.";

constexpr ControlSpec kControls[] = {
    {"fraMainFrame", ControlKind::Frame, "", 60, 0, kWidth - 120, kHeight - 60},
    {"picLogo", ControlKind::Picture, "", 240, 360, 1680, 1680, "fraMainFrame", "Logo"},
    {"lblCompanyProduct", ControlKind::Label, "Company Name", 2160, 360, 4980, 360, "fraMainFrame"},
    {"lblProductName", ControlKind::Label, "ProductName", 2160, 720, 4980, 600, "fraMainFrame"},
    {"lblVersion", ControlKind::Label, "Version", 2160, 1380, 2400, 300, "fraMainFrame"},
    {"lblPlatform", ControlKind::Label, "Platform", 2160, 1740, 4980, 300, "fraMainFrame"},
    {"lblCopyright", ControlKind::Label, "Copyright", 240, 2220, 6900, 300, "fraMainFrame"},
    {"lblWarning", ControlKind::Label, kWarning, 240, 2580, 6900, 1140, "fraMainFrame"},
    {"lblCurrentAction", ControlKind::Label, "", 240, 3960, 5400, 360, "fraMainFrame", "Current action"},
    {"cmdOK", ControlKind::Button, "OK", 5940, 3900, 1200, 420, "fraMainFrame"},
};

void EnlargeFont(QWidget* label, double factor) {
  QFont font = label->font();
  font.setPointSizeF(QFontInfo(font).pointSizeF() * factor);
  font.setBold(true);
  label->setFont(font);
}

}  // namespace

frmSplash& frmSplash::Default() {
  static auto& form = *new frmSplash;  // never destroyed: it would outlive the toolkit
  return form;
}

QWidget* frmSplash::MakeHost() {
  auto* window = new QWidget(nullptr, Qt::SplashScreen);
  window->setAttribute(Qt::WA_QuitOnClose, false);
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  window->setFixedSize(controls::PixelsFromTwips(kWidth), controls::PixelsFromTwips(kHeight));
  window->move(screen.center() - window->rect().center());
  return window;
}

void frmSplash::BuildControls(QWidget* client) {
  controls::BuildForm(client, kControls);
  EnlargeFont(Control<QWidget>("lblProductName"), 1.8);
  EnlargeFont(Control<QWidget>("lblCompanyProduct"), 1.2);
  auto* warning = Control<CaptionLabel>("lblWarning");
  warning->setWordWrap(true);
  warning->setToolTip({});
  Control<CaptionLabel>("lblCurrentAction")->Change = [] { QCoreApplication::processEvents(); };
  QObject::connect(Control<QPushButton>("cmdOK"), &QPushButton::clicked, client, [this] { Unload(); });
}

void frmSplash::OnLoad() {
  SetText(platform::kProgramTitle);
  Control<CaptionLabel>("lblVersion")
      ->SetCaption("Version " + std::to_string(platform::kVersionMajor) + "." +
                   std::to_string(platform::kVersionMinor) + "." +
                   std::to_string(platform::kVersionRevision));
  Control<CaptionLabel>("lblProductName")->SetCaption(platform::kProductName);
  Control<CaptionLabel>("lblCompanyProduct")->SetCaption(platform::kCompanyName);
  Control<CaptionLabel>("lblCopyright")->SetCaption(platform::kLegalCopyright);
  ReadOSVersion();
  const std::string system = PlatformName(gOSVersion);
  if (!system.empty()) Control<CaptionLabel>("lblPlatform")->SetCaption(system);
  ShowLogo();
}

// The station's own picture where there is one; otherwise the one that the window was built with.
void frmSplash::ShowLogo() {
  auto* logo = Control<QLabel>("picLogo");
  logo->setPixmap(QPixmap(QStringLiteral(":/vorda/vorda.png"))
                      .scaled(logo->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
  const std::string file = platform::JoinPath(platform::ProgramDirectory(), "LOGO.BMP");
  if (!(FileSize(file) > 0)) return;
  const QPixmap own(QString::fromLocal8Bit(platform::NativePath(file).c_str()));
  if (!own.isNull()) logo->setPixmap(own.scaled(logo->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

void frmSplash::ShowPainted() {
  Show();
  const QDeadlineTimer longEnough(kLongestPaint);
  while (!Host()->windowHandle()->isExposed() && !longEnough.hasExpired())
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents, kPaintLook);
  Host()->repaint();
}

void frmSplash::OnActivate() {
  QCoreApplication::processEvents();
}

}  // namespace vorda
