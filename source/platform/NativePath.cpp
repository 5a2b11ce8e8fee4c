#include "platform/NativePath.h"

#include <QUtf8StringView>

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "platform/DirectoryNames.h"
#include "platform/FileFault.h"
#include "platform/Settings.h"
#include "platform/Text.h"

namespace vorda::platform {
namespace {

std::string CurrentDirectory() {
  std::error_code ignored;
  return std::filesystem::current_path(ignored).string();
}

// Taken before main: the program may change its working directory later.
const std::string startDirectory = CurrentDirectory();

bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

bool IsDriveText(std::string_view text) {
  if (text.size() < 2 || text[1] != ':') return false;
  const char letter = UpperCase(text[0]);
  return letter >= 'A' && letter <= 'Z';
}

bool IsShareText(std::string_view text) {
  return text.starts_with("\\\\");
}

struct MappedText {
  std::string root;       // where the text hangs: a directory, "" for the file system's root
  std::string_view rest;  // what stands behind it
};

std::optional<MappedText> MapDrive(std::string_view text) {
  const auto& drives = PlatformSettings().drives;
  const auto drive = drives.find(UpperCase(text[0]));
  if (drive == drives.end()) return std::nullopt;
  return MappedText{drive->second, text.substr(2)};
}

std::optional<MappedText> MapShare(std::string_view text) {
  const auto separatorFrom = [text](std::size_t from) {
    return static_cast<std::size_t>(
        std::find_if(text.begin() + std::min(from, text.size()), text.end(), IsSeparator) - text.begin());
  };
  const std::size_t serverEnd = separatorFrom(2);
  const std::size_t shareEnd = separatorFrom(serverEnd + 1);
  if (serverEnd + 1 >= shareEnd) return std::nullopt;
  std::string name = UpperCase(text.substr(0, shareEnd));
  name[serverEnd] = '\\';
  const auto& shares = PlatformSettings().shares;
  const auto share = shares.find(name);
  if (share == shares.end()) return std::nullopt;
  return MappedText{share->second, text.substr(shareEnd)};
}

std::optional<MappedText> MapText(std::string_view text) {
  // A NUL would cut the path short on its way to the system, and another file would be opened.
  if (text.empty() || text.find('\0') != std::string_view::npos) return std::nullopt;
  if (IsDriveText(text)) return MapDrive(text);
  if (IsShareText(text)) return MapShare(text);
  if (text.front() == '\\') return std::nullopt;
  return MappedText{text.front() == '/' ? std::string() : startDirectory, text};
}

void AppendComponents(std::string_view text, std::vector<std::string>& components) {
  while (!text.empty()) {
    const auto end = std::find_if(text.begin(), text.end(), IsSeparator);
    const std::size_t length = static_cast<std::size_t>(end - text.begin());
    if (length > 0) components.emplace_back(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
}

// The components from the file system's root on; nothing for a text that has no path.
std::optional<std::vector<std::string>> ComponentsOf(std::string_view configured) {
  const std::optional<MappedText> mapped = MapText(configured);
  if (!mapped) return std::nullopt;
  std::vector<std::string> components;
  if (!mapped->root.empty() && !IsSeparator(mapped->root.front()))
    AppendComponents(startDirectory, components);
  AppendComponents(mapped->root, components);
  AppendComponents(mapped->rest, components);
  return components;
}

// The path of the first `count` components, taken as they stand.
std::string Joined(const std::vector<std::string>& components, std::size_t count) {
  std::string path;
  for (std::size_t i = 0; i < count; ++i) path.append("/").append(components[i]);
  return path.empty() ? "/" : path;
}

std::string Below(const std::string& directory, const std::string& name) {
  return directory == "/" ? directory + name : directory + "/" + name;
}

bool Exists(const std::string& path) {
  if (FileFault(FileOperation::Stat, path) != 0) return false;
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The entry of the directory that a component means, known not to be there as its bytes; "" when there is
// none.
std::string EntryFor(const std::string& directory, const std::string& component) {
  if (!IsAscii(component)) {
    std::string path = Below(directory, ToUtf8(component));
    if (Exists(path)) return path;
  }
  const std::string name = MatchDirectoryName(directory, component);
  return name.empty() ? std::string() : Below(directory, name);
}

// A component that is to be made. Bytes that are UTF-8 already come from the file system or from an editor of
// today.
std::string NameToMake(const std::string& component) {
  const QUtf8StringView text(component.data(), static_cast<qsizetype>(component.size()));
  return text.isValidUtf8() ? component : ToUtf8(component);
}

std::string Resolve(const std::vector<std::string>& components) {
  // The whole path is asked for first, then shorter ones: mostly it is all there, or all but the name.
  std::size_t known = components.size();
  while (known > 0 && !Exists(Joined(components, known))) --known;
  std::string path = Joined(components, known);
  bool there = true;
  for (std::size_t i = known; i < components.size(); ++i) {
    // Only the first is known to be missing as its bytes.
    std::string next = there && i > known ? Below(path, components[i]) : std::string();
    if (there && (next.empty() || !Exists(next))) next = EntryFor(path, components[i]);
    there = there && !next.empty();
    path = there ? next : Below(path, NameToMake(components[i]));
  }
  return path;
}

}  // namespace

std::string JoinPath(std::string_view directory, std::string_view name) {
  std::string path(directory);
  path.append(directory.starts_with('/') ? "/" : "\\").append(name);
  return path;
}

bool IsAbsolutePath(std::string_view configured) {
  return !configured.empty() && (IsSeparator(configured.front()) || IsDriveText(configured));
}

std::string NativePath(std::string_view configured) {
  const std::optional<std::vector<std::string>> components = ComponentsOf(configured);
  return components ? Resolve(*components) : std::string();
}

std::string LiteralPath(std::string_view configured) {
  const std::optional<std::vector<std::string>> components = ComponentsOf(configured);
  return components ? Joined(*components, components->size()) : std::string();
}

std::string NativePathOfNewFile(std::string_view configured) {
  std::optional<std::vector<std::string>> components = ComponentsOf(configured);
  if (!components) return {};
  if (components->empty()) return "/";
  const std::string name = NameToMake(components->back());
  components->pop_back();
  return Below(Resolve(*components), name);
}

}  // namespace vorda::platform
