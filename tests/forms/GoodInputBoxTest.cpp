// The text question, answered by keyboard as an operator answers it.

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>

#include "controls/Panels.h"
#include "controls/TextBox.h"
#include "platform/Desktop.h"
#include "shell/frmGoodInputBox.h"
#include "support/EventLoop.h"

namespace vorda {
namespace {

class CallerForm : public controls::Form {
 public:
  CallerForm() : Form("CallerForm") {}
  int activations = 0;
  QWindow* Window() { return Host()->windowHandle(); }

 protected:
  void BuildControls(QWidget*) override {}
  void OnActivate() override { ++activations; }
};

class GoodInputBoxTest : public ::testing::Test {
 protected:
  GoodInputBoxTest() { caller_.Show(); }
  ~GoodInputBoxTest() override { box().Unload(); }

  static frmGoodInputBox& box() { return frmGoodInputBox::Default(); }
  static controls::TextBox* text() { return box().Control<controls::TextBox>("Text1"); }

  // Asks, and has the operator act once the box is up.
  std::int32_t Ask(const std::string& defaultText, std::int32_t maxLength, const std::function<void()>& act) {
    QTimer::singleShot(0, &caller_, [act] {
      EXPECT_TRUE(test::WaitUntil([] { return text()->hasFocus(); }));
      act();
    });
    result_ = "left over";
    return GoodInputBox("  Which one?  ", "  A question  ", defaultText, maxLength, result_, caller_);
  }
  static void Press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
  static void Type(const char* keys) { QTest::keyClicks(text(), keys); }

