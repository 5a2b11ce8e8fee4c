// The names of directories' entries, for matching and listing without regard to case.
//
// The scans are kept, in bounds. On this machine's own file systems they follow every change by the system's
// notices, so that a large directory is read once and not again at each step; elsewhere a kept scan serves
// matching for as long as the directory's stamp stands, and a list reads the directory afresh. For the
// interface thread only.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorda::platform {

// The entry of `directory` (a native path) that is `name` (ANSI) without regard to case, as it stands on
// disk; "" when there is none. Of several the first in byte order.
std::string MatchDirectoryName(const std::string& directory, std::string_view name);

// The files whose name is `stem` (a configured path without extension), a point and anything, without regard
// to case: names alone, as they stand on disk, in ANSI. Links count even when they lead nowhere; directories
// don't. In byte order, but those that end in ".TMP" come last: when what a swap left in a cart is in the way
// of a later one, everything else has gone over by then. Empty when the directory can't be read and for a
// stem that has no path.
std::vector<std::string> FilesWithStem(std::string_view stem);

}  // namespace vorda::platform
