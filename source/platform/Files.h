// Files by number, as the run-time's Open, Print and Close have them, and the few questions the system asks
// of a file.
//
// What is written goes straight to the file: nothing is held back that a kill would lose. Paths are native
// (NativePath).

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Hook.h"

namespace vorda::platform {

// Length in bytes of a file; -1 when there is none that this user can read, and for a directory.
std::int64_t NativeFileSize(const std::string& path);

// Whether a file, links followed, bears this name; a directory doesn't count. Result: 0, also when there is
// none, or a run-time error's number when that can't be found out.
int LookUpFile(const std::string& path, bool& found);

// The bytes free for this user on the volume that holds `path`, or its deepest ancestor that exists; 0 on
// failure.
std::uint64_t FreeBytes(const std::string& path);
Hook<std::uint64_t(const std::string& path)>& FreeBytesHook();

// Removes a file. Result: 0 or a run-time error's number.
int RemoveNativeFile(const std::string& path);

// The next free file number. A number is handed out once in a run, so that one that was taken and never
// opened can't come to mean another's file.
int FreeFileNumber();

// Makes or empties the file under `number`. Result: 0 or a run-time error's number (55 when the number is
// open already).
int OpenForOutput(int number, const std::string& path);

// Writes the bytes as they stand. Result: 0 or a run-time error's number (52 when no file is open under
// `number`); what the disk took before the failure stays written.
int WriteToFile(int number, std::string_view bytes);

// Closes the file; a number with no open file is passed over.
void CloseFile(int number);

// Closes every file that is open under a number.
void CloseAllFiles();

// Makes an empty file of a new name in a directory: three letters of `prefix`, eight hexadecimal digits that
// never come twice in a run, ".TMP". Result: the name without the directory; "" on failure.
std::string MakeTempFile(const std::string& directory, std::string_view prefix);

}  // namespace vorda::platform
