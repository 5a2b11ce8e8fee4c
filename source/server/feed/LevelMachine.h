// When a feed's recording begins and ends: a machine that is told the level and the time at each tick.

#pragma once

#include <cstdint>
#include <string>

#include "shell/TimeStamp.h"

namespace vorda {

// What the feed's configuration sets.
struct LevelRules {
  std::int16_t AudioActivationLevel = 0;  // 0 to 100; a level equal to it counts as below
  std::int32_t AudioStartDuration = 0;    // seconds above it that begin a recording
  std::int32_t AudioEndDuration = 0;      // seconds at or below it that end one
};

enum class LevelAction { None, StartRecording, EndRecording };

// A stamp with a day below 1 is unset.
struct LevelMachine {
  TimeStamp LevelAboveStamp;  // when the level went above the threshold
  TimeStamp LevelBelowStamp;  // when it went to the threshold or below

  // The first half of a tick: follows the level and says what is to be done.
  LevelAction Decide(float level, bool recording, const LevelRules& rules, const TimeStamp& now);
  // The second half, behind what was done: a stamp that has stood for five durations is taken afresh, so that
  // the counts on the screen don't climb for ever.
  void Rearm(float level, const LevelRules& rules, const TimeStamp& now);
};

bool IsSet(const TimeStamp& stamp);
void Unset(TimeStamp& stamp);

// The gauge for a level, 0 to 100 per cent: logarithmic, 1 gives 0, 10 gives 50, 100 gives 100.
double GaugePercent(float level);

// What the panels show: seconds with one place behind the point, "" where there is nothing to count. The low
// count begins behind half a second.
std::string TimeInText(const LevelMachine& machine, const TimeStamp& now);
std::string TimeOutText(const LevelMachine& machine, const TimeStamp& now);

}  // namespace vorda
