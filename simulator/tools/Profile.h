// Reads the feed configuration file, as much of it as the sample story tools need.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vorda::tools {

class Profile {
 public:
  // Reads the file; one that isn't there has no keys.
  explicit Profile(const std::string& path);

  // The key's value without blanks round it; nothing when there is no such key. Section and key match without
  // regard to case, and the first of several counts.
  std::optional<std::string> Text(std::string_view section, std::string_view key) const;
  // The number that the value begins with; `otherwise` when there is no key or no number.
  long Number(std::string_view section, std::string_view key, long otherwise) const;

 private:
  std::map<std::string, std::string> values_;  // by "section\nkey" in lower case
};

}  // namespace vorda::tools
