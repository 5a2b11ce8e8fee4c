// Feed windows in a frame of their own, with serial ports, processes and boxes that a test decides.

#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "config/ServerConfig.h"
#include "controls/Panels.h"
#include "platform/Desktop.h"
#include "platform/Files.h"
#include "platform/ReentrantTimer.h"
#include "platform/Settings.h"
#include "shell/EventHistory.h"
#include "shell/ServerState.h"
#include "support/EventLoop.h"
#include "support/FakeDesktop.h"
#include "support/FakeSerialControl.h"
#include "support/FakeStream.h"
#include "support/FormFrame.h"
#include "support/Loopback.h"
#include "support/TempDirectory.h"

namespace vorda::test {

inline platform::Settings TestSettings() {
  platform::Settings settings;
  settings.serialPorts = {"", "", "", ""};
  settings.statusPortAddress = OwnLoopbackAddress();
  settings.shortDate = "dd/MM/yyyy";
  settings.programDirectory = "/tools";
  return settings;
}

class FeedWindows : public ::testing::Test {
 protected:
  FeedWindows() {
    gWireFeeds = {};
    gActiveFeed = gServerCartStart = gServerCartEnd = 0;
    gFeedFormCount = 0;
    gHistoryCount = 0;
    gHistoryLines = {};
  }
  ~FeedWindows() override {
    for (auto& form : gFeedForms) form.reset();
    platform::CloseAllFiles();
  }

  // A feed configuration file; `text` besides the feed's name.
  std::string WriteConfig(int number, const std::string& text = {}) {
    std::string path = directory / ("feed" + std::to_string(number) + ".ini");
    WriteWholeFile(path, "[General]\r\nName=Wire " + std::to_string(number) + "\r\n" + text);
    return path;
  }
  // The three steps by which a channel is made.
  frmWireFeed& Start(int number, const std::string& path) {
    frmWireFeed& form = FeedForm(static_cast<std::int16_t>(number));
    form.SetTag(std::to_string(number));
    form.lblConfigFile()->SetCaption(path);
    form.Show();
    return form;
  }
  frmWireFeed& Start(int number) { return Start(number, WriteConfig(number)); }

  static WireFeedRecord& Record(int number) { return gWireFeeds[static_cast<std::size_t>(number - 1)]; }

  static platform::ReentrantTimer* Timer(frmWireFeed& form, const char* name) {
    QWidget* client = form.lblConfigFile()->parentWidget();
    return dynamic_cast<platform::ReentrantTimer*>(client->findChild<QObject*>(QString::fromLatin1(name)));
  }
  // The loaded serial control that has that threshold, of those made from `first` on: the capture port's
  // control has 1, that of the bounce port 0.
  FakeSerialControl* Port(std::int16_t threshold, std::size_t first = 0) {
    for (std::size_t i = first; i < ports->size(); ++i) {
      FakeSerialControl* control = (*ports)[i];
      if (control != nullptr && control->threshold() == threshold) return control;
    }
    return nullptr;
  }

  TempDirectory directory;
  platform::ScopedSettings settings{TestSettings()};
  FakeBoxes boxes;
  FakeProcesses processes;
  std::optional<FakeSerialControls> ports{std::in_place};
  FakeStreams streams;
  FormFrame frame;
};

}  // namespace vorda::test
