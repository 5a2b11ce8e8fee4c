// A form that is shown modally: its opener waits until it is hidden, while everything but the operator's
// other input goes on.

#pragma once

#include <string_view>

#include "controls/Form.h"

namespace vorda::controls {

// Enter presses the button that has the focus, or answers OnAccept; Esc answers OnCancel. The close box
// unloads, as it does with every form.
class DialogForm : public Form {
 public:
  // `width` and `height` of the inner size in twips.
  DialogForm(const char* name, double width, double height) : Form(name), width_(width), height_(height) {}

  // Brings the form up above `owner` and waits until it is hidden or unloaded. Without an operator it is
  // cancelled at once and says so on standard error. Nothing when it is up already.
  void ShowModal(const Form& owner);

 protected:
  QWidget* MakeHost() override;
  bool OnKeyPress(int key) override;
  virtual void OnAccept() = 0;
  // Leaves with an empty Tag.
  virtual void OnCancel() { Leave({}); }
  // Ends the waiting: the form is hidden, and its opener finds `tag`.
  void Leave(std::string_view tag);

 private:
  double width_;
  double height_;
};

}  // namespace vorda::controls
