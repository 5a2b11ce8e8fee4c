#include "station/Program.h"

namespace vorda::test {

std::string BuiltProgram(std::string_view name) {
  return std::string(VORDA_BIN_DIR) + "/" + std::string(name);
}

}  // namespace vorda::test
