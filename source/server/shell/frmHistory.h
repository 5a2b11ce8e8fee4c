// The history window: six lines along the foot of the frame.

#pragma once

#include "controls/ChildForm.h"

namespace vorda {

class frmHistory : public controls::ChildForm {
 public:
  // The form that everybody shares.
  static frmHistory& Default();

 protected:
  void BuildControls(QWidget* client) override;
  void OnLoad() override;
  void OnResize() override;
  bool OnQueryUnload(controls::CloseCause cause) override;
  void OnUnload() override;

 private:
  frmHistory() : ChildForm("frmHistory") {}
  void ShowLines();
};

}  // namespace vorda
