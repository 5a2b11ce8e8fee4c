// What the whole server shares: its command line, its INI file's name, the active feed, the operator's edit
// range.

#pragma once

#include <cstdint>
#include <string>

#include "platform/WaveFormats.h"

namespace vorda {

// The program's arguments, joined by one blank, trimmed, in capitals.
extern std::string gCommandLine;
// Name of the server INI file: from the command line, or "vdServer.INI".
extern std::string gIniFileName;
// Number (1 to 4) of the feed window that was activated last; 0 until one has been.
extern std::int32_t gActiveFeed;
// The capture range of the feed started last, which the cart browser takes as the operator's edit range.
extern std::int32_t gServerCartStart;
extern std::int32_t gServerCartEnd;
// The shared default wave format.
extern platform::WaveFormat gDefaultWaveFormat;

// What the operating system calls itself; platform id 0 where it is none that the splash window has a name
// for.
struct OSVersionInfo {
  std::uint32_t platformId = 0;
  std::uint32_t majorVersion = 0;
  std::uint32_t minorVersion = 0;
};
extern OSVersionInfo gOSVersion;

// Fills gOSVersion.
void ReadOSVersion();

// The splash window's name for a version; "" when it has none.
std::string PlatformName(const OSVersionInfo& version);

// Takes the command line of the process (without the program's name) into gCommandLine.
void TakeCommandLine(int argumentCount, const char* const* arguments);

// Works gIniFileName out of gCommandLine. False, after a box that tells the correct form, when "/P" has no
// name behind it.
bool ResolveIniFileName();

}  // namespace vorda
