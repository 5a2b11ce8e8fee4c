#include "feed/frmWireFeed.h"

#include <exception>

#include "feed/CommEventWords.h"
#include "feed/frmWireFeedLayout.h"
#include "platform/Clock.h"
#include "platform/Desktop.h"
#include "platform/MessageBox.h"
#include "platform/NumericValue.h"
#include "platform/RunTimeError.h"
#include "shell/EventHistory.h"
#include "shell/FramePlacing.h"
#include "shell/ServerState.h"

namespace vorda {

namespace {

constexpr double kNarrowest = 3000;       // twips
constexpr int kIndexLogsInterval = 2000;  // milliseconds
constexpr int kRecordMonitorInterval = 1000;
constexpr int kAudioLevelInterval = 50;

}  // namespace

frmWireFeed::frmWireFeed()
    : ChildForm("frmWireFeed"),
      // A window that is closed behind a box is no feed any more; it must not be loaded again by a question.
      stories_([this] { return Loaded() ? Tag() : std::string(); },
               [this](std::string_view text) { sendWinSockMessage(text); }),
      audio_(MakeAudioHost()) {}

frmWireFeed::~frmWireFeed() = default;

controls::CaptionLabel* frmWireFeed::lblConfigFile() {
  return Control<controls::CaptionLabel>("lblConfigFile");
}

controls::TerminalView* frmWireFeed::txtCapture() {
  return Control<controls::TerminalView>("txtCapture");
}

void frmWireFeed::BuildControls(QWidget* client) {
  BuildWireFeedControls(client);
  captureText_ = CaptureText();
  capture_ = txtCapture();
  capture_->SetSource([this] { return std::string_view(captureText_.Text()); });
  lblConfigFile()->Change = [this] { lblConfigFile_Change(); };
  MakeDevices(client);
  FindStrip();
  SetText("Wire Feed Capture");
}

void frmWireFeed::MakeDevices(QWidget* client) {
  devices_.commCapture = platform::MakeSerialControl();
  devices_.commBouncePort = platform::MakeSerialControl();
  devices_.commCapture->SetRThreshold(1);
  devices_.commCapture->OnComm = [this] { commCapture_OnComm(); };
  devices_.winSockAudio = std::make_unique<StatusPort>([this] {
    const WireFeedRecord* feed = FeedOfTag(Tag());
    return feed == nullptr
               ? StatusPortState{}
               : StatusPortState{feed->Name, feed->LastRecordedCartNumber, audio_.CurrentRecordCart};
  });
  devices_.axTidewire1 = platform::MakeStreamControl();
  devices_.axTidewire1->AudioData = [this](const char* bytes, std::int32_t length) {
    audio_.Take(bytes, length);
  };
  // All three tick from the start, and find nothing to do on a window without a feed number.
  devices_.timerIndexLogs = new platform::ReentrantTimer(
      kIndexLogsInterval, [this] { timerIndexLogs_Timer(); }, client);
  devices_.timerRecordMonitor = new platform::ReentrantTimer(
      kRecordMonitorInterval, [this] { timerRecordMonitor_Timer(); }, client);
  devices_.tmrAudioLevel = new platform::ReentrantTimer(
      kAudioLevelInterval, [this] { tmrAudioLevel_Timer(); }, client);
  devices_.timerIndexLogs->setObjectName("timerIndexLogs");
  devices_.timerRecordMonitor->setObjectName("timerRecordMonitor");
  devices_.tmrAudioLevel->setObjectName("tmrAudioLevel");
}

void frmWireFeed::OnLoad() {
  const TwipRect place = FeedPlaceOnLoad(FrameAreaHook()());
  Move(place.left, place.top, place.width, place.height);
}

// The channel's start. Only the first step can stop it.
void frmWireFeed::lblConfigFile_Change() {
  const auto number = static_cast<std::int16_t>(platform::NumericInteger(Tag()).value_or(0));
  if (ReadFeedConfig(number, lblConfigFile()->Caption(), false).empty()) {
    Unload();
    return;
  }
  if (!Loaded()) return;  // closed behind a box of the load
  const WireFeedRecord& feed = gWireFeeds[static_cast<std::size_t>(number - 1)];
  if (feed.NoIndexProcessing != 0) devices_.timerIndexLogs->SetEnabled(false);
  gServerCartStart = feed.StartCartNumber;
  gServerCartEnd = feed.EndCartNumber;
  SetText("Vorda Server : " + feed.Name);
  OpenPorts(feed);
  if (Loaded()) StartAudio(feed);
}

// Both ports get the feed's one set of serial settings. A bounce port works only behind a capture port that
// opened.
void frmWireFeed::OpenPorts(const WireFeedRecord& feed) {
  for (platform::SerialControl* port : {devices_.commCapture.get(), devices_.commBouncePort.get()}) {
    port->SetSettings(feed.Settings);
    port->SetHandshaking(feed.HandShaking);
  }
  if (feed.CapturePort < 1) return;
  devices_.commCapture->SetCommPort(feed.CapturePort);
  if (const int error = devices_.commCapture->SetPortOpen(true); error != 0) {
    platform::ShowMessageBox("Couldn't open port " + std::to_string(feed.CapturePort) +
                             " for data capture, error : " + platform::ErrorText(error));
    return;
  }
  if (feed.BouncePort < 1) return;
  devices_.commBouncePort->SetCommPort(feed.BouncePort);
  if (const int error = devices_.commBouncePort->SetPortOpen(true); error != 0) {
    platform::ShowMessageBox("Couldn't open Bounce port " + std::to_string(feed.BouncePort) +
                             " for data re-feed, error : " + platform::ErrorText(error));
  }
}

void frmWireFeed::commCapture_OnComm() {
  const CommEventWords event = WordsOfCommEvent(devices_.commCapture->CommEvent());
  if (event.kind == CommEventClass::Data) ReceiveText();
  // A change of a line's state leaves no trace; only errors are told.
  if (event.kind != CommEventClass::Error) return;
  platform::Beep();
  AddHistoryEvent("Feed " + Tag() + " : " + event.words);
}

// The bounce port gets every byte as it came; the display's filter then changes the data, and what it leaves
// is what the stories get. The order decides what each of them sees.
void frmWireFeed::ReceiveText() {
  std::string data = devices_.commCapture->Input();
  if (devices_.commBouncePort->PortOpen()) devices_.commBouncePort->Output(data);
  AppendCaptureText(data);
  stories_.Take(data);
}

// A display that fails is told; the story goes on with what the data holds by then.
void frmWireFeed::AppendCaptureText(std::string& data) {
  try {
    captureText_.Append(data);
    ShowCaptureText();
  } catch (const std::exception& error) {
    platform::ShowMessageBox(error.what());
  }
}

void frmWireFeed::ShowCaptureText() {
  if (capture_) capture_->TextChanged();
}

void frmWireFeed::timerIndexLogs_Timer() {
  const WireFeedRecord* feed = FeedOfTag(Tag());
  if (feed == nullptr) return;
  const platform::Moment now = platform::ReadClock();
  const DailyToolsDue due = DueDailyTools(dailyTools_, now);
  if (due.expiry) {
    StartDailyTool("ItemDrop.exe", feed->FullConfigFile);
    dailyTools_.LastExpiryDay = now.day;
  }
  if (due.index) {
    StartDailyTool("ItemRoll.exe", feed->FullConfigFile);
    dailyTools_.LastIndexDay = now.day;
  }
}

void frmWireFeed::sendWinSockMessage(std::string_view msg) {
  if (devices_.winSockAudio) devices_.winSockAudio->Send(msg);
}

void frmWireFeed::OnActivate() {
  gActiveFeed = platform::NumericInteger(Tag()).value_or(0);
}

void frmWireFeed::OnResize() {
  if (Minimized()) return;
  if (Width() < kNarrowest) {
    SetWidth(kNarrowest);
    return;
  }
  PlaceWireFeedControls(Client());
}

// An open story stays open: its file and its number stay in the record, and nothing hands it on.
void frmWireFeed::OnUnload() {
  // A tick behind a box of the end must not begin the next recording.
  devices_.tmrAudioLevel->SetEnabled(false);
  if (audio_.Recording) EndRecording();
  devices_.axTidewire1->StopStream();
  devices_.winSockAudio->Close();
  devices_ = Devices();
}

}  // namespace vorda
