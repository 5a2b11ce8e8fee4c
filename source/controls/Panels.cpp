#include "controls/Panels.h"

#include <QEvent>
#include <QGlyphRun>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

#include "controls/PanelAccessible.h"
#include "platform/Text.h"

namespace vorda::controls {

CaptionLabel::CaptionLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setMinimumWidth(0);
}

void CaptionLabel::SetCaption(std::string_view caption) {
  const QString changed = platform::ToUnicode(caption);
  if (changed == text()) return;
  setText(changed);
  setToolTip(changed);
  if (const auto change = Change) change();
}

std::string CaptionLabel::Caption() const {
  return platform::FromUnicode(text());
}

Panel::Panel(QWidget* parent) : QFrame(parent) {
  InstallPanelAccessible();
  setFrameStyle(QFrame::Panel | QFrame::Sunken);
  setAutoFillBackground(true);
}

void Panel::SetCaption(std::string_view caption) {
  if (caption == caption_) return;
  caption_ = caption;
  TellCaptionChanged(*this);
  update(contentsRect());
}

void Panel::SetBackColor(std::int32_t color) {
  backColor_ = color;
  QPalette colors = palette();
  colors.setColor(QPalette::Window, ColorOf(color));
  setPalette(colors);
}

void Panel::paintEvent(QPaintEvent* event) {
  if (!contentsRect().contains(event->rect())) QFrame::paintEvent(event);
  if (caption_.empty()) return;
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::WindowText));
  if (caption_.find_first_not_of("0123456789.") == std::string::npos) {
    DrawFigures(painter);
  } else {
    painter.drawText(contentsRect(), Qt::AlignCenter, platform::ToUnicode(caption_));
  }
}

// Without the layout of text, which is most of what drawing costs: feeds show forty counts a second.
void Panel::DrawFigures(QPainter& painter) {
  if (!figures_.isValid()) figures_ = QRawFont::fromFont(font());
  const QList<quint32> glyphs = figures_.glyphIndexesForString(platform::ToUnicode(caption_));
  QList<QPointF> places;
  double width = 0;
  for (const QPointF& advance : figures_.advancesForGlyphIndexes(glyphs)) {
    places.append(QPointF(width, 0));
    width += advance.x();
  }
  QGlyphRun run;
  run.setRawFont(figures_);
  run.setGlyphIndexes(glyphs);
  run.setPositions(places);
  const QRectF inner = contentsRect();
  const double top = inner.center().y() - (figures_.ascent() + figures_.descent()) / 2;
  painter.drawGlyphRun(QPointF(inner.center().x() - width / 2, std::round(top + figures_.ascent())), run);
}

void Panel::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange) figures_ = {};
  QFrame::changeEvent(event);
}

void FloodPanel::SetFloodPercent(double percent) {
  const double bounded = std::clamp(percent, 0.0, 100.0);
  if (bounded == percent_) return;
  const int before = Filled();
  percent_ = bounded;
  const auto [left, right] = std::minmax({before, Filled()});
  const QRect inner = contentsRect();
  if (left != right) update(inner.x() + left, inner.y(), right - left, inner.height());
}

int FloodPanel::Filled() const {
  return static_cast<int>(contentsRect().width() * percent_ / 100.0);
}

void FloodPanel::paintEvent(QPaintEvent* event) {
  const QRect inner = contentsRect();
  const int filled = Filled();
  if (filled > 0) {
    QPainter painter(this);
    painter.fillRect(inner.x(), inner.y(), filled, inner.height(), palette().color(QPalette::Highlight));
  }
  Panel::paintEvent(event);
}

}  // namespace vorda::controls
