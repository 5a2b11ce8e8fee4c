#include "carts/CartFiles.h"

#include <filesystem>
#include <system_error>

#include "platform/Files.h"
#include "platform/NativePath.h"
#include "platform/RunTimeError.h"
#include "platform/Settings.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

std::string ScratchFolder() {
  std::string folder = platform::JoinPath(platform::WindowsDirectory(), "scratch");
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  return folder;
}

}  // namespace

int DeleteFileIn(const std::string& directory, const std::string& name) {
  return platform::RemoveNativeFile(platform::NativePath(platform::JoinPath(directory, name)));
}

int ShellCopy(const std::string& source, const std::string& destination, const std::string& title,
              platform::OwnerWindow window) {
  platform::SetCurrentError(platform::kNoError);
  RunShellFileOperation(source, destination, title, window, false, true);
  return platform::CurrentError();
}

void ReportFile(std::string_view what, const std::string& name, int error) {
  ReportProblem(std::string(what) + name, static_cast<std::int16_t>(error));
}

std::string CartFileOf(const std::string& stem, const std::string& extension) {
  const std::string name = "." + extension;
  return stem.empty() ? platform::JoinPath(ScratchFolder(), name) : stem + name;
}

}  // namespace vorda
