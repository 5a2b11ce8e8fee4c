// The controls of a feed window and where they stand.

#pragma once

#include <QWidget>

namespace vorda {

void BuildWireFeedControls(QWidget* client);

// Places the controls for the client area's present size: the audio strip along the bottom, the captured text
// above it.
void PlaceWireFeedControls(QWidget* client);

}  // namespace vorda
