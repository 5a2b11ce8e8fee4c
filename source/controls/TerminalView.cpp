#include "controls/TerminalView.h"

#include <QAccessible>
#include <QClipboard>
#include <QEvent>
#include <QFont>
#include <QGuiApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QPalette>
#include <QPoint>
#include <QRect>
#include <QResizeEvent>
#include <QScrollBar>
#include <QString>

#include <algorithm>

#include "controls/PlainScrollBar.h"
#include "controls/TerminalViewAccessible.h"
#include "platform/Text.h"

namespace vorda::controls {

namespace {

constexpr int kMargin = 3;
constexpr int kPauseMs = 125;

QFont TerminalFont() {
  QFont font(QStringLiteral("Courier New"), 10);
  font.setStyleHint(QFont::TypeWriter);
  font.setFixedPitch(true);
  return font;
}

}  // namespace

TerminalView::TerminalView(QWidget* parent) : QAbstractScrollArea(parent), cells_(TerminalFont()) {
  InstallTerminalViewAccessible();
  LayOut();  // before anything that makes events: they count on there being a row
  setFont(TerminalFont());
  setFocusPolicy(Qt::StrongFocus);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBar(new PlainScrollBar(this));
  setAutoFillBackground(true);  // nothing beneath has to be painted first
  viewport()->setCursor(Qt::IBeamCursor);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  pause_.setSingleShot(true);
  pause_.setTimerType(Qt::PreciseTimer);
  pause_.setInterval(kPauseMs);
  connect(&pause_, &QTimer::timeout, this, [this] {
    if (changed_) TakeText();
  });
}

void TerminalView::SetSource(std::function<std::string_view()> source) {
  source_ = std::move(source);
  TextChanged();
}

void TerminalView::TextChanged() {
  changed_ = true;
  anchor_ = cursor_ = shown_.size();
  if (dragging_) EndDrag();
  if (!pause_.isActive()) TakeText();
}

std::string_view TerminalView::Text() const {
  return source_ ? source_() : std::string_view();
}

std::string TerminalView::SelectedText() const {
  const TerminalRange selection = Selection();
  return shown_.substr(selection.begin, selection.end - selection.begin);
}

void TerminalView::SelectAll() {
  if (changed_) TakeText();
  Select(0, shown_.size());
}

QString TerminalView::SelectedForClipboard() const {
  QString text = platform::ToUnicode(SelectedText());
  // A line end within a program is one character; the clipboard makes of it what other programs expect.
  text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  return text;
}

void TerminalView::Copy() const {
  const QString text = SelectedForClipboard();
  if (!text.isEmpty()) QGuiApplication::clipboard()->setText(text);
}

TerminalRange TerminalView::Selection() const {
  return {std::min(anchor_, cursor_), std::max(anchor_, cursor_)};
}

void TerminalView::Select(std::size_t anchor, std::size_t cursor) {
  anchor = std::min(anchor, shown_.size());
  cursor = std::min(cursor, shown_.size());
  if (anchor == anchor_ && cursor == cursor_) return;
  anchor_ = anchor;
  cursor_ = cursor;
  viewport()->update();
  if (QAccessible::isActive()) AnnounceSelection(*this);
}

void TerminalView::TakeText() {
  changed_ = false;
  const bool announce = QAccessible::isActive();
  const std::string before = announce ? shown_ : std::string();
  shown_.assign(Text());
  anchor_ = cursor_ = shown_.size();
  EndDrag();
  LayOut();
  verticalScrollBar()->setValue(verticalScrollBar()->maximum());
  viewport()->update();
  pause_.start();
  if (announce) AnnounceText(*this, before);
}

void TerminalView::LayOut() {
  columns_ = Columns();
  LayOutRows(shown_, columns_, rows_);
  FitScrollBar();
}

// The new range may show or hide the bar, which resizes the viewport: the rows can be others when this
// returns.
void TerminalView::FitScrollBar() {
  const int inView = RowsInView();
  verticalScrollBar()->setPageStep(inView);
  verticalScrollBar()->setRange(0, std::max(0, static_cast<int>(rows_.size()) - inView));
}

// Does what changes the rows and leaves the end in view, or else the text that was at the top. Also runs
// within itself, by way of the bar, and then with a value that is yet to be cut to the new range.
void TerminalView::KeepPlace(const std::function<void()>& change) {
  QScrollBar* bar = verticalScrollBar();
  const bool atEnd = bar->value() == bar->maximum();
  const std::size_t top = rows_[std::min(static_cast<std::size_t>(bar->value()), rows_.size() - 1)].begin;
  change();
  bar->setValue(atEnd ? bar->maximum() : static_cast<int>(RowAt(rows_, top)));
  viewport()->update();
}

std::size_t TerminalView::Columns() const {
  return static_cast<std::size_t>(std::max(1, (viewport()->width() - 2 * kMargin) / cells_.Size().width()));
}

int TerminalView::RowsInView() const {
  return std::max(1, (viewport()->height() - 2 * kMargin) / cells_.Size().height());
}

void TerminalView::resizeEvent(QResizeEvent*) {
  KeepPlace([this] { Columns() == columns_ ? FitScrollBar() : LayOut(); });
}

void TerminalView::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() == QEvent::FontChange) {
    cells_ = TerminalCells(font());
    KeepPlace([this] { LayOut(); });
  } else if (event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange ||
             event->type() == QEvent::ActivationChange) {
    viewport()->update();
  }
}

