// The audio wall in the start-up and in the frame's menu.

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "carts/Orvane_Audio_Routines.h"
#include "carts/frmCartLocations.h"
#include "controls/TextBox.h"
#include "platform/Text.h"
#include "shell/frmSplash.h"
#include "support/DialogOperator.h"
#include "support/FrameScenario.h"

namespace vorda::test {
namespace {

using platform::BoxAnswer;

class FrameWallDeathTest : public FrameScenario {
 protected:
  static frmCartLocations& Dialog() { return frmCartLocations::Default(); }
  static bool AnyIsConnected() {
    return std::any_of(gAudioWallParts.begin(), gAudioWallParts.end(),
                       [](const AudioWallPart& part) { return part.Connected; });
  }
  // What the operator types: one directory for all.
  static void FillIn(const std::string& wall) {
    TabTo("txtCartLocations1");
    Type(wall.c_str());
    Press(Qt::Key_Return);
  }
  void ExpectBlank(int count, std::function<void()> meanwhile) {
    boxes.Expect(std::to_string(count) +
                     " locations of the AudioWall have not been set : Please check your configuration.",
                 BoxAnswer::Ok, std::move(meanwhile));
  }
  void ExpectListQuestion(const std::string& wall, int part, BoxAnswer answer,
                          std::function<void()> meanwhile = {}) {
    const std::string number = std::to_string(part);
    boxes.Expect("Part " + number + " of the AudioWall has not been found.\nDo you wish to create it in :\n" +
                     wall + "/Carts" + number + ".lst",
                 answer, std::move(meanwhile));
  }
  // Behind the box that comes last before the program's end: what has failed by then mustn't be lost.
  static void TellLastBox() {
    EndIfFailed();
    std::fputs("told", stderr);
  }
};

TEST_F(FrameWallDeathTest, BlankFirstLocationIsAskedForBeforeTheWallIsConnectedWhileTheFeedsLive) {
  MakeWallLists(Wall());
  WriteIni({1}, "");
  ExpectHolds([this] {
    DialogOperator human(Dialog());
    human.Then([this] {
      EXPECT_FALSE(AnyIsConnected());
      EXPECT_TRUE(frmSplash::Default().Visible());
      EXPECT_EQ(Dialog().IniFileName, "vdserver.ini");
      EXPECT_EQ(QApplication::activeModalWidget()->windowHandle()->transientParent(),
                MainWindow()->windowHandle());
      ports->OpenOn(1)->Arrive("\x01one story\x04");
      EXPECT_EQ(processes.started.size(), 1U);
      FillIn(Wall());
    });
    Server().Load();
    EXPECT_FALSE(Dialog().Visible());
    for (std::size_t part = 0; part < 10; ++part) EXPECT_TRUE(gAudioWallParts[part].Connected);
    EXPECT_FALSE(frmSplash::Default().Loaded());
  });
  const std::string ini = ReadWholeFile(home / "vdServer.INI");
  EXPECT_TRUE(ini.starts_with("[WireFeed1]\r\n")) << ini;
  EXPECT_TRUE(ini.ends_with("Carts11=" + platform::UpperCase(Wall()) + "\r\n")) << ini;
}

TEST_F(FrameWallDeathTest, FirstLocationOfBlanksIsAskedForToo) {
  WriteIni({1}, "[FileLocations]\r\nCarts1=\"  \"\r\nCarts2=W:\\CARTS\r\n");
  ExpectHolds([] {
    DialogOperator human(Dialog());
    human.Then([] { EndScenario(); });
    Server().Load();
    ADD_FAILURE() << "It was not asked for.";
  });
}

TEST_F(FrameWallDeathTest, OtherBlankLocationsAreNotAskedForAndEndTheProgram) {
  WriteIni({1}, "[FileLocations]\r\nCarts1=W:\\CARTS\r\nCarts3=W:\\CARTS\r\n");
  ExpectEnd(0, "^told$", [this] {
    ExpectBlank(8, [this] {
      EXPECT_FALSE(Dialog().Loaded());
      EXPECT_EQ(boxes.Last().icon, platform::BoxIcon::Critical);
      TellLastBox();
    });
    Server().Load();
    std::fputs("it went on", stderr);
  });
}

TEST_F(FrameWallDeathTest, EscapeLeadsToTheCountAndTheEnd) {
  WriteIni({1}, "");
  ExpectEnd(0, "^told$", [this] {
    DialogOperator human(Dialog());
    human.Then([this] {
      ports->OpenOn(1)->Arrive("\x01half a story");
      ExpectBlank(10, TellLastBox);
      Press(Qt::Key_Escape);
    });
    Server().Load();
    std::fputs("it went on", stderr);
  });
  EXPECT_EQ(ReadWholeFile(home / "vdServer.INI").find("FileLocations"), std::string::npos);
}

TEST_F(FrameWallDeathTest, CancelOfAListsQuestionEndsTheProgram) {
  std::filesystem::create_directory(Wall());
  WriteIni({1}, WallKeys(Wall()));
  ExpectEnd(0, "^told$", [this] {
    ExpectListQuestion(Wall(), 1, BoxAnswer::No);
    ExpectListQuestion(Wall(), 2, BoxAnswer::Cancel, TellLastBox);
    Server().Load();
    std::fputs("it went on", stderr);
  });
  EXPECT_EQ(JoinedNames(Wall()), "");
}

TEST_F(FrameWallDeathTest, NoToEveryListsQuestionGoesOnWithoutLists) {
  std::filesystem::create_directory(Wall());
  WriteIni({1}, WallKeys(Wall()));
  ExpectHolds([this] {
    for (int part = 1; part <= 10; ++part) ExpectListQuestion(Wall(), part, BoxAnswer::No);
    Server().Load();
    EXPECT_FALSE(frmSplash::Default().Loaded());
    EXPECT_FALSE(AnyIsConnected());
  });
  EXPECT_EQ(JoinedNames(Wall()), "");
}

// OK connects the wall by itself; the start does so once more.
TEST_F(FrameWallDeathTest, ListsDeclinedBehindTheDialogAreAskedAboutAgain) {
  std::filesystem::create_directory(Wall());
  WriteIni({1}, "");
  ExpectHolds([this] {
    const std::string wall = platform::UpperCase(Wall());
    for (int part = 1; part <= 10; ++part) ExpectListQuestion(wall, part, BoxAnswer::No);
    for (int part = 1; part <= 10; ++part) ExpectListQuestion(wall, part, BoxAnswer::Yes);
    DialogOperator human(Dialog());
    human.Then([this] { FillIn(Wall()); });
    Server().Load();
    EXPECT_TRUE(gAudioWallParts[9].Connected);
  });
}

TEST_F(FrameWallDeathTest, SettingsAreReadFromTheFileOfTheCommandLineAndLocationsWrittenToTheOther) {
  MakeWallLists(Wall());
  const std::string own =
      "[FileLocations]\r\nCarts1=\r\nCarts5=w:\\five\r\n[Audio]\r\nEmptyCartBackColor=77\r\n";
  WriteIni({1}, own, "station.ini");
  WriteWholeFile(home / "vdServer.INI", WallKeys("W:\\OTHER"));
  const char* const arguments[] = {"/P", "station.ini"};
  TakeCommandLine(2, arguments);
  const std::string before = ReadWholeFile(home / "station.ini");
  ExpectHolds([this] {
    DialogOperator human(Dialog());
    human.Then([this] {
      EXPECT_EQ(Dialog().Control<controls::TextBox>("txtCartLocations5")->Text(), "W:\\FIVE");
      EXPECT_EQ(gBlankCartInfo.BackColor, 77);
      TabTo("chkUseOneCartLocation");
      Press(Qt::Key_Space);
      FillIn(Wall());
    });
    Server().Load();
  });
  EXPECT_EQ(ReadWholeFile(home / "station.ini"), before);
  EXPECT_EQ(ReadWholeFile(home / "vdServer.INI"), WallKeys(platform::UpperCase(Wall())));
}

TEST_F(FrameWallDeathTest, MenuOpensTheLocationsAboveTheFrameByKeyboard) {
  WriteIni({1});
  ExpectHoldsOnceStarted([this] {
    bool opened = false;
    DialogOperator human(Dialog());
    human.Then([&] {
      opened = true;
      EXPECT_EQ(Dialog().IniFileName, "vdserver.ini");
      EXPECT_EQ(QApplication::activeModalWidget()->windowHandle()->transientParent(),
                MainWindow()->windowHandle());
      EXPECT_EQ(Dialog().Control<controls::TextBox>("txtCartLocations1")->Text(),
                platform::UpperCase(Wall()));
      EXPECT_TRUE(gAudioWallParts[0].Connected);
      ports->OpenOn(1)->Arrive("\x01one story\x04");
      EXPECT_EQ(processes.started.size(), 1U);
      Press(Qt::Key_Return);
    });
    MainWindow()->activateWindow();
    EXPECT_TRUE(WaitUntil([] { return QApplication::activeWindow() == MainWindow(); }));
    QTest::keyClick(MainWindow(), Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(WaitUntil([] { return QApplication::activePopupWidget() != nullptr; }));
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_C);
    EXPECT_TRUE(WaitUntil([&] { return opened && !Dialog().Visible(); }));
    EXPECT_TRUE(Server().Visible());
  });
  EXPECT_EQ(ReadWholeFile(home / "vdServer.INI").find(WallKeys(platform::UpperCase(Wall()))), 0U);
}

}  // namespace
}  // namespace vorda::test
