// The project's programs, run from outside.

#pragma once

#include <string>
#include <string_view>

#include "support/Program.h"

namespace vorda::test {

// The path of a program that the build made.
std::string BuiltProgram(std::string_view name);

}  // namespace vorda::test
