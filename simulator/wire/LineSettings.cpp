#include "wire/LineSettings.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <vector>

#include "wire/Numbers.h"

namespace vorda::simulator {
namespace {

constexpr std::array kStopBits = {std::string_view("1"), std::string_view("1.5"), std::string_view("2")};
constexpr std::array kStopBitCounts = {1.0, 1.5, 2.0};

}  // namespace

std::optional<LineSettings> ParseLineSettings(std::string_view text) {
  const std::vector<std::string_view> parts = SplitText(text, ',');
  if (parts.size() != 4 || parts[1].size() != 1) return std::nullopt;
  const std::optional<long> baud = ParseNumber(parts[0], 1, 4'000'000);
  const std::optional<long> dataBits = ParseNumber(parts[2], 5, 8);
  const char parity = static_cast<char>(std::toupper(static_cast<unsigned char>(parts[1][0])));
  const auto stopBits = std::find(kStopBits.begin(), kStopBits.end(), parts[3]);
  if (!baud || !dataBits || std::string_view("NEOMS").find(parity) == std::string_view::npos ||
      stopBits == kStopBits.end()) {
    return std::nullopt;
  }
  return LineSettings{.baud = static_cast<int>(*baud),
                      .parity = parity,
                      .dataBits = static_cast<int>(*dataBits),
                      .stopBits = kStopBitCounts[static_cast<size_t>(stopBits - kStopBits.begin())]};
}

double BytesPerSecond(const LineSettings& settings) {
  const double bits = 1.0 + settings.dataBits + (settings.parity == 'N' ? 0.0 : 1.0) + settings.stopBits;
  return settings.baud / bits;
}

}  // namespace vorda::simulator
