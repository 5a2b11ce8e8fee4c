#include <QColor>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QFont>
#include <QImage>
#include <QObject>
#include <QPalette>
#include <QRect>
#include <QScrollBar>
#include <QSize>
#include <QTest>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "controls/TerminalView.h"

namespace vorda::controls {
namespace {

std::string AllBytes() {
  std::string all;
  for (int code = 0; code < 256; ++code) all += static_cast<char>(code);
  return all;
}

std::string Lines(int count) {
  std::string text;
  for (int line = 0; line < count; ++line) text += "line " + std::to_string(line) + "\r\n";
  return text;
}

class PaintCounter : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints;
    return false;
  }
  int paints = 0;
};

class TerminalViewTest : public testing::Test {
 protected:
  TerminalViewTest() {
    view.SetSource([this] { return std::string_view(text); });
    view.resize(400, 200);
    view.viewport()->installEventFilter(&counter);
  }
  // Shows the view and lets everything come to rest that showing stirs up.
  void Show() {
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    Settle();
  }
  void Set(std::string with) {
    text = std::move(with);
    view.TextChanged();
  }
  // Waits until a change of the text would be painted at once: one that follows waits for its turn.
  void Settle() {
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.ShownText() == text && !view.IsPausing(); }));
    QCoreApplication::processEvents();
  }
  QImage Picture() { return view.viewport()->grab().toImage(); }
  QScrollBar& Bar() { return *view.verticalScrollBar(); }
  bool EndInView() {
    return view.viewport()->rect().contains(view.CellRect(text.size())) && Bar().value() == Bar().maximum();
  }

  PaintCounter counter;
  std::string text;
  TerminalView view;
};

TEST_F(TerminalViewTest, AllBytesSurviveToTheSelectedText) {
  Set(AllBytes() + "\r\n" + AllBytes());
  view.SelectAll();
  EXPECT_EQ(view.SelectedText(), text);
}

TEST_F(TerminalViewTest, LoneLineEndsAndHardBlankSurvive) {
  for (const char* odd : {"a\rb", "a\nb",
                          "a\xA0"
                          "b",
                          "ends in\r", "\n\r"}) {
    Set(odd);
    view.SelectAll();
    EXPECT_EQ(view.SelectedText(), odd);
  }
}

TEST_F(TerminalViewTest, TextIsTheOwnersAtAnyTime) {
  Show();
  Set("first");
  Set("second");
  EXPECT_EQ(view.Text(), "second");
  EXPECT_EQ(view.ShownText(), "first");
  Settle();
  EXPECT_EQ(view.ShownText(), "second");
}

TEST_F(TerminalViewTest, ViewWithoutSourceIsEmpty) {
  TerminalView bare;
  bare.SelectAll();
  EXPECT_EQ(bare.Text(), "");
  EXPECT_EQ(bare.SelectedText(), "");
  EXPECT_FALSE(bare.grab().isNull());
}

TEST_F(TerminalViewTest, ManyChangesGiveTwoRepaintsWithinOnePause) {
  Show();
  // The first one is painted at once; again, should the machine have been so slow that the pause is over.
  do {
    counter.paints = 0;
    Set("first");
    QCoreApplication::processEvents();
  } while (!view.IsPausing());
  EXPECT_EQ(counter.paints, 1);
  for (int change = 1; change < 10000; ++change) {
    text += 'x';
    view.TextChanged();
  }
  Settle();
  EXPECT_EQ(counter.paints, 2);
}

TEST_F(TerminalViewTest, RepaintsAtMostTenTimesASecondWhileChangesGoOn) {
  Show();
  counter.paints = 0;
  QElapsedTimer time;
  time.start();
  for (int change = 0; change < 10000; ++change) {
    text += 'x';
    if (text.size() > 16000) text.erase(0, 4096);
    view.TextChanged();
    QCoreApplication::processEvents();
  }
  // Read after the last of them: the bound can only be too generous, by one for the rounding of the clock.
  EXPECT_LE(counter.paints, 2 + time.elapsed() / 100);
  EXPECT_GE(counter.paints, 1);
  Settle();
}

TEST_F(TerminalViewTest, FirstChangeAfterAQuietTimeIsTakenAtOnce) {
  Show();
  Set("now");
  EXPECT_EQ(view.ShownText(), "now");
  EXPECT_TRUE(view.IsPausing());
  Settle();
  Set("now again");
  EXPECT_EQ(view.ShownText(), "now again");
}

TEST_F(TerminalViewTest, QuietViewDoesNotRepaint) {
  Set("quiet");
  Show();
  counter.paints = 0;
  // The pause that follows a change ends without another repaint.
  view.TextChanged();
  Settle();
  EXPECT_EQ(counter.paints, 1);
}

TEST_F(TerminalViewTest, ArrivalEndsTheSelectionAtOnceAndInThePicture) {
  Set("some text");
  Show();
  const QImage plain = Picture();
  view.SelectAll();
  EXPECT_NE(Picture(), plain);
  view.TextChanged();
  EXPECT_EQ(view.SelectedText(), "");
  // Again, now while the repaint is pending.
  view.SelectAll();
  EXPECT_EQ(view.SelectedText(), "some text");
  view.TextChanged();
  EXPECT_EQ(view.SelectedText(), "");
  Settle();
  EXPECT_EQ(Picture(), plain);
}

