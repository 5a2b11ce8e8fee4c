// The operator's hands on the view: mouse, keys and the context menu.

#include <QAction>
#include <QBasicTimer>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QEvent>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>
#include <QMouseEvent>
#include <QPoint>
#include <QScrollBar>
#include <QTimerEvent>

#include "controls/TerminalView.h"

namespace vorda::controls {

namespace {

constexpr int kDragScrollMs = 50;

bool IsCopy(const QKeyEvent& key) {
  return key.matches(QKeySequence::Copy) ||
         (key.key() == Qt::Key_Insert && key.modifiers() == Qt::ControlModifier);
}

bool IsMenu(const QKeyEvent& key) {
  return key.key() == Qt::Key_F10 && key.modifiers() == Qt::ShiftModifier;
}

}  // namespace

bool TerminalView::event(QEvent* event) {
  // The main menu may have these keys too; over selected text they mean the text.
  if (event->type() == QEvent::ShortcutOverride) {
    const auto* key = static_cast<QKeyEvent*>(event);
    if (IsCopy(*key) || key->matches(QKeySequence::SelectAll)) {
      event->accept();
      return true;
    }
  }
  return QAbstractScrollArea::event(event);
}

void TerminalView::focusInEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusInEvent(event);
  viewport()->update();
}

void TerminalView::focusOutEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusOutEvent(event);
  viewport()->update();
}

void TerminalView::keyPressEvent(QKeyEvent* event) {
  if (IsCopy(*event)) {
    Copy();
  } else if (event->matches(QKeySequence::SelectAll)) {
    SelectAll();
  } else if (IsMenu(*event)) {
    ShowMenu(viewport()->mapToGlobal(viewport()->rect().center()));
  } else if (event->key() == Qt::Key_Home) {
    verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
  } else if (event->key() == Qt::Key_End) {
    verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMaximum);
  } else {
    QAbstractScrollArea::keyPressEvent(event);
    return;
  }
  event->accept();
}

void TerminalView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const std::size_t position = PositionBetweenCells(event->pos());
  Select(event->modifiers().testFlag(Qt::ShiftModifier) ? anchor_ : position, position);
  dragging_ = true;
}

void TerminalView::mouseMoveEvent(QMouseEvent* event) {
  if (!dragging_) return;
  dragPoint_ = event->pos();
  Select(anchor_, PositionBetweenCells(dragPoint_));
  const bool outside = dragPoint_.y() < 0 || dragPoint_.y() >= viewport()->height();
  if (!outside) {
    dragScroll_.stop();
  } else if (!dragScroll_.isActive()) {
    dragScroll_.start(kDragScrollMs, this);
  }
}

void TerminalView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) EndDrag();
}

void TerminalView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const std::size_t position = PositionOfCell(event->pos());
  // On an empty line there is no cell to click on, only the line end.
  const bool onCell = position < rows_[RowAt(rows_, position)].end;
  const TerminalRange word = onCell ? WordAt(shown_, position) : TerminalRange{position, position};
  Select(word.begin, word.end);
}

void TerminalView::timerEvent(QTimerEvent* event) {
  if (event->timerId() != dragScroll_.timerId()) {
    QAbstractScrollArea::timerEvent(event);
    return;
  }
  verticalScrollBar()->triggerAction(dragPoint_.y() < 0 ? QAbstractSlider::SliderSingleStepSub
                                                        : QAbstractSlider::SliderSingleStepAdd);
  Select(anchor_, PositionBetweenCells(dragPoint_));
}

void TerminalView::EndDrag() {
  dragging_ = false;
  dragScroll_.stop();
}

void TerminalView::contextMenuEvent(QContextMenuEvent* event) {
  ShowMenu(event->globalPos());
  event->accept();
}

// Does not wait for the choice: the text goes on beneath the menu.
void TerminalView::ShowMenu(QPoint global) {
  auto* menu = new QMenu(this);  // deletes itself when it closes
  menu->setAttribute(Qt::WA_DeleteOnClose);
  // An arrival would take the selection away before the operator has found the item, so the menu keeps the
  // text.
  const QString text = SelectedForClipboard();
  QAction* copy = menu->addAction(QStringLiteral("&Copy\tCtrl+C"), this,
                                  [text] { QGuiApplication::clipboard()->setText(text); });
  copy->setEnabled(!text.isEmpty());
  QAction* all = menu->addAction(QStringLiteral("Select &All\tCtrl+A"), this, [this] { SelectAll(); });
  all->setEnabled(!Text().empty());
  menu->popup(global);
}

}  // namespace vorda::controls
