// How the operator sees a copy that takes long.

#pragma once

#include "platform/ShellOperation.h"

namespace vorda::controls {

// Waits until the copy has ended. After a moment a window with the operation's title stands above its owner
// and shows how far it is; Esc, its button and its close box cancel. Everything but the operator's input to
// other windows goes on.
void ShowCopyProgress(platform::FileCopy& copy, const platform::ShellOperation& operation);

// Waits in the same way without a window: nobody is there to look.
void WaitForCopy(platform::FileCopy& copy, const platform::ShellOperation& operation);

}  // namespace vorda::controls
