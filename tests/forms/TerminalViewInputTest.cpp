#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QImage>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QScrollBar>
#include <QString>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "controls/TerminalView.h"

namespace vorda::controls {
namespace {

class TerminalViewInputTest : public testing::Test {
 protected:
  TerminalViewInputTest() {
    view.SetSource([this] { return std::string_view(text); });
    view.resize(500, 200);
    view.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
    view.setFocus();
    QApplication::clipboard()->setText(QStringLiteral("before"));
  }
  // Sets the text and waits until it shows and nothing more is due.
  void Set(std::string with) {
    text = std::move(with);
    view.TextChanged();
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.ShownText() == text && !view.IsPausing(); }));
  }
  QPoint LeftOf(std::size_t position) {
    const QRect cell = view.CellRect(position);
    return {cell.left() + 1, cell.center().y()};
  }
  void Drag(QPoint from, QPoint to) {
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, from);
    QTest::mouseMove(view.viewport(), to);
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, to);
  }
  void DoubleClick(std::size_t position) {
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, view.CellRect(position).center());
  }
  QString Clipboard() { return QApplication::clipboard()->text(); }
  QScrollBar& Bar() { return *view.verticalScrollBar(); }

  std::string text;
  TerminalView view;
};

std::string Lines(int count) {
  std::string text;
  for (int line = 0; line < count; ++line) text += "line " + std::to_string(line) + "\r\n";
  return text;
}

TEST_F(TerminalViewInputTest, DragSelectsForwardsBackwardsAndAcrossLines) {
  Set("first line\r\nsecond line");
  Drag(LeftOf(2), LeftOf(5));
  EXPECT_EQ(view.SelectedText(), "rst");
  Drag(LeftOf(5), LeftOf(2));
  EXPECT_EQ(view.SelectedText(), "rst");
  Drag(LeftOf(6), LeftOf(text.find(" line", 12)));
  EXPECT_EQ(view.SelectedText(), "line\r\nsecond");
}

TEST_F(TerminalViewInputTest, DragBeyondALineTakesAllOfItButNotItsEnd) {
  Set("first\r\nsecond");
  Drag(LeftOf(1), {view.viewport()->width() - 1, LeftOf(1).y()});
  EXPECT_EQ(view.SelectedText(), "irst");
  Drag(LeftOf(1), {0, view.viewport()->height() - 1});
  EXPECT_EQ(view.SelectedText(), "irst\r\nsecond");
}

TEST_F(TerminalViewInputTest, ClickSelectsNothingAndShiftClickExtends) {
  Set("some text");
  QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, LeftOf(2));
  EXPECT_EQ(view.SelectedText(), "");
  QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ShiftModifier, LeftOf(6));
  EXPECT_EQ(view.SelectedText(), "me t");
  QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ShiftModifier, LeftOf(0));
  EXPECT_EQ(view.SelectedText(), "so");
}

TEST_F(TerminalViewInputTest, ShiftClickAfterAnArrivalSelectsToTheEnd) {
  Set("some text");
  QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ShiftModifier, LeftOf(5));
  EXPECT_EQ(view.SelectedText(), "text");
}

TEST_F(TerminalViewInputTest, DoubleClickSelectsTheWord) {
  Set("one two\x01"
      "three\r\n\r\nfour");
  DoubleClick(text.find("wo"));
  EXPECT_EQ(view.SelectedText(), "two");
  DoubleClick(text.find('\x01'));
  EXPECT_EQ(view.SelectedText(), "\x01");
  DoubleClick(text.find("\r\nfour"));
  EXPECT_EQ(view.SelectedText(), "");
}

TEST_F(TerminalViewInputTest, ArrivalEndsADrag) {
  Set("some text");
  QTest::mousePress(view.viewport(), Qt::LeftButton, {}, LeftOf(0));
  QTest::mouseMove(view.viewport(), LeftOf(4));
  EXPECT_EQ(view.SelectedText(), "some");
  Set("some text and more");
  QTest::mouseMove(view.viewport(), LeftOf(8));
  EXPECT_EQ(view.SelectedText(), "");
  QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, LeftOf(8));
}

TEST_F(TerminalViewInputTest, DragAboveTheViewScrollsUpToTheBeginning) {
  Set(Lines(60));
  ASSERT_GT(Bar().value(), 0);
  QTest::mousePress(view.viewport(), Qt::LeftButton, {}, {40, 50});
  QTest::mouseMove(view.viewport(), {0, -20});
  EXPECT_TRUE(QTest::qWaitFor([&] { return Bar().value() == 0 && view.Selection().begin == 0; }));
  QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, {0, -20});
  EXPECT_NE(view.SelectedText().find("line 0\r\nline 1\r\n"), std::string::npos);
}

