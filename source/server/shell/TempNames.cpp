// File sizes and temporary names.

#include <cerrno>
#include <filesystem>
#include <string>

#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/ProgramVersion.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

constexpr std::size_t kExtensionLength = 3;

// "" after telling the operator why there is none.
std::string TemporaryDirectory() {
  std::error_code error;
  const std::filesystem::path directory = std::filesystem::temp_directory_path(error);
  if (error) {
    platform::ShowMessageBox("Error getting a temporary file name :" + std::to_string(error.value()),
                             platform::BoxIcon::Critical);
    return {};
  }
  return platform::Trim(directory.string());
}

// The program's title in capitals without blanks.
std::string TitlePrefix() {
  std::string prefix = platform::UpperCase(platform::kProgramTitle);
  std::erase(prefix, ' ');
  return prefix;
}

}  // namespace

double FileSize(std::string_view path) {
  return static_cast<double>(platform::NativeFileSize(platform::NativePath(path)));
}

std::string UniqueTempFileName(std::string_view path, std::string_view extension) {
  const std::string directory = path.empty() ? TemporaryDirectory() : std::string(path);
  if (directory.empty()) return {};
  const std::string nativeDirectory = platform::NativePath(directory);
  if (nativeDirectory.empty()) return {};
  for (;;) {
    std::string name = platform::MakeTempFile(nativeDirectory, TitlePrefix());
    if (name.empty()) return {};
    platform::RemoveNativeFile(nativeDirectory + "/" + name);
    name.replace(name.size() - kExtensionLength, kExtensionLength, extension);
    // The name is the program's own and new, so it stands on the disk as it is or not at all: no look without
    // regard to case.
    if (platform::NativeFileSize(nativeDirectory + "/" + name) <= 0)
      return platform::JoinPath(directory, name);
  }
}

}  // namespace vorda
