// The dialog that moves and copies carts: how it comes up, and its controls by keyboard.

#include <QClipboard>
#include <QPushButton>

#include "support/MoveCopyFixture.h"

namespace vorda::test {
namespace {

using MoveCopyCart = MoveCopyFixture;

TEST_F(MoveCopyCart, EmptySourceIsRefusedWithoutAWord) {
  Form().SetTag("9");
  Open("5", false);
  EXPECT_FALSE(Form().Visible());
  EXPECT_EQ(Form().Tag(), "");
}

TEST_F(MoveCopyCart, SourceOutsideTheWallIsRefusedWithoutAWord) {
  for (const char* source : {"0", "", "10000", "-3", "99999999999"}) {
    Form().SetTag("9");
    Open(source, true);
    EXPECT_FALSE(Form().Visible()) << source;
    EXPECT_EQ(Form().Tag(), "") << source;
  }
}

TEST_F(MoveCopyCart, SourceWithoutLengthIsNotEmpty) {
  SetRecordBytes(5, FullCartRecord("Being recorded", 0));
  Copy([] { Press(Qt::Key_Escape); });
}

TEST_F(MoveCopyCart, TitleNamesTheSource) {
  GiveCart(5, "Five", 2);
  EXPECT_EQ(Form().Text(), "Move/Copy Cart");
  Copy([] {
    EXPECT_EQ(Form().Text(), "Move/Copy Cart 5");
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, ControlsSayWhatTheyAre) {
  GiveCart(5, "Five", 2);
  Copy([] {
    EXPECT_EQ(Form().Control<controls::CaptionLabel>("Label4")->Caption(), "Destination Cart Number :");
    EXPECT_EQ(Form().Control<controls::CaptionLabel>("lblSourceCart")->Caption(), "5");
    const auto caption = [](const char* name) {
      return Form().Control<QAbstractButton>(name)->text().toStdString();
    };
    EXPECT_EQ(caption("cmdNextCart"), "&Next Empty Cart");
    EXPECT_EQ(caption("optCopy"), "&Copy");
    EXPECT_EQ(caption("optMove"), "&Move");
    EXPECT_EQ(caption("PerformActionB"), "OK");
    EXPECT_EQ(caption("CancelB"), "Cancel");
    EXPECT_EQ(caption("chkMove"), "Moving");
    EXPECT_FALSE(Form().Control<QCheckBox>("chkMove")->isVisible());
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, OpenerSaysWhetherItStandsOnMove) {
  GiveCart(5, "Five", 2);
  Copy([] {
    EXPECT_FALSE(IsMove());
    Press(Qt::Key_M);
    Press(Qt::Key_Escape);
  });
  Move([] {
    EXPECT_TRUE(IsMove());
    Press(Qt::Key_C);
    Press(Qt::Key_Escape);
  });
  Copy([] {
    EXPECT_FALSE(IsMove());
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, NumberHasTheFocusAllSelectedAndThePointerIsRestored) {
  GiveCart(5, "Five", 2);
  Form().Control<controls::TextBox>("txtDestCart")->SetText("17");
  platform::SetPointer(platform::Pointer::Hourglass);
  Copy([] {
    EXPECT_EQ(FocusName(), "txtDestCart");
    EXPECT_EQ(Box()->selectedText(), QStringLiteral("17"));
    EXPECT_EQ(platform::CurrentPointer(), platform::Pointer::Default);
    TabTo("CancelB");
    Press(Qt::Key_Space);
  });
  // The next time it stands there again, wherever it was left.
  Copy([] {
    EXPECT_EQ(FocusName(), "txtDestCart");
    EXPECT_EQ(Box()->selectedText(), QStringLiteral("17"));
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, OperatorsAreaProposesItsFirstEmptyCartBehindItsBeginning) {
  GiveCart(5, "Five", 2);
  GiveCart(41, "Forty-one", 2);
  gLocalEditCart = 40;
  Copy([] {
    EXPECT_EQ(Destination(), "42");
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, AreaAtTheWallsEndProposesItsBeginning) {
  GiveCart(5, "Five", 2);
  gLocalEditCart = 9999;
  Copy([] {
    EXPECT_EQ(Destination(), "9999");
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, WithoutAnAreaTheLastDestinationStays) {
  GiveCart(5, "Five", 2);
  Copy([] {
    EXPECT_EQ(Destination(), "");
    Type("33");
    Press(Qt::Key_Escape);
  });
  Copy([] {
    EXPECT_EQ(Destination(), "33");
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, NumberTakesDigitsAndBackspaceAlone) {
  GiveCart(5, "Five", 2);
  Copy([] {
    Type("1a2-3 .4+,z");
    EXPECT_EQ(Destination(), "1234");
    Press(Qt::Key_Backspace);
    EXPECT_EQ(Destination(), "123");
    Press(Qt::Key_Left);
    Press(Qt::Key_Left);
    Press(Qt::Key_Delete);
    EXPECT_EQ(Destination(), "13");
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, WhatIsPastedLosesAllButItsDigits) {
  GiveCart(5, "Five", 2);
  QGuiApplication::clipboard()->setText(QStringLiteral("m2 n\u00b23\t4"));
  Copy([] {
    Type("19");
    Press(Qt::Key_Left);
    Press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(Destination(), "12349");
    EXPECT_EQ(Box()->cursorPosition(), 4);
    EXPECT_FALSE(IsMove());
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, LettersActWhereverTheFocusIs) {
  GiveCart(5, "Five", 2);
  Copy([] {
    for (const char* control : {"txtDestCart", "cmdNextCart", "optCopy", "PerformActionB", "CancelB"}) {
      Form().Control<QWidget>(control)->setFocus();
      Type("m");
      EXPECT_TRUE(IsMove()) << control;
      Type("c");
      EXPECT_FALSE(IsMove()) << control;
      Type("M");
      EXPECT_TRUE(IsMove()) << control;
      Type("C");
      EXPECT_FALSE(IsMove()) << control;
      EXPECT_EQ(FocusName(), control);
    }
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, LetterFindsTheNextEmptyCart) {
  GiveCart(5, "Five", 2);
  GiveCart(12, "Twelve", 2);
  Copy([] {
    Type("10n");
    EXPECT_EQ(Destination(), "11");
    Type("N");
    EXPECT_EQ(Destination(), "13");
    TabTo("CancelB");
    Type("n");
    EXPECT_EQ(Destination(), "14");
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, NextEmptyCartOfAnEmptyNumberIsTheFirst) {
  GiveCart(1, "One", 2);
  GiveCart(5, "Five", 2);
  Copy([] {
    TabTo("cmdNextCart");
    Press(Qt::Key_Space);
    EXPECT_EQ(Destination(), "2");
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, NoFurtherEmptyCartLeavesTheNumber) {
  GiveCart(5, "Five", 2);
  Copy([] {
    for (const char* number : {"9999", "12345", "99999999999"}) {
      Box()->selectAll();
      Type(number);
      Type("n");
      EXPECT_EQ(Destination(), number);
      EXPECT_EQ(platform::CurrentPointer(), platform::Pointer::Default);
    }
    Press(Qt::Key_Escape);
  });
}

// A button pressed this way is seen to go down for a moment before it acts.
TEST_F(MoveCopyCart, UnderlinedLettersWorkWithAlt) {
  GiveCart(5, "Five", 2);
  Copy([] {
    Type("20");
    Press(Qt::Key_N, Qt::AltModifier);
    EXPECT_TRUE(WaitUntil([] { return Destination() == "21"; }));
    Press(Qt::Key_M, Qt::AltModifier);
    EXPECT_TRUE(WaitUntil([] { return IsMove(); }));
    Press(Qt::Key_C, Qt::AltModifier);
    EXPECT_TRUE(WaitUntil([] { return !IsMove(); }));
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, TabGoesFromTheNumberToTheButtonsAndArrowsChoose) {
  GiveCart(5, "Five", 2);
  Move([] {
    std::vector<std::string> reached;
    for (int tabs = 0; tabs < 6; ++tabs) {
      reached.push_back(FocusName());
      Press(Qt::Key_Tab);
    }
    EXPECT_EQ(reached, (std::vector<std::string>{"txtDestCart", "cmdNextCart", "optMove", "PerformActionB",
                                                 "CancelB", "txtDestCart"}));
    TabTo("optMove");
    EXPECT_TRUE(IsMove());
    Press(Qt::Key_Left);
    EXPECT_FALSE(IsMove());
    Press(Qt::Key_Right);
    EXPECT_TRUE(IsMove());
    Press(Qt::Key_Escape);
  });
}

TEST_F(MoveCopyCart, EscapeAndCancelLeaveTheTagEmpty) {
  GiveCart(5, "Five", 2);
  for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
    Form().SetTag("9");
    Copy([key] {
      Type("7");
      TabTo("CancelB");
      Press(key);
    });
    EXPECT_EQ(Form().Tag(), "");
  }
  Form().SetTag("9");
  Copy([] {
    Type("7");
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(Form().Tag(), "");
  EXPECT_EQ(FilesIn(wall_.path()), Names{"ORV00005.WAV"});
}

TEST_F(MoveCopyCart, CloseBoxLeavesTheTagEmpty) {
  GiveCart(5, "Five", 2);
  Copy([] {
    Type("7");
    QApplication::activeModalWidget()->close();
  });
  EXPECT_FALSE(Form().Loaded());
  EXPECT_EQ(Form().Tag(), "");
}

}  // namespace
}  // namespace vorda::test
