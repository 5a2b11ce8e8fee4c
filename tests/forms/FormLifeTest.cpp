// A form's life: loaded on first use, shown, hidden, closed or refused, unloaded.

#include <QCoreApplication>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "controls/Form.h"
#include "controls/Panels.h"
#include "platform/ReentrantTimer.h"
#include "support/EventLoop.h"

namespace vorda::test {
namespace {

using controls::CloseCause;
using Calls = std::vector<std::string>;

class ProbeForm : public controls::Form {
 public:
  ProbeForm() : Form("frmProbe") {}

  Calls calls;
  int field = 0;
  int ticks = 0;
  bool refuses = false;

 protected:
  void BuildControls(QWidget* client) override {
    auto* label = new controls::CaptionLabel(client);
    label->setObjectName("lblText");
    label->SetCaption("as designed");
    auto* button = new QPushButton("Go", client);
    button->setObjectName("cmdGo");
    QObject::connect(button, &QPushButton::clicked, client, [this] {
      Unload();
      calls.push_back("behind the unload");
    });
    new platform::ReentrantTimer(
        1, [this] { ++ticks; }, client);
  }
  void OnLoad() override { calls.push_back("load"); }
  void OnActivate() override { calls.push_back("activate"); }
  void OnResize() override { ++resizes; }
  bool OnQueryUnload(CloseCause cause) override {
    calls.push_back(cause == CloseCause::Code ? "asked by code" : "asked by the operator");
    return !refuses;
  }
  void OnUnload() override {
    calls.push_back("unload");
    if (atUnload) atUnload();
  }

