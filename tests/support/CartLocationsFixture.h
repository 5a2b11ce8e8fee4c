// The dialog of the wall's locations, with an operator at its keyboard and a home of its own for the INI.

#pragma once

#include <QCheckBox>

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "carts/Orvane_Audio_Routines.h"
#include "carts/frmCartLocations.h"
#include "controls/FormBuilder.h"
#include "controls/TextBox.h"
#include "platform/Files.h"
#include "platform/ScopedVariable.h"
#include "shell/ServerState.h"
#include "support/DialogOperator.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda::test {

using Texts = std::vector<std::string>;

class CartLocationsFixture : public ::testing::Test {
 protected:
  CartLocationsFixture() {
    gAudioWallParts = {};
    gIniFileName = "STATION.INI";
    caller_.Show();
  }
  ~CartLocationsFixture() override {
    Form().Unload();
    platform::CloseAllFiles();
    gAudioWallParts = {};
  }

  static frmCartLocations& Form() { return frmCartLocations::Default(); }
  static std::string Row(int part) {
    return Form().Control<controls::TextBox>(controls::ElementName("txtCartLocations", part).c_str())->Text();
  }
  static Texts Rows() {
    Texts rows;
    for (int part = 1; part <= kAudioWallParts; ++part) rows.push_back(Row(part));
    return rows;
  }
  static Texts Table() {
    Texts table;
    for (const AudioWallPart& part : gAudioWallParts) table.push_back(part.Location);
    return table;
  }
  static Texts Same(const std::string& location) { return Texts(kAudioWallParts, location); }
  static bool IsTicked() { return Form().Control<QCheckBox>("chkUseOneCartLocation")->isChecked(); }
  // Whether a row's label, text and button are all enabled; one of them alone is a failure.
  static bool IsEnabled(int part) {
    int enabled = 0;
    for (const char* row : {"Label2", "txtCartLocations", "cmdChangeCartLocation"})
      enabled += Form().Control<QWidget>(controls::ElementName(row, part).c_str())->isEnabled() ? 1 : 0;
    EXPECT_TRUE(enabled == 0 || enabled == 3) << "row " << part;
    return enabled == 3;
  }
  static void ExpectOtherRowsEnabled(bool enabled) {
    EXPECT_TRUE(IsEnabled(1));
    for (int part = 2; part <= kAudioWallParts; ++part) EXPECT_EQ(IsEnabled(part), enabled) << part;
  }

  static void Locate(int part, const std::string& location) {
    gAudioWallParts[static_cast<std::size_t>(part) - 1].Location = location;
  }
  static void LocateAll(const std::string& location) {
    for (int part = 1; part <= kAudioWallParts; ++part) Locate(part, location);
  }
  // Opens the dialog, and has the operator act.
  void Ask(DialogOperator::Step act) {
    operator_.Then(std::move(act));
    AskForCartLocations(caller_);
    caller_.ComeBack();
  }
  // Types over a row, and leaves it.
  static void Fill(int part, const char* text) {
    TabTo(controls::ElementName("txtCartLocations", part));
    Type(text);
  }
  // What OK leads to when so many locations are blank: the wall isn't connected.
  void ExpectBlank(int count, std::function<void()> meanwhile = {}) {
    boxes_.Expect(std::to_string(count) +
                      " locations of the AudioWall have not been set : Please check your configuration.",
                  platform::BoxAnswer::Ok, std::move(meanwhile));
  }
  std::string Ini() const { return ReadWholeFile(home_ / "vdserver.ini"); }

  TempDirectory home_;
  ScopedVariable homeVariable_{"VORDA_HOME", home_.path().c_str()};
  FakeBoxes boxes_;
  FakeFolderPicker picker_;
  CallerForm caller_;
  DialogOperator operator_{Form()};
};

}  // namespace vorda::test