TEST_F(TerminalViewInputTest, KeysSelectAllAndCopyWithPlainLineEnds) {
  Set("caf\xE9 \x80"
      "5\r\nlone\rcr\xA0"
      "end");
  const QString expected = QString::fromUtf8("caf\u00E9 \u20AC5\nlone\rcr\u00A0end");
  QTest::keyClick(&view, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(view.SelectedText(), text);
  QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
  // it.
  EXPECT_EQ(Clipboard(), expected);
  QApplication::clipboard()->clear();
  QTest::keyClick(&view, Qt::Key_Insert, Qt::ControlModifier);
  EXPECT_EQ(Clipboard(), expected);
}

TEST_F(TerminalViewInputTest, CopyOfNothingLeavesTheClipboardAlone) {
  Set("text");
  QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(Clipboard(), QStringLiteral("before"));
}

TEST_F(TerminalViewInputTest, KeysScroll) {
  Set(Lines(200));
  const int end = Bar().maximum();
  QTest::keyClick(&view, Qt::Key_PageUp);
  EXPECT_EQ(Bar().value(), end - Bar().pageStep());
  QTest::keyClick(&view, Qt::Key_Up);
  EXPECT_EQ(Bar().value(), end - Bar().pageStep() - 1);
  QTest::keyClick(&view, Qt::Key_Down);
  QTest::keyClick(&view, Qt::Key_PageDown);
  EXPECT_EQ(Bar().value(), end);
  QTest::keyClick(&view, Qt::Key_Home);
  EXPECT_EQ(Bar().value(), 0);
  QTest::keyClick(&view, Qt::Key_End);
  EXPECT_EQ(Bar().value(), end);
}

TEST_F(TerminalViewInputTest, KeysTypeNothing) {
  Set("text");
  QTest::keyClicks(&view, QStringLiteral("abc"));
  QTest::keyClick(&view, Qt::Key_Delete);
  EXPECT_EQ(view.Text(), "text");
  EXPECT_EQ(view.ShownText(), "text");
}

TEST_F(TerminalViewInputTest, CopyKeysComeBeforeTheWindowsShortcuts) {
  Set("text");
  for (const Qt::Key key : {Qt::Key_A, Qt::Key_C, Qt::Key_Insert}) {
    QKeyEvent ours(QEvent::ShortcutOverride, key, Qt::ControlModifier);
    ours.ignore();
    QCoreApplication::sendEvent(&view, &ours);
    EXPECT_TRUE(ours.isAccepted()) << key;
  }
  QKeyEvent other(QEvent::ShortcutOverride, Qt::Key_F5, Qt::NoModifier);
  other.ignore();
  QCoreApplication::sendEvent(&view, &other);
  EXPECT_FALSE(other.isAccepted());
}

TEST_F(TerminalViewInputTest, MenuKeysOpenTheMenuAndItsItemsWork) {
  Set("text");
  QTest::keyClick(&view, Qt::Key_F10, Qt::ShiftModifier);
  QPointer<QMenu> menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_FALSE(menu.isNull());
  ASSERT_EQ(menu->actions().size(), 2);
  EXPECT_FALSE(menu->actions().at(0)->isEnabled());
  QTest::keyClick(menu, Qt::Key_A);
  EXPECT_EQ(view.SelectedText(), "text");
  ASSERT_TRUE(QTest::qWaitFor([&] { return menu.isNull(); }));

  QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, {10, 10}, view.mapToGlobal(QPoint(10, 10)));
  QCoreApplication::sendEvent(&view, &menuKey);
  menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_FALSE(menu.isNull());
  // The text goes on beneath the open menu; the operator still gets what was selected.
  Set("text and more");
  EXPECT_EQ(view.SelectedText(), "");
  QTest::keyClick(menu, Qt::Key_C);
  EXPECT_EQ(Clipboard(), QStringLiteral("text"));
}

TEST_F(TerminalViewInputTest, RightClickKeepsTheSelection) {
  Set("text");
  view.SelectAll();
  QTest::mouseClick(view.viewport(), Qt::RightButton, {}, LeftOf(1));
  EXPECT_EQ(view.SelectedText(), "text");
}

TEST(TerminalViewFocus, TabReachesItAndFocusShows) {
  QWidget window;
  QVBoxLayout layout(&window);
  QLineEdit edit;
  TerminalView view;
  layout.addWidget(&edit);
  layout.addWidget(&view);
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  edit.setFocus();
  const QImage without = view.viewport()->grab().toImage();
  QTest::keyClick(&edit, Qt::Key_Tab);
  EXPECT_TRUE(view.hasFocus());
  EXPECT_NE(view.viewport()->grab().toImage(), without);
  QTest::keyClick(&view, Qt::Key_Tab);
  EXPECT_TRUE(edit.hasFocus());
}

}  // namespace
}  // namespace vorda::controls
