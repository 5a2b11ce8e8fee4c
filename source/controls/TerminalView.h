// A view of received text: the exact bytes in a fixed pitch, wrapped at the window's width.
//
// The text belongs to the owner and changes many times a second; the view repaints at most ten times a second
// and always shows the end. Read-only; the operator can select and copy. Control codes are drawn as one-cell
// symbols.

#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QPoint>
#include <QString>
#include <QTimer>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "controls/TerminalCells.h"
#include "controls/TerminalLayout.h"

class QContextMenuEvent;
class QEvent;
class QFocusEvent;
class QKeyEvent;
class QMouseEvent;
class QPaintEvent;
class QPainter;
class QRect;
class QResizeEvent;
class QTimerEvent;

namespace vorda::controls {

class TerminalView : public QAbstractScrollArea {
 public:
  explicit TerminalView(QWidget* parent = nullptr);

  // Where the view takes the text from each time it paints; ANSI bytes. The owner keeps the text alive.
  void SetSource(std::function<std::string_view()> source);

  // The text has changed: ends the selection and schedules a repaint that shows the end.
  void TextChanged();

  // The text as it stands, and what is selected of it, as ANSI bytes.
  std::string_view Text() const;
  std::string SelectedText() const;
  void SelectAll();
  // Puts the selected text on the clipboard; leaves the clipboard alone when nothing is selected.
  void Copy() const;

  // True for an eighth of a second after the text was taken to the screen: a change waits until then.
  bool IsPausing() const { return pause_.isActive(); }

  // What the screen shows, an eighth of a second behind the text at most. The functions below count in its
  // bytes; a position past its end counts as the end.
  std::string_view ShownText() const { return shown_; }
  // The selected bytes; empty where the caret is when nothing is selected.
  TerminalRange Selection() const;
  // Where the selection was drawn to or the last click was; after an arrival the end of the text.
  std::size_t CaretPosition() const { return cursor_; }
  void Select(std::size_t anchor, std::size_t cursor);
  // The cell of a byte, and the byte whose cell is at a point, in the viewport's pixels.
  QRect CellRect(std::size_t position) const;
  std::size_t PositionOfCell(QPoint point) const;
  // Scrolls until the byte can be seen.
  void ScrollTo(std::size_t position);

 protected:
  bool event(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void TakeText();
  void LayOut();
  void FitScrollBar();
  void KeepPlace(const std::function<void()>& change);
  std::size_t Columns() const;
  int RowsInView() const;
  void PaintRow(QPainter& painter, std::size_t row) const;
  void EndDrag();
  std::size_t RowUnder(QPoint point) const;
  std::size_t PositionBetweenCells(QPoint point) const;
  QString SelectedForClipboard() const;
  void ShowMenu(QPoint global);

  std::function<std::string_view()> source_;
  // A copy, because the owner's text moves on between two repaints while the rows and the selection count in
  // what is shown.
  std::string shown_;
  std::vector<TerminalRange> rows_;
  std::size_t columns_ = 0;
  TerminalCells cells_;
  // A change while it runs only leaves its mark.
  QTimer pause_;
  bool changed_ = false;
  std::size_t anchor_ = 0;
  std::size_t cursor_ = 0;
  bool dragging_ = false;
  QPoint dragPoint_;
  QBasicTimer dragScroll_;
};

}  // namespace vorda::controls
