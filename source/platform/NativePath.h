// Configured paths, which are texts with drives, shares and either separator, and the paths that the file
// system opens.
//
// A configured text is shown, stored and joined as it stands. NativePath turns it into something to open:
// drive letters and \\server\share are mapped as the platform settings tell, "\" is read as "/", and each
// component is matched exactly first and then without regard to case, since INI names arrive in capitals; of
// several such entries the first in byte order counts. A component with bytes above 127 is tried as its bytes
// first, then as UTF-8; one that is to be made is made in UTF-8. Separators in a row count as one, one at the
// end is dropped, "." and ".." are passed on. For the interface thread only.

#pragma once

#include <string>
#include <string_view>

namespace vorda::platform {

// Directory and name joined by "/" when the directory begins with "/", by "\" otherwise. Never looks at the
// directory's end.
std::string JoinPath(std::string_view directory, std::string_view name);

// True for a text that doesn't depend on a directory it is read in: a drive, a share, or one that begins with
// a separator.
bool IsAbsolutePath(std::string_view configured);

// The path to open. Components from the first that doesn't exist are taken as they stand. "" for "" and for
// texts that have no path: an unmapped drive or share, a text that begins with a single "\" or holds a NUL. A
// relative text is relative to the working directory at the program's start. A path whose case is right costs
// one system call; case-blind scans are kept per directory for as long as the directory's time stamp stands.
std::string NativePath(std::string_view configured);

// As NativePath, but each component is taken as it stands, without a look at the disk: where a file lies
// whose case is right.
std::string LiteralPath(std::string_view configured);

// As NativePath, but the last component is taken as it stands, without a look at the directory's entries: for
// names that the program has just made up itself.
std::string NativePathOfNewFile(std::string_view configured);

}  // namespace vorda::platform
