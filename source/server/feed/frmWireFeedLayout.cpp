#include "feed/frmWireFeedLayout.h"

#include <QFontInfo>

#include "controls/FormBuilder.h"
#include "controls/TerminalView.h"
#include "controls/Twips.h"

namespace vorda {

namespace {

using controls::ControlKind;
using controls::ControlSpec;
using controls::PixelsFromTwips;

constexpr double kMargin = 60;
constexpr double kConfigTop = 60, kConfigHeight = 255;
constexpr double kFrameTop = 345;
constexpr double kFrameTitle = 285;  // the frame's caption stands above the text
constexpr double kStripHeight = 1245;
// The strip's three rows and three columns.
constexpr double kRow = 345, kRowGap = 60;
constexpr double kRow1 = 60, kRow2 = kRow1 + kRow + kRowGap, kRow3 = kRow2 + kRow + kRowGap;
constexpr double kSideWidth = 900, kRightWidth = 1620;
constexpr double kMiddleLeft = kMargin + kSideWidth + kMargin;

constexpr ControlSpec kControls[] = {
    {"Label1", ControlKind::Label, "Config:", kMargin, kConfigTop, 705, kConfigHeight},
    {"lblConfigFile", ControlKind::Label, "", 780, kConfigTop, 3000, kConfigHeight, nullptr,
     "Configuration file"},
    {"frameTextCapture", ControlKind::Frame, "Text Capture:", kMargin, kFrameTop, 3000, 2000},
    {"txtCapture", ControlKind::TextView, "", kMargin, kFrameTitle, 2800, 1700, "frameTextCapture",
     "Captured text"},
    {"pnlAudio", ControlKind::Panel, "", 30, 3000, 4000, kStripHeight},
    {"pnlCartNo", ControlKind::Panel, "", kMargin, kRow1, kSideWidth, kRow2 + kRow - kRow1, "pnlAudio",
     "Cart being recorded"},
    {"pnlTimeIn", ControlKind::Panel, "", kMargin, kRow3, kSideWidth, kRow, "pnlAudio",
     "Seconds above the threshold"},
    {"pnlTidewireCaption", ControlKind::Panel, "", kMiddleLeft, kRow1, 1500, kRow, "pnlAudio", "Tidewire"},
    {"Label2", ControlKind::Label, "Tidewire", 75, 45, 765, 255, "pnlTidewireCaption"},
    {"Label3", ControlKind::Label, "TM", 840, 15, 300, 195, "pnlTidewireCaption"},
    {"pnlVolume", ControlKind::FloodPanel, "", kMiddleLeft, kRow2, 1500, kRow, "pnlAudio", "Input level"},
    {"pnlTimeFlood", ControlKind::FloodPanel, "", kMiddleLeft, kRow3, 1500, kRow, "pnlAudio", "Time"},
    {"picControls", ControlKind::PictureBox, "", 2600, kRow1, kRightWidth, kRow2 + kRow - kRow1, "pnlAudio",
     "Recording"},
    {"cmdRecord", ControlKind::Button, "&Record", 0, 0, 780, kRow2 + kRow - kRow1, "picControls"},
    {"cmdEject", ControlKind::Button, "&Eject", 840, 0, 780, kRow2 + kRow - kRow1, "picControls"},
    {"pnlTimeOut", ControlKind::Panel, "", 2600, kRow3, kRightWidth, kRow, "pnlAudio",
     "Seconds below the threshold"},
};

QWidget* Find(QWidget* client, const char* name) {
  return client->findChild<QWidget*>(QString::fromLatin1(name));
}

// The panels of the middle column end a gap ahead of the right column, which stands at the strip's right end.
void PlaceStrip(QWidget* client) {
  const int strip = PixelsFromTwips(kStripHeight);
  QWidget* audio = Find(client, "pnlAudio");
  audio->setGeometry(PixelsFromTwips(30), client->height() - PixelsFromTwips(30) - strip,
                     client->width() - PixelsFromTwips(60), strip);
  QWidget* buttons = Find(client, "picControls");
  QWidget* timeOut = Find(client, "pnlTimeOut");
  buttons->move(audio->width() - PixelsFromTwips(60) - buttons->width(), buttons->y());
  timeOut->move(buttons->x(), timeOut->y());
  QWidget* flood = Find(client, "pnlTimeFlood");
  flood->resize(timeOut->x() - PixelsFromTwips(60) - flood->x(), flood->height());
  for (const char* name : {"pnlVolume", "pnlTidewireCaption"}) {
    QWidget* panel = Find(client, name);
    panel->resize(flood->width(), panel->height());
  }
}

}  // namespace

void BuildWireFeedControls(QWidget* client) {
  controls::BuildForm(client, kControls);
  QFont font(QStringLiteral("Courier New"), 9);
  font.setStyleHint(QFont::TypeWriter);
  Find(client, "txtCapture")->setFont(font);
  QFont small = client->font();
  small.setPointSizeF(QFontInfo(small).pointSizeF() * 0.6);
  Find(client, "Label3")->setFont(small);
  QFont large = client->font();
  large.setPointSizeF(QFontInfo(large).pointSizeF() * 1.4);
  large.setBold(true);
  Find(client, "pnlCartNo")->setFont(large);
}

void PlaceWireFeedControls(QWidget* client) {
  PlaceStrip(client);
  QWidget* frame = Find(client, "frameTextCapture");
  const int frameHeight = Find(client, "pnlAudio")->y() - PixelsFromTwips(60) - frame->y();
  frame->resize(client->width() - 2 * frame->x(), frameHeight);
  QWidget* text = Find(client, "txtCapture");
  text->resize(frame->width() - 2 * text->x(), frame->height() - PixelsFromTwips(90) - text->y());
  QWidget* config = Find(client, "lblConfigFile");
  config->resize(client->width() - PixelsFromTwips(60) - config->x(), config->height());
}

}  // namespace vorda
