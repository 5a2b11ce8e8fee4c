#include "tools/StoryFolder.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fstream>

namespace vorda::tools {

namespace fs = std::filesystem;

fs::path StoriesFolder(const std::string& configFile) {
  return fs::path(configFile).parent_path() / "Stories";
}

std::tm LocalNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
  ::localtime_r(&now, &local);
  return local;
}

std::string Formatted(const std::tm& time, const char* pattern) {
  std::array<char, 64> text = {};
  return {text.data(), std::strftime(text.data(), text.size(), pattern, &time)};
}

std::optional<std::chrono::sys_days> DateOf(std::string_view folderName) {
  if (folderName.size() != 10 || folderName[4] != '-' || folderName[7] != '-') return std::nullopt;
  const auto number = [folderName](size_t at, size_t length) {
    int value = -1;
    const char* end = folderName.data() + at + length;
    const auto result = std::from_chars(folderName.data() + at, end, value);
    return result.ptr == end ? value : -1;
  };
  const int year = number(0, 4), month = number(5, 2), day = number(8, 2);
  if (year < 0 || month < 0 || day < 0) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok()) return std::nullopt;
  return std::chrono::sys_days(date);
}

std::vector<fs::path> DatedFolders(const fs::path& stories) {
  std::vector<fs::path> folders;
  std::error_code error;
  for (fs::directory_iterator entry(stories, error), end; entry != end; entry.increment(error)) {
    const bool folder = fs::is_directory(entry->symlink_status(error));
    if (folder && DateOf(entry->path().filename().string())) folders.push_back(entry->path());
  }
  std::sort(folders.begin(), folders.end());
  return folders;
}

std::string FirstWords(std::string_view text, size_t limit, bool plain) {
  std::string words;
  bool pending = false;
  for (const char letter : text) {
    const unsigned char code = static_cast<unsigned char>(letter);
    if (code == ' ' || code == '\t' || code == '\r' || code == '\n') {
      pending = true;
    } else if (code > ' ' && code != 127 && (!plain || code < 127)) {
      if (pending && !words.empty()) words += ' ';
      pending = false;
      words += letter;
    }
    if (words.size() >= limit) break;
  }
  words.resize(std::min(words.size(), limit));
  return words;
}

std::string FileStart(const fs::path& file, size_t limit) {
  std::ifstream stream(file, std::ios::binary);
  std::string start(limit, '\0');
  stream.read(start.data(), static_cast<std::streamsize>(limit));
  start.resize(static_cast<size_t>(stream.gcount()));
  return start;
}

bool RenameWithoutReplacing(const fs::path& from, const fs::path& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // A file system that can't promise it in a rename: a second name refuses to replace anything, too.
  return ::link(from.c_str(), to.c_str()) == 0 && ::unlink(from.c_str()) == 0;
}

bool AddLogLine(const fs::path& stories, std::string_view tool, std::string_view text) {
  std::error_code error;
  fs::create_directories(stories, error);
  const int log = ::open((stories / "tools.log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (log < 0) return false;
  // One write: lines of tools that run at once don't mix.
  const std::string line =
      std::string(tool) + " " + Formatted(LocalNow(), "%Y-%m-%d %H:%M:%S") + " " + std::string(text) + "\n";
  const bool written = ::write(log, line.data(), line.size()) == static_cast<ssize_t>(line.size());
  ::close(log);
  return written;
}

}  // namespace vorda::tools
