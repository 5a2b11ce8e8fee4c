// INI files of any bytes: what is read, and that a write changes its one line and nothing else.
//
// Input: section, key, value (a text each), whether it goes through a file as well (one byte), the file.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Target.h"
#include "platform/ProfileFile.h"
#include "platform/ProfileText.h"
#include "platform/Text.h"
#include "support/TempDirectory.h"

namespace vorda::fuzz {
namespace {

using platform::ProfileText;
using platform::SameText;
using Lines = std::vector<std::string>;

struct Setting {
  std::string section;
  std::string key;
  std::string value;
};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

std::string Stripped(std::string text) {
  while (!text.empty() && IsBlank(text.back())) text.pop_back();
  while (!text.empty() && IsBlank(text.front())) text.erase(0, 1);
  return text;
}

bool IsBlankLine(const std::string& line) {
  return line.find_first_not_of(" \t\r\n") == std::string::npos;
}

std::string Unquoted(const std::string& text) {
  const bool quoted =
      text.size() >= 2 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'');
  return quoted ? text.substr(1, text.size() - 2) : text;
}

// Each line with its line feed, if it has one.
Lines LinesOf(const std::string& bytes) {
  Lines lines;
  for (std::size_t begin = 0; begin < bytes.size();) {
    const std::size_t end = std::min(bytes.find('\n', begin), bytes.size() - 1) + 1;
    lines.push_back(bytes.substr(begin, end - begin));
    begin = end;
  }
  return lines;
}

std::optional<std::string> SectionOf(const std::string& line) {
  if (line.empty() || line.front() != '[' || line.find(']') == std::string::npos) return std::nullopt;
  return Stripped(line.substr(1, line.find(']') - 1));
}

// The value as a reader finds it who goes through the file line by line, once for each question.
std::optional<std::string> PlainValue(std::string bytes, const std::string& section, const std::string& key) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
  bool inside = false;
  bool behind = false;
  for (std::string line : LinesOf(bytes)) {
    if (line.back() == '\n') line.pop_back();
    line = Stripped(line);
    if (const auto name = SectionOf(line)) {
      behind = behind || inside;
      inside = !behind && SameText(*name, section);
      continue;
    }
    const std::size_t sign = line.find('=');
    if (!inside || line.starts_with(';') || sign == std::string::npos) continue;
    const std::string name = Stripped(line.substr(0, sign));
    if (!name.empty() && SameText(name, key)) return Unquoted(Stripped(line.substr(sign + 1)));
  }
  return std::nullopt;
}

// Every section that the file names with every key that it names, up to some of each, whether they belong
// together or not.
std::vector<Setting> SettingsIn(const std::string& bytes) {
  constexpr std::size_t kEnough = 4;
  std::vector<std::string> sections;
  std::vector<std::string> keys;
  for (const std::string& line : LinesOf(bytes)) {
    const std::size_t sign = line.find('=');
    if (const auto name = SectionOf(Stripped(line)); name && sections.size() < kEnough)
      sections.push_back(*name);
    if (sign != std::string::npos && keys.size() < kEnough) keys.push_back(line.substr(0, sign));
  }
  std::vector<Setting> settings;
  for (const std::string& section : sections)
    for (const std::string& key : keys) settings.push_back({section, key, {}});
  return settings;
}

// Names that an INI file can't hold, or would take for something else.
bool CanBeWritten(const Setting& setting) {
  const std::string key = Stripped(setting.key);
  const std::string section = Stripped(setting.section);
  return !key.empty() && key.front() != ';' && key.front() != '[' &&
         key.find_first_of("=\n") == std::string::npos && section.find_first_of("]\n") == std::string::npos;
}

std::optional<std::string> Value(const ProfileText& text, const Setting& setting) {
  const auto value = text.Value(setting.section, setting.key);
  return value ? std::optional<std::string>(*value) : std::nullopt;
}

void CheckReading(const ProfileText& text, const Setting& setting) {
  const auto value = Value(text, setting);
  Require(value == PlainValue(text.bytes(), Stripped(setting.section), Stripped(setting.key)),
          "the value is what the plain reader finds");
  const Setting capitals{platform::UpperCase(setting.section), platform::UpperCase(setting.key), {}};
  Require(Value(text, capitals) == value, "names match without regard to case");
  std::vector<std::string> seen;
  for (const auto& [key, listed] : text.Keys(setting.section)) {
    Require(text.Value(setting.section, key) == std::string_view(listed), "a listed key reads as listed");
    seen.push_back(platform::UpperCase(key));
  }
  std::sort(seen.begin(), seen.end());
  Require(std::adjacent_find(seen.begin(), seen.end()) == seen.end(), "each key is listed once");
}

bool SameNames(const Setting& a, const Setting& b) {
  return SameText(Stripped(a.section), Stripped(b.section)) && SameText(Stripped(a.key), Stripped(b.key));
}

// One line may differ, and that only between its first "=" and its end.
void CheckChangedLine(const std::string& before, const std::string& after) {
  const std::size_t sign = before.find('=');
  Require(sign != std::string::npos && after.compare(0, sign + 1, before, 0, sign + 1) == 0,
          "the key stays as it is spelled");
  const bool feed = before.ends_with('\n');
  const bool carriage = before.ends_with("\r\n");
  Require(after.ends_with('\n') == feed && (!carriage || after.ends_with("\r\n")), "its line end stays");
}

