// Where a cart is to be moved or copied.
//
// The opener sets chkMove and lblSourceCart and shows the form; its Tag is the destination's number
// afterwards, or "" when nothing was done.

#pragma once

#include <cstdint>
#include <string>

#include "controls/DialogForm.h"

namespace vorda {

class frmMoveCopyCart : public controls::DialogForm {
 public:
  static frmMoveCopyCart& Default();

 protected:
  void BuildControls(QWidget* client) override;
  void OnActivate() override;
  bool OnKeyPress(int key) override;
  void OnAccept() override;

 private:
  frmMoveCopyCart();
  std::int32_t SourceCart();
  // The number as typed; what is too large for one stays above every cart.
  std::int32_t DestinationCart();
  void SetDestination(std::int32_t cart);
  bool IsMove();
  bool SourceCanGo();
  void NextEmptyCart();
  bool DestinationIsGood(std::int32_t source, std::int32_t destination);
  bool Confirmed(std::int32_t source, std::int32_t destination);
};

}  // namespace vorda
