#include "feed/DailyTools.h"

#include <cmath>

#include "platform/NativePath.h"
#include "platform/Settings.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {
constexpr std::int32_t kSecondsPerHour = 3600;
constexpr std::int32_t kExpiryBefore = 1500;
constexpr std::int32_t kIndexAfter = 1800;
}  // namespace

DailyToolsDue DueDailyTools(const DailyToolsState& state, const platform::Moment& now) {
  const auto wholeSeconds = static_cast<std::int32_t>(std::nearbyint(now.seconds));
  const std::int32_t pastTheHour = wholeSeconds % kSecondsPerHour;
  return {now.day != state.LastExpiryDay && pastTheHour < kExpiryBefore,
          now.day != state.LastIndexDay && pastTheHour > kIndexAfter};
}

void StartDailyTool(const std::string& name, const std::string& fullConfigFile) {
  platform::ProcessInformation information;
  RunProcess(platform::JoinPath(platform::ProgramDirectory(), name), platform::NativePath(fullConfigFile),
             kIdlePriorityClass, kWaitNone, kShowNoActivate, information);
}

}  // namespace vorda
