// Giving an existing file new contents in one step.

#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>

#include "platform/Descriptor.h"

namespace vorda::platform {

// What a file that is to be replaced is found to be just before: as it was read, and nobody else changes it
// now; changed; or in another's hands.
enum class Standing { AsRead, Changed, Taken };

// What is to go into a file, and what has to be so for that.
struct NewContents {
  const std::string& oldBytes;
  const std::string& newBytes;
  // Asked last of all.
  const std::function<Standing()>& standing;
  // Syncs only behind the step, so that the time in which others may change the file is as short as can be.
  bool inHaste = false;
};

enum class Replacement { Done, Failed, Changed };

// Replaces the contents of `path`, which `file` holds open for writing with the status `status`: by a
// temporary file in the same directory that takes its place, with owner and mode kept and links followed.
// Where the directory refuses that, in place. Changed when the file stands changed, Failed on any other
// failure: nothing is changed then, and no temporary file is left. One that a killed writer left is taken
// away by the next who writes in the directory.
Replacement ReplaceFile(const std::string& path, const Descriptor& file, const struct stat& status,
                        const NewContents& contents);

}  // namespace vorda::platform