// The lines of `before` with others put in between two of them, or behind a last one that may get an end
// then.
void CheckAddedLines(Lines before, const Lines& after, std::size_t added) {
  if (!before.empty() && before.back().back() != '\n' && after[before.size() - 1] == before.back() + "\r\n")
    before.back() += "\r\n";
  const auto [old, now] = std::mismatch(before.begin(), before.end(), after.begin());
  const auto behind = now + static_cast<std::ptrdiff_t>(added);
  Require(std::equal(old, before.end(), behind, after.end()), "all other lines stay");
  // Of equal lines it can't be told which one is new.
  if (added != 1 || now == after.begin() || *now == *std::prev(now)) return;
  Require(!IsBlankLine(*std::prev(now)), "a new key stands ahead of the blank lines of its section's end");
  const auto next = std::find_if_not(behind, after.end(), IsBlankLine);
  Require(next == after.end() || SectionOf(Stripped(*next)), "and behind all its other lines");
}

void CheckWriting(const ProfileText& text, const Setting& setting) {
  const auto written = text.WithValue(setting.section, setting.key, setting.value);
  Require(written.has_value() == CanBeWritten(setting), "refused are the names that no file can hold");
  if (!written) return;
  const ProfileText after(*written);
  const std::string kept = setting.value.substr(0, setting.value.find('\n'));
  Require(Value(after, setting) == Unquoted(Stripped(kept)), "what was written reads back");
  for (const Setting& other : SettingsIn(text.bytes())) {
    Require(SameNames(setting, other) || Value(after, other) == Value(text, other), "no other value changes");
  }
  Require(after.WithValue(setting.section, setting.key, setting.value) == written,
          "writing it again changes nothing");
  const Lines linesBefore = LinesOf(text.bytes());
  const Lines linesAfter = LinesOf(*written);
  const bool keyIsNew = !text.Value(setting.section, setting.key);
  const std::size_t added = linesAfter.size() - linesBefore.size();
  Require(keyIsNew ? added == 1 || added == 2 : added == 0, "lines are added for what is new only");
  if (keyIsNew) {
    // A file of nothing but a mark keeps it in front of its first line.
    if (text.bytes() != "\xEF\xBB\xBF") CheckAddedLines(linesBefore, linesAfter, added);
    Require(added == 1 || written->starts_with(text.bytes()), "a new section stands at the end");
    return;
  }
  for (std::size_t i = 0; i < linesBefore.size(); ++i) {
    if (linesBefore[i] == linesAfter[i]) continue;
    CheckChangedLine(linesBefore[i], linesAfter[i]);
    Require(std::equal(linesBefore.begin() + static_cast<std::ptrdiff_t>(i) + 1, linesBefore.end(),
                       linesAfter.begin() + static_cast<std::ptrdiff_t>(i) + 1, linesAfter.end()),
            "one line changes at most");
    break;
  }
}

// The digits at the front, without an end to their number: what is too large for 32 bits goes round.
std::int32_t PlainInteger(const std::string& value, std::int32_t fallback) {
  const std::size_t first = value.starts_with('-') ? 1 : 0;
  std::size_t end = first;
  std::uint64_t number = 0;
  for (; end < value.size() && value[end] >= '0' && value[end] <= '9'; ++end)
    number = (number * 10 + static_cast<std::uint64_t>(value[end] - '0')) % (1ULL << 32U);
  if (end == first) return fallback;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(first == 0 ? number : (1ULL << 32U) - number));
}

// The same through a file, with the cut at 254 bytes and the default.
void CheckFile(const ProfileText& text, const Setting& setting) {
  static const test::TempDirectory directory;
  static const std::string path = directory / "vorda.ini";
  const auto read = [&](const char* fallback) {
    return platform::ReadProfileString(setting.section, setting.key, fallback, path);
  };
  test::WriteWholeFile(path, text.bytes());
  Require(read("none") == Value(text, setting).value_or("none").substr(0, 254), "a file reads as its text");
  Require(platform::ReadProfileSection(setting.section, path) == text.Keys(setting.section), "all of it");
  Require(platform::ReadProfileInteger(setting.section, setting.key, 77, path) == PlainInteger(read(""), 77),
          "a number is its leading digits");
  const auto written = text.WithValue(setting.section, setting.key, setting.value);
  const bool done = platform::WriteProfileString(setting.section, setting.key, setting.value, path);
  Require(done == written.has_value(), "a file takes what its text takes");
  Require(test::ReadWholeFile(path) == written.value_or(text.bytes()), "and holds it then");
  Require(!done || read("none") == Value(ProfileText(*written), setting).value_or("none").substr(0, 254),
          "what was written is read at once");
  Require(test::JoinedNames(directory.path()) == "vorda.ini", "nothing is left beside it");
}

}  // namespace
}  // namespace vorda::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vorda::fuzz;
  Input input(bytes, size);
  Setting setting;
  setting.section = input.Text();
  setting.key = input.Text();
  setting.value = input.Text();
  const bool throughFile = input.Byte() % 16 == 1;
  const ProfileText text{std::string(input.Rest())};
  CheckReading(text, setting);
  for (const Setting& named : SettingsIn(text.bytes())) CheckReading(text, named);
  CheckWriting(text, setting);
  if (throughFile) CheckFile(text, setting);
  return 0;
}
