#include "platform/FileCopy.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Descriptor.h"
#include "platform/FileFault.h"
#include "platform/FileRename.h"
#include "platform/RunTimeError.h"

namespace vorda::platform {

namespace {

constexpr std::size_t kPiece = 1 << 20;

// The name beside the destination under which a copy grows.
std::string GrowingName(const std::string& destination) {
  static std::atomic<unsigned> number = 0;
  const std::size_t separator = destination.rfind('/');
  const std::string directory =
      separator == std::string::npos ? std::string() : destination.substr(0, separator + 1);
  return directory + ".vorda-copy-" + std::to_string(::getpid()) + "-" + std::to_string(++number);
}

// 0 or an errno.
int Rename(const std::string& from, const std::string& to, bool replace) {
  if (!replace) return RenameWithoutReplacing(from, to);
  if (const int fault = FileFault(FileOperation::Rename, to); fault != 0) return fault;
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int Sync(int file) {
  if (const int fault = FileFault(FileOperation::Sync, {}); fault != 0) return fault;
  return ::fsync(file) == 0 ? 0 : errno;
}

}  // namespace

FileCopy::FileCopy(FileCopyTask task) : task_(std::move(task)), thread_([this] { Run(); }) {}

FileCopy::~FileCopy() {
  Cancel();
  if (thread_.joinable()) thread_.join();
}

int FileCopy::Result() {
  if (thread_.joinable()) thread_.join();
  return result_;
}

void FileCopy::Run() {
  const int systemError = CopyOrMove();
  result_ = systemError == ECANCELED ? kCopyCancelled : ErrorFromErrno(systemError);
  ended_ = true;
  const QCoreApplication* const application = QCoreApplication::instance();
  if (application == nullptr) return;
  if (auto* const events = QAbstractEventDispatcher::instance(application->thread()); events != nullptr)
    events->wakeUp();
}

int FileCopy::CopyOrMove() {
  if (!task_.move) return Copy();
  const int renamed = Rename(task_.source, task_.destination, task_.replace);
  if (renamed != EXDEV) return renamed;
  if (const int copied = Copy(); copied != 0) return copied;
  if (const int fault = FileFault(FileOperation::Remove, task_.source); fault != 0) return fault;
  return ::unlink(task_.source.c_str()) == 0 ? 0 : errno;
}

int FileCopy::Copy() {
  const Descriptor source = OpenFile(task_.source, O_RDONLY);
  if (!source.isOpen()) return errno;
  struct stat status {};
  if (::fstat(source.number(), &status) != 0) return errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  total_ = static_cast<std::uint64_t>(status.st_size);

  const std::string growing = GrowingName(task_.destination);
  Descriptor copy = OpenFile(growing, O_WRONLY | O_CREAT | O_EXCL, status.st_mode & 0777);
  if (!copy.isOpen()) return errno;
  int systemError = CopyBytes(source.number(), copy);
  if (systemError == 0) {
    // A copy is as old as what it was made from.
    const timespec times[] = {status.st_atim, status.st_mtim};
    ::futimens(copy.number(), times);
    systemError = Sync(copy.number());
  }
  if (!copy.Close() && systemError == 0) systemError = errno;
  if (systemError == 0) systemError = Rename(growing, task_.destination, task_.replace);
  if (systemError != 0) ::unlink(growing.c_str());
  return systemError;
}

int FileCopy::CopyBytes(int source, const Descriptor& destination) {
  std::vector<char> piece(kPiece);
  for (;;) {
    if (cancelled_) return ECANCELED;
    const ssize_t length = ::read(source, piece.data(), piece.size());
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) return errno;
    if (length == 0) return cancelled_ ? ECANCELED : 0;
    const std::string_view bytes(piece.data(), static_cast<std::size_t>(length));
    if (const int failed = WriteAll(destination, bytes); failed != 0) return failed;
    done_ += static_cast<std::uint64_t>(length);
  }
}

}  // namespace vorda::platform
