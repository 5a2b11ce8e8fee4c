#include "carts/frmCartLocations.h"

#include <QCheckBox>
#include <QPushButton>

#include "carts/Orvane_Audio_Routines.h"
#include "controls/FormBuilder.h"
#include "controls/TextBox.h"
#include "platform/Desktop.h"
#include "platform/ProfileFile.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

using controls::ControlKind;
using controls::ControlSpec;
using controls::ElementName;
using controls::TextBox;

constexpr double kMargin = 180;
constexpr double kWidth = 9600;
constexpr double kRowHeight = 420;
constexpr double kFirstRow = 690;
constexpr double kControlHeight = 360;
constexpr double kLabelWidth = 2040;
constexpr double kButtonWidth = 1140;
constexpr double kTextLeft = kMargin + kLabelWidth;
constexpr double kTextWidth = kWidth - kTextLeft - kButtonWidth - 2 * kMargin;
constexpr double kOkTop = kFirstRow + kAudioWallParts * kRowHeight + 120;
constexpr double kHeight = kOkTop + 630;

// Those of the last two name carts that the wall doesn't have.
constexpr const char* kRowCaptions[kAudioWallParts] = {
    "Carts 1 to 1000:",    "Carts 1001 to 2000:",  "Carts 2001 to 3000:", "Carts 3001 to 4000:",
    "Carts 4001 to 5000:", "Carts 5001 to 6000:",  "Carts 6001 to 7000:", "Carts 7001 to 8000:",
    "Carts 8001 to 9000:", "Carts 9001 to 10000:", "Carts 10001 to..."};

std::string TrimmedCapitals(const std::string& text) {
  return platform::UpperCase(platform::Trim(text));
}

// One separator at the end goes: "\" always, "/" where the text is a path with that kind.
std::string WithoutSeparator(std::string location) {
  if (location.ends_with('\\') || (location.starts_with('/') && location.ends_with('/'))) location.pop_back();
  return location;
}

}  // namespace

frmCartLocations::frmCartLocations() : DialogForm("frmCartLocations", kWidth, kHeight) {}

frmCartLocations& frmCartLocations::Default() {
  static auto& form = *new frmCartLocations;  // never destroyed: it would outlive the toolkit
  return form;
}

void frmCartLocations::BuildControls(QWidget* client) {
  SetText("Orvane Cart Locations:");
  const ControlSpec oneDirectory[] = {{"chkUseOneCartLocation", ControlKind::CheckBox,
                                       "Use one directory for all the carts on the Audiowall", kMargin, 180,
                                       kWidth - 2 * kMargin, kControlHeight}};
  controls::BuildForm(client, oneDirectory);
  for (int part = 1; part <= kAudioWallParts; ++part) BuildRow(client, part);
  const ControlSpec ok[] = {
      {"cmdDone", ControlKind::Button, "OK", kWidth - kButtonWidth - kMargin, kOkTop, kButtonWidth, 450}};
  controls::BuildForm(client, ok);
  auto* const box = Control<QCheckBox>("chkUseOneCartLocation");
  QObject::connect(box, &QCheckBox::toggled, client, [this] { OneDirectoryClicked(); });
  auto* const first = Control<TextBox>("txtCartLocations1");
  QObject::connect(first, &QLineEdit::textChanged, client, [this] { FirstRowChanged(); });
  auto* const done = Control<QPushButton>("cmdDone");
  done->setDefault(true);
  QObject::connect(done, &QPushButton::clicked, client, [this] { OnAccept(); });
}

