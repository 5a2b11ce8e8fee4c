// Builds a form's controls from a table.

#pragma once

#include <QWidget>

#include <span>
#include <string>

namespace vorda::controls {

enum class ControlKind {
  Label,       // CaptionLabel
  Frame,       // QGroupBox
  TextBox,     // TextBox
  TextView,    // TerminalView
  Panel,       // Panel
  FloodPanel,  // FloodPanel
  PictureBox,  // QFrame without a look of its own
  Picture,     // QLabel for an image
  Button,      // QPushButton
  CheckBox,    // QCheckBox
  Option,      // QRadioButton; of those with one parent one is chosen
};

struct ControlSpec {
  const char* name;  // becomes the objectName
  ControlKind kind;
  const char* caption;
  // Place in the parent, in twips.
  double left, top, width, height;
  const char* parent = nullptr;  // name of a control that stands earlier in the table; null = the form
  const char* description = "";  // what a screen reader says where the caption doesn't
};

// Makes the controls in the table's order, which is also the order of Tab. Owned by `client`.
void BuildForm(QWidget* client, std::span<const ControlSpec> table);

// The name of an element of a row of like controls: "txtCartLocations3".
std::string ElementName(const char* row, int element);

// Moves a control; twips.
void PlaceControl(QWidget* control, double left, double top, double width, double height);

}  // namespace vorda::controls
