// What the server does with arrivals, without any window: the baseline for the cost of the display.
//
//     BareReader reads|stories CONFIGURATION...
//
// `reads` opens a port for each configuration and reads it; `stories` also filters, cuts, writes the stories
// and starts the story tool. Says "ready" once the ports are open. Runs until it is ended.

#include <QCoreApplication>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "config/Vorda_Common_API.h"
#include "feed/CaptureText.h"
#include "feed/StoryCapture.h"
#include "platform/SerialControl.h"
#include "platform/Settings.h"

namespace {

class Feed {
 public:
  Feed(std::int16_t number, bool makesStories)
      : makesStories_(makesStories),
        port_(vorda::platform::MakeSerialControl()),
        stories_([tag = std::to_string(number)] { return tag; }, [](std::string_view) {}) {
    port_->SetCommPort(number);
    port_->SetSettings(vorda::gWireFeeds[static_cast<std::size_t>(number - 1)].Settings);
    port_->SetRThreshold(1);
    port_->OnComm = [this] { Receive(); };
  }

  bool Open() { return port_->SetPortOpen(true) == 0; }

 private:
  void Receive() {
    if (port_->CommEvent() != vorda::platform::comEvReceive) return;
    std::string data = port_->Input();
    if (!makesStories_) return;
    text_.Append(data);
    stories_.Take(data);
  }

  const bool makesStories_;
  std::unique_ptr<vorda::platform::SerialControl> port_;
  vorda::CaptureText text_;
  vorda::StoryCapture stories_;
};

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  if (argc < 3) return 2;
  vorda::platform::LoadPlatformSettings();
  std::vector<std::unique_ptr<Feed>> feeds;
  for (int i = 2; i < argc; ++i) {
    const auto number = static_cast<std::int16_t>(i - 1);
    if (vorda::ReadFeedConfig(number, argv[i], false).empty()) return 1;
    feeds.push_back(std::make_unique<Feed>(number, std::string_view(argv[1]) == "stories"));
    if (!feeds.back()->Open()) return 1;
  }
  std::puts("ready");
  std::fflush(stdout);
  return QCoreApplication::exec();
}
