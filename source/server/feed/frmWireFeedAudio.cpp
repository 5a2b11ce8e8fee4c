// The audio side of a feed's window: the stream, the level's timer, the limits of a recording, the strip at
// the window's foot.

#include <QPushButton>

#include <string>

#include "controls/Colors.h"
#include "feed/CartRotation.h"
#include "feed/frmWireFeed.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

constexpr std::int32_t kRed = 255;
constexpr double kDiskCheckSeconds = 20;

LevelRules RulesOf(const WireFeedRecord& feed) {
  return {feed.AudioActivationLevel, feed.AudioStartDuration, feed.AudioEndDuration};
}

}  // namespace

AudioIntakeHost frmWireFeed::MakeAudioHost() {
  return {
      [this] { return Loaded() ? FeedOfTag(Tag()) : nullptr; },
      [this] { return devices_.axTidewire1.get(); },
      [this](std::string_view line) { sendWinSockMessage(line); },
      [this](const std::string& number) {
        if (strip_.pnlCartNo) strip_.pnlCartNo->SetCaption(number);
      },
      [this](bool open) { ShowGate(open); },
  };
}

void frmWireFeed::FindStrip() {
  strip_.pnlVolume = Control<controls::FloodPanel>("pnlVolume");
  strip_.pnlTimeIn = Control<controls::Panel>("pnlTimeIn");
  strip_.pnlTimeOut = Control<controls::Panel>("pnlTimeOut");
  strip_.pnlCartNo = Control<controls::Panel>("pnlCartNo");
  strip_.cmdRecord = Control<QPushButton>("cmdRecord");
  strip_.cmdEject = Control<QPushButton>("cmdEject");
  QObject::connect(strip_.cmdRecord, &QPushButton::clicked, this, [this] { cmdRecord_Click(); });
  QObject::connect(strip_.cmdEject, &QPushButton::clicked, this, [this] { EndRecording(); });
  ShowGate(false);
}

// Red and a way to end it while a recording goes on, grey and a way to begin one while none does.
void frmWireFeed::ShowGate(bool open) {
  if (!strip_.pnlCartNo) return;
  strip_.pnlCartNo->SetBackColor(open ? kRed : controls::kButtonFace);
  strip_.cmdRecord->setEnabled(!open);
  strip_.cmdEject->setEnabled(open);
}

void frmWireFeed::StartAudio(const WireFeedRecord& feed) {
  platform::StreamControl& stream = *devices_.axTidewire1;
  stream.numberchannels = feed.RecordFormat.nChannels;
  stream.samplerate = feed.RecordFormat.nSamplesPerSec;
  stream.wavedevicenumber = feed.SoundCard;
  if (stream.wavedevicenumber >= 1) stream.StartStream();
  devices_.winSockAudio->Start(feed.SoundCard);
  // The stream and its timers run by now: behind a box of the clearing a recording may begin, and end.
  const Overtaken overtaken = [this, begun = audio_.Begun()] { return audio_.Begun() != begun; };
  AutoErase(feed, std::int64_t{feed.LastRecordedCartNumber} + 1, feed.ClearCartCount, overtaken);
  if (!overtaken()) audio_.SetCurrentlyRecordingCart(0);
}

std::int32_t frmWireFeed::StartRecording(std::int32_t cart) {
  return audio_.StartRecording(cart);
}

std::int32_t frmWireFeed::EndRecording() {
  return audio_.EndRecording();
}

bool frmWireFeed::StartNextRecording(WireFeedRecord& feed) {
  // Behind a box of the search a tick may begin one.
  const Overtaken overtaken = [this, begun = audio_.Begun()] { return audio_.Begun() != begun; };
  const std::int32_t cart = GetNextRecordCartNumber(feed, overtaken);
  if (overtaken() || StartRecording(cart) != 0) return false;
  sendWinSockMessage("Started Recording");
  return true;
}

// By hand the machine goes on as if it had got there itself: silence is counted from here.
void frmWireFeed::cmdRecord_Click() {
  WireFeedRecord* const feed = FeedOfTag(Tag());
  if (feed != nullptr && StartNextRecording(*feed)) Unset(level_.LevelBelowStamp);
}

// The clock is read once: what a tick decides and what it shows are of one moment. Only behind a start or an
// end, which may wait for the operator while other ticks go on, it is read again.
void frmWireFeed::tmrAudioLevel_Timer() {
  WireFeedRecord* const feed = FeedOfTag(Tag());
  if (feed == nullptr) return;
  const auto level = static_cast<float>(devices_.axTidewire1->StreamLevel());
  strip_.pnlVolume->SetFloodPercent(GaugePercent(level));
  TimeStamp now = NowStamp();
  const LevelRules rules = RulesOf(*feed);
  const LevelAction action = level_.Decide(level, audio_.Recording, rules, now);
  if (action != LevelAction::None) {
    Act(action, *feed);
    now = NowStamp();
  }
  level_.Rearm(level, rules, now);
  if (!Loaded()) return;  // closed behind a box
  strip_.pnlTimeIn->SetCaption(TimeInText(level_, now));
  strip_.pnlTimeOut->SetCaption(TimeOutText(level_, now));
}

void frmWireFeed::Act(LevelAction action, WireFeedRecord& feed) {
  if (action == LevelAction::StartRecording) {
    StartNextRecording(feed);
  } else if (EndRecording() == 0) {
    sendWinSockMessage("Stopped Recording");
  }
}

void frmWireFeed::timerRecordMonitor_Timer() {
  if (!audio_.Recording) return;
  WireFeedRecord* const feed = FeedOfTag(Tag());
  if (feed == nullptr) return;
  const TimeStamp now = NowStamp();
  if (SecondsBetween(feed->RecordStartStamp, now) > feed->ThisItemMaxLength) {
    EndRecording();
  } else if (SecondsBetween(lastDiskCheckStamp_, now) > kDiskCheckSeconds) {
    UpdateThisItemMaxLength(*feed, audio_.CurrentRecordCart);
    lastDiskCheckStamp_ = now;
  }
}

}  // namespace vorda
