// Cutting received text into stories, writing each to a file and handing it to the story processor.
//
// There is no buffer: each arrival is worked through and leaves nothing over, and the feed's open story file
// is the only state between two arrivals. No byte is thrown away for lying outside a story: text that comes
// with no story open opens one of its own.

#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "config/Vorda_Common_API.h"

namespace vorda {

// What an arrival begins with: text up to the next control character, or that character.
struct StoryPiece {
  enum class Kind { Text, Start, End };
  Kind kind = Kind::Text;
  std::size_t length = 0;
};

// The first piece of `data`, which must not be empty. The end code is tested first: with equal codes nothing
// ever starts a story. Codes outside 0 to 255 match nothing.
StoryPiece NextStoryPiece(std::string_view data, int startChar, int endChar);

// The story side of one feed, found by the text of its window's Tag each time.
class StoryCapture {
 public:
  // `tag` answers the window's Tag; `announce` sends a line through the status port.
  StoryCapture(std::function<std::string()> tag, std::function<void(std::string_view)> announce);

  // Works through a filtered arrival.
  void Take(std::string_view data);

  // Opens a new story file in the news directory, after handing on the one that is open. A file that can't be
  // made leaves no story open, without a word; where not even a name could be had, a story counts as open
  // that has no file.
  void OpenTempTextStoryFile();
  // Writes text to the open story, opening one first if there is none. Failures lose the text without a word.
  void WriteTextBuffer(std::string_view bufText);
  // Closes the open story's file, starts the story processor on it and says so on the status port.
  void CloseTempTextStoryFile();

 private:
  std::string ConfigPath(const std::string& fullConfigFile);

  std::function<std::string()> tag_;
  std::function<void(std::string_view)> announce_;
  // The configuration file found last, and the text that it was found for.
  std::string configPath_;
  std::string configText_;
};

}  // namespace vorda
