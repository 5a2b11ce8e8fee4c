// The files of a cart, as the whole-cart operations handle them one by one.

#pragma once

#include <string>
#include <string_view>

#include "platform/Desktop.h"

namespace vorda {

// Deletes one file of `directory`. 0 or a run-time error's number.
int DeleteFileIn(const std::string& directory, const std::string& name);

// Has the shell copy one file, under a title that tells what goes on. What the shell itself finds wrong it
// tells the operator and is no error here. Result: 0, or a run-time error's number when the copy couldn't
// even begin.
int ShellCopy(const std::string& source, const std::string& destination, const std::string& title,
              platform::OwnerWindow window);

// Tells of a failed step: ReportProblem with `what` and the file's name.
void ReportFile(std::string_view what, const std::string& name, int error);

// stem + "." + extension. Without a stem, which carts beyond the wall have, the file lies in a scratch
// folder: never in the working directory or the root.
std::string CartFileOf(const std::string& stem, const std::string& extension);

}  // namespace vorda
