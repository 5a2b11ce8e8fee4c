#include "platform/ProfileText.h"

#include <algorithm>

#include "platform/Text.h"

namespace vorda::platform {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLineEnd = "\r\n";

// Without blanks, tabs and the CR of a line's end, at both ends.
std::string_view Stripped(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return text.substr(text.size());
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view Unquoted(std::string_view value) {
  if (value.size() < 2 || value.front() != value.back()) return value;
  if (value.front() != '"' && value.front() != '\'') return value;
  return value.substr(1, value.size() - 2);
}

// The name in "[name]", whatever stands behind it; nothing when the line is none of these.
std::optional<std::string_view> SectionName(std::string_view line) {
  if (!line.starts_with('[')) return std::nullopt;
  const std::size_t end = line.find(']');
  if (end == std::string_view::npos) return std::nullopt;
  return Stripped(line.substr(1, end - 1));
}

bool CanHold(std::string_view section, std::string_view key) {
  if (key.empty() || key.front() == ';' || key.front() == '[') return false;
  return key.find_first_of("=\n") == std::string_view::npos &&
         section.find_first_of("]\n") == std::string_view::npos;
}

}  // namespace

ProfileText::ProfileText(std::string bytes) : bytes_(std::move(bytes)) {
  Section* section = nullptr;
  std::size_t begin = bytes_.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0;
  while (begin < bytes_.size()) {
    const std::size_t feed = std::min(bytes_.find('\n', begin), bytes_.size());
    const std::size_t behindFeed = std::min(feed + 1, bytes_.size());
    const std::size_t end = feed > begin && bytes_[feed - 1] == '\r' ? feed - 1 : feed;
    section = ReadLine({begin, end}, behindFeed, section);
    begin = behindFeed;
  }
}

// Takes a line into the section that it stands in. Result: the section that the next line stands in; null
// before the first and in a repeated one.
ProfileText::Section* ProfileText::ReadLine(Range line, std::size_t lineEnd, Section* section) {
  const std::string_view text = Stripped(At(line));
  if (const std::optional<std::string_view> name = SectionName(text)) {
    const auto [place, isNew] = sections_.try_emplace(UpperCase(*name));
    section = isNew ? &place->second : nullptr;
  }
  if (section == nullptr || text.empty()) return section;
  section->end = lineEnd;
  const std::size_t inLine = At(line).find('=');
  if (inLine == std::string_view::npos || text.front() == ';' || SectionName(text)) return section;
  const std::size_t equals = line.begin + inLine;
  const std::string_view name = Stripped(At({line.begin, equals}));
  if (name.empty()) return section;
  if (!section->index.try_emplace(UpperCase(name), section->keys.size()).second) return section;
  const std::size_t nameBegin = static_cast<std::size_t>(name.data() - bytes_.data());
  section->keys.push_back({{nameBegin, nameBegin + name.size()}, {equals + 1, line.end}});
  return section;
}

const ProfileText::Section* ProfileText::FindSection(std::string_view name) const {
  const auto found = sections_.find(UpperCase(Stripped(name)));
  return found == sections_.end() ? nullptr : &found->second;
}

std::optional<std::string_view> ProfileText::Value(std::string_view section, std::string_view key) const {
  const Section* found = FindSection(section);
  if (found == nullptr) return std::nullopt;
  const auto place = found->index.find(UpperCase(Stripped(key)));
  if (place == found->index.end()) return std::nullopt;
  return Unquoted(Stripped(At(found->keys[place->second].value)));
}

std::vector<std::pair<std::string, std::string>> ProfileText::Keys(std::string_view section) const {
  std::vector<std::pair<std::string, std::string>> keys;
  if (const Section* found = FindSection(section)) {
    for (const Key& key : found->keys) keys.emplace_back(At(key.name), Unquoted(Stripped(At(key.value))));
  }
  return keys;
}

std::optional<std::string> ProfileText::WithValue(std::string_view section, std::string_view key,
                                                  std::string_view value) const {
  section = Stripped(section);
  key = Stripped(key);
  if (!CanHold(section, key)) return std::nullopt;
  // What stood behind a line feed would become lines, and keys, of its own, and a CR at the end a part of the
  // line's ending.
  value = value.substr(0, value.find('\n'));
  value = value.substr(0, value.find_last_not_of('\r') + 1);
  const Section* found = FindSection(section);
  const std::string line = std::string(key).append("=").append(value).append(kLineEnd);
  if (found == nullptr)
    return Inserted(bytes_.size(), std::string("[").append(section).append("]").append(kLineEnd) + line);
  const auto place = found->index.find(UpperCase(key));
  if (place == found->index.end()) return Inserted(found->end, line);
  const Range old = found->keys[place->second].value;
  return std::string(bytes_).replace(old.begin, old.end - old.begin, value);
}

// With the lines put in at `position`, which is the end of a line or of the text.
std::string ProfileText::Inserted(std::size_t position, const std::string& lines) const {
  const bool startsLine = position == 0 || bytes_[position - 1] == '\n' || bytes_ == kUtf8Mark;
  return std::string(bytes_).insert(position, startsLine ? lines : std::string(kLineEnd) + lines);
}

}  // namespace vorda::platform
