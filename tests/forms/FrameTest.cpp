// The frame: its start-up, its menus, and the history window along its foot.

#include <QAction>
#include <QImage>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <filesystem>

#include "controls/TextBox.h"
#include "controls/Twips.h"
#include "shell/frmGoodInputBox.h"
#include "shell/frmHistory.h"
#include "shell/frmSplash.h"
#include "support/FrameScenario.h"

namespace vorda::test {
namespace {

class FrameDeathTest : public FrameScenario {
 protected:
  static QMenu* WindowMenu() {
    auto* menu = MainWindow()->menuBar()->findChild<QMenu*>(QStringLiteral("mnuWindow"));
    emit menu->aboutToShow();
    return menu;
  }
  static void ExpectHistoryInPlace() {
    frmHistory& history = frmHistory::Default();
    EXPECT_EQ(history.Left(), 30);
    EXPECT_EQ(history.Top(), Server().ClientHeight() - history.Height() - 60);
    EXPECT_EQ(history.Width(),
              controls::TwipsFromPixels(controls::PixelsFromTwips(Server().ClientWidth() / 2.2)));
  }
};

// Seen from behind the warning of feed 1, in the middle of the start-up, and at its end.
TEST_F(FrameDeathTest, SplashStandsFirstAndIsGoneAtTheEnd) {
  WriteIni({1});
  const std::string missing = directory / "news1/vorda.ini";
  std::filesystem::remove(missing);
  ExpectHolds([&, seen = false]() mutable {
    boxes.Expect("Warning : No Vorda information was found in the specifed news directory: " + missing,
                 platform::BoxAnswer::Ok, [&seen] {
                   seen = true;
                   EXPECT_TRUE(frmSplash::Default().Visible());
                   EXPECT_TRUE(Server().Visible());
                   EXPECT_TRUE(frmHistory::Default().Visible());
                   EXPECT_EQ(gDefaultWaveFormat.wFormatTag, 1);
                   EXPECT_EQ(gDefaultWaveFormat.nChannels, 1);
                   EXPECT_EQ(gDefaultWaveFormat.nSamplesPerSec, 44100);
                   EXPECT_EQ(gDefaultWaveFormat.wBitsPerSample, 16);
                   EXPECT_EQ(gDefaultWaveFormat.nAvgBytesPerSec, 0);
                   EXPECT_EQ(gDefaultWaveFormat.nBlockAlign, 0);
                 });
    Server().Load();
    EXPECT_TRUE(seen);
    EXPECT_FALSE(frmSplash::Default().Loaded());
    EXPECT_TRUE(Server().Visible());
    EXPECT_EQ(Server().Text(), "Halvorn Vorda Server");
    EXPECT_EQ(FeedForm(1).Text(), "Wire Feed Capture");
  });
}

TEST_F(FrameDeathTest, SplashStandsAloneWhenTheCommandLineIsWrong) {
  const char* const arguments[] = {"/P"};
  TakeCommandLine(1, arguments);
  const platform::ScopedHook box(platform::MessageBoxHook(), [](const platform::BoxRequest&) {
    EXPECT_TRUE(frmSplash::Default().Visible());
    EXPECT_FALSE(Server().Visible());
    EXPECT_FALSE(frmHistory::Default().Loaded());
    EndScenario();
    return platform::BoxAnswer::Ok;
  });
  ExpectHolds([] { Server().Load(); });
}

// What the screen holds, and not what the window would draw: no event runs while this box is up.
TEST_F(FrameDeathTest, SplashIsPaintedBeforeTheFirstBox) {
  const char* const arguments[] = {"/P"};
  TakeCommandLine(1, arguments);
  const platform::ScopedHook box(platform::MessageBoxHook(), [](const platform::BoxRequest&) {
    QWidget* splash = frmSplash::Default().Control<QWidget>("fraMainFrame")->window();
    const QImage onScreen = splash->screen()->grabWindow(splash->winId()).toImage();
    EXPECT_EQ(onScreen.convertToFormat(QImage::Format_RGB32),
              splash->grab().toImage().convertToFormat(QImage::Format_RGB32));
    EndScenario();
    return platform::BoxAnswer::Ok;
  });
  ExpectHolds([] { Server().Load(); });
}

TEST_F(FrameDeathTest, MenusInTheirOrderAndNoneEmpty) {
  WriteIni({1});
  ExpectHoldsOnceStarted([] {
    QStringList titles;
    for (const QAction* action : MainWindow()->menuBar()->actions()) titles << action->text();
    EXPECT_EQ(titles.join(' ').toStdString(), "&File &Settings &Window");
    for (const auto& [name, caption] :
         {std::pair("mnuExit", "E&xit"), {"mnuSettingsAudio", "&Cart Locations"}}) {
      auto* entry = MainWindow()->findChild<QAction*>(QString::fromLatin1(name));
      ASSERT_NE(entry, nullptr);
      EXPECT_EQ(entry->text().toStdString(), caption);
      EXPECT_TRUE(entry->shortcut().isEmpty());
    }
    EXPECT_FALSE(WindowMenu()->actions().isEmpty());
  });
}

TEST_F(FrameDeathTest, WindowMenuListsTheChildrenAndChecksTheActiveOne) {
  WriteIni({1, 2});
  ExpectHoldsOnceStarted([] {
    QList<QAction*> entries = WindowMenu()->actions();
    ASSERT_EQ(entries.size(), 3);
    EXPECT_EQ(entries[0]->text().toStdString(), "&1 History:");
    EXPECT_EQ(entries[1]->text().toStdString(), "&2 Vorda Server : A&&B 1");
    EXPECT_EQ(entries[2]->text().toStdString(), "&3 Vorda Server : A&&B 2");
    EXPECT_FALSE(entries[0]->isChecked());
    EXPECT_FALSE(entries[1]->isChecked());
    EXPECT_TRUE(entries[2]->isChecked());
    EXPECT_EQ(gActiveFeed, 2);
    entries[1]->trigger();
    EXPECT_EQ(gActiveFeed, 1);
    entries = WindowMenu()->actions();
    EXPECT_TRUE(entries[1]->isChecked());
    EXPECT_FALSE(entries[2]->isChecked());
  });
}

TEST_F(FrameDeathTest, WindowMenuBringsAMinimizedChildBack) {
  WriteIni({1, 2});
  ExpectHoldsOnceStarted([] {
    ChildWindowOf(FeedForm(1).lblConfigFile())->showMinimized();
    WindowMenu()->actions().at(1)->trigger();
    EXPECT_FALSE(FeedForm(1).Minimized());
    EXPECT_EQ(gActiveFeed, 1);
  });
}

TEST_F(FrameDeathTest, WindowMenuForgetsAClosedChild) {
  WriteIni({1, 2});
  ExpectHoldsOnceStarted([] {
    ChildWindowOf(FeedForm(1).lblConfigFile())->close();
    const QList<QAction*> entries = WindowMenu()->actions();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[1]->text().toStdString(), "&2 Vorda Server : A&&B 2");
  });
}

TEST_F(FrameDeathTest, HistoryLiesAlongTheFootAndFollowsTheFrame) {
  WriteIni({1});
  ExpectHoldsOnceStarted([] {
    ExpectHistoryInPlace();
    const double height = frmHistory::Default().Height();
    const double feedTop = FeedForm(1).Top();
    const double feedWidth = FeedForm(1).Width();
    for (const QSize size : {QSize(700, 500), QSize(1201, 803)}) {
      MainWindow()->resize(size);
      RunPendingEvents();
      ExpectHistoryInPlace();
      EXPECT_EQ(frmHistory::Default().Height(), height);
    }
    EXPECT_EQ(FeedForm(1).Top(), feedTop);
    EXPECT_EQ(FeedForm(1).Width(), feedWidth);
  });
}

TEST_F(FrameDeathTest, FeedWindowsStandAboveTheHistory) {
  WriteIni({1, 3});
  ExpectHoldsOnceStarted([] {
    const double width = controls::TwipsFromPixels(controls::PixelsFromTwips(Server().ClientWidth() / 2.2));
    EXPECT_EQ(FeedForm(1).Left(), 0);
    EXPECT_EQ(FeedForm(1).Top(), 30);
    EXPECT_EQ(FeedForm(1).Width(), width);
    EXPECT_EQ(FeedForm(1).Height(), frmHistory::Default().Top() - 60);
    EXPECT_EQ(FeedForm(3).Left(), width + 60);
  });
}

TEST_F(FrameDeathTest, ThirdFeedIsReachedByScrolling) {
  WriteIni({1, 2, 3});
  ExpectHoldsOnceStarted([] {
    auto* area = MainWindow()->findChild<QMdiArea*>();
    RunPendingEvents();
    EXPECT_GT(FeedForm(3).Left() + FeedForm(3).Width(), Server().ClientWidth());
    EXPECT_TRUE(area->horizontalScrollBar()->isVisible());
    EXPECT_GT(area->horizontalScrollBar()->maximum(), 0);
  });
}

TEST_F(FrameDeathTest, ScrollBarOfAThirdFeedLeavesTheHistoryBelowTheFeeds) {
  WriteIni({1, 2, 3});
  ExpectHoldsOnceStarted([] {
    auto* area = MainWindow()->findChild<QMdiArea*>();
    EXPECT_TRUE(WaitUntil([area] { return area->horizontalScrollBar()->isVisible(); }));
    RunPendingEvents();
    ExpectHistoryInPlace();
    EXPECT_EQ(FeedForm(1).Top() + FeedForm(1).Height(), frmHistory::Default().Top() - 30);
    EXPECT_FALSE(area->verticalScrollBar()->isVisible());
  });
}

TEST_F(FrameDeathTest, QuestionGivesTheFocusBackToAChildWindow) {
  WriteIni({1});
  ExpectHoldsOnceStarted([] {
    for (int question = 0; question < 2; ++question) {
      QTimer::singleShot(0, MainWindow(), [] {
        auto* text = frmGoodInputBox::Default().Control<controls::TextBox>("Text1");
        EXPECT_TRUE(WaitUntil([text] { return text->hasFocus(); }));
        QTest::keyClick(text, Qt::Key_Return);
      });
      std::string result;
      EXPECT_EQ(GoodInputBox("Which?", "", "", 0, result, FeedForm(1)), 0);
      EXPECT_TRUE(WaitUntil([] { return QApplication::activeWindow() == MainWindow(); }));
    }
  });
}

TEST_F(FrameDeathTest, StartLeavesTheFirstFeedInViewHoweverManyFollow) {
  WriteIni({1, 2, 3, 4});
  ExpectHoldsOnceStarted([] {
    RunPendingEvents();
    EXPECT_EQ(FeedForm(1).Left(), 0);
  });
}

TEST_F(FrameDeathTest, WindowMenuBringsAFeedBeyondTheEdgeIntoView) {
  WriteIni({1, 2, 3, 4});
  ExpectHoldsOnceStarted([] {
    RunPendingEvents();
    EXPECT_GT(FeedForm(4).Left(), Server().ClientWidth());
    WindowMenu()->actions().at(4)->trigger();
    EXPECT_EQ(gActiveFeed, 4);
    EXPECT_GE(FeedForm(4).Left(), 0);
    EXPECT_LE(FeedForm(4).Left() + FeedForm(4).Width(), Server().ClientWidth());
  });
}

TEST_F(FrameDeathTest, FeedReachedByKeyBeyondTheEdgeComesIntoView) {
  WriteIni({1, 2, 3, 4});
  ExpectHoldsOnceStarted([] {
    auto* area = MainWindow()->findChild<QMdiArea*>();
    WindowMenu()->actions().at(1)->trigger();
    RunPendingEvents();
    area->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(ChildWindowOf(FeedForm(4).lblConfigFile())));
    EXPECT_EQ(gActiveFeed, 4);
    EXPECT_LE(FeedForm(4).Left() + FeedForm(4).Width(), Server().ClientWidth());
  });
}

TEST_F(FrameDeathTest, MinimizedFrameLeavesTheHistoryWhereItIs) {
  WriteIni({1});
  ExpectHoldsOnceStarted([] {
    frmHistory& history = frmHistory::Default();
    const double top = history.Top();
    const double width = history.Width();
    MainWindow()->showMinimized();
    MainWindow()->resize(500, 300);
    RunPendingEvents();
    EXPECT_EQ(history.Top(), top);
    EXPECT_EQ(history.Width(), width);
  });
}

TEST_F(FrameDeathTest, OperatorCanNotCloseTheHistoryInTheFrame) {
  WriteIni({1});
  ExpectHoldsOnceStarted([] {
    ChildWindowOf(frmHistory::Default().Control<QWidget>("Picture1"))->close();
    EXPECT_TRUE(frmHistory::Default().Visible());
  });
}

}  // namespace
}  // namespace vorda::test
