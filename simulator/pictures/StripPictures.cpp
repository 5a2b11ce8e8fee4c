#include "StripPictures.h"

#include <QApplication>
#include <QEventLoop>
#include <QMainWindow>
#include <QMdiArea>
#include <QPainter>
#include <QPixmap>
#include <QTemporaryDir>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "carts/Orvane_Audio_Routines.h"
#include "config/ServerConfig.h"
#include "controls/ChildForm.h"
#include "controls/Panels.h"
#include "feed/frmWireFeed.h"
#include "platform/Clock.h"
#include "platform/StreamControl.h"
#include "shell/FramePlacing.h"
#include "shell/ServerState.h"

namespace vorda {
namespace {

constexpr int kLine = 26;  // of text
constexpr int kEdge = 6;
constexpr double kNoon = 43200;
constexpr int kTicks = 6;

struct State {
  const char* words;
  double second;  // since the first one
  std::int16_t level;
};

// A threshold of 10, two seconds of sound that begin a recording, four quiet ones that end it.
constexpr State kStates[] = {
    {"Quiet: waits for sound", 0, 3},
    {"Sound, not for long enough yet: counted at the left", 1, 46},
    {"Sound, not for long enough yet: counted at the left", 2.4, 46},
    {"Long enough: records into cart 9001", 3.1, 64},
    {"Quiet, not for long enough yet: counted at the right", 6, 3},
    {"Quiet, not for long enough yet: counted at the right", 8.5, 3},
    {"Long enough: the cart is closed", 10.1, 3},
};

class PlayedStream : public platform::StreamControl {
 public:
  void StartStream() override {}
  void StopStream() override {}
  void EndOfCut() override {}
  std::int16_t StreamLevel() const override {
    ++asked;
    return level;
  }
  std::int16_t StreamState() const override { return platform::kStreamRunning; }

  std::int16_t level = 0;
  mutable int asked = 0;
};

// Time and level stand still for some ticks, so that the strip shows them.
void Pass(platform::Moment& now, PlayedStream& stream, const State& state) {
  now.seconds = kNoon + state.second;
  stream.level = state.level;
  const int until = stream.asked + kTicks;
  while (stream.asked < until) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

QImage StripOf(frmWireFeed& form) {
  QWidget* const client = form.lblConfigFile()->parentWidget();
  const int top =
      client->findChild<QWidget*>(QStringLiteral("pnlCartNo"))->mapTo(client, QPoint()).y() - kEdge;
  return client->grab(QRect(0, top, client->width(), client->height() - top)).toImage();
}

QImage OneBelowTheOther(const std::vector<QImage>& strips, const std::vector<const char*>& words) {
  const QSize each = strips.front().size();
  const int count = static_cast<int>(strips.size());
  QImage picture(each.width() + 2 * kEdge, count * (each.height() + kLine) + kEdge, QImage::Format_RGB32);
  picture.fill(Qt::white);
  QPainter painter(&picture);
  for (int i = 0; i < count; ++i) {
    const int top = i * (each.height() + kLine);
    painter.drawText(QRect(kEdge, top, each.width(), kLine), Qt::AlignVCenter,
                     QString::fromLatin1(words[static_cast<std::size_t>(i)]));
    painter.drawImage(kEdge, top + kLine, strips[static_cast<std::size_t>(i)]);
  }
  return picture;
}

std::string WriteFeed(const std::string& folder) {
  std::string file = folder + "/vorda.ini";
  std::ofstream(file) << "[General]\r\nName=Weather Wire\r\n[AudioCapture]\r\nIndexCartNumber=9000\r\n"
                         "StartCartNumber=9001\r\nEndCartNumber=9010\r\nAudioActivationLevel=10\r\n"
                         "AudioStartDuration=2\r\nAudioEndDuration=4\r\n";
  return file;
}

}  // namespace

QImage StripStates() {
  const QTemporaryDir folder;
  gAudioWallSettings.MaintainLegacyCartList = 1;
  InitBlankCartInfo();
  for (AudioWallPart& part : gAudioWallParts) part.Location = folder.path().toStdString();
  if (ConnectAudioWall(0, true) != 0) return {};

  PlayedStream* stream = nullptr;
  const platform::ScopedHook<std::unique_ptr<platform::StreamControl>()> hook(
      platform::StreamControlFactory(), [&stream] {
        auto made = std::make_unique<PlayedStream>();
        stream = made.get();
        return made;
      });
  platform::Moment now{platform::DayNumber(2026, 11, 21), kNoon};
  const platform::ScopedClock clock([&now] { return now; });

  // In twips; a feed's window takes its part of it.
  const platform::ScopedHook<FrameArea()> room(FrameAreaHook(), [] { return FrameArea{13200, 9000, 6600}; });
  QMainWindow frame;
  auto* const area = new QMdiArea(&frame);
  frame.setCentralWidget(area);
  frame.resize(1000, 800);
  frame.show();
  controls::SetChildArea(area);
  gWireFeeds[0].SoundCard = 1;
  frmWireFeed& form = FeedForm(1);
  form.SetTag("1");
  form.lblConfigFile()->SetCaption(WriteFeed(folder.path().toStdString()));
  form.Show();

  std::vector<QImage> strips;
  std::vector<const char*> words;
  for (std::size_t i = 0; i < std::size(kStates); ++i) {
    Pass(now, *stream, kStates[i]);
    // Of moments that are told alike only the last one shows.
    if (i + 1 < std::size(kStates) && std::string(kStates[i].words) == kStates[i + 1].words) continue;
    strips.push_back(StripOf(form));
    words.push_back(kStates[i].words);
  }
  form.Unload();
  controls::SetChildArea(nullptr);
  return OneBelowTheOther(strips, words);
}

}  // namespace vorda
