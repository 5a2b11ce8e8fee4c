// Small services that every part of the system uses: names and paths, temporary names, processes, moments,
// reports.
//
// Free functions without state. A function that can fail returns a special value and normally says nothing.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Desktop.h"
#include "platform/Process.h"
#include "shell/TimeStamp.h"

namespace vorda {

// --- Names and tokens (FileNames.cpp) ---

// Trims `path` and returns it, in double quotation marks when it holds a blank and does not begin with one.
std::string QuotePath(std::string& path);

// -1 when every character of the text is allowed, 0 when not. Kinds: 1 digits; 2 digits and letters; 3
// letters; 4 as 2 and the blank; 5 as 1 and the blank; any other allows everything. Letters are A to Z in
// either case.
std::int16_t IsValidText(std::string_view text, std::int16_t kind);

// The text behind the last "\" or "/"; the whole path when it holds neither.
std::string FileNamePart(std::string_view path);
// The text ahead of the last "\" or "/"; "" when it holds neither.
std::string DirectoryPart(std::string_view path);
// FileNamePart up to its last "."; all of it when it has none.
std::string FileBaseName(std::string_view path);
// The text behind the last "." of FileNamePart; all of FileNamePart when it has none.
std::string FileExtension(std::string_view path);

// The next token of the text, trimmed. `position` counts from 1 and is raised to 1 when below. Blanks from
// there on are skipped; the token ends ahead of `delimiter`, whose position goes to `endPosition`, or at the
// text's end, which sets `endPosition` to 0. "" when nothing but blanks is left; `endPosition` then stays.
std::string GetToken(std::string_view text, std::int32_t& position, char delimiter,
                     std::int32_t& endPosition);

// --- Files (TempNames.cpp, DiskSpace.cpp) ---

// The file's length in bytes; -1 when it can't be read. This is how the system asks whether a file exists.
double FileSize(std::string_view path);

// The bytes free for this user on the volume that holds `path`, which need not exist; 0 when they can't be
// had.
std::uint64_t DiskFreeBytes(std::string_view path);
// A number of 64 bits from its two signed halves.
double LargeToDouble(std::int32_t low, std::int32_t high);

// A new file name in the directory `path` ("" = the temporary directory): the platform's unique name with its
// last three characters replaced by `extension`. The file does not exist and the name is not reserved. "" on
// failure.
std::string UniqueTempFileName(std::string_view path, std::string_view extension);

// --- Processes (Processes.cpp) ---

inline constexpr std::int32_t kIdlePriorityClass = 64;
inline constexpr std::int32_t kShowMinimized = 2;
inline constexpr std::int32_t kShowNoActivate = 4;

inline constexpr std::int32_t kWaitNone = 0;
inline constexpr std::int32_t kWaitYielding =
    -1;  // until the process has ended; everything goes on meanwhile
inline constexpr std::int32_t kWaitBlocking = 9999;  // the same, but the operator's input waits

// Starts a program with its arguments in one text, which is taken apart at blanks: nothing is quoted, so a
// path with a blank in it becomes two arguments. The program's own path is tried whole first. Wait modes
// other than the three don't wait. `showWindow` is ignored: the desktop places windows. Non-zero when the
// process was started.
std::int32_t RunProcess(const std::string& program, const std::string& arguments, std::int32_t creationFlags,
                        std::int32_t waitMode, std::int32_t showWindow,
                        platform::ProcessInformation& information);

// --- Moments (TimeStamps.cpp) ---

// The present moment; with `wholeHour` the start of its hour.
TimeStamp NowStamp(bool wholeHour = false);
// Seconds from the stamp until `now`, across midnights; negative for a stamp that lies ahead.
double SecondsBetween(const TimeStamp& stamp, const TimeStamp& now);
// The same until the present moment.
double SecondsSince(const TimeStamp& stamp);

// The stamp that lies `duration` seconds before `stamp`, to the hundredth. A duration that rounds up to a
// whole day takes nearly two.
TimeStamp SubtractFromStamp(float duration, const TimeStamp& stamp);

// --- Sound files (SoundFiles.cpp) ---

// The length of a sound file in seconds, from whole milliseconds; 0 when it isn't known. A file that is
// missing says nothing; one that is no sound is told to the operator, whose answer changes nothing.
float WaveLengthSeconds(const std::string& path);

// --- Reports (Reports.cpp) ---

// The one general error box: "There was a problem " and `what`, a clause that continues the sentence; with an
// `errorNumber` of 1 or more also that error's text and, in brackets, the number of the current error.
void ReportProblem(std::string_view what, std::int16_t errorNumber);

// A multimedia result on its way through: a code other than 0 is told to the operator when `showError` is
// set, in a box with the program's title and `context`. Result: the code.
std::int32_t ReportMultimediaError(std::int32_t code, bool showError, std::string_view context = {});

// --- The desktop's services (ShellServices.cpp) ---

// The folder picker above `owner`; "" when cancelled. The root of a drive comes back without its separator.
std::string BrowseForFolder(platform::OwnerWindow owner, const std::string& title,
                            const std::string& startFolder = {});

// Copies or moves a file with a progress window above `owner`. With `confirm` the operator is asked before a
// file is replaced or a folder made. The desktop itself tells of failures. 0 on success, also when the
// operator kept the file that was there.
std::int32_t RunShellFileOperation(const std::string& source, const std::string& destination,
                                   const std::string& progressTitle, platform::OwnerWindow owner,
                                   bool moveFile, bool confirm);

}  // namespace vorda
