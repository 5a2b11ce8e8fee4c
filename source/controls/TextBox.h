// A one-line text box. Its length limit binds typing and pasting, not a text that is set from inside.

#pragma once

#include <QLineEdit>

#include <string>
#include <string_view>

namespace vorda::controls {

class TextBox : public QLineEdit {
 public:
  explicit TextBox(QWidget* parent = nullptr);

  void SetText(std::string_view text);
  std::string Text() const;
  // The most characters that typing may reach; 0 = no limit. A longer text that is there already may be
  // shortened.
  void SetLimit(int characters) { limit_ = characters; }
  int Limit() const { return limit_; }
  // Whether all of the text is selected whenever the box gets the focus.
  void SetSelectsOnFocus(bool selects) { selectsOnFocus_ = selects; }
  // Takes digits alone: other characters are left to the form, and what is pasted loses them.
  void SetDigitsOnly(bool only) { digitsOnly_ = only; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

 private:
  void HoldLimit(const QString& edited);
  void DropOtherThanDigits(const QString& edited);

  int limit_ = 0;
  bool selectsOnFocus_ = false;
  bool digitsOnly_ = false;
  QString before_;  // the text ahead of the edit that is under way
};

}  // namespace vorda::controls
