#include "platform/Clock.h"

#include <QDate>
#include <QLocale>
#include <QString>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <utility>

#include "platform/Settings.h"
#include "platform/Text.h"

namespace vorda::platform {
namespace {

constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / std::chrono::December / 30;
const QDate kDateZero(1899, 12, 30);
constexpr double kSecondsPerDay = 86400.0;

Moment SystemMoment() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  std::tm local{};
  ::localtime_r(&now.tv_sec, &local);
  Moment moment;
  moment.day = DayNumber(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  const int wholeSeconds = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
  // A time zone with leap seconds knows 23:59:60, which would be a second of no day.
  moment.seconds = std::min(static_cast<double>(wholeSeconds), kSecondsPerDay - 1.0) +
                   static_cast<double>(now.tv_nsec) / 1e9;
  return moment;
}

std::function<Moment()>& Clock() {
  static std::function<Moment()> clock = SystemMoment;
  return clock;
}

// The format with years of two digits made four, outside quoted words.
QString WithFourDigitYear(const QString& format) {
  QString result;
  bool quoted = false;
  for (qsizetype i = 0; i < format.size(); ++i) {
    if (format[i] == u'\'') quoted = !quoted;
    if (quoted || format[i] != u'y') {
      result += format[i];
      continue;
    }
    while (i + 1 < format.size() && format[i + 1] == u'y') ++i;
    result += QStringLiteral("yyyy");
  }
  return result;
}

// In the locale's short form; "" when there is no such locale, or when its form needs characters that no
// terminal of the code page shows (other digits, marks of direction).
std::string LocaleShortDate(const QDate& date) {
  const QLocale locale = QLocale::system();
  const QString format = locale.dateFormat(QLocale::ShortFormat);
  if (format == QLocale::c().dateFormat(QLocale::ShortFormat)) return {};
  const QByteArray utf8 = locale.toString(date, WithFourDigitYear(format)).toUtf8();
  std::string ansi;
  if (!FromUtf8(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())), ansi)) return {};
  return ansi;
}

}  // namespace

Moment ReadClock() {
  return Clock()();
}

std::int32_t DayNumber(int year, int month, int day) {
  const std::chrono::year_month_day date{std::chrono::year{year},
                                         std::chrono::month{static_cast<unsigned>(month)},
                                         std::chrono::day{static_cast<unsigned>(day)}};
  return static_cast<std::int32_t>((std::chrono::sys_days{date} - kDayZero).count());
}

std::string FormatShortDate(std::int32_t day) {
  const QDate date = kDateZero.addDays(day);
  const std::string& format = PlatformSettings().shortDate;
  if (!format.empty()) return FromUnicode(QLocale::system().toString(date, ToUnicode(format)));
  const std::string text = LocaleShortDate(date);
  return text.empty() ? FromUnicode(date.toString(Qt::ISODate)) : text;
}

std::string FormatDateTimeStamp(const Moment& moment) {
  const int seconds = static_cast<int>(moment.seconds);
  char time[32];
  std::snprintf(time, sizeof time, " %02d:%02d:%02d ", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return FormatShortDate(moment.day) + time;
}

ScopedClock::ScopedClock(std::function<Moment()> clock)
    : previous_(std::exchange(Clock(), std::move(clock))) {}

ScopedClock::ScopedClock(const Moment& fixed) : ScopedClock([fixed] { return fixed; }) {}

ScopedClock::~ScopedClock() {
  Clock() = std::move(previous_);
}

}  // namespace vorda::platform
