// The dialog of the wall's locations: what OK stores, where, and what it leads to.

#include "platform/Text.h"
#include "support/CartLocationsFixture.h"
#include "support/WallLists.h"

namespace vorda::test {
namespace {

using CartLocationsStore = CartLocationsFixture;

TEST_F(CartLocationsStore, EnterStoresInTheTableAndInTheIni) {
  Locate(2, "w:\\two");
  ExpectBlank(7);
  Ask([] {
    Fill(1, "  w:\\one ");
    Fill(10, "/srv/ten");
    Fill(11, "x:\\eleven");
    Press(Qt::Key_Return);
  });
  const Texts stored = {"W:\\ONE", "W:\\TWO", "", "", "", "", "", "", "", "/SRV/TEN", "X:\\ELEVEN"};
  EXPECT_EQ(Table(), stored);
  EXPECT_EQ(Rows(), stored);
  EXPECT_EQ(Ini(),
            "[FileLocations]\r\nCarts1=W:\\ONE\r\nCarts2=W:\\TWO\r\nCarts3=\r\nCarts4=\r\nCarts5=\r\n"
            "Carts6=\r\nCarts7=\r\nCarts8=\r\nCarts9=\r\nCarts10=/SRV/TEN\r\nCarts11=X:\\ELEVEN\r\n");
}

// One goes from the row and the table, one more on the way to the file.
TEST_F(CartLocationsStore, SeparatorAtTheEndGoesOnceFromTheTableAndOnceMoreFromTheIni) {
  Locate(9, "W:\\NINE");
  ExpectBlank(1);
  Ask([] {
    Fill(1, "w:\\one\\");
    Fill(2, "w:\\two\\\\");
    Fill(3, "w:\\three\\\\\\");
    Fill(4, "/srv/four/");
    Fill(5, "/srv/five//");
    Fill(6, "w:\\six/");  // a name that ends so, not a separator
    Fill(7, "w:");
    Fill(8, "w:\\");
    Fill(10, "x");
    Fill(11, "/");
    TabTo("txtCartLocations9");
    Press(Qt::Key_Backspace);
    TabTo("cmdDone");
    Press(Qt::Key_Space);
  });
  EXPECT_EQ(Table(), (Texts{"W:\\ONE", "W:\\TWO\\", "W:\\THREE\\\\", "/SRV/FOUR", "/SRV/FIVE/", "W:\\SIX/",
                            "W:", "W:", "", "X", ""}));
  EXPECT_EQ(Rows(), Table());
  EXPECT_EQ(
      Ini(),
      "[FileLocations]\r\nCarts1=W:\\ONE\r\nCarts2=W:\\TWO\r\nCarts3=W:\\THREE\\\r\nCarts4=/SRV/FOUR\r\n"
      "Carts5=/SRV/FIVE\r\nCarts6=W:\\SIX/\r\nCarts7=W:\r\nCarts8=W:\r\nCarts9=\r\nCarts10=X\r\n"
      "Carts11=\r\n");
}

TEST_F(CartLocationsStore, LoneSeparatorIsNoLocation) {
  ExpectBlank(10);
  Ask([] {
    Fill(1, "\\");
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(Table(), Same(""));
  EXPECT_EQ(ReadWholeFile(home_ / "vdserver.ini").substr(0, 27), "[FileLocations]\r\nCarts1=\r\nC");
}

TEST_F(CartLocationsStore, BlankAheadOfTheSeparatorStaysInTheRowAlone) {
  Locate(2, "W:\\TWO");
  ExpectBlank(8);
  Ask([] {
    Fill(1, "w:\\one \\");
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(Row(1), "W:\\ONE ");
  EXPECT_EQ(Table().front(), "W:\\ONE");
}

// The server reads STATION.INI here.
TEST_F(CartLocationsStore, IniIsAlwaysTheOneOfTheServersOwnNameInWhateverCase) {
  WriteWholeFile(home_ / "STATION.INI", "[FileLocations]\r\nCarts1=W:\\OLD\r\n");
  WriteWholeFile(home_ / "vdServer.INI",
                 "; ours\r\n[filelocations]\r\nCARTS1 = W:\\OLD\r\n[WireFeed1]\r\nA=1\r\n");
  ExpectBlank(10);
  Ask([] {
    Fill(1, "");
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(JoinedNames(home_.path()), "STATION.INI vdServer.INI");
  EXPECT_EQ(ReadWholeFile(home_ / "STATION.INI"), "[FileLocations]\r\nCarts1=W:\\OLD\r\n");
  const std::string ini = ReadWholeFile(home_ / "vdServer.INI");
  EXPECT_TRUE(ini.starts_with("; ours\r\n[filelocations]\r\n")) << ini;
  EXPECT_EQ(ini.find("OLD"), std::string::npos) << ini;
  EXPECT_TRUE(ini.ends_with("Carts11=\r\n[WireFeed1]\r\nA=1\r\n")) << ini;
}

TEST_F(CartLocationsStore, FailedWriteOfTheIniGoesUnnoticed) {
  ExpectBlank(10);
  Form().IniFileName = home_ / "nowhere/vdserver.ini";
  operator_.Then([] { Press(Qt::Key_Return); });
  Form().ShowModal(caller_);
  EXPECT_FALSE(Form().Visible());
  EXPECT_EQ(JoinedNames(home_.path()), "");
}

TEST_F(CartLocationsStore, WallIsConnectedOnceAllIsStoredAndTellsItBehindTheDialog) {
  bool told = false;
  ExpectBlank(9, [&] {
    told = true;
    EXPECT_TRUE(Form().Visible());
    EXPECT_EQ(Form().Tag(), "LOADED");
    EXPECT_EQ(boxes_.Last().icon, platform::BoxIcon::Critical);
    EXPECT_EQ(Table().front(), "W:\\ONE");
    EXPECT_TRUE(Ini().ends_with("Carts11=\r\n"));
  });
  Ask([] {
    TabTo("chkUseOneCartLocation");
    Press(Qt::Key_Space);
    Fill(1, "w:\\one");
    Press(Qt::Key_Return);
  });
  EXPECT_TRUE(told);
  EXPECT_FALSE(Form().Visible());
  EXPECT_EQ(Form().Tag(), "");
}

TEST_F(CartLocationsStore, OkConnectsTheWall) {
  const TempDirectory wall;
  MakeWallLists(wall.path());
  Ask([&wall] {
    Fill(1, wall.path().c_str());
    Press(Qt::Key_Return);
  });
  for (std::size_t part = 0; part < 10; ++part) EXPECT_TRUE(gAudioWallParts[part].Connected) << part;
  EXPECT_FALSE(gAudioWallParts[10].Connected);
  EXPECT_EQ(Table(), Same(platform::UpperCase(wall.path())));
}

TEST_F(CartLocationsStore, AskedWhetherToMakeAListItAsksAboveTheDialogAndCancelStoresAllTheSame) {
  const TempDirectory wall;
  boxes_.Expect("Part 1 of the AudioWall has not been found.\nDo you wish to create it in :\n" +
                    platform::UpperCase(wall.path()) + "/Carts1.lst",
                platform::BoxAnswer::Cancel, [] { EXPECT_TRUE(Form().Visible()); });
  Ask([&wall] {
    Fill(1, wall.path().c_str());
    Press(Qt::Key_Return);
  });
  EXPECT_FALSE(Form().Visible());
  EXPECT_EQ(JoinedNames(wall.path()), "");
  EXPECT_EQ(Table(), Same(platform::UpperCase(wall.path())));
}

}  // namespace
}  // namespace vorda::test
