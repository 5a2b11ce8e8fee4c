// The desktop's message boxes, answered at the keyboard.

#include <QAbstractButton>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include "controls/Form.h"
#include "support/BoxOperator.h"
#include "support/EventLoop.h"

namespace vorda::test {
namespace {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;
using platform::BoxRequest;
using platform::ShowMessageBox;

class DesktopBoxes : public ::testing::Test {
 protected:
  ~DesktopBoxes() override { EXPECT_TRUE(human.Done()); }

  // The answer of a box with these buttons when `keys` are pressed in turn.
  BoxAnswer Press(BoxButtons buttons, BoxAnswer defaultAnswer, const std::vector<Qt::Key>& keys) {
    human.Then([keys](QMessageBox& box) {
      QPointer<QMessageBox> open = &box;
      for (const Qt::Key key : keys) {
        QWidget* target = box.focusWidget() != nullptr ? box.focusWidget() : &box;
        QTest::keyClick(target, key);
        if (open.isNull() || !open->isVisible()) return;
      }
    });
    return ShowMessageBox({"Text", BoxIcon::Question, buttons, "", defaultAnswer});
  }

  DesktopScope desktop{controls::Operator::Present};
  BoxOperator human;
};

TEST_F(DesktopBoxes, TextStandsAsItIsInEveryLine) {
  human.Then([](QMessageBox& box) {
    EXPECT_EQ(box.textFormat(), Qt::PlainText);
    EXPECT_EQ(box.text(), QStringLiteral("<b>One</b> & two\n\u20ac"));
    EXPECT_EQ(box.windowTitle(), QStringLiteral("Vorda Server"));
    EXPECT_EQ(box.icon(), QMessageBox::NoIcon);
    EXPECT_EQ(box.standardButtons(), QMessageBox::Ok);
    QTest::keyClick(&box, Qt::Key_Return);
  });
  ShowMessageBox("<b>One</b> & two\n\x80");
}

TEST_F(DesktopBoxes, TitleOfItsOwn) {
  human.Then([](QMessageBox& box) {
    EXPECT_EQ(box.windowTitle(), QStringLiteral("MCI ERROR: 275"));
    QTest::keyClick(&box, Qt::Key_Return);
  });
  ShowMessageBox({"Text", BoxIcon::Exclamation, BoxButtons::RetryCancel, "MCI ERROR: 275", BoxAnswer::Retry});
}

// The desktop's buttons stand beside it.
TEST_F(DesktopBoxes, FewWordsLeaveRoomForTheTitle) {
  constexpr int kButtonsBesideIt = 120;
  int width = 0;
  human.Then([&width](QMessageBox& box) {
    width = box.width() - box.fontMetrics().horizontalAdvance(box.windowTitle());
    QTest::keyClick(&box, Qt::Key_Return);
  });
  ShowMessageBox("Few");
  EXPECT_GT(width, kButtonsBesideIt);
}

TEST_F(DesktopBoxes, IconsOfEachKind) {
  const std::pair<BoxIcon, QMessageBox::Icon> icons[] = {{BoxIcon::Critical, QMessageBox::Critical},
                                                         {BoxIcon::Question, QMessageBox::Question},
                                                         {BoxIcon::Exclamation, QMessageBox::Warning},
                                                         {BoxIcon::Information, QMessageBox::Information}};
  for (const auto& [asked, shown] : icons) {
    human.Then([wanted = shown](QMessageBox& box) {
      EXPECT_EQ(box.icon(), wanted);
      QTest::keyClick(&box, Qt::Key_Escape);
    });
    EXPECT_EQ(ShowMessageBox({"Text", asked}), BoxAnswer::Ok);
  }
}

TEST_F(DesktopBoxes, EnterPressesTheDefaultButton) {
  EXPECT_EQ(Press(BoxButtons::Ok, BoxAnswer::Ok, {Qt::Key_Return}), BoxAnswer::Ok);
  EXPECT_EQ(Press(BoxButtons::YesNo, BoxAnswer::Yes, {Qt::Key_Return}), BoxAnswer::Yes);
  EXPECT_EQ(Press(BoxButtons::YesNo, BoxAnswer::No, {Qt::Key_Return}), BoxAnswer::No);
  EXPECT_EQ(Press(BoxButtons::YesNoCancel, BoxAnswer::No, {Qt::Key_Return}), BoxAnswer::No);
  EXPECT_EQ(Press(BoxButtons::RetryCancel, BoxAnswer::Retry, {Qt::Key_Return}), BoxAnswer::Retry);
  EXPECT_EQ(Press(BoxButtons::OkCancel, BoxAnswer::Cancel, {Qt::Key_Return}), BoxAnswer::Cancel);
}

TEST_F(DesktopBoxes, EscapeRefuses) {
  EXPECT_EQ(Press(BoxButtons::Ok, BoxAnswer::Ok, {Qt::Key_Escape}), BoxAnswer::Ok);
  EXPECT_EQ(Press(BoxButtons::OkCancel, BoxAnswer::Ok, {Qt::Key_Escape}), BoxAnswer::Cancel);
  EXPECT_EQ(Press(BoxButtons::YesNo, BoxAnswer::Yes, {Qt::Key_Escape}), BoxAnswer::No);
  EXPECT_EQ(Press(BoxButtons::YesNoCancel, BoxAnswer::Yes, {Qt::Key_Escape}), BoxAnswer::Cancel);
  EXPECT_EQ(Press(BoxButtons::RetryCancel, BoxAnswer::Retry, {Qt::Key_Escape}), BoxAnswer::Cancel);
}

TEST_F(DesktopBoxes, TabReachesTheOtherButton) {
  EXPECT_EQ(Press(BoxButtons::YesNo, BoxAnswer::Yes, {Qt::Key_Tab, Qt::Key_Space}), BoxAnswer::No);
  EXPECT_EQ(Press(BoxButtons::YesNo, BoxAnswer::No, {Qt::Key_Tab, Qt::Key_Space}), BoxAnswer::Yes);
}

TEST_F(DesktopBoxes, CloseBoxOfTheBoxRefuses) {
  human.Then([](QMessageBox& box) { box.close(); });
  EXPECT_EQ(ShowMessageBox({"Text", BoxIcon::Question, BoxButtons::YesNo, "", BoxAnswer::Yes}),
            BoxAnswer::No);
}

TEST_F(DesktopBoxes, BoxBehindABoxIsAnsweredForItself) {
  BoxAnswer inner = BoxAnswer::Ok;
  human.Then([&](QMessageBox& outer) {
    inner = ShowMessageBox({"inner", BoxIcon::Question, BoxButtons::YesNo, "", BoxAnswer::Yes});
    EXPECT_TRUE(outer.isVisible());
    QTest::keyClick(&outer, Qt::Key_Escape);
  });
  human.Then([](QMessageBox& box) {
    EXPECT_EQ(box.text(), QStringLiteral("inner"));
    QTest::keyClick(&box, Qt::Key_Return);
  });
  EXPECT_EQ(ShowMessageBox({"outer", BoxIcon::Question, BoxButtons::RetryCancel, "", BoxAnswer::Retry}),
            BoxAnswer::Cancel);
  EXPECT_EQ(inner, BoxAnswer::Yes);
}

class PlainForm : public controls::Form {
 public:
  PlainForm() : Form("frmPlain") {}

