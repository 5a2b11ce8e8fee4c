// The files that are open under numbers, shared by the ways of opening them.

#pragma once

#include <map>
#include <string>

#include "platform/Descriptor.h"

namespace vorda::platform {

struct NumberedFile {
  Descriptor file;
  std::string path;  // as opened
};

// By file number. For the interface thread only.
std::map<int, NumberedFile>& OpenFiles();

// Makes a run-time error the current one; also for an errno. Result: the error's number, 0 for errno 0.
int FailedWith(int number);
int FailedWithErrno(int systemError);

}  // namespace vorda::platform
