// What assistive technology sees of a panel: its caption, as the panel's description.

#pragma once

namespace vorda::controls {

class Panel;

// Makes panels known to assistive technology; once is enough.
void InstallPanelAccessible();

// Tells that the caption has become another, when anybody listens.
void TellCaptionChanged(Panel& panel);

}  // namespace vorda::controls
