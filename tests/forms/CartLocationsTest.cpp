// The dialog of the wall's locations: what it shows, and what its controls do, by keyboard.

#include <QWindow>

#include "controls/Panels.h"
#include "support/BoxOperator.h"
#include "support/CartLocationsFixture.h"

namespace vorda::test {
namespace {

using CartLocations = CartLocationsFixture;

TEST_F(CartLocations, SaysWhatItIsAndWhichCartsARowIsFor) {
  Ask([] {
    EXPECT_EQ(Form().Text(), "Orvane Cart Locations:");
    EXPECT_EQ(Form().Control<QCheckBox>("chkUseOneCartLocation")->text(),
              QStringLiteral("Use one directory for all the carts on the Audiowall"));
    Texts captions;
    for (int part = 1; part <= kAudioWallParts; ++part)
      captions.push_back(
          Form().Control<controls::CaptionLabel>(controls::ElementName("Label2", part).c_str())->Caption());
    EXPECT_EQ(
        captions,
        (Texts{"Carts 1 to 1000:", "Carts 1001 to 2000:", "Carts 2001 to 3000:", "Carts 3001 to 4000:",
               "Carts 4001 to 5000:", "Carts 5001 to 6000:", "Carts 6001 to 7000:", "Carts 7001 to 8000:",
               "Carts 8001 to 9000:", "Carts 9001 to 10000:", "Carts 10001 to..."}));
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, StandTrimmedAndInCapitals) {
  Locate(1, "w:\\carts");
  Locate(3, "  /srv/Caf\xe9 \x20");
  Ask([] {
    EXPECT_EQ(Rows(), (Texts{"W:\\CARTS", "", "/SRV/CAF\xc9", "", "", "", "", "", "", "", ""}));
    EXPECT_FALSE(IsTicked());
    ExpectOtherRowsEnabled(true);
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, AllElevenAlikeAreOneDirectoryForAll) {
  LocateAll("W:\\CARTS");
  Locate(7, " w:\\carts ");
  Ask([] {
    EXPECT_TRUE(IsTicked());
    EXPECT_EQ(Rows(), Same("W:\\CARTS"));
    ExpectOtherRowsEnabled(false);
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, EleventhThatDiffersIsNotOneDirectoryForAll) {
  LocateAll("W:\\CARTS");
  Locate(11, "W:\\CART");
  Ask([] {
    EXPECT_FALSE(IsTicked());
    ExpectOtherRowsEnabled(true);
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, TagTellsThatItIsLoadedAndIsEmptyAfterwards) {
  platform::SetPointer(platform::Pointer::Hourglass);
  Ask([] {
    EXPECT_EQ(Form().Tag(), "LOADED");
    EXPECT_EQ(platform::CurrentPointer(), platform::Pointer::Default);
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(Form().Tag(), "");
}

TEST_F(CartLocations, IsModalAboveItsCaller) {
  Ask([this] {
    EXPECT_TRUE(QApplication::activeModalWidget()->objectName() == QStringLiteral("frmCartLocations"));
    EXPECT_EQ(QApplication::activeModalWidget()->windowHandle()->transientParent(),
              caller_.Window()->windowHandle());
    Press(Qt::Key_Escape);
  });
  EXPECT_FALSE(Form().Visible());
}

TEST_F(CartLocations, EverythingElseGoesOnBehindIt) {
  int ticks = 0;
  QObject owner;
  new platform::ReentrantTimer(
      1, [&ticks] { ++ticks; }, &owner);
  Ask([&ticks] {
    const int before = ticks;
    EXPECT_TRUE(WaitUntil([&] { return ticks > before + 5; }));
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, TickCopiesTheFirstRowAndBindsTheOthers) {
  Locate(1, "W:\\ONE");
  Locate(4, "W:\\FOUR");
  Ask([] {
    TabTo("chkUseOneCartLocation");
    Press(Qt::Key_Space);
    EXPECT_EQ(Rows(), Same("W:\\ONE"));
    ExpectOtherRowsEnabled(false);
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, ClearedBoxFreesTheRowsAndLeavesTheirTexts) {
  LocateAll("W:\\ONE");
  Ask([] {
    TabTo("chkUseOneCartLocation");
    Press(Qt::Key_Space);
    EXPECT_EQ(Rows(), Same("W:\\ONE"));
    ExpectOtherRowsEnabled(true);
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, RowIsSelectedOnFocusAndTheFirstIsCopiedAsItIsTyped) {
  LocateAll("W:\\ONE");
  Ask([] {
    Form().Control<controls::TextBox>("txtCartLocations1")->setFocus();
    EXPECT_EQ(Form().Control<controls::TextBox>("txtCartLocations1")->selectedText(),
              QStringLiteral("W:\\ONE"));
    Type("w");
    EXPECT_EQ(Rows(), Same("w"));
    Type(":\\two ");
    EXPECT_EQ(Rows(), Same("w:\\two "));
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, FirstRowGoesAloneWhileTheBoxIsClear) {
  Locate(2, "W:\\TWO");
  Ask([] {
    Fill(1, "w:\\one");
    Fill(3, "w:\\three");
    EXPECT_EQ(Rows(), (Texts{"w:\\one", "W:\\TWO", "w:\\three", "", "", "", "", "", "", "", ""}));
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, TabGoesFromTheBoxRowByRowToOk) {
  Locate(1, "W:\\ONE");
  Ask([] {
    TabTo("chkUseOneCartLocation");
    Texts wanted = {"chkUseOneCartLocation"};
    for (int part = 1; part <= kAudioWallParts; ++part) {
      wanted.push_back(controls::ElementName("txtCartLocations", part));
      wanted.push_back(controls::ElementName("cmdChangeCartLocation", part));
    }
    wanted.insert(wanted.end(), {"cmdDone", "chkUseOneCartLocation"});
    Texts reached = {FocusName()};
    while (reached.size() < wanted.size()) {
      Press(Qt::Key_Tab);
      reached.push_back(FocusName());
    }
    EXPECT_EQ(reached, wanted);
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, TabLeavesTheBoundRowsOut) {
  Ask([] {
    TabTo("chkUseOneCartLocation");
    Texts reached = {FocusName()};
    for (int tabs = 0; tabs < 4; ++tabs) {
      Press(Qt::Key_Tab);
      reached.push_back(FocusName());
    }
    EXPECT_EQ(reached, (Texts{"chkUseOneCartLocation", "txtCartLocations1", "cmdChangeCartLocation1",
                              "cmdDone", "chkUseOneCartLocation"}));
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, BrowseStartsAtTheRowAndPutsTheFolderThere) {
  Locate(3, "W:\\THREE");
  picker_.Expect("Select the directory that the audio is stored in", " /srv/Carts ");
  Ask([this] {
    TabTo("cmdChangeCartLocation3");
    Press(Qt::Key_Space);
    EXPECT_EQ(picker_.Last().startFolder, "W:\\THREE");
    EXPECT_EQ(picker_.Last().owner, QApplication::activeModalWidget());
    EXPECT_EQ(Rows(), (Texts{"", "", "/SRV/CARTS", "", "", "", "", "", "", "", ""}));
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, CancelledBrowseLeavesTheRow) {
  Locate(3, "W:\\THREE");
  picker_.Expect("Select the directory that the audio is stored in", "");
  Ask([] {
    TabTo("cmdChangeCartLocation3");
    Press(Qt::Key_Return);
    EXPECT_EQ(Row(3), "W:\\THREE");
    EXPECT_TRUE(Form().Visible());
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, FolderOfTheFirstRowIsForAllWithTheBoxTicked) {
  picker_.Expect("Select the directory that the audio is stored in", "/srv/carts");
  Ask([] {
    TabTo("cmdChangeCartLocation1");
    Press(Qt::Key_Space);
    EXPECT_EQ(Rows(), Same("/SRV/CARTS"));
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, DialogMayGoBehindThePicker) {
  const platform::ScopedHook picker(platform::FolderPickerHook(), [](const platform::FolderRequest&) {
    Form().Unload();
    return std::string("/srv/carts");
  });
  Ask([] {
    TabTo("cmdChangeCartLocation1");
    Press(Qt::Key_Space);
  });
  EXPECT_FALSE(Form().Loaded());
}

TEST_F(CartLocations, EscapeStoresNothing) {
  Locate(2, "w:\\two\\");
  Ask([] {
    Fill(1, "w:\\one");
    Press(Qt::Key_Escape);
  });
  EXPECT_FALSE(Form().Visible());
  EXPECT_EQ(Table(), (Texts{"", "w:\\two\\", "", "", "", "", "", "", "", "", ""}));
  EXPECT_EQ(JoinedNames(home_.path()), "");
}

TEST_F(CartLocations, HiddenDialogKeepsItsTexts) {
  Ask([] {
    Fill(1, "w:\\one");
    Press(Qt::Key_Escape);
  });
  LocateAll("W:\\TWO");
  Ask([] {
    EXPECT_EQ(Rows(), Same("w:\\one"));
    EXPECT_EQ(FocusName(), "txtCartLocations1");
    EXPECT_EQ(Form().Tag(), "");
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, CloseBoxStoresNothingAndTheNextTimeItReadsTheTable) {
  Ask([] {
    Fill(1, "w:\\one");
    QApplication::activeModalWidget()->close();
  });
  EXPECT_FALSE(Form().Loaded());
  EXPECT_EQ(Table(), Same(""));
  EXPECT_EQ(JoinedNames(home_.path()), "");
  Ask([] {
    EXPECT_EQ(Rows(), Same(""));
    EXPECT_EQ(Form().Tag(), "LOADED");
    Press(Qt::Key_Escape);
  });
}

TEST_F(CartLocations, WithoutAnOperatorItIsCancelledAndSaysSo) {
  Locate(2, "w:\\two");
  const DesktopScope nobody(controls::Operator::Absent);
  ::testing::internal::CaptureStderr();
  AskForCartLocations(caller_);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "vdserver: Orvane Cart Locations: nobody is there to fill it in, so it counts as cancelled\n");
  EXPECT_FALSE(Form().Visible());
  EXPECT_EQ(Form().Tag(), "");
  EXPECT_EQ(Table()[1], "w:\\two");
  EXPECT_EQ(JoinedNames(home_.path()), "");
}

}  // namespace
}  // namespace vorda::test
