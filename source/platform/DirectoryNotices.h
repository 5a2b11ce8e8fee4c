// The system's notices of entries that come and go in directories, whoever makes or removes them.
//
// What this machine does to a directory is told here before the call that did it returns; what other machines
// do to a shared one is not.

#pragma once

#include <string>
#include <vector>

#include "platform/Descriptor.h"

namespace vorda::platform {

enum class DirectoryChange {
  Added,
  Removed,
  Lost,  // the directory is gone or moved: nothing more will be told of it
};

struct DirectoryNotice {
  int watch = -1;
  DirectoryChange change = DirectoryChange::Lost;
  std::string name;  // the entry's, as it stands on disk
};

class DirectoryNotices {
 public:
  DirectoryNotices();

  // The number under which a directory's notices come from now on; the same for the same directory. -1 when
  // none can be had: a share, too many watches, a directory that is missing.
  int Watch(const std::string& directory);
  void Forget(int watch);

  // All that has happened since the last call, in order. False when some of it was lost: nothing that was
  // read before holds any more.
  bool Take(std::vector<DirectoryNotice>& notices);

 private:
  Descriptor queue_;
};

}  // namespace vorda::platform
