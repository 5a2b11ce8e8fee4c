// How received text falls into rows of a fixed number of cells; pure, one byte a cell.

#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace vorda::controls {

// Bytes [begin, end) of a text.
struct TerminalRange {
  std::size_t begin = 0;
  std::size_t end = 0;

  bool operator==(const TerminalRange&) const = default;
};

// True for a code that has no character of its own and is shown as a symbol: the control codes and what the
// code page leaves undefined.
bool IsTerminalSymbol(char c);

// Puts into `rows` what each row shows, in order and never empty. CR LF ends a line and belongs to no row; a
// CR or an LF alone is a cell like any other. A longer line goes on in the next row after `columns` cells (0
// counts as 1).
void LayOutRows(std::string_view text, std::size_t columns, std::vector<TerminalRange>& rows);

// The index of the row that shows the byte at `position`; a line end belongs to the row it ends, the end of
// the text to the last one. `rows` must not be empty.
std::size_t RowAt(const std::vector<TerminalRange>& rows, std::size_t position);

// What a double click on the byte at `position` selects: the word, the run of blanks or of punctuation, or
// the one symbol; nothing past the end.
TerminalRange WordAt(std::string_view text, std::size_t position);

// How one text became another, for listeners that want steps: `cut` bytes fell off the front, the next `kept`
// bytes stayed, whatever follows them was replaced. Holds for any two texts; neat where the text moved on
// like a terminal's.
struct TerminalStep {
  std::size_t cut = 0;
  std::size_t kept = 0;

  bool operator==(const TerminalStep&) const = default;
};
TerminalStep StepBetween(std::string_view before, std::string_view after);

}  // namespace vorda::controls
