// What a wire becomes, told once more and as plainly as can be: every byte for itself, with no thought of
// speed. The targets hold the server against it.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorda::fuzz {

// What the screen's text may come to before all but its end goes.
inline constexpr std::size_t kMostShown = 262144;

class WireModel {
 public:
  WireModel(int startChar, int endChar) : startChar_(startChar), endChar_(endChar) {}

  // Takes an arrival. Result: what the filter leaves of it.
  std::string Take(std::string_view arrival);

  // The text on the screen, the stories handed on, and the one that is open.
  const std::string& Shown() const { return shown_; }
  const std::vector<std::string>& Stories() const { return stories_; }
  const std::optional<std::string>& Open() const { return open_; }

 private:
  std::string Filter(std::string_view arrival);
  void Cut(std::string_view filtered);
  void HandOn();

  int startChar_;
  int endChar_;
  std::string shown_;
  std::vector<std::string> stories_;
  std::optional<std::string> open_;
};

inline std::string WireModel::Take(std::string_view arrival) {
  if (shown_.size() > kMostShown) shown_ = shown_.substr(shown_.size() - 16000);
  if (shown_.size() > 16000) shown_ = shown_.substr(4096);
  const std::string filtered = Filter(arrival);
  shown_ += filtered;
  Cut(filtered);
  return filtered;
}

inline std::string WireModel::Filter(std::string_view arrival) {
  std::string data(arrival);
  bool takesShown = false;
  for (std::size_t at = data.find('\b'); at != std::string::npos; at = data.find('\b')) {
    takesShown = takesShown || at == 0;
    data.erase(at == 0 ? 0 : at - 1, at == 0 ? 1 : 2);
  }
  if (takesShown && !shown_.empty()) shown_.pop_back();
  std::string filtered;
  for (const char c : data) {
    if (c != '\n') filtered += c;
    if (c == '\r') filtered += '\n';
  }
  return filtered;
}

inline void WireModel::Cut(std::string_view filtered) {
  for (const char c : filtered) {
    const int code = static_cast<unsigned char>(c);
    if (code == endChar_) {
      HandOn();
    } else if (code == startChar_) {
      HandOn();
      open_ = "";
    } else {
      if (!open_) open_ = "";
      *open_ += c;
    }
  }
}

inline void WireModel::HandOn() {
  if (open_) stories_.push_back(*open_);
  open_.reset();
}

}  // namespace vorda::fuzz
