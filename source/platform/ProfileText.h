// The text of an INI file: what its keys hold, and how it reads with a key changed. Knows no files; the rules
// stand in ProfileFile.h.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vorda::platform {

class ProfileText {
 public:
  explicit ProfileText(std::string bytes);

  const std::string& bytes() const { return bytes_; }

  // The value of a key, uncut; nothing when section or key is missing.
  std::optional<std::string_view> Value(std::string_view section, std::string_view key) const;

  // The section's keys as they are spelled, with their values, in the text's order.
  std::vector<std::pair<std::string, std::string>> Keys(std::string_view section) const;

  // The bytes with the key set; nothing when no INI text can hold a section or key of that name.
  std::optional<std::string> WithValue(std::string_view section, std::string_view key,
                                       std::string_view value) const;

 private:
  struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
  };
  struct Key {
    Range name;
    Range value;  // all behind "=", up to the line's ending
  };
  struct Section {
    std::vector<Key> keys;                               // without repetitions
    std::unordered_map<std::string, std::size_t> index;  // name in capitals to place in `keys`
    std::size_t end = 0;  // behind the last line that isn't blank, its ending included
  };

  std::string_view At(Range range) const {
    return std::string_view(bytes_).substr(range.begin, range.end - range.begin);
  }
  Section* ReadLine(Range line, std::size_t lineEnd, Section* section);
  const Section* FindSection(std::string_view name) const;
  std::string Inserted(std::size_t position, const std::string& lines) const;

  std::string bytes_;
  std::unordered_map<std::string, Section> sections_;  // by name in capitals
};

}  // namespace vorda::platform
