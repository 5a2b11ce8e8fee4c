#include "platform/NameIndex.h"

#include <algorithm>

#include "platform/Text.h"

namespace vorda::platform {
namespace {

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// FNV-1a over the capitals ahead of the first point.
std::uint32_t GroupOf(std::string_view ansi) {
  std::uint32_t hash = 2166136261u;
  for (const char c : ansi) {
    if (c == '.') break;
    hash = (hash ^ static_cast<unsigned char>(UpperCase(c))) * 16777619u;
  }
  return hash;
}

std::uint32_t GroupOfDiskName(std::string_view name) {
  return IsAscii(name) ? GroupOf(name) : GroupOf(NameFromDisk(name));
}

bool BeginsWithStem(std::string_view ansi, std::string_view stem) {
  return ansi.size() > stem.size() && ansi[stem.size()] == '.' && SameText(ansi.substr(0, stem.size()), stem);
}

}  // namespace

std::string NameFromDisk(std::string_view nameOnDisk) {
  std::string ansi;
  if (!IsAscii(nameOnDisk) && FromUtf8(nameOnDisk, ansi)) return ansi;
  return std::string(nameOnDisk);
}

NameIndex::Names::const_iterator NameIndex::Find(std::string_view nameOnDisk) const {
  const auto [begin, end] = names_.equal_range(GroupOfDiskName(nameOnDisk));
  const auto found = std::find_if(begin, end, [&](const auto& entry) { return entry.second == nameOnDisk; });
  return found == end ? names_.end() : found;
}

void NameIndex::AddNew(std::string_view nameOnDisk) {
  names_.emplace(GroupOfDiskName(nameOnDisk), nameOnDisk);
}

void NameIndex::Add(std::string_view nameOnDisk) {
  if (Find(nameOnDisk) == names_.end()) AddNew(nameOnDisk);
}

void NameIndex::Remove(std::string_view nameOnDisk) {
  if (const auto found = Find(nameOnDisk); found != names_.end()) names_.erase(found);
}

std::string NameIndex::Match(std::string_view name) const {
  std::string first;
  const auto [begin, end] = names_.equal_range(GroupOf(name));
  for (auto entry = begin; entry != end; ++entry) {
    const bool earlier = first.empty() || entry->second < first;
    if (earlier && SameText(NameFromDisk(entry->second), name)) first = entry->second;
  }
  return first;
}

std::vector<std::string> NameIndex::WithStem(std::string_view stem) const {
  std::vector<std::string> names;
  const auto [begin, end] = names_.equal_range(GroupOf(stem));
  for (auto entry = begin; entry != end; ++entry) {
    if (BeginsWithStem(NameFromDisk(entry->second), stem)) names.push_back(entry->second);
  }
  return names;
}

}  // namespace vorda::platform
