#include "platform/RunTimeError.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/MessageBox.h"
#include "platform/ProgramEnd.h"

namespace vorda::platform {
namespace {

struct Text {
  int number;
  const char* text;
};

constexpr std::array<Text, 13> kTexts = {{
    {kNoError, ""},
    {kOverflow, "Overflow"},
    {kOutOfMemory, "Out of memory"},
    {kBadFileNumber, "Bad file name or number"},
    {kFileNotFound, "File not found"},
    {kFileAlreadyOpen, "File already open"},
    {kDeviceIoError, "Device I/O error"},
    {kFileAlreadyExists, "File already exists"},
    {kDiskFull, "Disk full"},
    {kDeviceUnavailable, "Device unavailable"},
    {kPermissionDenied, "Permission denied"},
    {kPathFileAccessError, "Path/File access error"},
    {kPathNotFound, "Path not found"},
}};

struct SystemError {
  int systemError;
  int number;
};

constexpr std::array<SystemError, 29> kSystemErrors = {{
    {0, kNoError},
    {ENOMEM, kOutOfMemory},
    {EBADF, kBadFileNumber},
    {ENAMETOOLONG, kBadFileNumber},
    {ENOENT, kFileNotFound},
    {EBUSY, kFileAlreadyOpen},
    {EIO, kDeviceIoError},
    {EEXIST, kFileAlreadyExists},
    {ENOSPC, kDiskFull},
    {EDQUOT, kDiskFull},
    {EFBIG, kDiskFull},
    {ENXIO, kDeviceUnavailable},
    {ENODEV, kDeviceUnavailable},
    {ENOMEDIUM, kDeviceUnavailable},
    // A share whose server has gone.
    {ESTALE, kDeviceUnavailable},
    {EHOSTDOWN, kDeviceUnavailable},
    {EHOSTUNREACH, kDeviceUnavailable},
    {ENETDOWN, kDeviceUnavailable},
    {ENETUNREACH, kDeviceUnavailable},
    {ENOTCONN, kDeviceUnavailable},
    {ETIMEDOUT, kDeviceUnavailable},
    {EACCES, kPermissionDenied},
    {EPERM, kPermissionDenied},
    {EAGAIN, kPermissionDenied},
    {ETXTBSY, kPermissionDenied},
    {EROFS, kPathFileAccessError},
    {EISDIR, kPathFileAccessError},
    {ENOTDIR, kPathNotFound},
    {ELOOP, kPathNotFound},
}};

// Each thread fails for itself: an error in the sound's thread must not become the interface's.
thread_local int currentError = kNoError;

}  // namespace

std::string ErrorText(int number) {
  const auto* const found = std::find_if(kTexts.begin(), kTexts.end(),
                                         [number](const Text& entry) { return entry.number == number; });
  return found == kTexts.end() ? "Application-defined or object-defined error" : found->text;
}

int ErrorFromErrno(int systemError) {
  const auto* const found =
      std::find_if(kSystemErrors.begin(), kSystemErrors.end(),
                   [systemError](const SystemError& entry) { return entry.systemError == systemError; });
  return found == kSystemErrors.end() ? kPathFileAccessError : found->number;
}

int CurrentError() {
  return currentError;
}

void SetCurrentError(int number) {
  currentError = number;
}

void StopWithRuntimeError(int number) {
  ShowMessageBox("Run-time error '" + std::to_string(number) + "':\n\n" + ErrorText(number),
                 BoxIcon::Critical);
  EndProgram(1);
}

}  // namespace vorda::platform
