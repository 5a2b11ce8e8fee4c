#include "platform/RandomFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "platform/FileFault.h"
#include "platform/NativePath.h"
#include "platform/OpenFiles.h"
#include "platform/RunTimeError.h"

namespace vorda::platform {
namespace {

bool MayOnlyBeRead(int systemError) {
  return systemError == EACCES || systemError == EPERM || systemError == EROFS;
}

Descriptor OpenShared(const std::string& path, int flags) {
  Descriptor file = OpenFile(path, O_RDWR | flags);
  if (file.isOpen() || !MayOnlyBeRead(errno)) return file;
  const int refusal = errno;
  file = OpenFile(path, O_RDONLY);
  if (!file.isOpen()) errno = refusal;
  return file;
}

bool OpensForReadingOnly(const Descriptor& file) {
  return (::fcntl(file.number(), F_GETFL) & O_ACCMODE) == O_RDONLY;
}

}  // namespace

int OpenForRandom(int number, std::string_view configured) {
  if (number < 1) return FailedWith(kBadFileNumber);
  if (OpenFiles().contains(number)) return FailedWith(kFileAlreadyOpen);
  std::string path = NativePath(configured);
  if (path.empty()) return FailedWith(kPathNotFound);
  Descriptor file = OpenShared(path, O_CREAT);
  if (!file.isOpen()) return FailedWithErrno(errno);
  OpenFiles()[number] = {std::move(file), std::move(path)};
  return 0;
}

int ReopenForRandom(int number, std::string_view configured) {
  const auto open = OpenFiles().find(number);
  if (open == OpenFiles().end()) return OpenForRandom(number, configured);
  NumberedFile& numbered = open->second;
  numbered.file.Close();
  // Mostly the file is where it was: the search for its name can be left out.
  numbered.file = OpenShared(numbered.path, 0);
  if (numbered.file.isOpen()) return 0;
  OpenFiles().erase(open);
  return OpenForRandom(number, configured);
}

int ReadFromFile(int number, std::int64_t offset, std::span<char> bytes, std::size_t& count) {
  count = 0;
  const auto open = OpenFiles().find(number);
  if (open == OpenFiles().end()) return FailedWith(kBadFileNumber);
  if (const int fault = FileFault(FileOperation::Read, open->second.path); fault != 0)
    return FailedWithErrno(fault);
  const ssize_t length = ::pread(open->second.file.number(), bytes.data(), bytes.size(), offset);
  if (length < 0) return FailedWithErrno(errno);
  count = static_cast<std::size_t>(length);
  return 0;
}

int WriteToFileAt(int number, std::int64_t offset, std::string_view bytes) {
  const auto open = OpenFiles().find(number);
  if (open == OpenFiles().end()) return FailedWith(kBadFileNumber);
  if (const int fault = FileFault(FileOperation::Write, open->second.path); fault != 0)
    return FailedWithErrno(fault);
  const Descriptor& file = open->second.file;
  const ssize_t length = ::pwrite(file.number(), bytes.data(), bytes.size(), offset);
  if (length < 0 && OpensForReadingOnly(file)) return FailedWith(kPathFileAccessError);
  if (length < 0) return FailedWithErrno(errno);
  return static_cast<std::size_t>(length) == bytes.size() ? 0 : FailedWith(kDiskFull);
}

std::int64_t OpenFileLength(int number) {
  const auto open = OpenFiles().find(number);
  struct stat status {};
  if (open == OpenFiles().end() || ::fstat(open->second.file.number(), &status) != 0) return -1;
  return status.st_size;
}

}  // namespace vorda::platform
