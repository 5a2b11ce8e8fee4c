// The splash window: what the program is, while it starts.

#pragma once

#include "controls/Form.h"

namespace vorda {

class frmSplash : public controls::Form {
 public:
  static frmSplash& Default();

  // Shows the window and waits until it is painted, so that it stands there while the caller is busy; at most
  // half a second, where the window system gives it no place.
  void ShowPainted();

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
