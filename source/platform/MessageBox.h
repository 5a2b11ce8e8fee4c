// Message boxes: what the operator is told and asked.
//
// A box waits for its answer in an event loop of its own, so everything else goes on behind it. Modules call
// ShowMessageBox; the desktop (controls) shows the box. Without a desktop a box ends the program: a test has
// to expect it.

#pragma once

#include <string>

#include "platform/Hook.h"

namespace vorda::platform {

enum class BoxIcon { None, Critical, Question, Exclamation, Information };
enum class BoxButtons { Ok, OkCancel, YesNo, YesNoCancel, RetryCancel };
enum class BoxAnswer { Ok = 1, Cancel = 2, Retry = 4, Yes = 6, No = 7 };

struct BoxRequest {
  std::string text;
  BoxIcon icon = BoxIcon::None;
  BoxButtons buttons = BoxButtons::Ok;
  std::string title = {};                   // "" = the program's title
  BoxAnswer defaultAnswer = BoxAnswer::Ok;  // the button that Enter presses, where the box has it
};

// Shows the box and returns the button that was pressed. Closing a box answers Cancel, or No, or Ok: the
// first it has.
BoxAnswer ShowMessageBox(const BoxRequest& request);
// A plain box with one OK button.
void ShowMessageBox(const std::string& text, BoxIcon icon = BoxIcon::None);

// The answer that stands for a refusal: Cancel, No, or Ok where the box has nothing else.
BoxAnswer RefusalOf(BoxButtons buttons);

Hook<BoxAnswer(const BoxRequest&)>& MessageBoxHook();

}  // namespace vorda::platform
