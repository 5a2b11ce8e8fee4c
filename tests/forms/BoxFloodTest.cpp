// Boxes that nobody answers: the timers and the feeds go on behind them, and their number has a bound.

#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "support/BoxOperator.h"
#include "support/FeedWindows.h"
#include "support/PseudoTerminal.h"

namespace vorda::test {
namespace {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;

constexpr int kRaised = 100;

std::ptrdiff_t OpenBoxes() {
  const QWidgetList windows = QApplication::topLevelWidgets();
  return std::count_if(windows.begin(), windows.end(), [](const QWidget* window) {
    return window->isVisible() && qobject_cast<const QMessageBox*>(window) != nullptr;
  });
}

// An operator who presses Enter on every box once `when` holds, or patience is at its end: the boxes' own
// loops run until then, and nothing else does.
class LateOperator {
 public:
  explicit LateOperator(std::function<bool()> when) : when_(std::move(when)) {
    patience_.start();
    new platform::ReentrantTimer(
        1, [this] { Look(); }, &owner_);
  }
  bool HeldOut() const { return heldOut_; }

 private:
  void Look() {
    answering_ = answering_ || when_();
    heldOut_ = heldOut_ && !(patience_.hasExpired(20000) && !answering_);
    QMessageBox* box = BoxOperator::TopBox();
    if (box != nullptr && (answering_ || !heldOut_)) QTest::keyClick(box, Qt::Key_Return);
  }

  const std::function<bool()> when_;
  QElapsedTimer patience_;
  bool answering_ = false;
  bool heldOut_ = true;
  QObject owner_;
};

// A timer whose every tick raises a box, until it has raised a hundred.
class BoxTicks {
 public:
  explicit BoxTicks(std::function<std::string(int)> text) : text_(std::move(text)) {
    new platform::ReentrantTimer(
        1, [this] { Tick(); }, &owner_);
  }
  int Raised() const { return raised_; }
  std::ptrdiff_t Count(BoxAnswer answer) const {
    return std::count(answers_.begin(), answers_.end(), answer);
  }
  bool AllAnswered() const { return answers_.size() == kRaised; }

 private:
  void Tick() {
    if (raised_ == kRaised) return;
    const std::string text = text_(raised_++);
    answers_.push_back(
        platform::ShowMessageBox({text, BoxIcon::Critical, BoxButtons::YesNo, "", BoxAnswer::Yes}));
  }

  const std::function<std::string(int)> text_;
  int raised_ = 0;
  std::vector<BoxAnswer> answers_;
  QObject owner_;
};

TEST(BoxInATick, LetsTheNextTicksOfTheSameTimerIn) {
  const DesktopScope desktop(controls::Operator::Present);
  QObject owner;
  int ticks = 0;
  int ticksBehindTheBox = 0;
  new platform::ReentrantTimer(
      1,
      [&] {
        if (++ticks > 1) return;
        platform::ShowMessageBox("raised in a tick");
        ticksBehindTheBox = ticks - 1;
      },
      &owner);
  const LateOperator human([&] { return ticks >= 3; });
  ASSERT_TRUE(WaitUntil([&] { return ticksBehindTheBox > 0 || !human.HeldOut(); }, 30000));
  EXPECT_GE(ticksBehindTheBox, 2);
  EXPECT_TRUE(human.HeldOut());
}

TEST(BoxFlood, OfAHundredThirtyTwoOpenAndTheOthersAreRefusedAndToldOnce) {
  const DesktopScope desktop(controls::Operator::Present);
  std::ptrdiff_t open = 0;
  ::testing::internal::CaptureStderr();
  const BoxTicks ticks([](int) { return std::string("the same over and over"); });
  const LateOperator human([&] {
    open = std::max(open, OpenBoxes());
    return ticks.Raised() == kRaised;
  });
  EXPECT_TRUE(WaitUntil([&] { return ticks.AllAnswered(); }, 30000));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "vdserver: the same over and over\n");
  EXPECT_TRUE(human.HeldOut());
  EXPECT_EQ(open, controls::kMostBoxes);
  EXPECT_EQ(ticks.Count(BoxAnswer::Yes), controls::kMostBoxes);
  EXPECT_EQ(ticks.Count(BoxAnswer::No), kRaised - controls::kMostBoxes);
  EXPECT_EQ(OpenBoxes(), 0);
}

TEST(BoxFlood, EachOfDifferentTextsIsToldOnce) {
  const DesktopScope desktop(controls::Operator::Present);
  std::string expected;
  for (int i = controls::kMostBoxes; i < kRaised; i += 2)
    expected += "vdserver: number " + std::to_string(i / 2) + "\n";
  ::testing::internal::CaptureStderr();
  const BoxTicks ticks([](int i) { return "number " + std::to_string(i / 2); });
  const LateOperator human([&] { return ticks.Raised() == kRaised; });
  EXPECT_TRUE(WaitUntil([&] { return ticks.AllAnswered(); }, 30000));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), expected);
  EXPECT_TRUE(human.HeldOut());
}

class BoxFloodOnALine : public FeedWindows {
 protected:
  BoxFloodOnALine() {
    ports.reset();
    platform::Settings mapped = TestSettings();
    mapped.serialPorts = {capture.path(), bounce.path(), "", ""};
    lines.emplace(mapped);
  }

  PseudoTerminal capture{directory / "com1"};
  PseudoTerminal bounce{directory / "com2"};
  std::optional<platform::ScopedSettings> lines;
};

TEST_F(BoxFloodOnALine, FeedGoesOnBehindAllOfThem) {
  const DesktopScope desktop(controls::Operator::Present);
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  std::vector<std::string> stories;
  processes.atStart = [&](const platform::ProcessStart& start) {
    stories.push_back(ReadWholeFile(start.arguments.at(0).substr(0, start.arguments.at(0).find('|'))));
  };
  Start(1);
  const BoxTicks ticks([](int) { return std::string("in the way"); });
  bool sent = false;
  std::ptrdiff_t open = 0;
  std::string bounced;
  ::testing::internal::CaptureStderr();
  const LateOperator human([&] {
    if (ticks.Raised() < kRaised) return false;
    if (!sent) sent = capture.Write("\x01One\x04\x01Two\x04");
    bounced += bounce.Read();
    open = OpenBoxes();
    return stories.size() == 2 && bounced.size() == 10;
  });
  EXPECT_TRUE(WaitUntil([&] { return ticks.AllAnswered(); }, 30000));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "vdserver: in the way\n");
  EXPECT_TRUE(human.HeldOut());
  EXPECT_EQ(open, controls::kMostBoxes);
  EXPECT_EQ(stories, (std::vector<std::string>{"One", "Two"}));
  EXPECT_EQ(bounced, "\x01One\x04\x01Two\x04");
}

}  // namespace
}  // namespace vorda::test
