// The run-time's numbered errors: their texts, the current one, and the stop for those that nothing catches.

#pragma once

#include <string>

namespace vorda::platform {

enum RunTimeError : int {
  kNoError = 0,
  kOverflow = 6,
  kOutOfMemory = 7,
  kBadFileNumber = 52,
  kFileNotFound = 53,
  kFileAlreadyOpen = 55,
  kDeviceIoError = 57,
  kFileAlreadyExists = 58,
  kDiskFull = 61,
  kDeviceUnavailable = 68,
  kPermissionDenied = 70,
  kPathFileAccessError = 75,
  kPathNotFound = 76,
};

// The error's text, e.g. "Permission denied"; of an unknown number "Application-defined or object-defined
// error".
std::string ErrorText(int number);

// The number that stands for an errno of the operating system.
int ErrorFromErrno(int systemError);

// The current error: what the last failing file or port operation left.
int CurrentError();
void SetCurrentError(int number);

// An error that nothing catches: a critical box "Run-time error 'N':", a blank line and the text; then the
// program ends at once with exit code 1. Nothing is shut down.
[[noreturn]] void StopWithRuntimeError(int number);

}  // namespace vorda::platform
