// What the station tells the platform layer: platform.ini in the well-known place (WindowsDirectory).
//
// Read once at the start; a missing file or key takes its default.

#pragma once

#include <map>
#include <string>
#include <vector>

namespace vorda::platform {

struct Settings {
  // [SerialPorts] Com1..Com4: the device path of port n at index n-1; default /dev/ttyS0../dev/ttyS3, "" =
  // not mapped.
  std::vector<std::string> serialPorts = {"/dev/ttyS0", "/dev/ttyS1", "/dev/ttyS2", "/dev/ttyS3"};
  // [Drives] D=/srv/audio: capital drive letter to directory.
  std::map<char, std::string> drives;
  // [Shares] \\server\share=/mnt/share: the share's name in capitals to directory.
  std::map<std::string, std::string> shares;
  // [StatusPort] Address: what the status ports listen on; "" = all interfaces.
  std::string statusPortAddress;
  // [Formats] ShortDate: the date format "ddddd", in Qt's letters; "" = the locale's.
  std::string shortDate;
  // [Program] Directory: where the story tools lie; "" = the directory of the running program.
  std::string programDirectory;
};

// The settings in force.
const Settings& PlatformSettings();

// Reads platform.ini into the settings in force.
void LoadPlatformSettings();

// The system's own directory, where bare INI names lie: $VORDA_HOME, else $XDG_CONFIG_HOME/vorda, else
// ~/.config/vorda.
std::string WindowsDirectory();

// The directory of the running program, without a trailing separator, or what the settings name.
std::string ProgramDirectory();

// Replaces the settings for as long as it lives; for tests.
class ScopedSettings {
 public:
  explicit ScopedSettings(Settings settings);
  ~ScopedSettings();
  ScopedSettings(const ScopedSettings&) = delete;
  ScopedSettings& operator=(const ScopedSettings&) = delete;

 private:
  Settings previous_;
};

}  // namespace vorda::platform
