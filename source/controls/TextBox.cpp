#include "controls/TextBox.h"

#include <QKeyEvent>

#include <algorithm>

#include "platform/Text.h"

namespace vorda::controls {

TextBox::TextBox(QWidget* parent) : QLineEdit(parent) {
  connect(this, &QLineEdit::textEdited, this, &TextBox::DropOtherThanDigits);
  connect(this, &QLineEdit::textEdited, this, [this] { HoldLimit(QLineEdit::text()); });
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

void TextBox::DropOtherThanDigits(const QString& edited) {
  if (!digitsOnly_) return;
  QString digits = edited;
  digits.removeIf([](QChar c) { return c < u'0' || c > u'9'; });
  if (digits == edited) return;
  const auto cursor = cursorPosition() - (edited.size() - digits.size());
  setText(digits);
  setCursorPosition(static_cast<int>(std::max<qsizetype>(cursor, 0)));
}

void TextBox::keyPressEvent(QKeyEvent* event) {
  const QString text = event->text();
  const bool isCharacter = text.size() == 1 && text.front().isPrint() &&
                           (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)) == 0;
  if (digitsOnly_ && isCharacter && (text.front() < u'0' || text.front() > u'9')) {
    event->ignore();
    return;
  }
  QLineEdit::keyPressEvent(event);
}

void TextBox::focusInEvent(QFocusEvent* event) {
  QLineEdit::focusInEvent(event);
  if (selectsOnFocus_) selectAll();
}

}  // namespace vorda::controls