 protected:
  void BuildControls(QWidget* client) override { new QPushButton("Go", client); }
};

TEST_F(DesktopBoxes, WindowThatGoesTakesItsOpenBoxAlongWhichCountsAsRefused) {
  PlainForm form;
  form.Show();
  ASSERT_TRUE(WaitUntil([] { return QApplication::activeWindow() != nullptr; }));
  bool deleted = false;
  human.Then([&](QMessageBox& box) {
    QObject::connect(&box, &QObject::destroyed, &box, [&] { deleted = true; });
    // A box that stays gives the other answer.
    QTimer::singleShot(3000, &box, [&box] { box.button(QMessageBox::Yes)->click(); });
    form.Unload();
  });
  EXPECT_EQ(ShowMessageBox({"Text", BoxIcon::Question, BoxButtons::YesNo, "", BoxAnswer::Yes}),
            BoxAnswer::No);
  EXPECT_TRUE(deleted);
}

// Raises boxes, each behind the one before it, and answers them all once they stand.
TEST_F(DesktopBoxes, ThirtyThirdBoxIsRefusedUnseenAndItsTextTold) {
  std::vector<BoxAnswer> refused;
  int raised = 0;
  const auto ask = [](const std::string& text) {
    return ShowMessageBox({text, BoxIcon::Question, BoxButtons::YesNo, "", BoxAnswer::Yes});
  };
  std::function<void(QMessageBox&)> step = [&](QMessageBox& box) {
    if (++raised < controls::kMostBoxes) {
      human.Then(step);
      EXPECT_EQ(ask("shown " + std::to_string(raised)), BoxAnswer::Yes);
    } else {
      for (const char* text : {"one too many", "one too many", "another"}) refused.push_back(ask(text));
    }
    QTest::keyClick(&box, Qt::Key_Return);
  };
  human.Then(step);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(ask("shown 0"), BoxAnswer::Yes);
  const std::string told = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(raised, 32);
  EXPECT_EQ(refused, (std::vector<BoxAnswer>{BoxAnswer::No, BoxAnswer::No, BoxAnswer::No}));
  EXPECT_EQ(told, "vdserver: one too many\nvdserver: another\n");
  // Room again.
  EXPECT_EQ(Press(BoxButtons::YesNo, BoxAnswer::Yes, {Qt::Key_Return}), BoxAnswer::Yes);
}

}  // namespace
}  // namespace vorda::test
