// INI files, with the rules of the platform's profile functions.
//
// Section and key names match without regard to case; the first of duplicates counts. A line that begins with
// ";" is a comment. Values lose blanks and tabs at both ends and then one pair of quotation marks, double or
// single. A UTF-8 mark at the front of the file is skipped; a NUL is a byte like any other; lines end with CR
// LF or LF, the last one also with nothing. A bare or relative file name lies in WindowsDirectory(); names
// pass NativePath. Nothing is remembered that another program may have changed: the parsed file is kept for
// as long as its stamp (device, inode, size, times) stands. For the interface thread only.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorda::platform {

// The value of a key, at most 254 bytes of it; `defaultValue`, cut likewise, when file, section or key is
// missing.
std::string ReadProfileString(std::string_view section, std::string_view key, std::string_view defaultValue,
                              std::string_view file);

// The value's leading digits with an optional minus sign, in 32 bits with wrap; `defaultValue` when there are
// none or the value is empty or missing.
std::int32_t ReadProfileInteger(std::string_view section, std::string_view key, std::int32_t defaultValue,
                                std::string_view file);

// As ReadProfileInteger for a value held in 16 bits: one out of range is the run-time error Overflow, which
// stops the program.
std::int16_t ReadProfileShort(std::string_view section, std::string_view key, std::int16_t defaultValue,
                              std::string_view file);

// The keys of a section with their values, uncut, in the file's order; of duplicates the first alone.
std::vector<std::pair<std::string, std::string>> ReadProfileSection(std::string_view section,
                                                                    std::string_view file);

// Sets a key. The one line is changed behind its "="; a missing key is added at its section's end, a missing
// section at the file's end, with CR LF; every other byte stays. The file is made when missing, its directory
// is not (but WindowsDirectory() is). Written whole in one step: temporary file, fdatasync, rename, owner and
// mode kept, links followed; in place where the directory refuses. A file that holds the line already is left
// alone. Other programs' changes are kept: the file is read afresh under a lock (flock) and looked at again
// before it is replaced. What others hold up is waited for a tenth of a second at most. A value ends at its
// first line feed and loses the CRs at its end. False on failure, which no caller reports, and for names that
// no INI file can hold ("=" in a key, "]" in a section).
bool WriteProfileString(std::string_view section, std::string_view key, std::string_view value,
                        std::string_view file);

}  // namespace vorda::platform
