#include "controls/TextBox.h"

#include <algorithm>

#include "platform/Text.h"

namespace vorda::controls {

TextBox::TextBox(QWidget* parent) : QLineEdit(parent) {
  connect(this, &QLineEdit::textEdited, this, &TextBox::HoldLimit);
}

void TextBox::SetText(std::string_view text) {
  setText(platform::ToUnicode(text));
  before_ = QLineEdit::text();
}

std::string TextBox::Text() const {
  return platform::FromUnicode(QLineEdit::text());
}

// What was put in behind the limit goes again from the place where it was put; what fits stays, as a native
// box has it.
void TextBox::HoldLimit(const QString& edited) {
  const auto most = std::max<qsizetype>(limit_, before_.size());
  if (limit_ > 0 && edited.size() > most) {
    const qsizetype tooMany = edited.size() - most;
    const int cursor = cursorPosition();
    QString fitting = edited;
    fitting.remove(cursor - tooMany, tooMany);
    setText(fitting);
    setCursorPosition(static_cast<int>(cursor - tooMany));
  }
  before_ = QLineEdit::text();
}

void TextBox::focusInEvent(QFocusEvent* event) {
  QLineEdit::focusInEvent(event);
  if (selectsOnFocus_) selectAll();
}

}  // namespace vorda::controls
