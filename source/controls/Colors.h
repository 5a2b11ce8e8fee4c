// Colours as the system's records and settings hold them.

#pragma once

#include <QColor>

#include <cstdint>

namespace vorda::controls {

// The face of a button: 0x80000000 and the index of a system colour.
inline constexpr std::int32_t kButtonFace = static_cast<std::int32_t>(0x8000000F);

// The colour of a value 0x00BBGGRR, or of a system colour.
QColor ColorOf(std::int32_t value);

}  // namespace vorda::controls
