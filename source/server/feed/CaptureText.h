// The text that a feed window shows, and the filter that an arrival passes on its way there.
//
// The filtered arrival is what the cutter works on afterwards, so the filter decides what reaches a story
// file: backspaces are worked out, line feeds go, and a line feed comes behind every carriage return.

#pragma once

#include <string>
#include <string_view>

namespace vorda {

// Works out the backspaces of an arrival: each takes the character before it along. Result: true when one
// stood at the front, with nothing of the arrival left to take.
bool ResolveBackspaces(std::string& data);

// Drops every line feed and puts one behind every carriage return.
void NormaliseLineEnds(std::string& data);

class CaptureText {
 public:
  // The text that is shown, with its line ends as two characters.
  const std::string& Text() const { return text_; }

  // Shows an arrival, which is filtered on the way. A text of more than 16000 characters loses its first 4096
  // before, and one of more than 256 KiB all but its last 16000. A backspace at the arrival's front takes the
  // last character that is shown, one however many there are.
  void Append(std::string& data);

 private:
  std::string text_;
};

}  // namespace vorda
