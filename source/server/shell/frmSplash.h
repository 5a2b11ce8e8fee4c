// The splash window: what the program is, while it starts.

#pragma once

#include "controls/Form.h"

namespace vorda {

class frmSplash : public controls::Form {
 public:
  static frmSplash& Default();

 protected:
  QWidget* MakeHost() override;
  void BuildControls(QWidget* client) override;
  void OnLoad() override;
  void OnActivate() override;

 private:
  frmSplash() : Form("frmSplash") {}
  void ShowLogo();
};

}  // namespace vorda
