#include "platform/DirectoryNotices.h"

#include <sys/inotify.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "platform/FileFault.h"

namespace vorda::platform {
namespace {

constexpr std::uint32_t kEvents =
    IN_CREATE | IN_MOVED_TO | IN_DELETE | IN_MOVED_FROM | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

// File systems whose every change is made by this machine: ext, XFS, Btrfs, tmpfs, ramfs, overlay, F2FS, ZFS,
// JFS, bcachefs, FAT, exFAT, NTFS.
constexpr std::array<std::uint32_t, 14> kLocal = {0xEF53,     0x58465342, 0x9123683E, 0x01021994, 0x858458F6,
                                                  0x794C7630, 0xF2F52010, 0x2FC12FC1, 0x3153464A, 0xCA451A4E,
                                                  0x4D44,     0x2011BAB0, 0x5346544E, 0x7366746E};

bool IsLocal(const std::string& directory) {
  struct statfs volume {};
  if (::statfs(directory.c_str(), &volume) != 0) return false;
  return std::find(kLocal.begin(), kLocal.end(), static_cast<std::uint32_t>(volume.f_type)) != kLocal.end();
}

DirectoryChange ChangeOf(std::uint32_t event) {
  if ((event & (IN_CREATE | IN_MOVED_TO)) != 0) return DirectoryChange::Added;
  if ((event & (IN_DELETE | IN_MOVED_FROM)) != 0) return DirectoryChange::Removed;
  return DirectoryChange::Lost;
}

// False when the system tells that it dropped some.
bool Append(std::string_view events, std::vector<DirectoryNotice>& notices) {
  bool complete = true;
  while (events.size() >= sizeof(inotify_event)) {
    inotify_event event{};
    std::memcpy(&event, events.data(), sizeof event);
    const std::string_view name = events.substr(sizeof event, event.len);
    if ((event.mask & IN_Q_OVERFLOW) != 0) complete = false;
    notices.push_back({event.wd, ChangeOf(event.mask), std::string(name.substr(0, name.find('\0')))});
    events.remove_prefix(sizeof event + event.len);
  }
  return complete;
}

}  // namespace

DirectoryNotices::DirectoryNotices() : queue_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {}

int DirectoryNotices::Watch(const std::string& directory) {
  if (!queue_.isOpen() || !IsLocal(directory) || FileFault(FileOperation::Watch, directory) != 0) return -1;
  return ::inotify_add_watch(queue_.number(), directory.c_str(), kEvents);
}

void DirectoryNotices::Forget(int watch) {
  ::inotify_rm_watch(queue_.number(), watch);
}

bool DirectoryNotices::Take(std::vector<DirectoryNotice>& notices) {
  bool complete = true;
  alignas(inotify_event) char events[16384];
  while (queue_.isOpen()) {
    const ssize_t length = ::read(queue_.number(), events, sizeof events);
    if (length < 0 && errno == EINTR) continue;
    if (length <= 0) break;
    complete = Append({events, static_cast<std::size_t>(length)}, notices) && complete;
  }
  return complete;
}

}  // namespace vorda::platform
