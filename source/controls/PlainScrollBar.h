// A vertical scroll bar that is cheap to paint.
//
// The native one is translucent: each of its changes has everything beneath painted again, and its gradients
// cost more than a page of text. Beside text that moves eight times a second that is most of a feed window's
// work.

#pragma once

#include <QScrollBar>

namespace vorda::controls {

class PlainScrollBar : public QScrollBar {
 public:
  explicit PlainScrollBar(QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace vorda::controls