TEST_F(TerminalViewTest, SelectionOfShownTextEndsWhenTheNextTextIsShown) {
  Show();
  Set("first");
  Set("second");
  view.Select(0, 5);
  EXPECT_EQ(view.SelectedText(), "first");
  Settle();
  EXPECT_EQ(view.SelectedText(), "");
}

TEST_F(TerminalViewTest, ArrivalShowsTheEnd) {
  Set(Lines(200));
  Show();
  EXPECT_TRUE(EndInView());
  Bar().setValue(0);
  text += "tail";
  view.TextChanged();
  Settle();
  EXPECT_TRUE(EndInView());
}

TEST_F(TerminalViewTest, ResizingLaysOutAnewAndKeepsTheEndInView) {
  Set(std::string(3000, 'x'));
  Show();
  const int rows = Bar().maximum() + Bar().pageStep();
  for (const QSize size :
       {QSize(200, 200), QSize(200, 120), QSize(600, 300), QSize(40, 40), QSize(1, 1), QSize(400, 200)}) {
    view.resize(size);
    QCoreApplication::processEvents();
    EXPECT_EQ(Bar().value(), Bar().maximum()) << size.width();
    if (size.width() == 200) {
      EXPECT_GT(Bar().maximum() + Bar().pageStep(), rows);
    }
  }
  EXPECT_EQ(Bar().maximum() + Bar().pageStep(), rows);
  EXPECT_TRUE(EndInView());
}

TEST_F(TerminalViewTest, ResizingKeepsThePlaceThatTheOperatorScrolledTo) {
  Set(std::string(500, 'a') + "\r\n" + "MARK\r\n" + Lines(200));
  Show();
  view.ScrollTo(0);
  const std::size_t mark = text.find("MARK");
  Bar().setValue(view.CellRect(mark).top() / view.CellRect(mark).height());
  const int top = view.CellRect(mark).top();
  EXPECT_LT(top, view.CellRect(mark).height());
  view.resize(250, 200);
  QCoreApplication::processEvents();
  EXPECT_EQ(view.CellRect(mark).top(), top);
}

TEST_F(TerminalViewTest, ScrollBarIsThereOnlyWhenNeeded) {
  Set("short");
  Show();
  EXPECT_FALSE(Bar().isVisible());
  Set(Lines(200));
  Settle();
  EXPECT_TRUE(Bar().isVisible());
  Set("short");
  Settle();
  EXPECT_FALSE(Bar().isVisible());
}

TEST_F(TerminalViewTest, LineOfTheWidthStaysOnOneRowAndOneMoreWraps) {
  Show();
  const int columns = (view.viewport()->width() - 2 * view.CellRect(0).left()) / view.CellRect(0).width();
  Set(std::string(columns, 'x') + "\r\nnext");
  view.SelectAll();  // takes the text without waiting
  EXPECT_EQ(view.CellRect(text.find("next")).top(), view.CellRect(0).top() + view.CellRect(0).height());
  Set(std::string(columns + 1, 'x') + "\r\nnext");
  view.SelectAll();
  EXPECT_EQ(view.CellRect(text.find("next")).top(), view.CellRect(0).top() + 2 * view.CellRect(0).height());
}

TEST_F(TerminalViewTest, EveryCodeWithoutACharacterHasItsOwnSymbol) {
  Show();
  std::vector<QImage> seen;
  std::string symbols = " ";  // first the blank, which a symbol must not look like either
  for (const char c : AllBytes()) {
    if (IsTerminalSymbol(c)) symbols += c;
  }
  ASSERT_EQ(symbols.size(), 1 + 32 + 1 + 5U);
  for (const char c : symbols) {
    Set(std::string(1, c));
    view.SelectAll();
    view.Select(0, 0);
    const QImage picture = Picture();
    for (const QImage& other : seen)
      EXPECT_NE(picture, other) << "code " << static_cast<int>(c) << seen.size();
    seen.push_back(picture);
  }
}

TEST_F(TerminalViewTest, EachByteIsDrawnInItsOwnCell) {
  Show();
  const std::string visible = "A\x01\xE9\x80\x7F\x90Z";
  Set(visible);
  view.SelectAll();
  view.Select(0, 0);
  const QImage picture = Picture();
  for (std::size_t position = 0; position < visible.size(); ++position) {
    const QImage together = picture.copy(view.CellRect(position));
    Set(std::string(position, ' ') + visible[position]);
    view.SelectAll();
    view.Select(0, 0);
    EXPECT_EQ(Picture().copy(view.CellRect(position)), together) << position;
  }
}

TEST_F(TerminalViewTest, PaintsOnPaletteColours) {
  QPalette colors = view.palette();
  colors.setColor(QPalette::Base, Qt::darkBlue);
  colors.setColor(QPalette::Highlight, Qt::yellow);
  view.setPalette(colors);
  Set("ab");
  Show();
  view.Select(0, 1);
  const QImage picture = Picture();
  EXPECT_EQ(picture.pixelColor(view.CellRect(0).topLeft()), QColor(Qt::yellow));
  EXPECT_EQ(picture.pixelColor(view.CellRect(1).topLeft()), QColor(Qt::darkBlue));
}

TEST_F(TerminalViewTest, NewFontLaysOutAnew) {
  Set(std::string(1000, 'x'));
  Show();
  const int rows = Bar().maximum() + Bar().pageStep();
  QFont large = view.font();
  large.setPointSize(20);
  view.setFont(large);
  EXPECT_GT(Bar().maximum() + Bar().pageStep(), rows);
  EXPECT_TRUE(EndInView());
}

}  // namespace
}  // namespace vorda::controls
