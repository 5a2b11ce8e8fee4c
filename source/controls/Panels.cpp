#include "controls/Panels.h"

#include <QPainter>

#include <algorithm>

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
  setFrameStyle(QFrame::Panel | QFrame::Sunken);
  setAutoFillBackground(true);
}

void Panel::SetCaption(std::string_view caption) {
  if (caption == caption_) return;
  caption_ = caption;
  setAccessibleDescription(platform::ToUnicode(caption));
  update();
}

void Panel::SetBackColor(std::int32_t color) {
  backColor_ = color;
  QPalette colors = palette();
  colors.setColor(QPalette::Window, ColorOf(color));
  setPalette(colors);
}

void Panel::paintEvent(QPaintEvent* event) {
  QFrame::paintEvent(event);
  if (caption_.empty()) return;
  QPainter painter(this);
  painter.setPen(palette().color(QPalette::WindowText));
  painter.drawText(contentsRect(), Qt::AlignCenter, platform::ToUnicode(caption_));
}

void FloodPanel::SetFloodPercent(double percent) {
  const double bounded = std::clamp(percent, 0.0, 100.0);
  if (bounded == percent_) return;
  percent_ = bounded;
  update();
}

void FloodPanel::paintEvent(QPaintEvent* event) {
  const QRect inner = contentsRect();
  const int filled = static_cast<int>(inner.width() * percent_ / 100.0);
  if (filled > 0) {
    QPainter painter(this);
    painter.fillRect(inner.x(), inner.y(), filled, inner.height(), palette().color(QPalette::Highlight));
  }
  Panel::paintEvent(event);
}

}  // namespace vorda::controls
