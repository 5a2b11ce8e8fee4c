// A feed channel: one window for each wire feed, with everything that the feed does.
//
// A channel learns who it is in a fixed order: its Tag is set to the feed number, then the caption of
// lblConfigFile to the path of its configuration file; the caption's change starts the channel. Where the
// file is missing the window unloads itself, and showing it loads it again as a blank one.

#pragma once

#include <QPointer>
#include <QPushButton>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "controls/ChildForm.h"
#include "controls/Panels.h"
#include "controls/TerminalView.h"
#include "feed/AudioIntake.h"
#include "feed/CaptureText.h"
#include "feed/DailyTools.h"
#include "feed/LevelMachine.h"
#include "feed/StatusPort.h"
#include "feed/StoryCapture.h"
#include "platform/ReentrantTimer.h"
#include "platform/SerialControl.h"
#include "platform/StreamControl.h"

namespace vorda {

class frmWireFeed : public controls::ChildForm {
 public:
  frmWireFeed();
  ~frmWireFeed() override;

  // Controls that others reach for; they load the form.
  controls::CaptionLabel* lblConfigFile();
  controls::TerminalView* txtCapture();

  // Sends a line to the feed's status client; dropped when none is connected.
  void sendWinSockMessage(std::string_view msg);

  // Begins a recording into a cart; results as AudioIntake.
  std::int32_t StartRecording(std::int32_t cart);
  // Ends the recording under way, if there is one. Result: 0, always.
  std::int32_t EndRecording();

 protected:
  void BuildControls(QWidget* client) override;
  void OnLoad() override;
  void OnActivate() override;
  void OnResize() override;
  void OnUnload() override;

  // Has the display follow the captured text.
  virtual void ShowCaptureText();

 private:
  // Controls that are not widgets; they live as long as the window is loaded.
  struct Devices {
    std::unique_ptr<platform::SerialControl> commCapture;
    std::unique_ptr<platform::SerialControl> commBouncePort;
    std::unique_ptr<platform::StreamControl> axTidewire1;
    std::unique_ptr<StatusPort> winSockAudio;
    // Owned by the window's host.
    platform::ReentrantTimer* timerIndexLogs = nullptr;
    platform::ReentrantTimer* timerRecordMonitor = nullptr;
    platform::ReentrantTimer* tmrAudioLevel = nullptr;
  };

  // The controls of the strip that change: too often to look them up by name. Null while not loaded.
  struct Strip {
    QPointer<controls::FloodPanel> pnlVolume;
    QPointer<controls::Panel> pnlTimeIn, pnlTimeOut, pnlCartNo;
    QPointer<QPushButton> cmdRecord, cmdEject;
  };

  void MakeDevices(QWidget* client);
  void lblConfigFile_Change();
  void OpenPorts(const struct WireFeedRecord& feed);
  void commCapture_OnComm();
  void ReceiveText();
  void AppendCaptureText(std::string& data);
  void timerIndexLogs_Timer();

  AudioIntakeHost MakeAudioHost();
  void FindStrip();
  void ShowGate(bool open);
  void StartAudio(const struct WireFeedRecord& feed);
  bool StartNextRecording(struct WireFeedRecord& feed);
  void cmdRecord_Click();
  void tmrAudioLevel_Timer();
  void Act(LevelAction action, struct WireFeedRecord& feed);
  void timerRecordMonitor_Timer();

  Devices devices_;
  CaptureText captureText_;
  // The view that shows it, while the window is loaded. Arrivals come thousands of times a second: too often
  // to look it up by its name.
  QPointer<controls::TerminalView> capture_;
  StoryCapture stories_;
  DailyToolsState dailyTools_;
  Strip strip_;
  AudioIntake audio_;
  LevelMachine level_;
  TimeStamp lastDiskCheckStamp_;
};

}  // namespace vorda
