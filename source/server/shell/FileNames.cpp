// Names and tokens.

#include <algorithm>

#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

constexpr std::string_view kSeparators = "\\/";

bool IsAllowed(char c, std::int16_t kind) {
  const bool digit = c >= '0' && c <= '9';
  const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  switch (kind) {
    case 1:
      return digit;
    case 2:
      return digit || letter;
    case 3:
      return letter;
    case 4:
      return digit || letter || c == ' ';
    case 5:
      return digit || c == ' ';
    default:
      return true;
  }
}

}  // namespace

std::string QuotePath(std::string& path) {
  path = platform::Trim(path);
  const bool bare = path.find(' ') != std::string::npos && path.front() != '"';
  return bare ? '"' + path + '"' : path;
}

std::int16_t IsValidText(std::string_view text, std::int16_t kind) {
  return std::all_of(text.begin(), text.end(), [kind](char c) { return IsAllowed(c, kind); }) ? -1 : 0;
}

std::string FileNamePart(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

std::string DirectoryPart(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  return std::string(separator == std::string_view::npos ? std::string_view{} : path.substr(0, separator));
}

std::string FileBaseName(std::string_view path) {
  const std::string name = FileNamePart(path);
  return name.substr(0, name.rfind('.'));
}

std::string FileExtension(std::string_view path) {
  const std::string name = FileNamePart(path);
  const std::size_t point = name.rfind('.');
  return point == std::string::npos ? name : name.substr(point + 1);
}

std::string GetToken(std::string_view text, std::int32_t& position, char delimiter,
                     std::int32_t& endPosition) {
  position = std::max(position, 1);
  const std::size_t first = text.find_first_not_of(' ', static_cast<std::size_t>(position - 1));
  if (first == std::string_view::npos) return {};
  endPosition = 0;
  const std::size_t end = text.find(delimiter, first);
  if (end == std::string_view::npos) return platform::Trim(text.substr(first));
  endPosition = static_cast<std::int32_t>(end + 1);
  return platform::Trim(text.substr(first, end - first));
}

}  // namespace vorda
