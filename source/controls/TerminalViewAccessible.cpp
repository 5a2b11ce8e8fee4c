#include "controls/TerminalViewAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QString>

#include <algorithm>
#include <cstddef>

#include "controls/TerminalLayout.h"
#include "controls/TerminalView.h"
#include "platform/Text.h"

namespace vorda::controls {

namespace {

// One character a byte, so that positions count the same in both.
QString Readable(std::string_view bytes) {
  QString text = platform::ToUnicode(bytes);
  // The way to the screen reader ends a text at a NUL; its picture lets the rest through.
  text.replace(QChar(u'\0'), QChar(u'\u2400'));
  return text;
}

int ToInt(std::size_t position) {
  return static_cast<int>(position);
}

class TerminalViewAccessible : public QAccessibleWidget, public QAccessibleTextInterface {
 public:
  explicit TerminalViewAccessible(TerminalView& view)
      : QAccessibleWidget(&view, QAccessible::EditableText), view_(view) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
  }

  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Value ? Readable(view_.ShownText()) : QAccessibleWidget::text(kind);
  }

  // The parts of the scroll area are no things of their own: the text is all there is.
  int childCount() const override { return 0; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }

  void selection(int index, int* start, int* end) const override {
    const TerminalRange range = index == 0 ? view_.Selection() : TerminalRange{};
    *start = ToInt(range.begin);
    *end = ToInt(range.end);
  }
  int selectionCount() const override { return view_.Selection().begin < view_.Selection().end ? 1 : 0; }
  void addSelection(int start, int end) override { view_.Select(Position(start), Position(end)); }
  void removeSelection(int index) override {
    if (index == 0) view_.Select(Characters(), Characters());
  }
  void setSelection(int index, int start, int end) override {
    if (index == 0) addSelection(start, end);
  }

  int cursorPosition() const override { return ToInt(view_.CaretPosition()); }
  // The caret stays at the end, where the text grows; a reader that moves it wants to see the place.
  void setCursorPosition(int position) override { view_.ScrollTo(Position(position)); }

  using QAccessibleWidget::text;
  QString text(int start, int end) const override {
    const std::size_t from = Position(start);
    const std::size_t to = std::max(from, Position(end));
    return Readable(view_.ShownText().substr(from, to - from));
  }
  int characterCount() const override { return ToInt(Characters()); }

  QRect characterRect(int offset) const override {
    const QRect cell = view_.CellRect(Position(offset));
    return {view_.viewport()->mapToGlobal(cell.topLeft()), cell.size()};
  }
  int offsetAtPoint(const QPoint& point) const override {
    return ToInt(view_.PositionOfCell(view_.viewport()->mapFromGlobal(point)));
  }
  void scrollToSubstring(int start, int end) override {
    view_.ScrollTo(Position(end));
    view_.ScrollTo(Position(start));
  }
  QString attributes(int, int* start, int* end) const override {
    *start = 0;
    *end = characterCount();
    return {};
  }

 private:
  std::size_t Characters() const { return view_.ShownText().size(); }
  std::size_t Position(int offset) const {
    return std::min(static_cast<std::size_t>(std::max(offset, 0)), Characters());
  }

  TerminalView& view_;
};

QAccessibleInterface* MakeAccessible(const QString&, QObject* object) {
  auto* view = dynamic_cast<TerminalView*>(object);
  return view != nullptr ? new TerminalViewAccessible(*view) : nullptr;
}

}  // namespace

void InstallTerminalViewAccessible() {
  static const bool installed = [] {
    QAccessible::installFactory(MakeAccessible);
    return true;
  }();
  static_cast<void>(installed);
}

std::vector<std::unique_ptr<QAccessibleEvent>> TextEvents(TerminalView& view, std::string_view before) {
  const std::string_view after = view.ShownText();
  const TerminalStep step = StepBetween(before, after);
  const QString cut = Readable(before.substr(0, step.cut));
  const QString gone = Readable(before.substr(step.cut + step.kept));
  const QString come = Readable(after.substr(step.kept));
  std::vector<std::unique_ptr<QAccessibleEvent>> events;
  if (!cut.isEmpty()) events.push_back(std::make_unique<QAccessibleTextRemoveEvent>(&view, 0, cut));
  if (!gone.isEmpty())
    events.push_back(std::make_unique<QAccessibleTextRemoveEvent>(&view, ToInt(step.kept), gone));
  if (!come.isEmpty())
    events.push_back(std::make_unique<QAccessibleTextInsertEvent>(&view, ToInt(step.kept), come));
  events.push_back(std::make_unique<QAccessibleTextCursorEvent>(&view, ToInt(view.CaretPosition())));
  return events;
}

void AnnounceText(TerminalView& view, std::string_view before) {
  for (const auto& event : TextEvents(view, before)) QAccessible::updateAccessibility(event.get());
}

void AnnounceSelection(TerminalView& view) {
  const TerminalRange selection = view.Selection();
  QAccessibleTextSelectionEvent event(&view, ToInt(selection.begin), ToInt(selection.end));
  event.setCursorPosition(ToInt(view.CaretPosition()));
  QAccessible::updateAccessibility(&event);
}

}  // namespace vorda::controls