void TerminalView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  const QRect area = event->rect();
  painter.fillRect(area, palette().color(QPalette::Base));
  const int height = cells_.Size().height();
  const int first = verticalScrollBar()->value() + std::max(0, (area.top() - kMargin) / height);
  const int last = verticalScrollBar()->value() + (area.bottom() - kMargin) / height;
  for (int row = first; row <= last && row < static_cast<int>(rows_.size()); ++row) {
    PaintRow(painter, static_cast<std::size_t>(row));
  }
  if (hasFocus()) {
    painter.setPen(palette().color(QPalette::Highlight));
    painter.drawRect(viewport()->rect().adjusted(0, 0, -1, -1));
  }
}

void TerminalView::PaintRow(QPainter& painter, std::size_t row) const {
  const TerminalRange range = rows_[row];
  const QRect line = CellRect(range.begin);
  const QPalette colors = palette();
  const CellColors plain{colors.color(QPalette::Text), colors.color(QPalette::Base)};
  const CellColors marked{colors.color(QPalette::HighlightedText), colors.color(QPalette::Highlight)};
  const TerminalRange selection = Selection();
  const std::size_t from = std::clamp(selection.begin, range.begin, range.end);
  const std::size_t to = std::clamp(selection.end, range.begin, range.end);
  const auto draw = [&](std::size_t begin, std::size_t end, const CellColors& with) {
    const QPoint at = line.topLeft() + QPoint(static_cast<int>(begin - range.begin) * line.width(), 0);
    cells_.Draw(painter, at, std::string_view(shown_).substr(begin, end - begin), with);
  };
  // A selected line end shows as half a cell, or selected empty lines could not be told from others.
  const bool lineEnd = row + 1 < rows_.size() && rows_[row + 1].begin > range.end;
  const bool endMarked = lineEnd && selection.begin <= range.end && selection.end > range.end;
  const int width = static_cast<int>(to - from) * line.width() + (endMarked ? line.width() / 2 : 0);
  painter.fillRect(line.left() + static_cast<int>(from - range.begin) * line.width(), line.top(), width,
                   line.height(), marked.back);
  draw(range.begin, from, plain);
  draw(from, to, marked);
  draw(to, range.end, plain);
}

QRect TerminalView::CellRect(std::size_t position) const {
  const std::size_t row = RowAt(rows_, position);
  const std::size_t column = std::min(position, rows_[row].end) - rows_[row].begin;
  const QSize cell = cells_.Size();
  const int rowsDown = static_cast<int>(row) - verticalScrollBar()->value();
  return {QPoint(kMargin + static_cast<int>(column) * cell.width(), kMargin + rowsDown * cell.height()),
          cell};
}

std::size_t TerminalView::RowUnder(QPoint point) const {
  const int height = cells_.Size().height();
  const int below = point.y() - kMargin;
  const int rowsDown = below >= 0 ? below / height : -((height - 1 - below) / height);
  return static_cast<std::size_t>(std::max(0, verticalScrollBar()->value() + rowsDown));
}

std::size_t TerminalView::PositionOfCell(QPoint point) const {
  const TerminalRange range = rows_[std::min(RowUnder(point), rows_.size() - 1)];
  if (range.begin == range.end) return range.begin;
  const int column = std::max(0, (point.x() - kMargin) / cells_.Size().width());
  return std::min(range.begin + static_cast<std::size_t>(column), range.end - 1);
}

std::size_t TerminalView::PositionBetweenCells(QPoint point) const {
  const std::size_t row = RowUnder(point);
  if (row >= rows_.size()) return shown_.size();
  const int width = cells_.Size().width();
  const int column = std::max(0, (point.x() - kMargin + width / 2) / width);
  return std::min(rows_[row].begin + static_cast<std::size_t>(column), rows_[row].end);
}

void TerminalView::ScrollTo(std::size_t position) {
  QScrollBar* bar = verticalScrollBar();
  const int row = static_cast<int>(RowAt(rows_, position));
  if (row < bar->value()) {
    bar->setValue(row);
  } else if (row >= bar->value() + RowsInView()) {
    bar->setValue(row - RowsInView() + 1);
  }
}

}  // namespace vorda::controls
