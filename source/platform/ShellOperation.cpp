#include "platform/ShellOperation.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

#include "platform/FileFault.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/RunTimeError.h"

namespace vorda::platform {

namespace {

enum class Step { GoOn, Refused };

std::string NameOf(const std::string& path) {
  return path.substr(path.find_last_of("\\/") + 1);
}

bool IsFolder(const std::string& nativePath) {
  std::error_code error;
  return std::filesystem::is_directory(nativePath, error);
}

// A link to nowhere bears the name as well.
bool IsTaken(const std::string& nativePath) {
  struct stat status {};
  return ::lstat(nativePath.c_str(), &status) == 0;
}

Step Ask(const ShellOperation& operation, const std::string& title, const std::string& question) {
  if (!operation.confirm) return Step::GoOn;
  const BoxAnswer answer =
      ShowMessageBox({question, BoxIcon::Question, BoxButtons::YesNo, title, BoxAnswer::No});
  return answer == BoxAnswer::Yes ? Step::GoOn : Step::Refused;
}

int Failed(const ShellOperation& operation, const std::string& words, int error) {
  ShowMessageBox({(operation.move ? "Cannot move " : "Cannot copy ") + operation.source + "\nto " +
                      operation.destination + "\n\n" + words,
                  BoxIcon::Critical, BoxButtons::Ok, operation.progressTitle});
  return error;
}

int Failed(const ShellOperation& operation, int error) {
  return Failed(operation, ErrorText(error), error);
}

// 0, an error, or kCopyCancelled when the operator wants no new folder.
int MakeFolderOf(const ShellOperation& operation, const std::string& nativePath) {
  const std::string folder = nativePath.substr(0, nativePath.rfind('/'));
  if (folder.empty() || IsFolder(folder)) return kNoError;
  const Step asked =
      Ask(operation, "New Folder",
          "The folder of " + operation.destination + "\ndoes not exist. Do you want to make it?");
  if (asked == Step::Refused) return kCopyCancelled;
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  return error ? Failed(operation, ErrorFromErrno(error.value())) : kNoError;
}

// The one failure that isn't the shell's own to tell: there is no room for a thread.
int CannotBegin() {
  SetCurrentError(kOutOfMemory);
  return kOutOfMemory;
}

int Run(const ShellOperation& operation, const FileCopyTask& task) try {
  if (FileFault(FileOperation::BeginCopy, operation.source) != 0) return CannotBegin();
  FileCopy copy(task);
  CopyProgressHook()(copy, operation);
  const int result = copy.Result();
  if (result == kNoError || result == kCopyCancelled) return result;
  return Failed(operation, result);
} catch (const std::system_error&) {
  return CannotBegin();
}

}  // namespace

Hook<void(FileCopy&, const ShellOperation&)>& CopyProgressHook() {
  static Hook<void(FileCopy&, const ShellOperation&)> hook(
      [](FileCopy& copy, const ShellOperation&) { copy.Result(); });
  return hook;
}

int RunShellOperation(const ShellOperation& operation) {
  FileCopyTask task{NativePath(operation.source), NativePath(operation.destination), operation.move};
  if (task.source.empty() || task.destination.empty()) return Failed(operation, kPathNotFound);
  if (IsFolder(task.source)) return Failed(operation, kPathFileAccessError);
  if (!IsTaken(task.source)) return Failed(operation, kFileNotFound);
  if (IsFolder(task.destination))
    task.destination = NativePath(JoinPath(operation.destination, NameOf(operation.source)));
  std::error_code ignored;
  if (std::filesystem::equivalent(task.source, task.destination, ignored))
    return Failed(operation, "Source and destination are the same file.", kPathFileAccessError);
  if (const int result = MakeFolderOf(operation, task.destination); result != kNoError) return result;
  task.replace = IsTaken(task.destination);
  if (task.replace && Ask(operation, "Replace File",
                          "There is a file already:\n" + operation.destination +
                              "\nDo you want to replace it?") == Step::Refused) {
    return kNoError;
  }
  return Run(operation, task);
}

}  // namespace vorda::platform
