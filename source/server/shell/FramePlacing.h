// Where the child windows stand in the frame. All figures are twips.

#pragma once

#include "platform/Hook.h"

namespace vorda {

struct TwipRect {
  double left = 0;
  double top = 0;
  double width = 0;
  double height = 0;
};

// What the frame offers its children.
struct FrameArea {
  double clientWidth = 0;
  double clientHeight = 0;
  double historyTop = 0;
};

// The history window: along the bottom left, its height left as it is.
inline TwipRect HistoryPlace(double clientWidth, double clientHeight, double historyHeight) {
  return {30, clientHeight - historyHeight - 60, clientWidth / 2.2, historyHeight};
}

// A feed window when it loads: above the history window.
inline TwipRect FeedPlaceOnLoad(const FrameArea& area) {
  return {30, 30, area.clientWidth / 2.2, area.historyTop - 60};
}

// A feed window's left side once it is shown, `shownBefore` being the feed windows shown before it.
inline double FeedLeft(double width, int shownBefore) {
  return (width + 60) * shownBefore;
}

// The frame installs itself here; without a frame there is no room.
inline platform::Hook<FrameArea()>& FrameAreaHook() {
  static platform::Hook<FrameArea()> hook([] { return FrameArea{}; });
  return hook;
}

}  // namespace vorda
