// An operator at the keyboard: answers the real message boxes of the offscreen desktop.

#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QObject>

#include <deque>
#include <functional>
#include <utility>

#include "controls/DesktopServices.h"
#include "platform/Desktop.h"
#include "platform/MessageBox.h"
#include "platform/ReentrantTimer.h"
#include "platform/ShellOperation.h"
#include "support/QuietPlatform.h"

namespace vorda::test {

// The desktop's services in force for as long as it lives.
class DesktopScope {
 public:
  explicit DesktopScope(controls::Operator who)
      : box_(platform::MessageBoxHook(), {}),
        picker_(platform::FolderPickerHook(), {}),
        copyProgress_(platform::CopyProgressHook(), {}),
        pointer_(platform::PointerHook(), {}),
        beep_(platform::BeepHook(), {}) {
    controls::InstallDesktop(who);
  }
  // Whether somebody answers outlives the hooks.
  ~DesktopScope() { controls::InstallDesktop(controls::Operator::Present); }
  DesktopScope(const DesktopScope&) = delete;
  DesktopScope& operator=(const DesktopScope&) = delete;

 private:
  QuietPlatform quiet_;
  platform::ScopedHook<platform::BoxAnswer(const platform::BoxRequest&)> box_;
  platform::ScopedHook<std::string(const platform::FolderRequest&)> picker_;
  platform::ScopedHook<void(platform::FileCopy&, const platform::ShellOperation&)> copyProgress_;
  platform::ScopedHook<void(platform::Pointer)> pointer_;
  platform::ScopedHook<void()> beep_;
};

// Each step gets the next box that comes up and has to close it, by itself or behind further boxes.
class BoxOperator {
 public:
  using Step = std::function<void(QMessageBox&)>;

  BoxOperator() {
    // Owned by `owner_`; it ticks again behind the boxes that a step raises.
    new platform::ReentrantTimer(
        1, [this] { Look(); }, &owner_);
  }
  void Then(Step step) { steps_.push_back(std::move(step)); }
  bool Done() const { return steps_.empty(); }

  static QMessageBox* TopBox() { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); }

 private:
  void Look() {
    QMessageBox* box = TopBox();
    if (box == nullptr || !box->isVisible() || box == inHand_ || steps_.empty()) return;
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    QMessageBox* const before = std::exchange(inHand_, box);
    step(*box);
    inHand_ = before;
  }

  std::deque<Step> steps_;
  QMessageBox* inHand_ = nullptr;
  QObject owner_;
};

}  // namespace vorda::test
