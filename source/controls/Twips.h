// Twips, the unit of the windows' measures: 15 to a pixel.

#pragma once

#include <cmath>

namespace vorda::controls {

inline constexpr int kTwipsPerPixel = 15;

// Whole pixels, half to even.
inline int PixelsFromTwips(double twips) {
  return static_cast<int>(std::nearbyint(twips / kTwipsPerPixel));
}
inline double TwipsFromPixels(int pixels) {
  return static_cast<double>(pixels) * kTwipsPerPixel;
}

}  // namespace vorda::controls
