// The dialog that moves and copies carts: what OK says, asks and does.

#include "support/MoveCopyFixture.h"

namespace vorda::test {
namespace {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;

class MoveCopyCartOk : public MoveCopyFixture {
 protected:
  MoveCopyCartOk() { GiveCart(5, "Five", 2); }

  // The box that came last.
  void ExpectLast(BoxIcon icon, BoxButtons buttons, const std::string& title) {
    EXPECT_EQ(boxes_.Last().icon, icon);
    EXPECT_EQ(boxes_.Last().buttons, buttons);
    EXPECT_EQ(boxes_.Last().title, title);
  }
  static void ExpectStillUp() {
    EXPECT_TRUE(Form().Visible());
    EXPECT_EQ(Form().Tag(), "");
    EXPECT_EQ(platform::CurrentPointer(), platform::Pointer::Default);
  }
};

TEST_F(MoveCopyCartOk, CopyIsConfirmedAndTheTagIsTheDestination) {
  ExpectConfirmation("COPY", "7", BoxAnswer::Yes);
  Copy([] { Choose("7"); });
  ExpectLast(BoxIcon::Question, BoxButtons::YesNo, "");
  EXPECT_FALSE(Form().Visible());
  EXPECT_EQ(Form().Tag(), "7");
  EXPECT_EQ(FilesIn(wall_.path()), (Names{"ORV00005.WAV", "ORV00007.WAV"}));
  EXPECT_EQ(RecordBytes(7), FullCartRecord("Five", 2));
  EXPECT_EQ(RecordBytes(5), FullCartRecord("Five", 2));
  EXPECT_EQ(platform::CurrentPointer(), platform::Pointer::Default);
}

TEST_F(MoveCopyCartOk, MoveIsConfirmedAndTheTagIsTheDestination) {
  ExpectConfirmation("MOVE", "7", BoxAnswer::Yes);
  Move([] { Choose("7"); });
  ExpectLast(BoxIcon::Question, BoxButtons::YesNo, "");
  EXPECT_EQ(Form().Tag(), "7");
  EXPECT_EQ(RecordBytes(7), FullCartRecord("Five", 2));
  EXPECT_EQ(RecordBytes(5), EmptiedCartRecord());
  EXPECT_EQ(ReadWholeFile(CartFile(7, "WAV")), ContentOf(5, "WAV"));
}

TEST_F(MoveCopyCartOk, OperatorsChoiceCountsAndNotTheOpeners) {
  ExpectConfirmation("MOVE", "7", BoxAnswer::Yes);
  Copy([] {
    Type("7m");
    TabTo("PerformActionB");
    Press(Qt::Key_Space);
  });
  EXPECT_EQ(Form().Tag(), "7");
}

TEST_F(MoveCopyCartOk, LeadingZerosAreNoPartOfTheNumber) {
  ExpectConfirmation("COPY", "7", BoxAnswer::Yes);
  Copy([] { Choose("0007"); });
  EXPECT_EQ(Form().Tag(), "7");
}

TEST_F(MoveCopyCartOk, DeclinedItStaysOpenAndNothingIsDone) {
  ExpectConfirmation("COPY", "7", BoxAnswer::No);
  Copy([] {
    Choose("7");
    ExpectStillUp();
    EXPECT_EQ(Destination(), "7");
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(FilesIn(wall_.path()), Names{"ORV00005.WAV"});
}

TEST_F(MoveCopyCartOk, CartOntoItselfIsRefused) {
  boxes_.Expect("You cannot copy a cart onto itself");
  Move([this] {
    Choose("5");
    ExpectLast(BoxIcon::None, BoxButtons::Ok, "");
    ExpectStillUp();
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCartOk, NoNumberOrZeroIsRefused) {
  boxes_.Expect("You must specify a destination cart no to copy a cart");
  boxes_.Expect("You must specify a destination cart no to copy a cart");
  Move([this] {
    Press(Qt::Key_Return);
    ExpectLast(BoxIcon::Exclamation, BoxButtons::Ok, "Copy Cart Error");
    Choose("000");
    ExpectStillUp();
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCartOk, LastCartOfTheWallIsANumberLikeOthers) {
  Connect(10);
  ExpectConfirmation("COPY", "9999", BoxAnswer::Yes);
  Copy([] { Choose("9999"); });
  EXPECT_EQ(Form().Tag(), "9999");
  EXPECT_EQ(RecordBytes(9999), FullCartRecord("Five", 2));
}

TEST_F(MoveCopyCartOk, NumberBeyondTheWallIsToldAndGoesOn) {
  boxes_.Expect("You must specify a cart from 1 to 9999", BoxAnswer::Ok,
                [this] { ExpectLast(BoxIcon::None, BoxButtons::Ok, ""); });
  ExpectConfirmation("COPY", "10000", BoxAnswer::No);
  Copy([] {
    Choose("10000");
    ExpectStillUp();
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCartOk, MoveBeyondTheWallEmptiesTheSource) {
  boxes_.Expect("You must specify a cart from 1 to 9999");
  ExpectConfirmation("MOVE", "12345", BoxAnswer::Yes);
  Move([] { Choose("12345"); });
  EXPECT_FALSE(Form().Visible());
  EXPECT_EQ(Form().Tag(), "12345");
  EXPECT_EQ(RecordBytes(5), EmptiedCartRecord());
}

TEST_F(MoveCopyCartOk, NumberTooLongForOneStaysBeyondTheWall) {
  boxes_.Expect("You must specify a cart from 1 to 9999");
  ExpectConfirmation("COPY", "2147483646", BoxAnswer::No);
  Copy([] {
    Choose("99999999999999999999");
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCartOk, RefusedByTheRightsItStaysOpen) {
  InstallRule([](std::int32_t cart) { return cart != 7; });
  for (const char* what : {"COPY", "MOVE"}) {
    ExpectConfirmation(what, "7", BoxAnswer::Yes);
    boxes_.Expect("You do not have permission to alter the destination cart");
  }
  Copy([] {
    Choose("7");
    ExpectStillUp();
    Type("m");
    Press(Qt::Key_Return);
    ExpectStillUp();
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(RecordBytes(5), FullCartRecord("Five", 2));
}

// Refused only when the move is under way, it leaves the hourglass where it is.
TEST_F(MoveCopyCartOk, RefusedOnTheWayItStaysOpenWithThePointerRestored) {
  SplitWall();
  int asked = 0;
  InstallRule([&asked](std::int32_t) { return ++asked < 3; });
  ExpectConfirmation("MOVE", "1005", BoxAnswer::Yes);
  boxes_.Expect("You do not have permission to alter the destination cart", BoxAnswer::Ok,
                [] { EXPECT_EQ(platform::CurrentPointer(), platform::Pointer::Hourglass); });
  Move([] {
    Choose("1005");
    ExpectStillUp();
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCartOk, QuestionAboutTheDestinationDeclinedItStaysOpen) {
  GiveCart(7, "Seven", 3);
  ExpectConfirmation("COPY", "7", BoxAnswer::Yes);
  boxes_.Expect("There is already something in cart 7, Do you want to overwrite it?", BoxAnswer::No);
  Copy([] {
    Choose("7");
    ExpectStillUp();
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(RecordBytes(7), FullCartRecord("Seven", 3));
}

TEST_F(MoveCopyCartOk, FailedMoveStaysOpen) {
  GiveCart(7, "Seven", 3);
  ExpectConfirmation("MOVE", "7", BoxAnswer::Yes);
  boxes_.Expect(
      "There is already something in cart 7, Do you want to overwrite it?\n(If you choose NO, it will be "
      "swapped with cart 5)",
      BoxAnswer::Cancel);
  Move([] {
    Choose("7");
    ExpectStillUp();
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(RecordBytes(7), FullCartRecord("Seven", 3));
}

// The destination that a finished question has left says nothing about the next one.
TEST_F(MoveCopyCartOk, CancelBehindACopyEmptiesTheTag) {
  ExpectConfirmation("COPY", "7", BoxAnswer::Yes);
  Copy([] { Choose("7"); });
  EXPECT_EQ(Form().Tag(), "7");
  Copy([] { Press(Qt::Key_Escape); });
  EXPECT_EQ(Form().Tag(), "");
}

}  // namespace
}  // namespace vorda::test
