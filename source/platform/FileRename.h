// Renaming files without ever replacing one.

#pragma once

#include <string>
#include <string_view>

namespace vorda::platform {

// Gives a file another name, native paths; a file of that name stays and the renaming fails. 0 or an errno.
int RenameWithoutReplacing(const std::string& from, const std::string& to);

// The same for configured paths, on the interface thread: a file whose name differs in case alone is in the
// way as well. 0 or a run-time error's number: 53 when there is no file to rename, 58 when the name is taken.
int RenameFile(std::string_view from, std::string_view to);

}  // namespace vorda::platform
