// The history window.

#include <gtest/gtest.h>

#include "controls/Twips.h"
#include "platform/Clock.h"
#include "platform/WaveDevices.h"
#include "shell/frmHistory.h"
#include "support/FeedWindows.h"

namespace vorda::test {
namespace {

class History : public FeedWindows {
 protected:
  ~History() override { form.Unload(); }
  std::string Line(int index) {
    const std::string name = "lblEventhist" + std::to_string(index);
    return form.Control<controls::CaptionLabel>(name.c_str())->Caption();
  }
  QMdiSubWindow* Window() { return ChildWindowOf(form.Control<QWidget>("Picture1")); }

  frmHistory& form = frmHistory::Default();
  platform::ScopedClock clock{platform::Moment{platform::DayNumber(2026, 11, 21), 86399.999}};
};

TEST_F(History, HasItsTitleAndSixEmptyLines) {
  form.Show();
  EXPECT_EQ(form.Text(), "History:");
  for (int i = 0; i < 6; ++i) EXPECT_EQ(Line(i), "") << i;
}

TEST_F(History, LinesAreShownAsTheyComeWithDateAndTime) {
  form.Show();
  AddHistoryEvent("Feed 1 : Parity Error");
  AddHistoryEvent("Feed 2 : Overrun Error");
  EXPECT_EQ(Line(0), "21/11/2026 23:59:59 Feed 1 : Parity Error");
  EXPECT_EQ(Line(1), "21/11/2026 23:59:59 Feed 2 : Overrun Error");
  EXPECT_EQ(Line(2), "");
}

TEST_F(History, SevenEventsLeaveTheLastSixWithTheSecondOnTop) {
  form.Show();
  for (const char* message : {"1", "2", "3", "4", "5", "6", "7"}) AddHistoryEvent(message);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(Line(i), "21/11/2026 23:59:59 " + std::to_string(i + 2)) << i;
  EXPECT_EQ(gHistoryCount, 6);
}

TEST_F(History, EventsOfTheTimeBeforeTheWindowAreThere) {
  AddHistoryEvent("early");
  form.Show();
  EXPECT_EQ(Line(0), "21/11/2026 23:59:59 early");
}

TEST_F(History, SoundInputThatGotNoNumberIsTold) {
  form.Show();
  platform::WaveInTroubleHook()("no number");
  EXPECT_EQ(Line(0), "21/11/2026 23:59:59 no number");
  form.Unload();
  platform::WaveInTroubleHook()("no number");
  EXPECT_EQ(gHistoryCount, 1);
}

TEST_F(History, OperatorCanNotCloseItAndCodeCan) {
  form.Show();
  Window()->close();
  EXPECT_TRUE(form.Visible());
  EXPECT_FALSE(form.Close(controls::CloseCause::FormControlMenu));
  EXPECT_TRUE(form.Close(controls::CloseCause::Code));
  EXPECT_FALSE(form.Loaded());
}

TEST_F(History, EventBehindItsUnloadIsKeptForTheNextLoad) {
  form.Show();
  form.Unload();
  AddHistoryEvent("late");
  form.Show();
  EXPECT_EQ(Line(0), "21/11/2026 23:59:59 late");
}

TEST_F(History, PictureAndLinesFollowTheWidthBetweenEqualMargins) {
  form.Show();
  auto* picture = form.Control<QWidget>("Picture1");
  auto* line = form.Control<QWidget>("lblEventhist5");
  const QSize before(picture->height(), line->height());
  for (const int width : {300, 407, 900}) {
    Window()->resize(width, 160);
    RunPendingEvents();
    const int client = picture->parentWidget()->width();
    EXPECT_EQ(picture->width(), client - 2 * picture->x());
    for (int i = 0; i < 6; ++i) {
      const std::string name = "lblEventhist" + std::to_string(i);
      const auto* label = form.Control<QWidget>(name.c_str());
      EXPECT_EQ(label->width(), picture->width() - 2 * label->x()) << name;
    }
  }
  EXPECT_EQ(QSize(picture->height(), line->height()), before);
}

TEST_F(History, LineErrorOfAFeedIsSeenInIt) {
  form.Show();
  Record(2).CapturePort = 1;
  Start(2);
  Port(1)->RaiseEvent(1009);
  EXPECT_EQ(Line(0), "21/11/2026 23:59:59 Feed 2 : Parity Error");
}

}  // namespace
}  // namespace vorda::test
