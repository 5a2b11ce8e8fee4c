// What the operator is told of failures, and the folder question.

#include "platform/Desktop.h"
#include "platform/MessageBox.h"
#include "platform/RunTimeError.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

void ReportProblem(std::string_view what, std::int16_t errorNumber) {
  const platform::Pointer pointer = platform::CurrentPointer();
  platform::SetPointer(platform::Pointer::Default);
  std::string text = "There was a problem " + platform::Trim(what);
  if (errorNumber >= 1) {
    text += " and the error's description was reported as : \n\"" + platform::ErrorText(errorNumber) +
            "\" (" + std::to_string(platform::CurrentError()) + ")";
  }
  platform::ShowMessageBox(text, platform::BoxIcon::Information);
  platform::SetPointer(pointer);
}

std::string BrowseForFolder(const std::string& title, const std::string& startFolder) {
  std::string folder = platform::PickFolder({title, startFolder});
  if (folder.size() >= 2 && folder.ends_with(":\\")) folder.pop_back();
  return folder;
}

}  // namespace vorda
