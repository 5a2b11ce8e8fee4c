// The one text question of the system. It stands above its caller, can limit the answer's length, and lets
// everything else go on while it waits.

#pragma once

#include <cstdint>
#include <string>

#include "controls/Form.h"

namespace vorda {

class frmGoodInputBox : public controls::Form {
 public:
  static frmGoodInputBox& Default();

  // Fills the box with a question. `maxLength` in characters, 0 = no limit.
  void Ask(const std::string& prompt, const std::string& title, const std::string& defaultText,
           std::int32_t maxLength);
  // Whether the last answer was a cancel; a box that has just been loaded counts as cancelled.
  bool Cancelled();

 protected:
  QWidget* MakeHost() override;
  void BuildControls(QWidget* client) override;
  void OnActivate() override;
  void OnDeactivate() override;
  bool OnKeyPress(int key) override;

 private:
  frmGoodInputBox() : Form("frmGoodInputBox") {}
  void Answer(bool cancelled);
};

// Asks the operator for a text and waits, while everything else goes on. `result` gets the answer, "" when
// cancelled. Afterwards `callerForm` comes up again. Result: 0 = answered, -1 = cancelled.
std::int32_t GoodInputBox(const std::string& prompt, const std::string& title, const std::string& defaultText,
                          std::int32_t maxLength, std::string& result, controls::Form& callerForm);

}  // namespace vorda
