// What every target shares: the fuzzer's call, its bytes taken apart, and the end where a property doesn't
// hold.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

// Runs one input. Result: 0, always: what is wrong ends the program.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace vorda::fuzz {

// Ends the program where `holds` is false, which is what the fuzzer and the replay take for a find.
inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "\nthis does not hold: %s\n", property);
  std::abort();
}

// An input taken apart from its front: first what is to be done, then the bytes that it is done with. One
// that has come to its end goes on with zeros.
class Input {
 public:
  Input(const std::uint8_t* bytes, std::size_t size) : left_(reinterpret_cast<const char*>(bytes), size) {}

  bool AtEnd() const { return left_.empty(); }

  std::uint8_t Byte() {
    const std::string_view byte = Take(1);
    return byte.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(byte.front());
  }
  // Two bytes, the low one first.
  std::int16_t Short() {
    const unsigned low = Byte();
    return static_cast<std::int16_t>(low | (static_cast<unsigned>(Byte()) << 8U));
  }
  // A byte that tells the length, and as many bytes.
  std::string_view Text() { return Take(Byte()); }
  std::string_view Rest() { return Take(left_.size()); }

 private:
  std::string_view Take(std::size_t length) {
    const std::string_view taken = left_.substr(0, length);
    left_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view left_;
};

// The data in pieces of these lengths, which are gone through over and over; no lengths: in one piece.
// Nothing gets lost: a length of 0 stands for `most`.
inline std::vector<std::string_view> Pieces(std::string_view data, std::string_view lengths,
                                            std::size_t most) {
  std::vector<std::string_view> pieces;
  for (std::size_t i = 0; !data.empty(); ++i) {
    std::size_t length = lengths.empty() ? most : static_cast<unsigned char>(lengths[i % lengths.size()]);
    if (length == 0) length = most;
    pieces.push_back(data.substr(0, length));
    data.remove_prefix(pieces.back().size());
  }
  return pieces;
}

}  // namespace vorda::fuzz
