// Standard error: what the program says where no screen shows its boxes.

#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/Clock.h"

namespace vorda::platform {

// Opens those of the three standard streams that the program was started without. Otherwise the next port or
// story would get such a stream's number, and all that is said there. To be called first thing.
void HoldStandardStreams();

// Writes the text, behind the program's name, as lines of their own in UTF-8. Never waits: a reader that has
// stopped reading would stop the feeds, so what it leaves no room for is dropped.
void WriteToStandardError(const std::string& text);

// Keeps a text that comes over and over, for months, from filling the station's journal: the same one is told
// once a minute at most, then with how often it was left out.
class RepeatedTexts {
 public:
  // At most this many different texts are told a minute; all others are told as one.
  static constexpr std::size_t kMostTexts = 100;

  // What to tell of `text`, which came at `now`; nothing when it is left out.
  std::optional<std::string> Take(const std::string& text, const Moment& now);

 private:
  struct Told {
    Moment at;
    int leftOut = 0;
  };
  // Makes room for a further text, as far as the minute of others is over.
  void ForgetOldOnes(const Moment& now);

  std::map<std::string, Told> told_;
};

}  // namespace vorda::platform
