#include "controls/TerminalLayout.h"

#include <algorithm>

namespace vorda::controls {

namespace {

enum class CellKind { Word, Blank, Symbol, Other };

CellKind KindOf(char c) {
  const auto code = static_cast<unsigned char>(c);
  if (IsTerminalSymbol(c)) return CellKind::Symbol;
  if (code == ' ' || code == 0xA0) return CellKind::Blank;
  const bool letter =
      (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || (code >= '0' && code <= '9');
  const bool accented = code >= 0xC0 && code != 0xD7 && code != 0xF7;
  // The letters that the code page keeps among its punctuation: S and Z with caron, the OE ligature, Y with
  // diaeresis.
  constexpr std::string_view kStrays = "\x8A\x8C\x8E\x9A\x9C\x9E\x9F";
  const bool stray = kStrays.find(c) != std::string_view::npos;
  return letter || accented || stray || code == '_' ? CellKind::Word : CellKind::Other;
}

// Where the line that begins at `begin` ends: at its CR LF or at the end of the text.
std::size_t LineEnd(std::string_view text, std::size_t begin) {
  // One character at a time: the library searches for it with the processor's wide instructions, for a pair
  // it doesn't.
  for (std::size_t at = text.find('\r', begin); at != std::string_view::npos; at = text.find('\r', at + 1)) {
    if (at + 1 < text.size() && text[at + 1] == '\n') return at;
  }
  return text.size();
}

}  // namespace

bool IsTerminalSymbol(char c) {
  const auto code = static_cast<unsigned char>(c);
  if (code < 32 || code == 127) return true;
  return code == 0x81 || code == 0x8D || code == 0x8F || code == 0x90 || code == 0x9D;
}

void LayOutRows(std::string_view text, std::size_t columns, std::vector<TerminalRange>& rows) {
  columns = std::max<std::size_t>(columns, 1);
  rows.clear();
  for (std::size_t begin = 0;;) {
    const std::size_t end = LineEnd(text, begin);
    for (; end - begin > columns; begin += columns) rows.push_back({begin, begin + columns});
    rows.push_back({begin, end});
    if (end == text.size()) return;
    begin = end + 2;
  }
}

std::size_t RowAt(const std::vector<TerminalRange>& rows, std::size_t position) {
  const auto after =
      std::upper_bound(rows.begin() + 1, rows.end(), position,
                       [](std::size_t at, const TerminalRange& row) { return at < row.begin; });
  return static_cast<std::size_t>(after - rows.begin()) - 1;
}

TerminalRange WordAt(std::string_view text, std::size_t position) {
  if (position >= text.size()) return {text.size(), text.size()};
  TerminalRange word{position, position + 1};
  const CellKind kind = KindOf(text[position]);
  if (kind == CellKind::Symbol) return word;
  while (word.begin > 0 && KindOf(text[word.begin - 1]) == kind) --word.begin;
  while (word.end < text.size() && KindOf(text[word.end]) == kind) ++word.end;
  return word;
}

TerminalStep StepBetween(std::string_view before, std::string_view after) {
  // Long enough not to be found by chance in the middle of other text.
  constexpr std::size_t kHead = 64;
  TerminalStep step;
  if (after.size() >= kHead) {
    const std::size_t found = before.find(after.substr(0, kHead));
    if (found != std::string_view::npos) step.cut = found;
  }
  const std::string_view rest = before.substr(step.cut);
  const auto differ = std::mismatch(rest.begin(), rest.end(), after.begin(), after.end());
  step.kept = static_cast<std::size_t>(differ.first - rest.begin());
  return step;
}

}  // namespace vorda::controls
