// Files of which only the beginning is read. Paths are configured ones; one whose case is right is opened
// without a look at its directory.

#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace vorda::platform {

// Reads the beginning of a file into `bytes`; `count` gets how much there was. A file that is missing or
// empty, and a directory, give 0 bytes and no error. Result: 0 or a run-time error's number.
int ReadFileStart(std::string_view configured, std::span<char> bytes, std::size_t& count);

// A text file's first line, up to CR or LF, without it; "" when there is none or it can't be read.
std::string ReadFirstLine(std::string_view configured);

}  // namespace vorda::platform
