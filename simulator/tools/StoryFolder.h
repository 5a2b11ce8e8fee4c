// Where the sample story tools keep their stories: dated folders in "Stories", beside the feed configuration
// file.

#pragma once

#include <chrono>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorda::tools {

// The folder "Stories" that belongs to a configuration file. It may not exist yet.
std::filesystem::path StoriesFolder(const std::string& configFile);

// The present local time.
std::tm LocalNow();
// A time by a pattern of strftime.
std::string Formatted(const std::tm& time, const char* pattern);

// The date that a folder's name "YYYY-MM-DD" tells; nothing when it is no such name.
std::optional<std::chrono::sys_days> DateOf(std::string_view folderName);
// The dated folders, oldest first; empty when there is none. Links are no folders.
std::vector<std::filesystem::path> DatedFolders(const std::filesystem::path& stories);

// The text's first words, blanks and line ends between them as single blanks; `limit` in characters. Control
// codes are passed over, and so is everything above 126 when `plain` is set.
std::string FirstWords(std::string_view text, size_t limit, bool plain);
// The first bytes of a file, `limit` at most; "" when it can't be read.
std::string FileStart(const std::filesystem::path& file, size_t limit);

// Gives `from` the name `to` in one step, on the same file system. Never replaces a file: false with errno
// EEXIST then, and false with another errno when it can't be done.
bool RenameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to);

// Adds "tool date time text" to the tools' log in the stories' folder, as one line. False when it can't.
bool AddLogLine(const std::filesystem::path& stories, std::string_view tool, std::string_view text);

}  // namespace vorda::tools
