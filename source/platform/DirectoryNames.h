// The names of directories' entries for matching without regard to case.

#pragma once

#include <string>
#include <string_view>

namespace vorda::platform {

// The entry of `directory` (a native path) that is `name` (ANSI) without regard to case, as it stands on
// disk; "" when there is none. Of several the first in byte order. The scans are kept, in bounds, for as long
// as the directories' stamps stand. For the interface thread only.
std::string MatchDirectoryName(const std::string& directory, std::string_view name);

}  // namespace vorda::platform
