#include "feed/LevelMachine.h"

#include <array>
#include <charconv>
#include <cmath>

#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

constexpr double kRearmTimes = 5;
constexpr double kShownFrom = 0.5;  // seconds

bool IsAbove(float level, const LevelRules& rules) {
  return level > static_cast<float>(rules.AudioActivationLevel);
}

// With a point, whatever the locale of the desktop.
std::string OneDecimal(double seconds) {
  std::array<char, 40> text;
  return {text.data(), std::to_chars(text.begin(), text.end(), seconds, std::chars_format::fixed, 1).ptr};
}

}  // namespace

bool IsSet(const TimeStamp& stamp) {
  return stamp.Day >= 1;
}

void Unset(TimeStamp& stamp) {
  stamp.Day = 0;
}

LevelAction LevelMachine::Decide(float level, bool recording, const LevelRules& rules, const TimeStamp& now) {
  if (IsAbove(level, rules)) {
    Unset(LevelBelowStamp);
    if (!IsSet(LevelAboveStamp)) {
      LevelAboveStamp = now;
    } else if (!recording && SecondsBetween(LevelAboveStamp, now) >= rules.AudioStartDuration) {
      return LevelAction::StartRecording;
    }
    return LevelAction::None;
  }
  if (!IsSet(LevelBelowStamp)) {
    LevelBelowStamp = now;
  } else if (recording) {
    if (SecondsBetween(LevelBelowStamp, now) >= rules.AudioEndDuration) return LevelAction::EndRecording;
  } else if (IsSet(LevelAboveStamp) && SecondsBetween(LevelBelowStamp, now) > rules.AudioStartDuration) {
    // A shorter dip doesn't break the run up to a start.
    Unset(LevelAboveStamp);
  }
  return LevelAction::None;
}

void LevelMachine::Rearm(float level, const LevelRules& rules, const TimeStamp& now) {
  const bool above = IsAbove(level, rules);
  TimeStamp& stamp = above ? LevelAboveStamp : LevelBelowStamp;
  const double duration = above ? rules.AudioStartDuration : rules.AudioEndDuration;
  if (SecondsBetween(stamp, now) > kRearmTimes * duration) Unset(stamp);
}

double GaugePercent(float level) {
  const auto gauge =
      level > 0 ? static_cast<float>(std::log(static_cast<double>(level)) / std::log(100.0)) : level;
  return gauge > 0 ? 100.0 * static_cast<double>(gauge) : 0.0;
}

std::string TimeInText(const LevelMachine& machine, const TimeStamp& now) {
  return IsSet(machine.LevelAboveStamp) ? OneDecimal(SecondsBetween(machine.LevelAboveStamp, now)) : "";
}

std::string TimeOutText(const LevelMachine& machine, const TimeStamp& now) {
  if (!IsSet(machine.LevelBelowStamp)) return {};
  const double seconds = SecondsBetween(machine.LevelBelowStamp, now);
  return seconds <= kShownFrom ? std::string() : OneDecimal(seconds);
}

}  // namespace vorda