  CallerForm caller_;
  std::string result_;
};

TEST_F(GoodInputBoxTest, EnterAnswersWithWhatWasTypedOverTheDefault) {
  EXPECT_EQ(Ask("old", 0,
                [] {
                  Type("new");
                  Press(Qt::Key_Return);
                }),
            0);
  EXPECT_EQ(result_, "new");
}

TEST_F(GoodInputBoxTest, QuestionAndTitleAreTrimmedAndTheDefaultIsSelected) {
  Ask("abc", 0, [] {
    EXPECT_EQ(box().Text(), "A question");
    EXPECT_EQ(box().Control<controls::CaptionLabel>("Label1")->Caption(), "Which one?");
    EXPECT_EQ(text()->Text(), "abc");
    EXPECT_EQ(text()->selectedText(), "abc");
    EXPECT_EQ(QApplication::focusWidget(), text());
    Press(Qt::Key_Escape);
  });
}

TEST_F(GoodInputBoxTest, EscapeCancelsWhateverHasBeenTyped) {
  EXPECT_EQ(Ask("old", 0,
                [] {
                  Type("typed");
                  Press(Qt::Key_Escape);
                }),
            -1);
  EXPECT_EQ(result_, "");
}

TEST_F(GoodInputBoxTest, CancelButtonByKeyboard) {
  EXPECT_EQ(Ask("old", 0,
                [] {
                  Press(Qt::Key_Tab);
                  Press(Qt::Key_Tab);
                  EXPECT_EQ(QApplication::focusWidget()->objectName(), "Command1");
                  Press(Qt::Key_Space);
                }),
            -1);
}

TEST_F(GoodInputBoxTest, OkWithAnEmptyTextIsAnAnswer) {
  EXPECT_EQ(Ask("", 0, [] { Press(Qt::Key_Return); }), 0);
  EXPECT_EQ(result_, "");
}

TEST_F(GoodInputBoxTest, LengthLimitBindsTypingAndNotTheDefault) {
  EXPECT_EQ(Ask("longer than five", 5,
                [] {
                  EXPECT_EQ(text()->Text(), "longer than five");
                  Type("1234567");
                  Press(Qt::Key_Return);
                }),
            0);
  EXPECT_EQ(result_, "12345");
}

TEST_F(GoodInputBoxTest, NoLimitWithZero) {
  Ask("", 0, [] {
    Type("0123456789012345678901234567890123456789");
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(result_.size(), 40U);
}

TEST_F(GoodInputBoxTest, CloseBoxOfTheWindowCancelsAlsoAfterAnAnswer) {
  EXPECT_EQ(Ask("a", 0, [] { Press(Qt::Key_Return); }), 0);
  EXPECT_EQ(Ask("b", 0, [] { text()->window()->close(); }), -1);
  EXPECT_EQ(result_, "");
}

TEST_F(GoodInputBoxTest, HiddenBoxKeepsItsLastAnswer) {
  Ask("a", 0, [] { Press(Qt::Key_Return); });
  EXPECT_TRUE(box().Loaded());
  EXPECT_EQ(box().Control<controls::CaptionLabel>("CancelL")->Caption(), "0");
  EXPECT_EQ(box().Tag(), "a");
}

TEST_F(GoodInputBoxTest, EverythingElseGoesOnBehindIt) {
  int ticks = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&ticks] {
    if (++ticks == 5) Press(Qt::Key_Escape);
  });
  timer.start(1);
  EXPECT_EQ(Ask("", 0, [] {}), -1);
  EXPECT_GE(ticks, 5);
}

TEST_F(GoodInputBoxTest, CallerComesUpAgainAfterwards) {
  const int before = caller_.activations;
  Ask("", 0, [] { Press(Qt::Key_Escape); });
  EXPECT_EQ(caller_.activations, before + 1);
}

TEST_F(GoodInputBoxTest, StaysOnTopAndBelongsToItsCaller) {
  Ask("", 0, [this] {
    EXPECT_TRUE(text()->window()->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_FALSE(text()->window()->isModal());
    EXPECT_EQ(text()->window()->windowHandle()->transientParent(), caller_.Window());
    Press(Qt::Key_Escape);
  });
}

TEST_F(GoodInputBoxTest, OkButtonAnswers) {
  EXPECT_EQ(Ask("old", 0, [] { QTest::mouseClick(box().Control<QPushButton>("Command2"), Qt::LeftButton); }),
            0);
  EXPECT_EQ(result_, "old");
}

TEST_F(GoodInputBoxTest, EnterOnTheCancelButtonCancels) {
  EXPECT_EQ(Ask("old", 0,
                [] {
                  box().Control<QPushButton>("Command1")->setFocus();
                  Press(Qt::Key_Return);
                }),
            -1);
}

// The second question takes the form over; its answer ends both.
TEST_F(GoodInputBoxTest, TwoQuestionsAtOnceShareTheForm) {
  std::string inner = "left over";
  EXPECT_EQ(Ask("outer", 0,
                [&] {
                  QTimer::singleShot(0, &caller_, [] {
                    Type("inner");
                    Press(Qt::Key_Return);
                  });
                  EXPECT_EQ(GoodInputBox("And which now?", "", "", 0, inner, caller_), 0);
                }),
            0);
  EXPECT_EQ(inner, "inner");
  EXPECT_EQ(result_, "inner");
}

TEST_F(GoodInputBoxTest, HourglassGoesWhenTheOperatorTurnsToAnotherWindow) {
  Ask("", 0, [this] {
    platform::SetPointer(platform::Pointer::Hourglass);
    caller_.Show();
    EXPECT_TRUE(test::WaitUntil([] { return platform::CurrentPointer() == platform::Pointer::Default; }));
    box().Show();
    EXPECT_TRUE(test::WaitUntil([] { return text()->hasFocus(); }));
    QTest::keyClick(text(), Qt::Key_Escape);
  });
}

TEST_F(GoodInputBoxTest, HourglassIsGoneWhileItAsks) {
  platform::SetPointer(platform::Pointer::Hourglass);
  Ask("", 0, [] {
    EXPECT_EQ(platform::CurrentPointer(), platform::Pointer::Default);
    Press(Qt::Key_Escape);
  });
}

}  // namespace
}  // namespace vorda
