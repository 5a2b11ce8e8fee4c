#include <QAccessible>
#include <QPoint>
#include <QRect>
#include <QScrollBar>
#include <QString>
#include <QTest>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "controls/TerminalView.h"
#include "controls/TerminalViewAccessible.h"
#include "platform/Text.h"

namespace vorda::controls {
namespace {

// Does to `believed` what a listener would do to its copy of the text.
void Hear(const QAccessibleEvent& event, QString& believed) {
  if (event.type() == QAccessible::TextRemoved) {
    const auto& removed = static_cast<const QAccessibleTextRemoveEvent&>(event);
    const QString text = removed.textRemoved();
    EXPECT_EQ(believed.mid(removed.changePosition(), text.size()), text);
    believed.remove(removed.changePosition(), text.size());
  } else if (event.type() == QAccessible::TextInserted) {
    const auto& inserted = static_cast<const QAccessibleTextInsertEvent&>(event);
    believed.insert(inserted.changePosition(), inserted.textInserted());
  }
}

class TerminalViewAccessibleTest : public testing::Test {
 protected:
  TerminalViewAccessibleTest() {
    view.SetSource([this] { return std::string_view(text); });
    view.resize(400, 200);
    view.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
    accessible = QAccessible::queryAccessibleInterface(&view);
  }
  void Set(const std::string& with) {
    text = with;
    view.TextChanged();
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.ShownText() == text; }));
  }
  QAccessibleTextInterface& Reader() { return *accessible->textInterface(); }

  std::string text;
  TerminalView view;
  QAccessibleInterface* accessible = nullptr;
};

TEST_F(TerminalViewAccessibleTest, TextEqualsTheText) {
  ASSERT_NE(accessible, nullptr);
  ASSERT_NE(accessible->textInterface(), nullptr);
  std::string all;
  for (int code = 1; code < 256; ++code) all += static_cast<char>(code);
  Set("line\r\n" + all);
  const QString expected = platform::ToUnicode(text);
  EXPECT_EQ(Reader().characterCount(), expected.size());
  EXPECT_EQ(Reader().text(0, Reader().characterCount()), expected);
  EXPECT_EQ(Reader().text(2, 6), expected.mid(2, 4));
  EXPECT_EQ(Reader().text(5, 2), QString());
  EXPECT_EQ(Reader().text(-3, 1 << 30), expected);
  EXPECT_EQ(accessible->text(QAccessible::Value), expected);
}

TEST_F(TerminalViewAccessibleTest, NulDoesNotEndTheText) {
  Set(std::string("a\0b", 3));
  EXPECT_EQ(Reader().text(0, 3), QStringLiteral("a\u2400b"));
}

TEST_F(TerminalViewAccessibleTest, IsAReadOnlyTextOfManyLinesWithTheOwnersName) {
  view.setAccessibleName(QStringLiteral("Received text"));
  EXPECT_EQ(accessible->role(), QAccessible::EditableText);
  EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Received text"));
  EXPECT_TRUE(accessible->state().readOnly);
  EXPECT_TRUE(accessible->state().multiLine);
  EXPECT_TRUE(accessible->state().selectableText);
  EXPECT_TRUE(accessible->state().focusable);
  EXPECT_EQ(accessible->childCount(), 0);
}

TEST_F(TerminalViewAccessibleTest, SelectionIsTheViewsAndTheCaretIsAtTheEnd) {
  Set("some text");
  EXPECT_EQ(Reader().selectionCount(), 0);
  EXPECT_EQ(Reader().cursorPosition(), 9);
  view.Select(2, 5);
  int start = -1;
  int end = -1;
  Reader().selection(0, &start, &end);
  EXPECT_EQ(Reader().selectionCount(), 1);
  EXPECT_EQ(start, 2);
  EXPECT_EQ(end, 5);
  Reader().setSelection(0, 0, 4);
  EXPECT_EQ(view.SelectedText(), "some");
  Reader().removeSelection(0);
  EXPECT_EQ(view.SelectedText(), "");
  EXPECT_EQ(Reader().cursorPosition(), 9);
}

TEST_F(TerminalViewAccessibleTest, PlacesOnTheScreenAreThoseOfTheCells) {
  Set("first\r\nsecond");
  for (const int offset : {0, 4, 7, 12}) {
    const QRect cell = Reader().characterRect(offset);
    EXPECT_TRUE(accessible->rect().contains(cell)) << offset;
    EXPECT_EQ(Reader().offsetAtPoint(cell.center()), offset);
  }
}

TEST_F(TerminalViewAccessibleTest, ReaderCanScrollToAPlace) {
  std::string lines;
  for (int line = 0; line < 200; ++line) lines += "line " + std::to_string(line) + "\r\n";
  Set(lines);
  const auto inView = [&](int offset) { return accessible->rect().contains(Reader().characterRect(offset)); };
  EXPECT_FALSE(inView(0));
  Reader().scrollToSubstring(0, 4);
  EXPECT_TRUE(inView(0));
  Reader().setCursorPosition(Reader().characterCount());
  EXPECT_TRUE(inView(Reader().characterCount()));
}

TEST_F(TerminalViewAccessibleTest, ListenerHearsEveryStepOfTheText) {
  std::string lines;
  for (int line = 0; line < 200; ++line) lines += "line " + std::to_string(line) + "\r\n";
  QString believed;
  std::string before;
  for (const std::string& next : {std::string("one"), std::string("one two"), std::string("one twX"), lines,
                                  lines.substr(500) + "more", std::string()}) {
    Set(next);
    const auto events = TextEvents(view, before);
    for (const auto& event : events) Hear(*event, believed);
    EXPECT_EQ(believed, platform::ToUnicode(next));
    EXPECT_EQ(events.back()->type(), QAccessible::TextCaretMoved);
    before = next;
  }
}

TEST_F(TerminalViewAccessibleTest, ListenerHearsOnlyWhatIsNew) {
  const std::string start(1000, 'x');
  Set(start + "new");
  const auto events = TextEvents(view, start);
  ASSERT_EQ(events.size(), 2U);
  ASSERT_EQ(events[0]->type(), QAccessible::TextInserted);
  EXPECT_EQ(static_cast<QAccessibleTextInsertEvent&>(*events[0]).textInserted(), QStringLiteral("new"));
}

}  // namespace
}  // namespace vorda::controls
