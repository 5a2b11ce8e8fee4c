#include "feed/CaptureText.h"

namespace vorda {

namespace {
constexpr char kBackspace = '\b';
constexpr std::size_t kLongestText = 16000;
constexpr std::size_t kCutLength = 4096;
// Only a line whose every read is full gets here: arrivals that become longer in the filter than the cut.
constexpr std::size_t kMostText = std::size_t{1} << 18;
}  // namespace

bool ResolveBackspaces(std::string& data) {
  const std::size_t first = data.find(kBackspace);
  if (first == std::string::npos) return false;
  bool atFront = false;
  std::size_t kept = first;
  for (std::size_t i = first; i < data.size(); ++i) {
    if (data[i] != kBackspace) {
      data[kept++] = data[i];
    } else if (kept > 0) {
      --kept;
    } else {
      atFront = true;
    }
  }
  data.resize(kept);
  return atFront;
}

void NormaliseLineEnds(std::string& data) {
  std::string lines;
  lines.reserve(data.size() + data.size() / 16 + 16);
  const char* const end = data.data() + data.size();
  for (const char* piece = data.data(); piece < end;) {
    const char* stop = piece;
    while (stop < end && *stop != '\r' && *stop != '\n') ++stop;
    lines.append(piece, stop);
    if (stop < end && *stop == '\r') lines.append("\r\n", 2);
    piece = stop + 1;
  }
  data.swap(lines);
}

void CaptureText::Append(std::string& data) {
  if (text_.size() > kMostText) text_.erase(0, text_.size() - kLongestText);
  if (text_.size() > kLongestText) text_.erase(0, kCutLength);
  // Nothing to take in an empty text: the backspace is dropped.
  if (ResolveBackspaces(data) && !text_.empty()) text_.pop_back();
  NormaliseLineEnds(data);
  text_ += data;
}

}  // namespace vorda
