// Writes down what is done to files, in its order.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/FileFault.h"

namespace vorda::test {

class FileSteps {
 public:
  // What changed a file so far: "write NAME", "remove NAME", "rename to NAME" and "copy NAME", the names
  // without their directories. What goes through a bare descriptor is left out.
  const std::vector<std::string>& Taken() const { return taken_; }

 private:
  void Note(platform::FileOperation operation, std::string_view path) {
    const char* const verb = VerbOf(operation);
    if (verb != nullptr && !path.empty())
      taken_.push_back(verb + std::string(path.substr(path.rfind('/') + 1)));
  }
  static const char* VerbOf(platform::FileOperation operation) {
    switch (operation) {
      case platform::FileOperation::Write:
        return "write ";
      case platform::FileOperation::Remove:
        return "remove ";
      case platform::FileOperation::Rename:
        return "rename to ";
      case platform::FileOperation::BeginCopy:
        return "copy ";
      default:
        return nullptr;
    }
  }

  std::vector<std::string> taken_;
  platform::ScopedFileFault watch_{[this](platform::FileOperation operation, std::string_view path) {
    Note(operation, path);
    return 0;
  }};
};

}  // namespace vorda::test
