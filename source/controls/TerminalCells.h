// The cells of a fixed pitch font: how large they are and how bytes are drawn in them.

#pragma once

#include <QColor>
#include <QFont>
#include <QPoint>
#include <QRawFont>
#include <QSize>

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

class QPainter;
class QRect;

namespace vorda::controls {

struct CellColors {
  QColor text;
  QColor back;
};

class TerminalCells {
 public:
  explicit TerminalCells(const QFont& font);

  // One cell, in device-independent pixels.
  QSize Size() const { return size_; }

  // Draws `bytes` (ANSI) on one row from `topLeft` to the right, each in its cell, over a background that has
  // been painted.
  void Draw(QPainter& painter, QPoint topLeft, std::string_view bytes, const CellColors& colors) const;

 private:
  void DrawGlyphs(QPainter& painter, QPoint topLeft, std::string_view bytes, const QColor& color) const;
  void DrawSymbol(QPainter& painter, const QRect& cell, char c, const CellColors& colors) const;

  QFont font_;
  QFont letter_;  // of a symbol: within its box
  QFont small_;   // two rows of it in one cell
  QSize size_;
  int ascent_ = 0;
  QRawFont raw_;
  // The font's glyph for every byte; the blank's where the cell is drawn in another way.
  std::array<quint32, 256> glyphs_{};
  // The bytes that the glyphs leave out: symbols, and characters that this font lacks.
  std::array<bool, 256> special_{};
  bool anyGlyphs_ = false;
  // Scratch of DrawGlyphs, kept so that painting allocates nothing.
  mutable std::vector<quint32> run_;
  mutable std::vector<QPointF> places_;
};

}  // namespace vorda::controls
