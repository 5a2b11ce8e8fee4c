#include "platform/Settings.h"

#include <pwd.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "platform/NativePath.h"
#include "platform/ProfileFile.h"
#include "platform/Text.h"

namespace vorda::platform {
namespace {

constexpr char kFile[] = "platform.ini";
constexpr char kSerialPorts[] = "SerialPorts";
constexpr char kDrives[] = "Drives";
constexpr char kShares[] = "Shares";

Settings& SettingsInForce() {
  static Settings settings;
  return settings;
}

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::string HomeDirectory() {
  std::string home = Environment("HOME");
  if (!home.empty()) return home;
  const passwd* user = ::getpwuid(::geteuid());
  return user == nullptr ? "/" : user->pw_dir;
}

void ReadSerialPorts(Settings& settings) {
  for (std::size_t i = 0; i < settings.serialPorts.size(); ++i) {
    std::string& device = settings.serialPorts[i];
    device = ReadProfileString(kSerialPorts, "Com" + std::to_string(i + 1), device, kFile);
  }
}

// A drive is named by its letter, with or without the colon.
void ReadDrives(Settings& settings) {
  for (const auto& [key, directory] : ReadProfileSection(kDrives, kFile)) {
    const bool named = key.size() == 1 || (key.size() == 2 && key[1] == ':');
    const char letter = UpperCase(key[0]);
    if (!named || letter < 'A' || letter > 'Z' || directory.empty()) continue;
    settings.drives.emplace(letter, directory);
  }
}

void ReadShares(Settings& settings) {
  for (const auto& [key, directory] : ReadProfileSection(kShares, kFile)) {
    if (!directory.empty()) settings.shares.emplace(UpperCase(key), directory);
  }
}

std::string WithoutTrailingSeparator(std::string directory) {
  while (directory.size() > 1 && (directory.back() == '/' || directory.back() == '\\')) directory.pop_back();
  return directory;
}

// The directory's text in the code page where that can hold it, as all configured paths are; its bytes
// otherwise, which open as well.
std::string ExecutableDirectory() {
  std::string path(PATH_MAX, '\0');
  const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
  if (length <= 0) return {};
  path.resize(static_cast<std::size_t>(length));
  const std::size_t separator = path.rfind('/');
  if (separator == std::string::npos) return {};
  path.resize(separator == 0 ? 1 : separator);
  std::string ansi;
  return FromUtf8(path, ansi) ? ansi : path;
}

}  // namespace

const Settings& PlatformSettings() {
  return SettingsInForce();
}

void LoadPlatformSettings() {
  Settings settings;
  ReadSerialPorts(settings);
  ReadDrives(settings);
  ReadShares(settings);
  settings.statusPortAddress = ReadProfileString("StatusPort", "Address", settings.statusPortAddress, kFile);
  settings.shortDate = ReadProfileString("Formats", "ShortDate", settings.shortDate, kFile);
  settings.programDirectory = ReadProfileString("Program", "Directory", settings.programDirectory, kFile);
  SettingsInForce() = std::move(settings);
}

std::string WindowsDirectory() {
  const std::string home = Environment("VORDA_HOME");
  if (!home.empty()) return WithoutTrailingSeparator(home.front() == '/' ? home : NativePath(home));
  const std::string configuration = Environment("XDG_CONFIG_HOME");
  // A relative one is to be ignored, says the desktop's base directory rule.
  if (configuration.starts_with('/')) return WithoutTrailingSeparator(configuration) + "/vorda";
  return WithoutTrailingSeparator(HomeDirectory()) + "/.config/vorda";
}

std::string ProgramDirectory() {
  const std::string& configured = PlatformSettings().programDirectory;
  if (!configured.empty()) return WithoutTrailingSeparator(configured);
  static const std::string ofExecutable = ExecutableDirectory();
  return ofExecutable;
}

ScopedSettings::ScopedSettings(Settings settings)
    : previous_(std::exchange(SettingsInForce(), std::move(settings))) {}

ScopedSettings::~ScopedSettings() {
  SettingsInForce() = std::move(previous_);
}

}  // namespace vorda::platform