void frmCartLocations::BuildRow(QWidget* client, int part) {
  const std::string label = ElementName("Label2", part);
  const std::string text = ElementName("txtCartLocations", part);
  const std::string button = ElementName("cmdChangeCartLocation", part);
  const char* const caption = kRowCaptions[part - 1];
  const std::string browse = std::string("Browse for ") + caption;
  const double top = kFirstRow + (part - 1) * kRowHeight;
  const ControlSpec row[] = {
      {label.c_str(), ControlKind::Label, caption, kMargin, top, kLabelWidth, kControlHeight},
      {text.c_str(), ControlKind::TextBox, "", kTextLeft, top, kTextWidth, kControlHeight, nullptr, caption},
      {button.c_str(), ControlKind::Button, "Browse", kTextLeft + kTextWidth + kMargin, top, kButtonWidth,
       kControlHeight, nullptr, browse.c_str()},
  };
  controls::BuildForm(client, row);
  Control<TextBox>(text.c_str())->SetSelectsOnFocus(true);
  QObject::connect(Control<QPushButton>(button.c_str()), &QPushButton::clicked, client,
                   [this, part] { Browse(part); });
}

void frmCartLocations::OnLoad() {
  bool equal = true;
  for (int part = 1; part <= kAudioWallParts; ++part) {
    SetRow(part, TrimmedCapitals(gAudioWallParts[static_cast<std::size_t>(part) - 1].Location));
    equal = equal && Row(part) == Row(1);
  }
  if (equal) Control<QCheckBox>("chkUseOneCartLocation")->setChecked(true);
  SetTag("LOADED");
  platform::SetPointer(platform::Pointer::Default);
}

// A dialog that comes up again would start where the toolkit has left the focus, on the control behind the
// last one.
void frmCartLocations::OnActivate() {
  Control<TextBox>("txtCartLocations1")->setFocus();
}

std::string frmCartLocations::Row(int part) {
  return Control<TextBox>(ElementName("txtCartLocations", part).c_str())->Text();
}

void frmCartLocations::SetRow(int part, const std::string& location) {
  Control<TextBox>(ElementName("txtCartLocations", part).c_str())->SetText(location);
}

bool frmCartLocations::OneDirectoryForAll() {
  return Control<QCheckBox>("chkUseOneCartLocation")->isChecked();
}

void frmCartLocations::OneDirectoryClicked() {
  const bool one = OneDirectoryForAll();
  for (int part = 2; part <= kAudioWallParts; ++part) {
    if (one) SetRow(part, Row(1));
    for (const char* row : {"Label2", "txtCartLocations", "cmdChangeCartLocation"}) {
      Control<QWidget>(ElementName(row, part).c_str())->setEnabled(!one);
    }
  }
}

void frmCartLocations::FirstRowChanged() {
  if (!OneDirectoryForAll()) return;
  for (int part = 2; part <= kAudioWallParts; ++part) SetRow(part, Row(1));
}

void frmCartLocations::Browse(int part) {
  const std::string folder =
      BrowseForFolder(Host(), "Select the directory that the audio is stored in", Row(part));
  // The dialog may have gone while the picker was open.
  if (!folder.empty() && Loaded()) SetRow(part, TrimmedCapitals(folder));
}

void frmCartLocations::StoreRows() {
  for (int part = 1; part <= kAudioWallParts; ++part) {
    const std::string location = WithoutSeparator(TrimmedCapitals(Row(part)));
    SetRow(part, location);
    gAudioWallParts[static_cast<std::size_t>(part) - 1].Location = TrimmedCapitals(location);
  }
}

// A second separator at the end goes here, and stays in the table. A write that fails goes unnoticed.
void frmCartLocations::WriteRows() const {
  for (int part = 1; part <= kAudioWallParts; ++part) {
    const AudioWallPart& wall = gAudioWallParts[static_cast<std::size_t>(part) - 1];
    platform::WriteProfileString("FileLocations", ElementName("Carts", part), WithoutSeparator(wall.Location),
                                 IniFileName);
  }
}

void frmCartLocations::OnAccept() {
  StoreRows();
  WriteRows();
  ConnectAudioWall(0, false);
  Leave({});
}

void AskForCartLocations(const controls::Form& frame) {
  frmCartLocations::Default().IniFileName = kLocationsIniFile;
  frmCartLocations::Default().ShowModal(frame);
}

}  // namespace vorda
