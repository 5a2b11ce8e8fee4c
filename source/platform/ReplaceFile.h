// Giving an existing file new contents in one step.

#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/Descriptor.h"

namespace vorda::platform {

// Replaces the contents of `path`, which `file` holds open for writing with the status `status` and the bytes
// `oldBytes`: by a temporary file in the same directory that takes its place, with owner and mode kept and
// links followed. Where the directory refuses that, in place. False on failure: the file then holds
// `oldBytes`, and no temporary file is left.
bool ReplaceFile(const std::string& path, const Descriptor& file, const struct stat& status,
                 const std::string& oldBytes, const std::string& newBytes);

}  // namespace vorda::platform
