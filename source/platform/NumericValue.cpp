#include "platform/NumericValue.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <system_error>

namespace vorda::platform {
namespace {

// Reads the parts of a number one behind the other.
class NumberReader {
 public:
  explicit NumberReader(std::string_view text) : rest_(text) {}

  void SkipBlanks() {
    const std::size_t first = rest_.find_first_not_of(" \t\n");
    rest_.remove_prefix(first == std::string_view::npos ? rest_.size() : first);
  }
  // The sign that stands here, taken off; a missing one is plus.
  bool TakeMinus() {
    const bool minus = rest_.starts_with('-');
    if (minus || rest_.starts_with('+')) rest_.remove_prefix(1);
    return minus;
  }
  std::string_view TakeDigits() {
    const std::size_t end = rest_.find_first_not_of("0123456789");
    const std::string_view digits = rest_.substr(0, end);
    rest_.remove_prefix(digits.size());
    return digits;
  }
  bool TakeEither(char a, char b) {
    if (!rest_.starts_with(a) && !rest_.starts_with(b)) return false;
    rest_.remove_prefix(1);
    return true;
  }

 private:
  std::string_view rest_;
};

// A number too large to tell is cut here: it is far past what a double can hold at either end.
constexpr int kLargestExponent = 1'000'000;

int ExponentValue(std::string_view digits) {
  int value = 0;
  for (const char digit : digits) value = value >= kLargestExponent ? value : value * 10 + (digit - '0');
  return value;
}

// True when the digits with the point behind the whole ones, times ten to the exponent, are 1 or more.
bool IsLarge(std::string_view whole, std::string_view fraction, int exponent) {
  const std::size_t firstWhole = whole.find_first_not_of('0');
  if (firstWhole != std::string_view::npos) {
    return static_cast<std::ptrdiff_t>(whole.size() - firstWhole) + exponent > 0;
  }
  const std::size_t firstFraction = fraction.find_first_not_of('0');
  return firstFraction != std::string_view::npos && exponent - static_cast<std::ptrdiff_t>(firstFraction) > 0;
}

double Magnitude(std::string_view whole, std::string_view fraction, int exponent) {
  std::string number(whole);
  number.append(".").append(fraction).append("e").append(std::to_string(exponent));
  double value = 0.0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc::result_out_of_range) return value;
  return IsLarge(whole, fraction, exponent) ? std::numeric_limits<double>::infinity() : 0.0;
}

}  // namespace

double NumericValue(std::string_view text) {
  NumberReader reader(text);
  reader.SkipBlanks();
  const bool minus = reader.TakeMinus();
  reader.SkipBlanks();
  const std::string_view whole = reader.TakeDigits();
  const std::string_view fraction = reader.TakeEither('.', '.') ? reader.TakeDigits() : std::string_view();
  if (whole.empty() && fraction.empty()) return 0.0;
  int exponent = 0;
  if (reader.TakeEither('e', 'E')) {
    const bool down = reader.TakeMinus();
    exponent = ExponentValue(reader.TakeDigits());
    if (down) exponent = -exponent;
  }
  const double value = Magnitude(whole, fraction, exponent);
  return minus && value > 0.0 ? -value : value;
}

std::optional<std::int32_t> NumericInteger(std::string_view text) {
  const double rounded = std::nearbyint(NumericValue(text));
  if (!(rounded >= std::numeric_limits<std::int32_t>::min() &&
        rounded <= std::numeric_limits<std::int32_t>::max())) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(rounded);
}

std::optional<std::int32_t> LeadingInteger(std::string_view text) {
  const bool minus = text.starts_with('-');
  if (minus) text.remove_prefix(1);
  const std::size_t end = text.find_first_not_of("0123456789");
  const std::string_view digits = text.substr(0, end);
  if (digits.empty()) return std::nullopt;
  std::uint32_t value = 0;
  for (const char digit : digits) value = value * 10U + static_cast<std::uint32_t>(digit - '0');
  return static_cast<std::int32_t>(minus ? 0U - value : value);
}

}  // namespace vorda::platform
