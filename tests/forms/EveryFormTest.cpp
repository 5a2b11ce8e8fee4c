// What holds for every window: names, what a screen reader says, the keyboard's way, and room for every text.

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QTest>

#include <gtest/gtest.h>

#include <set>

#include "carts/Orvane_Audio_Routines.h"
#include "carts/frmCartLocations.h"
#include "carts/frmMoveCopyCart.h"
#include "controls/Panels.h"
#include "controls/TerminalView.h"
#include "controls/TextBox.h"
#include "shell/frmGoodInputBox.h"
#include "shell/frmHistory.h"
#include "shell/frmSplash.h"
#include "support/FeedWindows.h"

namespace vorda::test {
namespace {

struct FormCase {
  const char* name;
  const char* control;  // one that it has
  controls::Form& (*form)();
};

const FormCase kForms[] = {
    {"frmWireFeed", "lblConfigFile", []() -> controls::Form& { return FeedForm(1); }},
    {"frmHistory", "Picture1", []() -> controls::Form& { return frmHistory::Default(); }},
    {"frmSplash", "cmdOK", []() -> controls::Form& { return frmSplash::Default(); }},
    {"frmGoodInputBox", "Text1",
     []() -> controls::Form& {
       frmGoodInputBox::Default().Ask("New title for cart 1234 :", "Rename cart", "Morning news", 60);
       return frmGoodInputBox::Default();
     }},
    {"frmCartLocations", "cmdDone", []() -> controls::Form& { return frmCartLocations::Default(); }},
    {"frmMoveCopyCart", "PerformActionB", []() -> controls::Form& { return frmMoveCopyCart::Default(); }},
};

void PrintTo(const FormCase& test, std::ostream* out) {
  *out << test.name;
}

class EveryForm : public FeedWindows, public ::testing::WithParamInterface<FormCase> {
 protected:
  EveryForm() {
    const std::string_view name = GetParam().name;
    if (name == "frmWireFeed") Start(1);
    if (name == "frmCartLocations") gAudioWallParts.front().Location = "W:\\CARTS";
    if (name == "frmMoveCopyCart") ChooseCart(9999);
    Form().Show();
    RunPendingEvents();
  }
  ~EveryForm() override {
    Form().Unload();
    gAudioWallParts = {};
    gAudioWallSettings = {};
    gBlankCartInfo = {};
  }

  static controls::Form& Form() { return GetParam().form(); }
  // Only a cart that isn't empty can be moved or copied.
  void ChooseCart(std::int32_t cart) {
    gAudioWallSettings.MaintainLegacyCartList = 1;
    InitBlankCartInfo();
    gAudioWallParts[9].Location = directory.path();
    ASSERT_EQ(ConnectAudioWall(10, true), 0);
    CartInfo info = gBlankCartInfo;
    info.AudioLength = 2;
    ASSERT_EQ(WriteCartInfo(info, cart, true), 0);
    frmMoveCopyCart& form = frmMoveCopyCart::Default();
    form.Control<controls::CaptionLabel>("lblSourceCart")->SetCaption(std::to_string(cart));
    form.Control<controls::TextBox>("txtDestCart")->SetText(std::to_string(cart));
  }
  // The form's own controls, from its client area down; not the toolkit's inner parts.
  std::vector<QWidget*> Controls() {
    std::vector<QWidget*> named;
    for (QWidget* widget : Client()->findChildren<QWidget*>())
      if (!widget->objectName().isEmpty() && !widget->objectName().startsWith(QStringLiteral("qt_")))
        named.push_back(widget);
    return named;
  }
  QWidget* Client() {
    auto* widget = Form().Control<QWidget>(GetParam().control);
    while (widget->parentWidget() != nullptr && !widget->parentWidget()->isWindow() &&
           qobject_cast<QMdiSubWindow*>(widget->parentWidget()) == nullptr)
      widget = widget->parentWidget();
    QWidget* above = widget->parentWidget();
    return qobject_cast<QMdiSubWindow*>(above) != nullptr ? widget : above;
  }
  static bool TakesTab(const QWidget* control) {
    return control->isEnabled() && control->isVisible() && (control->focusPolicy() & Qt::TabFocus) != 0;
  }
};

TEST_P(EveryForm, IsNamedAndSoAreItsControlsEachOnce) {
  QWidget* host = Client();
  if (auto* window = qobject_cast<QMdiSubWindow*>(host->parentWidget())) host = window;
  EXPECT_EQ(host->objectName().toStdString(), GetParam().name);
  std::set<QString> names;
  for (const QWidget* control : Controls())
    EXPECT_TRUE(names.insert(control->objectName()).second) << control->objectName().toStdString();
  EXPECT_FALSE(names.empty());
  EXPECT_TRUE(Form().Visible());
}

TEST_P(EveryForm, EveryControlThatHoldsNoOthersHasSomethingToSay) {
  for (const QWidget* control : Controls()) {
    const bool container = !control->findChildren<QWidget*>().isEmpty() &&
                           dynamic_cast<const controls::TerminalView*>(control) == nullptr;
    const auto* label = qobject_cast<const QLabel*>(control);
    if (container || (label != nullptr && label->pixmap().isNull())) continue;
    EXPECT_FALSE(control->accessibleName().isEmpty()) << control->objectName().toStdString();
  }
}

TEST_P(EveryForm, TabReachesEveryControlThatTakesIt) {
  std::set<QString> wanted;
  for (const QWidget* control : Controls())
    if (TakesTab(control)) wanted.insert(control->objectName());
  Client()->activateWindow();
  Client()->setFocus();
  std::set<QString> reached;
  for (std::size_t i = 0; i <= 2 * wanted.size(); ++i) {
    QWidget* focus = QApplication::focusWidget();
    QTest::keyClick(focus != nullptr ? focus : Client()->window(), Qt::Key_Tab);
    if (QApplication::focusWidget() != nullptr) reached.insert(QApplication::focusWidget()->objectName());
  }
  for (const QString& name : wanted) EXPECT_TRUE(reached.contains(name)) << name.toStdString();
}

TEST_P(EveryForm, NothingIsCutOffAtTheDefaultSize) {
  for (const QWidget* control : Controls()) {
    const std::string name = control->objectName().toStdString();
    const QWidget* parent = control->parentWidget();
    EXPECT_TRUE(parent->rect().contains(control->geometry())) << name << " reaches beyond its container";
    const auto* label = qobject_cast<const QLabel*>(control);
    const auto* button = qobject_cast<const QAbstractButton*>(control);
    const auto* text = dynamic_cast<const controls::TextBox*>(control);
    if (text != nullptr) {
      EXPECT_LE(text->fontMetrics().horizontalAdvance(text->text()) + 8, text->width()) << name;
      EXPECT_LE(text->sizeHint().height(), text->height()) << name;
    }
    if (label != nullptr && !label->text().isEmpty() && name != "lblConfigFile") {
      const int height =
          label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
      EXPECT_LE(height, label->height()) << name;
      if (!label->wordWrap()) {
        EXPECT_LE(label->sizeHint().width(), label->width()) << name;
      }
    }
    if (qobject_cast<const QCheckBox*>(button) != nullptr ||
        qobject_cast<const QRadioButton*>(button) != nullptr) {
      EXPECT_LE(button->sizeHint().width(), button->width()) << name;
    }
    if (button != nullptr) {
      EXPECT_LE(button->fontMetrics().size(Qt::TextShowMnemonic, button->text()).width() + 8, button->width())
          << name;
      EXPECT_LE(button->fontMetrics().height() + 4, button->height()) << name;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, EveryForm, ::testing::ValuesIn(kForms),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace vorda::test
