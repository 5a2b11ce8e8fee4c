// The small services of the screen that modules use: mouse pointer, beep, folder picker. The desktop
// (controls) gives them.

#pragma once

#include <string>

#include "platform/Hook.h"

class QWidget;

namespace vorda::platform {

// The window that a picker or a progress window stands above; null = the active one. Modules only pass it
// through.
using OwnerWindow = QWidget*;

enum class Pointer { Default, Hourglass };

// The screen's mouse pointer: one value, not a stack. An inner reset to default resets an outer hourglass
// too.
void SetPointer(Pointer pointer);
Pointer CurrentPointer();
// Shows the pointer; does nothing without a desktop.
Hook<void(Pointer)>& PointerHook();

// The system's attention sound; silent without a desktop.
void Beep();
Hook<void()>& BeepHook();

struct FolderRequest {
  std::string title;
  std::string startFolder;  // where the tree opens; "" = nowhere in particular
  OwnerWindow owner = nullptr;
};

// The folder that the operator chose, as a native path without a trailing separator ("/" stays); "" when
// cancelled. Without a desktop a picker ends the program: a test has to expect it.
std::string PickFolder(const FolderRequest& request);
Hook<std::string(const FolderRequest&)>& FolderPickerHook();

}  // namespace vorda::platform
