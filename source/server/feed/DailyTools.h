// When the two daily tools run: story expiry and story index, once a day each for every feed.

#pragma once

#include <cstdint>
#include <string>

#include "platform/Clock.h"

namespace vorda {

// The day of the last run of each, 0 = not since the program's start. Never saved: each start counts as a new
// day.
struct DailyToolsState {
  std::int32_t LastExpiryDay = 0;
  std::int32_t LastIndexDay = 0;
};

struct DailyToolsDue {
  bool expiry = false;
  bool index = false;
};

// Which tools a tick at `now` starts. Expiry runs in the first 25 minutes of any hour, the index in the
// second half of one, so that the two never start together; 1500 and 1800 seconds past the hour are
// neither's.
DailyToolsDue DueDailyTools(const DailyToolsState& state, const platform::Moment& now);

// Starts a daily tool ("ItemDrop.exe", "ItemRoll.exe") at the lowest priority on a feed's configuration file,
// and forgets it.
void StartDailyTool(const std::string& name, const std::string& fullConfigFile);

}  // namespace vorda
