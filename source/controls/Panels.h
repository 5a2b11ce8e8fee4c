// Small controls that the toolkit doesn't have: a label that tells of its change, a panel with a caption, a
// flood panel.

#pragma once

#include <QFrame>
#include <QLabel>
#include <QRawFont>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "controls/Colors.h"

namespace vorda::controls {

// A one-line label whose text is set as ANSI bytes. `Change` runs inside SetCaption, before it returns,
// whenever the text has become another.
class CaptionLabel : public QLabel {
 public:
  explicit CaptionLabel(QWidget* parent = nullptr);
  void SetCaption(std::string_view caption);
  std::string Caption() const;

  std::function<void()> Change;
};

// A sunken panel with a caption in its middle.
class Panel : public QFrame {
 public:
  explicit Panel(QWidget* parent = nullptr);
  void SetCaption(std::string_view caption);
  const std::string& Caption() const { return caption_; }
  // A colour value as ColorOf takes it.
  void SetBackColor(std::int32_t color);
  std::int32_t BackColor() const { return backColor_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void DrawFigures(QPainter& painter);

  std::string caption_;
  std::int32_t backColor_ = kButtonFace;
  QRawFont figures_;  // the font's, once figures have been drawn
};

// A sunken panel that fills from the left.
class FloodPanel : public Panel {
 public:
  using Panel::Panel;
  // 0 to 100; figures outside are brought into the range.
  void SetFloodPercent(double percent);
  double FloodPercent() const { return percent_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int Filled() const;  // pixels

  double percent_ = 0.0;
};

}  // namespace vorda::controls
