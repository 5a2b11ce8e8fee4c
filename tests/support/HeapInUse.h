// What the program holds in memory, for tests that nothing piles up.

#pragma once

#include <malloc.h>

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define VORDA_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VORDA_ADDRESS_SANITIZER 1
#endif
#endif
#ifdef VORDA_ADDRESS_SANITIZER
// The sanitizer's own; not every compiler has its header.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace vorda::test {

// The bytes that are allocated now. Not what the process takes of the machine's memory, which also holds what
// was freed.
inline std::size_t HeapInUse() {
#ifdef VORDA_ADDRESS_SANITIZER
  return __sanitizer_get_current_allocated_bytes();
#else
  const struct mallinfo2 heap = ::mallinfo2();
  return heap.uordblks + heap.hblkhd;
#endif
}

}  // namespace vorda::test
