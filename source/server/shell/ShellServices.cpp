// What the desktop's shell does for the system: the folder question and file copies.

#include "platform/Desktop.h"
#include "platform/ShellOperation.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

std::string BrowseForFolder(platform::OwnerWindow owner, const std::string& title,
                            const std::string& startFolder) {
  std::string folder = platform::PickFolder({title, startFolder, owner});
  if (folder.size() >= 2 && folder.ends_with(":\\")) folder.pop_back();
  return folder;
}

std::int32_t RunShellFileOperation(const std::string& source, const std::string& destination,
                                   const std::string& progressTitle, platform::OwnerWindow owner,
                                   bool moveFile, bool confirm) {
  return platform::RunShellOperation({source, destination, progressTitle, owner, moveFile, confirm});
}

}  // namespace vorda
