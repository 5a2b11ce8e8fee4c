#include "shell/ServerState.h"

#include "platform/MessageBox.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

std::string gCommandLine;
std::string gIniFileName = "vdServer.INI";
std::int32_t gActiveFeed = 0;
std::int32_t gServerCartStart = 0;
std::int32_t gServerCartEnd = 0;
platform::WaveFormat gDefaultWaveFormat;
OSVersionInfo gOSVersion;

void ReadOSVersion() {
  gOSVersion = OSVersionInfo{};
}

std::string PlatformName(const OSVersionInfo& version) {
  const std::string major = std::to_string(version.majorVersion);
  const std::string minor = std::to_string(version.minorVersion);
  if (version.platformId == 1 && version.minorVersion == 0) return "Windows 95";
  if (version.platformId == 1 && version.minorVersion == 10) return "Windows 98";
  if (version.platformId != 2) return {};
  switch (version.majorVersion) {
    case 3:
      return "Windows NT v3." + minor;
    case 4:
      return "Windows NT v" + major;
    case 5:
      return version.minorVersion == 0 ? "Windows 2000" : "Windows 2000 Server";
    default:
      return {};
  }
}

void TakeCommandLine(int argumentCount, const char* const* arguments) {
  std::string joined;
  for (int i = 0; i < argumentCount; ++i) {
    // The shell's arguments are UTF-8; what the code page can't hold passes as it is and matches no file.
    std::string argument = arguments[i];
    platform::FromUtf8(arguments[i], argument);
    joined += (i == 0 ? "" : " ") + argument;
  }
  gCommandLine = platform::UpperCase(platform::Trim(joined));
}

bool ResolveIniFileName() {
  const std::size_t option = gCommandLine.find("/P");
  if (option == std::string::npos) {
    gIniFileName = "vdServer.INI";
    return true;
  }
  const std::size_t blank = gCommandLine.find(' ', option + 1);
  if (blank == std::string::npos) {
    platform::ShowMessageBox("Invalid .INI file in command line\nCorrect form : vdserver[.exe] [IniFileName]",
                             platform::BoxIcon::Critical);
    return false;
  }
  auto position = static_cast<std::int32_t>(blank + 1);
  std::int32_t end = 0;
  gIniFileName = GetToken(gCommandLine, position, ' ', end);
  return true;
}

}  // namespace vorda
