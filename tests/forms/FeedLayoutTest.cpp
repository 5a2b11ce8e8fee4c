// A feed window's controls: as designed, and placed at every size.

#include <QGroupBox>
#include <QPushButton>

#include <gtest/gtest.h>

#include "controls/Twips.h"
#include "support/FeedWindows.h"

namespace vorda::test {
namespace {

using controls::TwipsFromPixels;

struct Design {
  const char* name;
  const char* parent;
};

constexpr Design kDesign[] = {
    {"Label1", ""},
    {"lblConfigFile", ""},
    {"frameTextCapture", ""},
    {"txtCapture", "frameTextCapture"},
    {"pnlAudio", ""},
    {"pnlVolume", "pnlAudio"},
    {"pnlTimeIn", "pnlAudio"},
    {"pnlTimeOut", "pnlAudio"},
    {"pnlCartNo", "pnlAudio"},
    {"pnlTimeFlood", "pnlAudio"},
    {"pnlTidewireCaption", "pnlAudio"},
    {"Label2", "pnlTidewireCaption"},
    {"Label3", "pnlTidewireCaption"},
    {"picControls", "pnlAudio"},
    {"cmdRecord", "picControls"},
    {"cmdEject", "picControls"},
};

class FeedLayout : public FeedWindows {
 protected:
  // A control's place in its parent, in twips.
  struct Place {
    double left, top, right, bottom, width, height;
  };
  static Place Of(const char* name) {
    const QRect place = FeedForm(1).Control<QWidget>(name)->geometry();
    return {TwipsFromPixels(place.x()),
            TwipsFromPixels(place.y()),
            TwipsFromPixels(place.x() + place.width()),
            TwipsFromPixels(place.y() + place.height()),
            TwipsFromPixels(place.width()),
            TwipsFromPixels(place.height())};
  }
};

TEST_F(FeedLayout, EveryControlIsThereInItsContainer) {
  frmWireFeed& form = FeedForm(1);
  QWidget* client = form.lblConfigFile()->parentWidget();
  for (const Design& design : kDesign) {
    auto* control = form.Control<QWidget>(design.name);
    ASSERT_NE(control, nullptr) << design.name;
    const QWidget* parent = design.parent[0] == '\0' ? client : form.Control<QWidget>(design.parent);
    EXPECT_EQ(control->parentWidget(), parent) << design.name;
  }
}

TEST_F(FeedLayout, TimersRunFromTheLoadOnAtTheirIntervals) {
  frmWireFeed& form = FeedForm(1);
  const std::pair<const char*, int> intervals[] = {
      {"timerIndexLogs", 2000}, {"timerRecordMonitor", 1000}, {"tmrAudioLevel", 50}};
  for (const auto& [name, interval] : intervals) {
    ASSERT_NE(Timer(form, name), nullptr) << name;
    EXPECT_TRUE(Timer(form, name)->Enabled()) << name;
    EXPECT_EQ(Timer(form, name)->Interval(), interval) << name;
  }
}

TEST_F(FeedLayout, CaptionsAndFontAsDesigned) {
  frmWireFeed& form = FeedForm(1);
  EXPECT_EQ(form.Control<controls::CaptionLabel>("Label1")->Caption(), "Config:");
  EXPECT_EQ(form.Control<QGroupBox>("frameTextCapture")->title(), "Text Capture:");
  EXPECT_EQ(form.Control<controls::CaptionLabel>("Label2")->Caption(), "Tidewire");
  EXPECT_EQ(form.Control<controls::CaptionLabel>("Label3")->Caption(), "TM");
  EXPECT_EQ(form.txtCapture()->font().family(), "Courier New");
}

class FeedLayoutAtSize : public FeedLayout, public ::testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(FeedLayoutAtSize, ControlsFollowTheClientArea) {
  frmWireFeed& form = Start(1);
  ChildWindowOf(form.lblConfigFile())->resize(GetParam().first, GetParam().second);
  RunPendingEvents();
  ASSERT_EQ(form.Width(), TwipsFromPixels(GetParam().first));
  const double width = form.ClientWidth();
  const double height = form.ClientHeight();

  const Place strip = Of("pnlAudio");
  EXPECT_EQ(strip.bottom, height - 30);
  EXPECT_EQ(strip.width, width - 60);
  EXPECT_EQ(strip.left, 30);
  EXPECT_EQ(Of("picControls").right, strip.width - 60);
  EXPECT_EQ(Of("pnlTimeOut").left, Of("picControls").left);
  EXPECT_EQ(Of("pnlTimeFlood").right, Of("pnlTimeOut").left - 60);
  EXPECT_EQ(Of("pnlVolume").width, Of("pnlTimeFlood").width);
  EXPECT_EQ(Of("pnlTidewireCaption").width, Of("pnlTimeFlood").width);

  const Place capture = Of("frameTextCapture");
  EXPECT_EQ(width - capture.right, capture.left);
  EXPECT_EQ(capture.bottom, strip.top - 60);
  const Place text = Of("txtCapture");
  EXPECT_EQ(capture.width - text.right, text.left);
  EXPECT_EQ(text.bottom, capture.height - 90);
  EXPECT_EQ(Of("lblConfigFile").right, width - 60);
}

INSTANTIATE_TEST_SUITE_P(Sizes, FeedLayoutAtSize,
                         ::testing::Values(std::pair(200, 300), std::pair(201, 301), std::pair(400, 436),
                                           std::pair(333, 257), std::pair(1600, 1200)),
                         [](const auto& test) {
                           return std::to_string(test.param.first) + "x" + std::to_string(test.param.second);
                         });

TEST_F(FeedLayout, NarrowerThanThreeThousandTwipsSpringsBack) {
  frmWireFeed& form = Start(1);
  QMdiSubWindow* window = ChildWindowOf(form.lblConfigFile());
  window->resize(199, 400);
  RunPendingEvents();
  EXPECT_EQ(form.Width(), 3000);
  EXPECT_EQ(form.Height(), TwipsFromPixels(400));
  form.SetWidth(15);
  RunPendingEvents();
  EXPECT_EQ(form.Width(), 3000);
  EXPECT_EQ(Of("lblConfigFile").right, form.ClientWidth() - 60);
}

TEST_F(FeedLayout, ThreeThousandTwipsStay) {
  frmWireFeed& form = Start(1);
  form.SetWidth(3000);
  RunPendingEvents();
  EXPECT_EQ(form.Width(), 3000);
}

TEST_F(FeedLayout, HeightHasNoSmallestValue) {
  frmWireFeed& form = Start(1);
  ChildWindowOf(form.lblConfigFile())->resize(400, 40);
  RunPendingEvents();
  EXPECT_EQ(form.Height(), 600);
  EXPECT_EQ(form.Width(), 6000);
}

TEST_F(FeedLayout, MinimizedWindowIsNeverResized) {
  frmWireFeed& form = Start(1);
  QMdiSubWindow* window = ChildWindowOf(form.lblConfigFile());
  window->showMinimized();
  RunPendingEvents();
  ASSERT_TRUE(form.Minimized());
  EXPECT_LT(form.Width(), 3000);
  window->showNormal();
  RunPendingEvents();
  EXPECT_EQ(form.Width(), 6000);
  EXPECT_EQ(Of("lblConfigFile").right, form.ClientWidth() - 60);
}

}  // namespace
}  // namespace vorda::test
