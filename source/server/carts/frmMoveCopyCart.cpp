#include "carts/frmMoveCopyCart.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>
#include <cmath>
#include <limits>

#include "carts/Orvane_Audio_Routines.h"
#include "controls/FormBuilder.h"
#include "controls/Panels.h"
#include "controls/TextBox.h"
#include "platform/Desktop.h"
#include "platform/MessageBox.h"
#include "platform/NumericValue.h"

namespace vorda {

namespace {

using controls::CaptionLabel;
using controls::ControlKind;
using controls::ControlSpec;
using controls::TextBox;
using platform::BoxIcon;

constexpr double kWidth = 6300;
constexpr double kHeight = 2730;
constexpr double kLine = 390;

// In the order of Tab: the number first, then what is to be done with it.
constexpr ControlSpec kControls[] = {
    {"Label3", ControlKind::Label, "Source Cart Number :", 240, 240, 2400, kLine},
    {"lblSourceCart", ControlKind::Label, "", 2700, 240, 1020, kLine, nullptr, "Source cart number"},
    {"Label4", ControlKind::Label, "Destination Cart Number :", 240, 720, 2400, kLine},
    {"txtDestCart", ControlKind::TextBox, "", 2700, 720, 1020, kLine, nullptr, "Destination cart number"},
    {"cmdNextCart", ControlKind::Button, "&Next Empty Cart", 3900, 690, 2160, 450},
    {"optCopy", ControlKind::Option, "&Copy", 2700, 1320, 1140, kLine},
    {"optMove", ControlKind::Option, "&Move", 3900, 1320, 1140, kLine},
    {"PerformActionB", ControlKind::Button, "OK", 3360, 2010, 1260, 450},
    {"CancelB", ControlKind::Button, "Cancel", 4800, 2010, 1260, 450},
    // Not seen: set by the opener.
    {"chkMove", ControlKind::CheckBox, "Moving", 0, 0, 1200, 300},
};

std::int32_t WholeNumber(const std::string& text) {
  constexpr double kMost = std::numeric_limits<std::int32_t>::max() - 1;
  return static_cast<std::int32_t>(std::clamp(std::nearbyint(platform::NumericValue(text)), -kMost, kMost));
}

}  // namespace

frmMoveCopyCart::frmMoveCopyCart() : DialogForm("frmMoveCopyCart", kWidth, kHeight) {}

frmMoveCopyCart& frmMoveCopyCart::Default() {
  static auto& form = *new frmMoveCopyCart;  // never destroyed: it would outlive the toolkit
  return form;
}

void frmMoveCopyCart::BuildControls(QWidget* client) {
  SetText("Move/Copy Cart");
  controls::BuildForm(client, kControls);
  Control<QCheckBox>("chkMove")->hide();
  auto* const destination = Control<TextBox>("txtDestCart");
  destination->SetSelectsOnFocus(true);
  destination->SetDigitsOnly(true);
  Control<QPushButton>("PerformActionB")->setDefault(true);
  const auto onClick = [&](const char* name, void (frmMoveCopyCart::*action)()) {
    QObject::connect(Control<QPushButton>(name), &QPushButton::clicked, client,
                     [this, action] { (this->*action)(); });
  };
  onClick("cmdNextCart", &frmMoveCopyCart::NextEmptyCart);
  onClick("PerformActionB", &frmMoveCopyCart::OnAccept);
  onClick("CancelB", &frmMoveCopyCart::OnCancel);
}

std::int32_t frmMoveCopyCart::SourceCart() {
  return WholeNumber(Control<CaptionLabel>("lblSourceCart")->Caption());
}

std::int32_t frmMoveCopyCart::DestinationCart() {
  return WholeNumber(Control<TextBox>("txtDestCart")->Text());
}

void frmMoveCopyCart::SetDestination(std::int32_t cart) {
  Control<TextBox>("txtDestCart")->SetText(std::to_string(cart));
}

bool frmMoveCopyCart::IsMove() {
  return Control<QRadioButton>("optMove")->isChecked();
}

// An empty cart can't be moved or copied, and nothing is said of it.
bool frmMoveCopyCart::SourceCanGo() {
  const std::int32_t source = SourceCart();
  if (source == 0 || source > kLastCart) return false;
  CartInfo info;
  ReadCartInfo(info, source);
  return !IsEmptyCart(info);
}

void frmMoveCopyCart::OnActivate() {
  if (!SourceCanGo()) {
    OnCancel();
    return;
  }
  SetText("Move/Copy Cart " + std::to_string(SourceCart()));
  const bool move = Control<QCheckBox>("chkMove")->isChecked();
  Control<QRadioButton>(move ? "optMove" : "optCopy")->setChecked(true);
  if (gLocalEditCart > 0) {
    SetDestination(gLocalEditCart);
    NextEmptyCart();
  }
  Control<TextBox>("txtDestCart")->setFocus();
  platform::SetPointer(platform::Pointer::Default);
}

bool frmMoveCopyCart::OnKeyPress(int key) {
  switch (key) {
    case Qt::Key_M:
      Control<QRadioButton>("optMove")->setChecked(true);
      return true;
    case Qt::Key_C:
      Control<QRadioButton>("optCopy")->setChecked(true);
      return true;
    case Qt::Key_N:
      NextEmptyCart();
      return true;
    default:
      return DialogForm::OnKeyPress(key);
  }
}

void frmMoveCopyCart::NextEmptyCart() {
  const std::int32_t cart = FindNextEmptyCart(DestinationCart() + 1);
  if (cart > 0) SetDestination(cart);
}

// A number beyond the wall is told and goes on all the same.
bool frmMoveCopyCart::DestinationIsGood(std::int32_t source, std::int32_t destination) {
  if (destination > kLastCart) {
    platform::ShowMessageBox("You must specify a cart from 1 to " + std::to_string(kLastCart));
  }
  if (source == destination) {
    platform::ShowMessageBox("You cannot copy a cart onto itself");
    return false;
  }
  if (destination == 0) {
    platform::ShowMessageBox({"You must specify a destination cart no to copy a cart", BoxIcon::Exclamation,
                              platform::BoxButtons::Ok, "Copy Cart Error"});
    return false;
  }
  return true;
}

bool frmMoveCopyCart::Confirmed(std::int32_t source, std::int32_t destination) {
  const bool copy = Control<QRadioButton>("optCopy")->isChecked();
  return platform::ShowMessageBox({std::string("Please confirm that you want to ") +
                                       (copy ? "COPY " : "MOVE ") + "\nCart : " + std::to_string(source) +
                                       " to Cart : " + std::to_string(destination),
                                   BoxIcon::Question,
                                   platform::BoxButtons::YesNo,
                                   {},
                                   platform::BoxAnswer::Yes}) == platform::BoxAnswer::Yes;
}

void frmMoveCopyCart::OnAccept() {
  const std::int32_t source = SourceCart();
  const std::int32_t destination = DestinationCart();
  if (!DestinationIsGood(source, destination) || !Confirmed(source, destination)) return;
  const std::int32_t result =
      IsMove() ? MoveCart(source, destination, Host()) : CopyCart(source, destination, true, false, Host());
  platform::SetPointer(platform::Pointer::Default);
  if (result == 0) Leave(std::to_string(destination));
}

}  // namespace vorda
