#include "controls/PlainScrollBar.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace vorda::controls {

PlainScrollBar::PlainScrollBar(QWidget* parent) : QScrollBar(Qt::Vertical, parent) {
  setAttribute(Qt::WA_OpaquePaintEvent);
}

void PlainScrollBar::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QStyleOptionSlider bar;
  initStyleOption(&bar);
  const auto part = [&](QStyle::SubControl control) {
    return style()->subControlRect(QStyle::CC_ScrollBar, &bar, control, this);
  };
  const auto arrow = [&](QStyle::PrimitiveElement element, QStyle::SubControl control) {
    QStyleOption option(static_cast<const QStyleOption&>(bar));
    option.rect = part(control).adjusted(3, 3, -3, -3);
    style()->drawPrimitive(element, &option, &painter, this);
  };
  painter.fillRect(rect(), palette().color(QPalette::Window));
  painter.fillRect(part(QStyle::SC_ScrollBarSlider).adjusted(2, 0, -2, 0), palette().color(QPalette::Mid));
  arrow(QStyle::PE_IndicatorArrowUp, QStyle::SC_ScrollBarSubLine);
  arrow(QStyle::PE_IndicatorArrowDown, QStyle::SC_ScrollBarAddLine);
}

}  // namespace vorda::controls
