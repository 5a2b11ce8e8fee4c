#include "platform/FileRename.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileFault.h"
#include "platform/NativePath.h"
#include "platform/OpenFiles.h"
#include "platform/RunTimeError.h"

namespace vorda::platform {

namespace {

// A link to nowhere bears its name as well.
bool IsTaken(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0;
}

}  // namespace

int RenameWithoutReplacing(const std::string& from, const std::string& to) {
  if (const int fault = FileFault(FileOperation::Rename, to); fault != 0) return fault;
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // A share that can't: a link never replaces, and where links don't exist either a look must do.
  if (::link(from.c_str(), to.c_str()) == 0) return ::unlink(from.c_str()) == 0 ? 0 : errno;
  if (errno == EEXIST || IsTaken(to)) return EEXIST;
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int RenameFile(std::string_view from, std::string_view to) {
  const std::string source = NativePath(from);
  const std::string target = NativePath(to);
  if (source.empty() || target.empty()) return FailedWith(kPathNotFound);
  if (!IsTaken(source)) return FailedWith(kFileNotFound);
  if (IsTaken(target)) return FailedWith(kFileAlreadyExists);
  const int systemError = RenameWithoutReplacing(source, target);
  return FailedWithErrno(systemError);
}

}  // namespace vorda::platform
