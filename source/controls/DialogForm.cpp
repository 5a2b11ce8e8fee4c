#include "controls/DialogForm.h"

#include <QApplication>
#include <QPushButton>

#include <string>

#include "controls/DesktopServices.h"
#include "controls/Twips.h"
#include "platform/StandardError.h"

namespace vorda::controls {

QWidget* DialogForm::MakeHost() {
  auto* window = new QWidget(nullptr, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
  window->setAttribute(Qt::WA_QuitOnClose, false);
  window->setWindowModality(Qt::ApplicationModal);
  window->setFixedSize(PixelsFromTwips(width_), PixelsFromTwips(height_));
  return window;
}

void DialogForm::ShowModal(const Form& owner) {
  if (Visible()) return;
  if (!OperatorIsPresent()) {
    const std::string title = Text();
    platform::WriteToStandardError(title + (title.ends_with(':') ? " " : ": ") +
                                   "nobody is there to fill it in, so it counts as cancelled");
    OnCancel();
    return;
  }
  SetOwner(owner);
  Show();
  while (Visible()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  // The window system may give the keyboard to nobody when a dialog goes together with a box above it.
  owner.TakeKeyboard();
}

void DialogForm::Leave(std::string_view tag) {
  SetTag(tag);
  Hide();
}

bool DialogForm::OnKeyPress(int key) {
  if (key == Qt::Key_Escape) {
    OnCancel();
    return true;
  }
  if (key != Qt::Key_Return && key != Qt::Key_Enter) return false;
  if (auto* const button = qobject_cast<QPushButton*>(QApplication::focusWidget())) {
    button->click();
  } else {
    OnAccept();
  }
  return true;
}

}  // namespace vorda::controls
