// What a screen reader sees of a TerminalView: a read-only text of many lines, its selection, and the caret
// at its end.

#pragma once

#include <memory>
#include <string_view>
#include <vector>

class QAccessibleEvent;

namespace vorda::controls {

class TerminalView;

// Makes views answer to screen readers. Every call but the first does nothing.
void InstallTerminalViewAccessible();

// What a screen reader is told when the shown text was `before` and is now another, in the order of the
// changes.
std::vector<std::unique_ptr<QAccessibleEvent>> TextEvents(TerminalView& view, std::string_view before);

// Tell the screen reader what has just changed. Worth calling only while one is listening.
void AnnounceText(TerminalView& view, std::string_view before);
void AnnounceSelection(TerminalView& view);

}  // namespace vorda::controls
