#include "tools/Profile.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>

namespace vorda::tools {
namespace {

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return lower;
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string Place(std::string_view section, std::string_view key) {
  return LowerCase(section) + "\n" + LowerCase(key);
}

}  // namespace

Profile::Profile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string section;
  for (std::string text; std::getline(file, text);) {
    const std::string_view line = Trimmed(text);
    const size_t equals = line.find('=');
    if (line.starts_with(';')) continue;
    if (line.starts_with('[')) {
      section = Trimmed(line.substr(1, line.find(']') - 1));
    } else if (equals != std::string_view::npos) {
      values_.emplace(Place(section, Trimmed(line.substr(0, equals))), Trimmed(line.substr(equals + 1)));
    }
  }
}

std::optional<std::string> Profile::Text(std::string_view section, std::string_view key) const {
  const auto found = values_.find(Place(section, key));
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

long Profile::Number(std::string_view section, std::string_view key, long otherwise) const {
  const std::optional<std::string> text = Text(section, key);
  if (!text) return otherwise;
  char* end = nullptr;
  const long number = std::strtol(text->c_str(), &end, 10);
  return end == text->c_str() ? otherwise : number;
}

}  // namespace vorda::tools
