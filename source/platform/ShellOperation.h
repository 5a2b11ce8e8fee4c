// The desktop's way of copying or moving a file: it asks before it replaces a file or makes a folder, shows
// how far it is when it takes long, can be cancelled, and tells the operator itself when it fails.
//
// The caller waits; ports, sound, sockets and timers go on meanwhile, the operator's other input does not.
// Stands in for the shell's file operations of one file; folders as a whole are refused.

#pragma once

#include <string>

#include "platform/Desktop.h"
#include "platform/FileCopy.h"
#include "platform/Hook.h"

namespace vorda::platform {

struct ShellOperation {
  std::string source;       // configured paths
  std::string destination;  // a file's name, or an existing folder that takes the source's name
  std::string progressTitle;
  OwnerWindow owner = nullptr;
  bool move = false;
  bool confirm = true;  // false replaces files and makes folders without a question
};

// 0 on success and where the operator kept the file that was there; otherwise a run-time error's number, or
// kCopyCancelled. The current error is set only when the operation couldn't even begin (7): all else has been
// told to the operator.
int RunShellOperation(const ShellOperation& operation);

// Waits until the copy has ended and shows its progress. Without a desktop it is waited for without a sign.
Hook<void(FileCopy&, const ShellOperation&)>& CopyProgressHook();

}  // namespace vorda::platform
