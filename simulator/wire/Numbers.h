// Numbers and lists as they stand on a command line.

#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <vector>

namespace vorda::simulator {

// The whole text as a decimal number from `least` to `most`; nothing when it isn't one.
inline std::optional<long> ParseNumber(std::string_view text, long least, long most) {
  long value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < least || value > most)
    return std::nullopt;
  return value;
}

// The pieces of `text` between separators; always at least one.
inline std::vector<std::string_view> SplitText(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  size_t from = 0;
  for (size_t at = text.find(separator); at != std::string_view::npos; at = text.find(separator, from)) {
    pieces.push_back(text.substr(from, at - from));
    from = at + 1;
  }
  pieces.push_back(text.substr(from));
  return pieces;
}

}  // namespace vorda::simulator
