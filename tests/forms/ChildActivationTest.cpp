// Which child window of the frame is the active one, and when its form is told.

#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/EventLoop.h"
#include "support/FormFrame.h"

namespace vorda::test {
namespace {

using Names = std::vector<std::string>;

class ProbeChild : public controls::ChildForm {
 public:
  ProbeChild(const char* name, Names& activated) : ChildForm(name), name_(name), activated_(activated) {}
  QMdiSubWindow* Window() { return ChildWindowOf(Control<QPushButton>("cmdGo")); }

 protected:
  void BuildControls(QWidget* client) override {
    auto* button = new QPushButton("Go", client);
    button->setObjectName("cmdGo");
    QObject::connect(button, &QPushButton::clicked, client, [this] { Unload(); });
    SetText(name_);
  }
  void OnLoad() override { Move(30, 30, 4500, 3000); }
  void OnActivate() override { activated_.push_back(name_); }

 private:
  std::string name_;
  Names& activated_;
};

class ChildActivation : public ::testing::Test {
 protected:
  // What has been activated since the last question.
  Names Activated() {
    RunPendingEvents();
    return std::exchange(activated_, {});
  }

  FormFrame frame;

 private:
  Names activated_;

 protected:
  ProbeChild a{"a", activated_};
  ProbeChild b{"b", activated_};
  ProbeChild c{"c", activated_};
};

TEST_F(ChildActivation, LoadingNeitherShowsNorActivates) {
  a.Load();
  EXPECT_EQ(Activated(), Names{});
  EXPECT_FALSE(a.Visible());
}

TEST_F(ChildActivation, EachShowActivatesOnce) {
  a.Show();
  EXPECT_EQ(Activated(), Names{"a"});
  b.Show();
  EXPECT_EQ(Activated(), Names{"b"});
  EXPECT_EQ(frame.Area().activeSubWindow(), b.Window());
}

TEST_F(ChildActivation, OperatorMakesAnotherChildActive) {
  a.Show();
  b.Show();
  Activated();
  frame.Area().activatePreviousSubWindow();
  EXPECT_EQ(Activated(), Names{"a"});
  frame.Area().setActiveSubWindow(b.Window());
  EXPECT_EQ(Activated(), Names{"b"});
  frame.Area().setActiveSubWindow(b.Window());
  EXPECT_EQ(Activated(), Names{});
}

TEST_F(ChildActivation, ClickOnAChildsTitleActivatesIt) {
  a.Show();
  b.Show();
  b.SetLeft(6000);
  Activated();
  QTest::mouseClick(a.Window(), Qt::LeftButton, {}, QPoint(a.Window()->width() / 2, 8));
  EXPECT_EQ(Activated(), Names{"a"});
}

TEST_F(ChildActivation, FocusThatABoxGivesBackActivatesNothing) {
  a.Show();
  b.Show();
  Activated();
  QMessageBox box(QMessageBox::NoIcon, "Box", "Text", QMessageBox::Ok, &frame.Window());
  QTimer::singleShot(0, &box, [&box] { QTest::keyClick(&box, Qt::Key_Return); });
  box.exec();
  EXPECT_EQ(Activated(), Names{});
}

TEST_F(ChildActivation, OperatorsCloseActivatesTheNextOneBelow) {
  a.Show();
  b.Show();
  c.Show();
  frame.Area().setActiveSubWindow(a.Window());
  frame.Area().setActiveSubWindow(c.Window());
  Activated();
  c.Window()->close();
  EXPECT_FALSE(c.Loaded());
  EXPECT_EQ(Activated(), Names{"a"});
  a.Window()->close();
  EXPECT_EQ(Activated(), Names{"b"});
  b.Window()->close();
  EXPECT_EQ(Activated(), Names{});
}

TEST_F(ChildActivation, UnloadOfAChildThatIsNotActiveActivatesNothing) {
  a.Show();
  b.Show();
  Activated();
  a.Unload();
  EXPECT_EQ(Activated(), Names{});
  EXPECT_EQ(frame.Area().activeSubWindow(), b.Window());
}

TEST_F(ChildActivation, MinimizedChildThatIsNextStaysMinimized) {
  a.Show();
  b.Show();
  a.Window()->showMinimized();
  frame.Area().setActiveSubWindow(b.Window());
  Activated();
  b.Window()->close();
  EXPECT_EQ(Activated(), Names{"a"});
  EXPECT_TRUE(a.Minimized());
}

TEST_F(ChildActivation, ShownAgainAfterHide) {
  a.Show();
  b.Show();
  b.Hide();
  EXPECT_FALSE(b.Visible());
  Activated();
  b.Show();
  EXPECT_EQ(Activated(), Names{"b"});
  EXPECT_TRUE(b.Visible());
}

TEST_F(ChildActivation, OnlyChildShownAgainAfterHide) {
  a.Show();
  a.Hide();
  Activated();
  a.Show();
  EXPECT_EQ(Activated(), Names{"a"});
}

TEST_F(ChildActivation, UnloadedInsideItsOwnButtonTheNextIsActivated) {
  a.Show();
  b.Show();
  Activated();
  QTest::mouseClick(b.Control<QPushButton>("cmdGo"), Qt::LeftButton);
  EXPECT_FALSE(b.Loaded());
  EXPECT_EQ(Activated(), Names{"a"});
}

TEST_F(ChildActivation, ShownAfterUnloadItIsActivatedAsANewWindow) {
  a.Show();
  a.Unload();
  Activated();
  a.Show();
  EXPECT_EQ(Activated(), Names{"a"});
  EXPECT_EQ(frame.Area().subWindowList().size(), 1);
}

}  // namespace
}  // namespace vorda::test
