// What the system tells of processes.

#pragma once

#include <string>

namespace vorda::test {

// The bytes of a file below /proc; "" when there is none. A process may end between the opening and the
// reading, which fails then: that is "" too.
std::string ReadProcFile(const std::string& path);

}  // namespace vorda::test
