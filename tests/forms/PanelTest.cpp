// The panels of the strip: what they show and draw anew, and what assistive technology reads.

#include <QAccessible>
#include <QImage>
#include <QScreen>
#include <QWidget>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "controls/Panels.h"
#include "support/EventLoop.h"

namespace vorda::controls {
namespace {

constexpr QRect kPlace(0, 0, 120, 40);

QImage PictureOf(QWidget& widget) {
  return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// Where something else than the background is inside the panel.
QRect InkOf(Panel& panel) {
  const QImage picture = PictureOf(panel);
  const QRgb background = picture.pixel(panel.contentsRect().topLeft());
  QRect ink;
  for (int y = panel.contentsRect().top(); y <= panel.contentsRect().bottom(); ++y)
    for (int x = panel.contentsRect().left(); x <= panel.contentsRect().right(); ++x)
      if (picture.pixel(x, y) != background) ink |= QRect(x, y, 1, 1);
  return ink;
}

TEST(PanelTest, FiguresStandInTheMiddleAsOtherTextDoes) {
  Panel figures;
  Panel text;
  for (Panel* panel : {&figures, &text}) panel->setGeometry(kPlace);
  figures.SetCaption("1880.5");
  text.SetCaption("1880.5 ");  // with a blank it isn't figures alone
  const QRect drawn = InkOf(figures);
  const QRect likewise = InkOf(text);
  ASSERT_FALSE(drawn.isEmpty());
  EXPECT_LE(std::abs(drawn.center().y() - likewise.center().y()), 1);
  EXPECT_LE(std::abs(drawn.height() - likewise.height()), 1);
  EXPECT_LE(std::abs(drawn.width() - likewise.width()), 2);
  EXPECT_LE(std::abs(drawn.center().x() - figures.contentsRect().center().x()), 2);
}

TEST(PanelTest, FiguresFollowTheFont) {
  Panel panel;
  panel.setGeometry(kPlace);
  panel.SetCaption("9001");
  const QRect small = InkOf(panel);
  QFont large = panel.font();
  large.setPixelSize(26);
  panel.setFont(large);
  EXPECT_GT(InkOf(panel).height(), small.height() + 5);
}

// Only what has changed is drawn anew; what is on the screen must be what a whole drawing would give.
TEST(PanelTest, WhatIsOnTheScreenIsTheWholeDrawing) {
  QWidget window;
  FloodPanel flood(&window);
  Panel count(&window);
  flood.setGeometry(0, 0, 200, 30);
  count.setGeometry(0, 30, 200, 30);
  window.resize(200, 60);
  window.show();
  test::RunPendingEvents();
  for (const double percent : {0.0, 70.0, 30.0, 100.0, 99.0, 0.0, 55.5}) {
    flood.SetFloodPercent(percent);
    count.SetCaption(percent > 50 ? std::to_string(percent) : "");
    test::RunPendingEvents();
    const QImage shown = window.screen()->grabWindow(window.winId()).toImage();
    ASSERT_EQ(shown.convertToFormat(QImage::Format_RGB32), PictureOf(window)) << percent;
  }
}

TEST(PanelTest, AssistiveTechnologyReadsTheCaption) {
  Panel panel;
  panel.setAccessibleName(QStringLiteral("Cart"));
  panel.SetCaption("9001");
  QAccessibleInterface* const seen = QAccessible::queryAccessibleInterface(&panel);
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(seen->text(QAccessible::Name), QStringLiteral("Cart"));
  EXPECT_EQ(seen->text(QAccessible::Description), QStringLiteral("9001"));
  panel.SetCaption("\x80 5");
  EXPECT_EQ(seen->text(QAccessible::Description), QStringLiteral("\u20ac 5"));
}

}  // namespace
}  // namespace vorda::controls