 public:
  std::function<void()> atUnload;
  int resizes = 0;
};

QWidget* WindowOf(ProbeForm& form) {
  return form.Control<QPushButton>("cmdGo")->window();
}

TEST(FormLife, NothingIsBuiltBeforeTheFirstUse) {
  ProbeForm form;
  EXPECT_FALSE(form.Loaded());
  EXPECT_FALSE(form.Visible());
  EXPECT_EQ(form.calls, Calls{});
}

TEST(FormLife, EachPropertyLoadsTheForm) {
  const std::vector<void (*)(ProbeForm&)> uses = {
      [](ProbeForm& form) { EXPECT_EQ(form.Tag(), ""); },
      [](ProbeForm& form) { form.SetTag("3"); },
      [](ProbeForm& form) { form.Text(); },
      [](ProbeForm& form) { form.SetText("Title"); },
      [](ProbeForm& form) { form.Left(); },
      [](ProbeForm& form) { form.Top(); },
      [](ProbeForm& form) { form.Width(); },
      [](ProbeForm& form) { form.Height(); },
      [](ProbeForm& form) { form.SetLeft(30); },
      [](ProbeForm& form) { EXPECT_NE(form.Control<QPushButton>("cmdGo"), nullptr); }};
  for (const auto& use : uses) {
    ProbeForm form;
    use(form);
    EXPECT_TRUE(form.Loaded());
    EXPECT_FALSE(form.Visible());
    EXPECT_EQ(form.calls, Calls{"load"});
  }
}

TEST(FormLife, SecondLoadDoesNothing) {
  ProbeForm form;
  form.Load();
  auto* button = form.Control<QPushButton>("cmdGo");
  form.Load();
  EXPECT_EQ(form.Control<QPushButton>("cmdGo"), button);
  EXPECT_EQ(form.calls, Calls{"load"});
}

TEST(FormLife, ControlOfAnotherNameOrKindIsNull) {
  ProbeForm form;
  EXPECT_EQ(form.Control<QPushButton>("cmdStop"), nullptr);
  EXPECT_EQ(form.Control<QPushButton>("lblText"), nullptr);
}

TEST(FormLife, ShowLoadsThenActivates) {
  ProbeForm form;
  form.Show();
  EXPECT_TRUE(form.Visible());
  EXPECT_EQ(form.calls, (Calls{"load", "activate"}));
}

TEST(FormLife, HideKeepsTagAndControlsAndTheNextShowActivatesAgain) {
  ProbeForm form;
  form.SetTag("2");
  form.Show();
  form.Control<controls::CaptionLabel>("lblText")->SetCaption("changed");
  form.Hide();
  EXPECT_FALSE(form.Visible());
  EXPECT_TRUE(form.Loaded());
  form.Show();
  EXPECT_EQ(form.Tag(), "2");
  EXPECT_EQ(form.Control<controls::CaptionLabel>("lblText")->Caption(), "changed");
  EXPECT_EQ(form.calls, (Calls{"load", "activate", "activate"}));
}

TEST(FormLife, UnloadLosesTagTitleAndControlsButNotTheFormsOwnFields) {
  ProbeForm form;
  form.SetTag("4");
  form.SetText("Feed 4");
  form.field = 7;
  form.Control<controls::CaptionLabel>("lblText")->SetCaption("changed");
  form.Unload();
  EXPECT_FALSE(form.Loaded());
  EXPECT_EQ(form.Tag(), "");
  EXPECT_NE(form.Text(), "Feed 4");
  EXPECT_EQ(form.Control<controls::CaptionLabel>("lblText")->Caption(), "as designed");
  EXPECT_EQ(form.field, 7);
  EXPECT_EQ(form.calls, (Calls{"load", "unload", "load"}));
}

TEST(FormLife, UnloadOfAFormThatIsNotLoadedDoesNothing) {
  ProbeForm form;
  form.Unload();
  EXPECT_EQ(form.calls, Calls{});
  EXPECT_FALSE(form.Loaded());
}

TEST(FormLife, UnloadAskedAgainInsideTheUnloadDoesItsWorkOnce) {
  ProbeForm form;
  form.Show();
  QWidget* window = WindowOf(form);
  form.atUnload = [&] {
    form.Unload();
    EXPECT_TRUE(form.Loaded());
    window->close();
    EXPECT_TRUE(form.Loaded());
  };
  form.Unload();
  EXPECT_FALSE(form.Loaded());
  EXPECT_EQ(form.calls, (Calls{"load", "activate", "unload", "asked by the operator"}));
  form.atUnload = {};
  form.Load();
  form.Unload();
  EXPECT_FALSE(form.Loaded());
  EXPECT_EQ(form.calls, (Calls{"load", "activate", "unload", "asked by the operator", "load", "unload"}));
}

TEST(FormLife, OperatorsCloseUnloads) {
  ProbeForm form;
  form.Show();
  WindowOf(form)->close();
  EXPECT_FALSE(form.Loaded());
  EXPECT_EQ(form.calls, (Calls{"load", "activate", "asked by the operator", "unload"}));
}

TEST(FormLife, RefusedCloseLeavesTheFormAsItWas) {
  ProbeForm form;
  form.refuses = true;
  form.SetTag("1");
  form.Show();
  WindowOf(form)->close();
  EXPECT_TRUE(form.Visible());
  EXPECT_EQ(form.Tag(), "1");
  EXPECT_FALSE(form.Close(CloseCause::Code));
  EXPECT_TRUE(form.Visible());
  EXPECT_EQ(form.calls, (Calls{"load", "activate", "asked by the operator", "asked by code"}));
}

TEST(FormLife, UnloadInsideAHandlerOfAnOwnControlIsSafe) {
  ProbeForm form;
  form.Show();
  QPointer<QPushButton> button = form.Control<QPushButton>("cmdGo");
  QTest::mouseClick(button, Qt::LeftButton);
  EXPECT_FALSE(form.Loaded());
  EXPECT_EQ(form.calls.back(), "behind the unload");
  EXPECT_FALSE(button.isNull());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(button.isNull());
}

TEST(FormLife, TimersAreSilentFromTheUnloadOn) {
  ProbeForm form;
  form.Load();
  ASSERT_TRUE(WaitUntil([&] { return form.ticks > 0; }));
  form.Unload();
  const int before = form.ticks;
  QObject owner;
  int later = 0;
  new platform::ReentrantTimer(
      1, [&] { ++later; }, &owner);
  ASSERT_TRUE(WaitUntil([&] { return later >= 5; }));
  EXPECT_EQ(form.ticks, before);
}

TEST(FormLife, ResizingTellsTheForm) {
  ProbeForm form;
  form.Show();
  RunPendingEvents();
  form.resizes = 0;
  form.SetWidth(form.Width() + 1500);
  EXPECT_TRUE(WaitUntil([&] { return form.resizes == 1; }));
}

TEST(FormLife, TwipsBecomeWholePixelsHalfToEven) {
  ProbeForm form;
  form.Move(22.5, 37.5, 3007, 1508);  // 1.5, 2.5, 200.47 and 100.53 pixels
  EXPECT_EQ(form.Left(), 30);
  EXPECT_EQ(form.Top(), 30);
  EXPECT_EQ(form.Width(), 3000);
  EXPECT_EQ(form.Height(), 1515);
}

}  // namespace
}  // namespace vorda::test
