// A frame for child windows under test, and the room that it says it has.

#pragma once

#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>

#include <string_view>

#include "controls/ChildForm.h"
#include "shell/FramePlacing.h"

namespace vorda::test {

class FormFrame {
 public:
  // 13200 / 2.2 = 6000 twips are a feed window's width, 6600 - 60 its height.
  static constexpr FrameArea kRoom{13200, 9000, 6600};

  FormFrame() : room_(FrameAreaHook(), [] { return kRoom; }) {
    frame_.setCentralWidget(area_);
    frame_.resize(1000, 700);
    frame_.show();
    controls::SetChildArea(area_);
  }
  ~FormFrame() { controls::SetChildArea(nullptr); }
  FormFrame(const FormFrame&) = delete;
  FormFrame& operator=(const FormFrame&) = delete;

  QMainWindow& Window() { return frame_; }
  QMdiArea& Area() { return *area_; }

 private:
  QMainWindow frame_;
  QMdiArea* area_ = new QMdiArea(&frame_);
  platform::ScopedHook<FrameArea()> room_;
};

// The child window that holds a control.
inline QMdiSubWindow* ChildWindowOf(const QWidget* control) {
  auto* widget = const_cast<QWidget*>(control);
  while (widget != nullptr && qobject_cast<QMdiSubWindow*>(widget) == nullptr)
    widget = widget->parentWidget();
  return qobject_cast<QMdiSubWindow*>(widget);
}

}  // namespace vorda::test
