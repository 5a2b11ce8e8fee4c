// INI files on disk: finding, reading and changing them whole. What stands in them is ProfileText's matter.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/FileStamp.h"

namespace vorda::platform {

// The native path of an INI file: a name that isn't absolute lies in WindowsDirectory(). "" when it has none.
std::string ProfilePath(std::string_view file);

struct ProfileBytes {
  std::string bytes;
  FileStamp stamp;
  bool keepable = false;  // true when a later change is sure to change the stamp
};

// The file's bytes; nothing for what is missing, unreadable or no plain file.
std::optional<ProfileBytes> ReadProfileBytes(const std::string& path);

// The bytes that are to replace those given; nothing when they can't be made.
using ProfileChange = std::function<std::optional<std::string>(const std::string& bytes)>;

// Changes the file by a new one put in its place, so that no reader sees half of it; makes it when it is
// missing. `change` is asked once for each look at the file. Just before the step, under the file's lock, the
// writer looks whether it is still the file that was read, and starts again when it isn't: so no writer's
// change is lost. What others hold up (a lock that isn't given back, a file that another program changed just
// now and may be in the midst of writing, changes without end) is waited for 150 ms in all. False when it
// couldn't be done; the file is then as it was.
bool ChangeProfile(std::string_view file, const ProfileChange& change);

}  // namespace vorda::platform
