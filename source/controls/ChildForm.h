// A form that lives in the frame as a child window.

#pragma once

#include <QMdiArea>

#include "controls/Form.h"

namespace vorda::controls {

// The frame's area for child windows; null takes it back. Child forms load into it; without an area they
// can't.
void SetChildArea(QMdiArea* area);
QMdiArea* ChildArea();

// Activation: OnActivate runs when the form is shown and when it becomes the frame's active child; not when a
// box, a picker or another program gives the focus back. When an active child goes, the next one below is
// activated.
class ChildForm : public Form {
 public:
  using Form::Form;
  ~ChildForm() override;

 protected:
  QWidget* MakeHost() override;
  QWidget* MakeClient(QWidget* host) override;
  void ShowHost(QWidget* host) override;
  void TakeDownHost(QWidget* host) override;

 private:
  friend class ActiveChild;
};

}  // namespace vorda::controls
