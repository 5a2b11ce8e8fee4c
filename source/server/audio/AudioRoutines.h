// Sound files that the system makes for its carts.

#pragma once

#include <cstdint>
#include <string>

namespace vorda {

// Makes a wave file of a header alone: `rate` in hertz, `bits` a sample. Its two sizes claim 10 bytes of
// sound that the file doesn't hold; editors expect them so. Nothing for an empty path. A failure is told in a
// box. True when the file was made.
bool CreateBlankWave(const std::string& path, std::int32_t rate, std::int16_t bits, std::int16_t channels);

}  // namespace vorda
