#include "config/ServerConfig.h"

#include <string>

#include "controls/Panels.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/ProfileFile.h"
#include "platform/Text.h"
#include "shell/FramePlacing.h"
#include "shell/GeneralFunctions.h"
#include "shell/ServerState.h"

namespace vorda {

// Never destroyed: where the toolkit ends the program by itself (a lost display), it is gone before them.
std::array<std::unique_ptr<frmWireFeed>, kFeedCount>& gFeedForms =
    *new std::array<std::unique_ptr<frmWireFeed>, kFeedCount>;
std::int16_t gFeedFormCount = 0;

namespace {

// The first run: nobody has told where feed 1's news directory lies.
void AskForNewsDirectory(const std::string& section, WireFeedRecord& feed) {
  const std::string directory =
      platform::Trim(BrowseForFolder(nullptr, "Select Primary News Feed Directory"));
  if (directory.empty()) return;
  feed.NewsPath = directory;
  platform::WriteProfileString(section, "NewsPath", directory, gIniFileName);
  platform::ShowMessageBox("You should now choose Setup Feed 1 from the Settings menu",
                           platform::BoxIcon::Information);
}

void ReadPorts(const std::string& section, WireFeedRecord& feed) {
  struct PortKey {
    const char* name;
    std::int16_t WireFeedRecord::*member;
  };
  constexpr PortKey kPortKeys[] = {{"SoundCard", &WireFeedRecord::SoundCard},
                                   {"CapturePort", &WireFeedRecord::CapturePort},
                                   {"BouncePort", &WireFeedRecord::BouncePort},
                                   {"NoIndexProcessing", &WireFeedRecord::NoIndexProcessing}};
  for (const PortKey& key : kPortKeys)
    feed.*key.member = platform::ReadProfileShort(section, key.name, 0, gIniFileName);
}

// The label's change starts the feed; the form has no other way of learning its file, so the Tag comes first.
// Where the start unloads the form, showing it makes a blank window, which takes its place in the row like
// any other.
void StartFeed(std::int16_t number, const WireFeedRecord& feed) {
  frmWireFeed& form = FeedForm(number);
  form.SetTag(std::to_string(number));
  form.lblConfigFile()->SetCaption(feed.FullConfigFile);
  form.Show();
  form.SetLeft(FeedLeft(form.Width(), gFeedFormCount));
  ++gFeedFormCount;
}

}  // namespace

frmWireFeed& FeedForm(std::int16_t number) {
  auto& slot = gFeedForms[static_cast<std::size_t>(number - 1)];
  if (!slot) slot = std::make_unique<frmWireFeed>();
  return *slot;
}

std::int32_t ReadServerConfig() {
  if (!ResolveIniFileName()) return -1;
  gFeedFormCount = 0;
  for (std::int16_t n = 1; n <= kFeedCount; ++n) {
    const std::string section = "WireFeed" + std::to_string(n);
    WireFeedRecord& feed = gWireFeeds[static_cast<std::size_t>(n - 1)];
    feed.NewsPath = platform::ReadProfileString(section, "NewsPath", "", gIniFileName);
    feed.ConfigFile = platform::ReadProfileString(section, "ConfigFile", "vorda.ini", gIniFileName);
    if (feed.NewsPath.empty() && n == 1) AskForNewsDirectory(section, feed);
    feed.FullConfigFile = platform::JoinPath(feed.NewsPath, feed.ConfigFile);
    if (feed.NewsPath.empty()) continue;
    ReadPorts(section, feed);
    StartFeed(n, feed);
  }
  return gWireFeeds[0].NewsPath.empty() ? -1 : 0;
}

}  // namespace vorda
