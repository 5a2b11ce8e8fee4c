#include "controls/TerminalCells.h"

#include <QChar>
#include <QFontMetrics>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QPointF>
#include <QRect>
#include <QString>

#include <algorithm>

#include "controls/TerminalLayout.h"
#include "platform/Text.h"

namespace vorda::controls {

namespace {

// The letter of the control code's caret notation, as on the key that sends it: 1 is A, 27 is [, 127 is ?.
QChar CaretLetter(unsigned char code) {
  return QChar(static_cast<char16_t>(code ^ 0x40));
}

}  // namespace

TerminalCells::TerminalCells(const QFont& font) : font_(font), letter_(font), small_(font) {
  // Whole pixels, so that selections and symbols have sharp edges; glyphs are placed by the cell, not by
  // their own widths.
  const QFontMetrics metrics(font);
  size_ = {std::max(1, qRound(QFontMetricsF(font).horizontalAdvance(QLatin1Char('M')))),
           std::max(1, metrics.height())};
  ascent_ = metrics.ascent();
  letter_.setPixelSize(std::max(1, size_.height() * 7 / 10));
  letter_.setBold(true);
  small_.setPixelSize(std::max(1, size_.height() / 2));
  raw_ = QRawFont::fromFont(font);
  const QList<quint32> blank = raw_.glyphIndexesForString(QStringLiteral(" "));
  anyGlyphs_ = raw_.isValid() && !blank.isEmpty();
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    const QList<quint32> glyph = raw_.glyphIndexesForString(platform::ToUnicode({&c, 1}));
    const bool drawn = anyGlyphs_ && !IsTerminalSymbol(c) && !glyph.isEmpty() && glyph.first() != 0;
    special_[code] = !drawn;
    glyphs_[code] = drawn ? glyph.first() : (anyGlyphs_ ? blank.first() : 0);
  }
}

void TerminalCells::Draw(QPainter& painter, QPoint topLeft, std::string_view bytes,
                         const CellColors& colors) const {
  if (bytes.empty()) return;
  if (anyGlyphs_) DrawGlyphs(painter, topLeft, bytes, colors.text);
  QRect cell(topLeft, size_);
  for (const char c : bytes) {
    if (IsTerminalSymbol(c)) {
      DrawSymbol(painter, cell, c, colors);
    } else if (special_[static_cast<unsigned char>(c)]) {
      painter.setFont(font_);
      painter.setPen(colors.text);
      painter.drawText(cell, Qt::AlignCenter | Qt::TextDontClip, platform::ToUnicode({&c, 1}));
    }
    cell.translate(size_.width(), 0);
  }
}

void TerminalCells::DrawGlyphs(QPainter& painter, QPoint topLeft, std::string_view bytes,
                               const QColor& color) const {
  for (std::size_t column = places_.size(); column < bytes.size(); ++column) {
    places_.emplace_back(static_cast<double>(column) * size_.width(), 0.0);
  }
  run_.clear();
  for (const char c : bytes) run_.push_back(glyphs_[static_cast<unsigned char>(c)]);
  QGlyphRun glyphs;
  glyphs.setRawFont(raw_);
  glyphs.setRawData(run_.data(), places_.data(), static_cast<int>(run_.size()));
  painter.setPen(color);
  painter.drawGlyphRun(QPointF(topLeft.x(), topLeft.y() + ascent_), glyphs);
}

// Not Unicode's control pictures: fixed pitch fonts tend to lack them, and three letters in the room of one
// can't be read at this size.
void TerminalCells::DrawSymbol(QPainter& painter, const QRect& cell, char c, const CellColors& colors) const {
  const QRect box = cell.adjusted(0, 1, -1, -1);
  const auto code = static_cast<unsigned char>(c);
  if (code < 128) {
    painter.fillRect(box, colors.text);
    painter.setFont(letter_);
    painter.setPen(colors.back);
    painter.drawText(box, Qt::AlignCenter | Qt::TextDontClip, CaretLetter(code));
    return;
  }
  painter.setFont(small_);
  painter.setPen(colors.text);
  const QString hex = QString::number(code, 16).toUpper();
  const QRect upper(cell.left(), cell.top(), cell.width(), cell.height() / 2);
  painter.drawText(upper, Qt::AlignCenter | Qt::TextDontClip, hex.first(1));
  painter.drawText(upper.translated(0, cell.height() / 2), Qt::AlignCenter | Qt::TextDontClip, hex.last(1));
}

}  // namespace vorda::controls
