// Free space.

#include "platform/Files.h"
#include "platform/NativePath.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

std::uint64_t DiskFreeBytes(std::string_view path) {
  return platform::FreeBytes(platform::NativePath(path));
}

double LargeToDouble(std::int32_t low, std::int32_t high) {
  constexpr double kTwoTo32 = 4294967296.0;
  const auto unsignedHalf = [](std::int32_t half) {
    return half < 0 ? half + kTwoTo32 : static_cast<double>(half);
  };
  return unsignedHalf(high) * kTwoTo32 + unsignedHalf(low);
}

}  // namespace vorda
