// The splash window.

#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include "controls/Panels.h"
#include "platform/ProgramVersion.h"
#include "platform/Settings.h"
#include "shell/ServerState.h"
#include "shell/frmSplash.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

class Splash : public ::testing::Test {
 protected:
  Splash() : settings(SettingsIn(directory.path())) {}
  ~Splash() override { form.Unload(); }

  static platform::Settings SettingsIn(const std::string& programDirectory) {
    platform::Settings changed;
    changed.programDirectory = programDirectory;
    return changed;
  }
  std::string Label(const char* name) { return form.Control<controls::CaptionLabel>(name)->Caption(); }
  QImage Logo() { return form.Control<QLabel>("picLogo")->pixmap().toImage(); }

  TempDirectory directory;
  platform::ScopedSettings settings;
  frmSplash& form = frmSplash::Default();
};

TEST_F(Splash, HasEveryControlOfItsDesign) {
  for (const char* name : {"fraMainFrame", "picLogo", "lblProductName", "lblCompanyProduct", "lblVersion",
                           "lblPlatform", "lblCopyright", "lblWarning", "lblCurrentAction", "cmdOK"})
    EXPECT_NE(form.Control<QWidget>(name), nullptr) << name;
  EXPECT_EQ(form.Control<QPushButton>("cmdOK")->text(), "OK");
}

TEST_F(Splash, TellsWhatTheProgramIs) {
  EXPECT_EQ(Label("lblVersion"), "Version " + std::to_string(platform::kVersionMajor) + "." +
                                     std::to_string(platform::kVersionMinor) + "." +
                                     std::to_string(platform::kVersionRevision));
  EXPECT_EQ(Label("lblProductName"), platform::kProductName);
  EXPECT_EQ(Label("lblCompanyProduct"), platform::kCompanyName);
  EXPECT_EQ(Label("lblCopyright"), platform::kLegalCopyright);
}

TEST_F(Splash, WarningToTheLetter) {
  EXPECT_EQ(Label("lblWarning"),
            "Warning: This computer program is protected under international copyright law. Unauthorised "
            "reproduction of this program or any part of it is expressly forbidden and any such actions may "
            "result in civil and criminal prosecution to the maximum extent of the law.");
}

TEST_F(Splash, PlatformWithoutANameKeepsTheDesignText) {
  EXPECT_EQ(Label("lblPlatform"), "Platform");
}

TEST(SplashPlatform, NamesOfVersions) {
  const std::pair<OSVersionInfo, const char*> names[] = {
      {{1, 4, 0}, "Windows 95"},
      {{1, 4, 10}, "Windows 98"},
      {{1, 4, 90}, ""},
      {{2, 3, 51}, "Windows NT v3.51"},
      {{2, 4, 0}, "Windows NT v4"},
      {{2, 5, 0}, "Windows 2000"},
      {{2, 5, 1}, "Windows 2000 Server"},
      {{2, 5, 2}, "Windows 2000 Server"},
      {{2, 6, 0}, ""},
      {{0, 5, 0}, ""},
  };
  for (const auto& [version, name] : names)
    EXPECT_EQ(PlatformName(version), name)
        << version.platformId << " " << version.majorVersion << "." << version.minorVersion;
}

TEST_F(Splash, OwnLogoBesideTheProgramIsLoaded) {
  const QImage builtIn = Logo();
  ASSERT_FALSE(builtIn.isNull());
  form.Unload();
  QImage red(120, 120, QImage::Format_RGB32);
  red.fill(Qt::red);
  ASSERT_TRUE(red.save(QString::fromStdString(directory / "LOGO.BMP")));
  const QImage own = Logo();
  ASSERT_FALSE(own.isNull());
  EXPECT_EQ(own.pixelColor(own.width() / 2, own.height() / 2), QColor(Qt::red));
  EXPECT_EQ(own.width(), own.height());
}

TEST_F(Splash, EmptyLogoLeavesTheBuiltInPicture) {
  const QImage builtIn = Logo();
  form.Unload();
  WriteWholeFile(directory / "LOGO.BMP", "");
  EXPECT_EQ(Logo(), builtIn);
}

TEST_F(Splash, LogoThatIsNoPictureLeavesTheBuiltInOne) {
  const QImage builtIn = Logo();
  form.Unload();
  WriteWholeFile(directory / "LOGO.BMP", "no picture");
  EXPECT_EQ(Logo(), builtIn);
}

TEST_F(Splash, OkUnloadsIt) {
  form.Show();
  QTest::keyClick(form.Control<QPushButton>("cmdOK"), Qt::Key_Space);
  EXPECT_FALSE(form.Loaded());
}

TEST_F(Splash, ActivationLetsPendingEventsRun) {
  form.Load();
  bool ran = false;
  QTimer::singleShot(0, [&] { ran = true; });
  form.Show();
  EXPECT_TRUE(ran);
}

TEST_F(Splash, ChangeOfTheCurrentActionLetsPendingEventsRun) {
  form.Show();
  bool ran = false;
  QTimer::singleShot(0, [&] { ran = true; });
  form.Control<controls::CaptionLabel>("lblCurrentAction")->SetCaption("Reading");
  EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace vorda::test
