// The desktop's other services: the pointer, and everything where no operator answers.

#include <QApplication>
#include <QCursor>
#include <QFileDialog>
#include <QTest>

#include <gtest/gtest.h>

#include "support/BoxOperator.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;
using platform::Pointer;

TEST(DesktopPointer, IsOneValueAndNotAStack) {
  const DesktopScope desktop(controls::Operator::Present);
  platform::SetPointer(Pointer::Hourglass);
  platform::SetPointer(Pointer::Hourglass);
  ASSERT_NE(QApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
  platform::SetPointer(Pointer::Default);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

class DesktopWithoutOperator : public ::testing::Test {
 protected:
  DesktopWithoutOperator() { ::testing::internal::CaptureStderr(); }
  ~DesktopWithoutOperator() override {
    if (!taken_) Told();
  }
  std::string Told() {
    taken_ = true;
    return ::testing::internal::GetCapturedStderr();
  }
  static BoxAnswer Ask(BoxButtons buttons, const std::string& text = "Text") {
    return platform::ShowMessageBox({text, BoxIcon::Question, buttons, "", BoxAnswer::Yes});
  }

  DesktopScope desktop{controls::Operator::Absent};

 private:
  bool taken_ = false;
};

TEST_F(DesktopWithoutOperator, BoxesAreAnsweredAtOnceAndTold) {
  EXPECT_EQ(Ask(BoxButtons::Ok, "One"), BoxAnswer::Ok);
  EXPECT_EQ(Ask(BoxButtons::RetryCancel, "Two"), BoxAnswer::Cancel);
  EXPECT_EQ(Ask(BoxButtons::OkCancel, "Three"), BoxAnswer::Cancel);
  EXPECT_EQ(Ask(BoxButtons::YesNo, "Four"), BoxAnswer::No);
  EXPECT_EQ(Told(), "vdserver: One\nvdserver: Two\nvdserver: Three\nvdserver: Four\n");
}

// Cancel would end the start-up where No goes on.
TEST_F(DesktopWithoutOperator, QuestionWithNoAndCancelIsAnsweredNo) {
  EXPECT_EQ(Ask(BoxButtons::YesNoCancel), BoxAnswer::No);
}

TEST_F(DesktopWithoutOperator, TextGoesToStandardErrorInUtf8) {
  platform::ShowMessageBox("Caf\xe9 \x80");
  EXPECT_EQ(Told(), "vdserver: Caf\xc3\xa9 \xe2\x82\xac\n");
}

TEST_F(DesktopWithoutOperator, FolderPickerIsCancelled) {
  EXPECT_EQ(platform::PickFolder({"Title", ""}), "");
  EXPECT_EQ(Told(), "vdserver: Title: nobody is there to choose, so it counts as cancelled\n");
}

TEST(DesktopFolderPicker, EscapeCancels) {
  const DesktopScope desktop(controls::Operator::Present);
  QObject owner;
  bool seen = false;
  new platform::ReentrantTimer(
      1,
      [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || !dialog->isVisible() || seen) return;
        seen = true;
        EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Select Primary News Feed Directory"));
        QTest::keyClick(dialog, Qt::Key_Escape);
      },
      &owner);
  EXPECT_EQ(platform::PickFolder({"Select Primary News Feed Directory", ""}), "");
  EXPECT_TRUE(seen);
}

TEST(DesktopFolderPicker, ChosenFolderComesBackWithoutTrailingSeparator) {
  const DesktopScope desktop(controls::Operator::Present);
  const TempDirectory directory;
  QObject owner;
  bool seen = false;
  new platform::ReentrantTimer(
      1,
      [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || !dialog->isVisible() || seen) return;
        seen = true;
        QTest::keyClick(dialog, Qt::Key_Return);
      },
      &owner);
  EXPECT_EQ(platform::PickFolder({"Title", directory.path()}), directory.path());
  EXPECT_TRUE(seen);
}

}  // namespace
}  // namespace vorda::test
