// What the operator presses while a program is waited for.

#include <QPushButton>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "shell/GeneralFunctions.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

// Where a window system's plugin leaves what the operator does, for whoever looks next. The toolkit's own
// test functions handle a key on the spot, and its header of this class isn't part of the packages.
class QWindowSystemInterface {
 public:
  struct AsynchronousDelivery;
  template <class Delivery>
  static bool handleKeyEvent(QWindow* window, QEvent::Type type, int key, Qt::KeyboardModifiers modifiers,
                             const QString& text, bool repeats, unsigned short count);
};

namespace vorda::test {
namespace {

class RunProcessInputTest : public ::testing::Test {
 protected:
  RunProcessInputTest() {
    WriteWholeFile(program_, "#!/bin/sh\nuntil [ -e '" + gate_ + "' ]; do sleep 0.01; done\n");
    std::filesystem::permissions(program_, std::filesystem::perms::owner_all);
    QObject::connect(&button_, &QPushButton::clicked, [this] { ++clicks_; });
    button_.show();
    button_.activateWindow();
    EXPECT_TRUE(WaitUntil([this] { return button_.hasFocus(); }));
  }

  void OpenGate() { WriteWholeFile(gate_, ""); }
  void Press() {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QWindowSystemInterface::handleKeyEvent<QWindowSystemInterface::AsynchronousDelivery>(
          button_.windowHandle(), type, Qt::Key_Space, Qt::NoModifier, " ", false, 1);
    }
  }
  // Waits for the program while `tick` comes from a timer.
  void Wait(std::int32_t waitMode, const std::function<void()>& tick) {
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, tick);
    timer.start(1);
    platform::ProcessInformation information;
    ASSERT_NE(RunProcess(program_, "", 0, waitMode, 0, information), 0);
  }

  TempDirectory directory_;
  const std::string gate_ = directory_ / "gate";
  const std::string program_ = directory_ / "program";
  QPushButton button_{QStringLiteral("Press")};
  int clicks_ = 0;
};

// Nothing but the click lets the program end.
TEST_F(RunProcessInputTest, YieldingWaitServesIt) {
  bool pressed = false;
  Wait(kWaitYielding, [&] {
    if (!std::exchange(pressed, true)) Press();
    if (clicks_ > 0) OpenGate();
  });
  EXPECT_EQ(clicks_, 1);
}

TEST_F(RunProcessInputTest, BlockingWaitKeepsItForAfterwards) {
  constexpr int kTicks = 50;
  int ticks = 0;
  int served = -1;
  Wait(kWaitBlocking, [&] {
    if (++ticks == 1) Press();
    if (ticks != kTicks) return;
    served = clicks_;
    OpenGate();
  });
  EXPECT_EQ(served, 0);
  EXPECT_EQ(clicks_, 0);
  EXPECT_TRUE(WaitUntil([this] { return clicks_ == 1; }));
}

}  // namespace
}  // namespace vorda::test
