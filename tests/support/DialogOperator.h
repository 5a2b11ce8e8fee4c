// An operator at the keyboard of a modal form.

#pragma once

#include <QApplication>
#include <QObject>
#include <QTest>

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <string>
#include <utility>

#include "controls/Form.h"
#include "platform/ReentrantTimer.h"
#include "support/EventLoop.h"

namespace vorda::test {

// Each time the form comes up the next step gets it, and has to bring it off the screen again. One that comes
// up without a step for it, or stays up behind its step, is a failure and is unloaded; so is a step that
// never gets its turn.
class DialogOperator {
 public:
  using Step = std::function<void()>;

  explicit DialogOperator(controls::Form& form) : form_(form) {
    // Owned by `owner_`; it ticks again behind what a step waits for.
    new platform::ReentrantTimer(
        1, [this] { Look(); }, &owner_);
  }
  ~DialogOperator() { EXPECT_TRUE(steps_.empty()) << "The dialog came up too seldom."; }
  DialogOperator(const DialogOperator&) = delete;
  DialogOperator& operator=(const DialogOperator&) = delete;

  void Then(Step step) { steps_.push_back(std::move(step)); }

 private:
  void Look() {
    const QWidget* const focus = QApplication::focusWidget();
    if (busy_ || focus == nullptr || !form_.Visible()) return;
    if (focus->window() != QApplication::activeModalWidget()) return;
    if (!steps_.empty()) TakeStep();
    if (!form_.Visible()) return;
    ADD_FAILURE() << "The dialog is up, and nobody is to bring it off the screen.";
    form_.Unload();
  }
  void TakeStep() {
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    busy_ = true;
    step();
    busy_ = false;
  }

  controls::Form& form_;
  std::deque<Step> steps_;
  bool busy_ = false;
  QObject owner_;
};

// A form above which dialogs are shown.
class CallerForm : public controls::Form {
 public:
  CallerForm() : Form("CallerForm") {}
  QWidget* Window() const { return Host(); }
  // Gets the focus back behind a dialog. The offscreen platform leaves that to whoever wants it.
  void ComeBack() {
    Host()->activateWindow();
    EXPECT_TRUE(WaitUntil([this] { return Host()->isActiveWindow(); }));
  }

 protected:
  void BuildControls(QWidget*) override {}
};

// Keys go to the control that has the focus.
inline void Press(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
  QTest::keyClick(QApplication::focusWidget(), key, with);
}
inline void Type(const char* keys) {
  QTest::keyClicks(QApplication::focusWidget(), QString::fromLatin1(keys));
}
inline std::string FocusName() {
  const QWidget* const focus = QApplication::focusWidget();
  return focus != nullptr ? focus->objectName().toStdString() : std::string();
}
// Tabs until a control has the focus.
inline void TabTo(const std::string& name) {
  for (int tabs = 0; tabs < 100 && FocusName() != name; ++tabs) Press(Qt::Key_Tab);
  EXPECT_EQ(FocusName(), name);
}

}  // namespace vorda::test
