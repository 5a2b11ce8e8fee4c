// A file of stories as they go down a line: all of one length, each with its start code and its end code.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorda::bench {

class StoryFile {
 public:
  // Ends the program with a message when the file can't be read or doesn't hold whole stories.
  StoryFile(const char* path, const char* length);

  std::size_t Count() const { return bytes_.size() / length_; }
  std::string_view All() const { return bytes_; }
  std::string_view Framed(std::size_t story) const { return All().substr(story * length_, length_); }
  // Without the two codes.
  std::string_view Text(std::size_t story) const { return Framed(story).substr(1, length_ - 2); }

 private:
  std::string bytes_;
  std::size_t length_;
};

}  // namespace vorda::bench
