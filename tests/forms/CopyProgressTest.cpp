// The progress window, through its controls. A pipe as the source gives the test the copy's pace.

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "platform/RunTimeError.h"
#include "shell/GeneralFunctions.h"
#include "support/BoxOperator.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

class CopyProgressTest : public ::testing::Test {
 protected:
  CopyProgressTest() {
    EXPECT_EQ(::mkfifo(source_.c_str(), 0600), 0);
    // Both ends, so that no opening waits for the other.
    pipe_ = ::open(source_.c_str(), O_RDWR);
    owner_.show();
  }
  ~CopyProgressTest() override { EndSource(); }

  void EndSource() {
    if (pipe_ >= 0) ::close(pipe_);
    pipe_ = -1;
  }
  void Feed() { EXPECT_EQ(::write(pipe_, "bytes", 5), 5); }

  // Copies, and has the operator act once the window is up.
  std::int32_t Copy(const std::function<void(QDialog&)>& act) {
    bool acted = false;
    QObject here;
    new platform::ReentrantTimer(
        1,
        [&] {
          auto* const window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
          if (window == nullptr || !window->isVisible() || acted) return;
          acted = true;
          EXPECT_EQ(window->objectName(), QStringLiteral("copyProgress"));
          act(*window);
        },
        &here);
    const std::int32_t result =
        RunShellFileOperation(source_, destination_, "Copying Cart Audio", &owner_, false, true);
    EXPECT_TRUE(acted);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    return result;
  }

  TempDirectory directory_;
  const std::string source_ = directory_ / "from.wav";
  const std::string destination_ = directory_ / "to.wav";
  QWidget owner_;
  DesktopScope desktop_{controls::Operator::Present};
  int pipe_ = -1;
};

TEST_F(CopyProgressTest, LongCopyShowsAWindowWithTheTitleAboveItsOwner) {
  EXPECT_EQ(Copy([this](QDialog& window) {
              EXPECT_EQ(window.windowTitle(), QStringLiteral("Copying Cart Audio"));
              EXPECT_EQ(window.parentWidget(), &owner_);
              EXPECT_EQ(window.windowModality(), Qt::ApplicationModal);
              EXPECT_NE(window.findChild<QProgressBar*>(), nullptr);
              Feed();
              EndSource();
            }),
            0);
  EXPECT_EQ(ReadWholeFile(destination_), "bytes");
}

TEST_F(CopyProgressTest, EscapeCancelsAndNothingIsLeft) {
  EXPECT_EQ(Copy([this](QDialog& window) {
              QTest::keyClick(&window, Qt::Key_Escape);
              EXPECT_TRUE(window.isVisible());
              EXPECT_FALSE(window.findChild<QDialogButtonBox*>()->isEnabled());
              Feed();
            }),
            platform::kCopyCancelled);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav");
}

TEST_F(CopyProgressTest, ButtonAndCloseBoxCancel) {
  EXPECT_EQ(Copy([this](QDialog& window) {
              auto* const button = window.findChild<QPushButton*>();
              EXPECT_TRUE(WaitUntil([button] { return button->hasFocus(); }));
              QTest::keyClick(button, Qt::Key_Space);
              Feed();
            }),
            platform::kCopyCancelled);
  EXPECT_EQ(Copy([this](QDialog& window) {
              window.close();
              Feed();
            }),
            platform::kCopyCancelled);
}

TEST_F(CopyProgressTest, TimersGoOnWhileAFileIsCopied) {
  int ticks = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    if (++ticks == 20) EndSource();
  });
  timer.start(5);
  EXPECT_EQ(RunShellFileOperation(source_, destination_, "", &owner_, false, true), 0);
  EXPECT_GE(ticks, 20);
}

TEST_F(CopyProgressTest, ShortCopyPassesWithoutAWindow) {
  const std::string file = directory_ / "short.wav";
  WriteWholeFile(file, "bytes");
  QObject here;
  bool seen = false;
  new platform::ReentrantTimer(
      1, [&] { seen |= QApplication::activeModalWidget() != nullptr; }, &here);
  EXPECT_EQ(RunShellFileOperation(file, destination_, "Copying Cart Files", &owner_, false, true), 0);
  EXPECT_FALSE(seen);
  EXPECT_EQ(ReadWholeFile(destination_), "bytes");
}

TEST_F(CopyProgressTest, NobodyThereMeansNoWindow) {
  const DesktopScope unattended(controls::Operator::Absent);
  QTimer::singleShot(600, &owner_, [this] {
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EndSource();
  });
  EXPECT_EQ(RunShellFileOperation(source_, destination_, "Copying Cart Files", &owner_, false, true), 0);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav to.wav");
}

}  // namespace
}  // namespace vorda::test
