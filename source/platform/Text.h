// Text as the system holds it: bytes of the ANSI code page (windows-1252), one byte a character.
//
// Stands in for the run-time's string functions. Codes 0x81, 0x8D, 0x8F, 0x90 and 0x9D, which the code page
// leaves undefined, stay themselves, so that all 256 values survive the way to Unicode and back.

#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace vorda::platform {

// Capital letters by the code page: a-z and the accented letters. One table serves commands, file names and
// INI names.
char UpperCase(char c);
std::string UpperCase(std::string_view text);

// True when the two are the same text without regard to case.
bool SameText(std::string_view a, std::string_view b);

// The text without leading and trailing blanks (code 32 only).
std::string Trim(std::string_view text);

// To Unicode, and back; a character that the code page doesn't hold becomes "?".
QString ToUnicode(std::string_view ansi);
std::string FromUnicode(const QString& text);

// The same between the code page and UTF-8, the file system's and the terminal's text.
std::string ToUtf8(std::string_view ansi);
// False when `utf8` isn't well formed or holds a character outside the code page; `ansi` is then untouched.
bool FromUtf8(std::string_view utf8, std::string& ansi);

}  // namespace vorda::platform
