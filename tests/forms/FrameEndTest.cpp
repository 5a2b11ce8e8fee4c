// How the program ends, and with which exit code.

#include <QAction>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/RunTimeError.h"
#include "support/FrameScenario.h"

namespace vorda::test {
namespace {

using FrameEndDeathTest = FrameScenario;

TEST_F(FrameEndDeathTest, CloseBoxEndsTheProgram) {
  WriteIni({1});
  ExpectEnd(0, "", [] {
    Server().Load();
    EndIfFailed();
    MainWindow()->close();
  });
}

TEST_F(FrameEndDeathTest, ExitEntryEndsTheProgram) {
  WriteIni({1});
  ExpectEnd(0, "", [] {
    Server().Load();
    EndIfFailed();
    MainWindow()->findChild<QAction*>(QStringLiteral("mnuExit"))->trigger();
  });
}

TEST_F(FrameEndDeathTest, ExitByTheKeyboardEndsTheProgram) {
  WriteIni({1});
  ExpectEnd(0, "", [] {
    Server().Load();
    MainWindow()->activateWindow();
    EXPECT_TRUE(WaitUntil([] { return QApplication::activeWindow() == MainWindow(); }));
    QTest::keyClick(MainWindow(), Qt::Key_F, Qt::AltModifier);
    EXPECT_TRUE(WaitUntil([] { return QApplication::activePopupWidget() != nullptr; }));
    EndIfFailed();
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_X);
  });
}

// Nothing behind the open box goes on.
TEST_F(FrameEndDeathTest, EndsFromBehindABox) {
  WriteIni({1});
  ExpectEnd(0, "^$", [this] {
    Server().Load();
    boxes.Expect("Box", platform::BoxAnswer::Ok, [] { Server().Unload(); });
    platform::ShowMessageBox("Box");
    std::fputs("behind the box", stderr);
  });
}

TEST_F(FrameEndDeathTest, OpenStoryIsClosedNotHandedOnAndStaysOnDisk) {
  WriteIni({1});
  ExpectEnd(0, "^$", [this] {
    processes.atStart = [](const platform::ProcessStart&) { std::fputs("a tool was started", stderr); };
    Server().Load();
    ports->OpenOn(1)->Arrive("\x01half a story");
    EXPECT_GT(Record(1).StoryFileHandle, 0);
    EndIfFailed();
    MainWindow()->close();
  });
  std::filesystem::path story;
  for (const auto& entry : std::filesystem::directory_iterator(News(1)))
    if (entry.path().extension() == ".RA1") story = entry.path();
  EXPECT_EQ(ReadWholeFile(story.string()), "half a story");
}

TEST_F(FrameEndDeathTest, WrongCommandLineEndsWithTwoAfterTheTwoLineBox) {
  WriteIni({1});
  const char* const arguments[] = {"/P"};
  TakeCommandLine(1, arguments);
  ExpectEnd(
      2, "^Invalid .INI file in command line\nCorrect form : vdserver\\[.exe\\] \\[IniFileName\\]$", [] {
        platform::MessageBoxHook().Swap([](const platform::BoxRequest& request) {
          std::fputs(request.icon == platform::BoxIcon::Critical ? request.text.c_str() : "another icon",
                     stderr);
          return platform::BoxAnswer::Ok;
        });
        Server().Load();
      });
}

TEST_F(FrameEndDeathTest, NoNewsDirectoryForFeedOneEndsWithoutAnotherWord) {
  ExpectEnd(0, "^$", [this] {
    picker.Expect("Select Primary News Feed Directory", "");
    Server().Load();
  });
}

TEST_F(FrameEndDeathTest, FeedTwoAloneIsTakenDownWithTheProgram) {
  WriteIni({2});
  ExpectEnd(0, "^A&B 2$", [this] {
    picker.Expect("Select Primary News Feed Directory", "");
    ports->FailOpenWith(platform::kDeviceUnavailable, 2);
    boxes.Expect("Couldn't open port 2 for data capture, error : Device unavailable", platform::BoxAnswer::Ok,
                 [] { std::fputs(Record(2).Name.c_str(), stderr); });
    Server().Load();
  });
}

using FrameEnd = FrameEndDeathTest;

TEST_F(FrameEnd, ShutDownFeedsGoesBySlotsAndMakesTheMissingForm) {
  WriteIni({1, 3});
  ASSERT_EQ(ReadServerConfig(), 0);
  ASSERT_EQ(gFeedFormCount, 2);
  ASSERT_EQ(gFeedForms[1], nullptr);
  ShutDownFeeds();
  EXPECT_NE(gFeedForms[1], nullptr);
  EXPECT_EQ(gFeedForms[3], nullptr);
  EXPECT_EQ(gFeedFormCount, 2);
  EXPECT_TRUE(FeedForm(1).Loaded());
  EXPECT_TRUE(FeedForm(3).Loaded());
}

}  // namespace
}  // namespace vorda::test
