#include "shell/TimeText.h"

#include <cmath>
#include <cstdio>

namespace vorda {

namespace {

constexpr double kLongest = 86400.0;
constexpr std::int32_t kAllBlank = 100;
constexpr std::int32_t kBlanksLeftOut = 200;

struct TimeFields {
  std::string hours = "--";
  std::string minutes = "--";
  std::string seconds = "--";
  std::string hundredths = "--";
};

double WholeSeconds(double seconds, std::int32_t tens) {
  switch (tens) {
    case 0:
      return std::nearbyint(seconds);
    case 2:
      return std::ceil(seconds);
    default:
      return seconds;
  }
}

std::string TwoDigits(std::int64_t number) {
  char text[24];
  std::snprintf(text, sizeof text, "%02lld", static_cast<long long>(number));
  return text;
}

std::string PaddedToTwo(const std::string& text) {
  return text.size() >= 2 ? text : std::string(2 - text.size(), ' ') + text;
}

TimeFields FieldsOf(double seconds, std::int32_t style) {
  const bool blanks = style / 100 >= 1;
  const auto whole = static_cast<std::int64_t>(seconds);
  const std::int64_t hours = whole / 3600 % 3600;
  TimeFields fields{TwoDigits(hours), TwoDigits(whole / 60 % 60), TwoDigits(whole % 60),
                    TwoDigits(static_cast<std::int64_t>(seconds * 100) % 100)};
  if (!blanks) return fields;
  fields.hours = hours == 0 ? "" : std::to_string(hours);
  if (seconds < 3600 || style == kAllBlank) fields.minutes.clear();
  if (seconds < 60 || style == kAllBlank) fields.seconds.clear();
  if (seconds < 1 || style == kAllBlank) fields.hundredths.clear();
  if (style == kAllBlank) fields.hours.clear();
  return {PaddedToTwo(fields.hours), PaddedToTwo(fields.minutes), PaddedToTwo(fields.seconds),
          PaddedToTwo(fields.hundredths)};
}

}  // namespace

std::string FormatSeconds(double seconds, std::int32_t style) {
  const std::int32_t units = style % 10;
  TimeFields fields;
  if (seconds >= 0 && seconds <= kLongest) {
    fields = FieldsOf(units >= 2 ? WholeSeconds(seconds, style / 10 % 10) : seconds, style);
  }
  const bool keepBlanks = style < kBlanksLeftOut;
  std::string text;
  if ((units == 1 || units == 2) && (keepBlanks || fields.hours != "  ")) text += fields.hours + ":";
  text += fields.minutes;
  if (keepBlanks || fields.seconds != "  ") text += ":" + fields.seconds;
  if (units < 2) text += "." + fields.hundredths;
  return text;
}

}  // namespace vorda
