// The dialog that moves and copies carts, on a wall of its own and with an operator at its keyboard.

#pragma once

#include <QCheckBox>
#include <QRadioButton>

#include <cstdint>
#include <string>
#include <utility>

#include "carts/frmMoveCopyCart.h"
#include "controls/Panels.h"
#include "controls/TextBox.h"
#include "support/DialogOperator.h"
#include "support/WallFixture.h"

namespace vorda::test {

class MoveCopyFixture : public WallFixture {
 protected:
  MoveCopyFixture() { caller_.Show(); }
  ~MoveCopyFixture() override {
    Form().Unload();
    gLocalEditCart = 0;
  }

  static frmMoveCopyCart& Form() { return frmMoveCopyCart::Default(); }
  static controls::TextBox* Box() { return Form().Control<controls::TextBox>("txtDestCart"); }
  static std::string Destination() { return Box()->Text(); }
  static bool IsMove() {
    const bool move = Form().Control<QRadioButton>("optMove")->isChecked();
    EXPECT_NE(move, Form().Control<QRadioButton>("optCopy")->isChecked());
    return move;
  }

  // Opens the dialog for a cart as the browser does.
  void Open(const std::string& source, bool move) {
    Form().Control<controls::CaptionLabel>("lblSourceCart")->SetCaption(source);
    Form().Control<QCheckBox>("chkMove")->setChecked(move);
    Form().ShowModal(caller_);
    caller_.ComeBack();
  }
  // The same for cart 5, with an operator who acts.
  void Copy(DialogOperator::Step act) {
    operator_.Then(std::move(act));
    Open("5", false);
  }
  void Move(DialogOperator::Step act) {
    operator_.Then(std::move(act));
    Open("5", true);
  }
  // Types over the destination and confirms it.
  static void Choose(const char* cart) {
    Type(cart);
    Press(Qt::Key_Return);
  }
  void ExpectConfirmation(const char* what, const std::string& destination, platform::BoxAnswer answer) {
    boxes_.Expect(
        std::string("Please confirm that you want to ") + what + " \nCart : 5 to Cart : " + destination,
        answer);
  }

  CallerForm caller_;
  DialogOperator operator_{Form()};
};

}  // namespace vorda::test
