#include "controls/FormBuilder.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>

#include "controls/Panels.h"
#include "controls/TerminalView.h"
#include "controls/TextBox.h"
#include "controls/Twips.h"

namespace vorda::controls {

namespace {

QWidget* MakeLabel(const ControlSpec& spec, QWidget* parent) {
  auto* label = new CaptionLabel(parent);
  label->SetCaption(spec.caption);
  return label;
}

QWidget* MakePicture(QWidget* parent) {
  auto* picture = new QLabel(parent);
  picture->setAlignment(Qt::AlignCenter);
  return picture;
}

// Tab goes to the chosen option alone, the arrow keys to the others: the toolkit sees to that only where the
// operator has chosen.
QWidget* MakeOption(const ControlSpec& spec, QWidget* parent) {
  auto* option = new QRadioButton(QString::fromLatin1(spec.caption), parent);
  QObject::connect(option, &QRadioButton::toggled, option, [option](bool chosen) {
    if (!chosen) return;
    for (auto* other : option->parent()->findChildren<QRadioButton*>(QString(), Qt::FindDirectChildrenOnly)) {
      other->setFocusPolicy(other == option ? Qt::StrongFocus : Qt::ClickFocus);
    }
  });
  return option;
}

QWidget* MakePanel(Panel* panel, const ControlSpec& spec) {
  panel->SetCaption(spec.caption);
  return panel;
}

QWidget* MakeControl(const ControlSpec& spec, QWidget* parent) {
  switch (spec.kind) {
    case ControlKind::Label:
      return MakeLabel(spec, parent);
    case ControlKind::Frame:
      return new QGroupBox(QString::fromLatin1(spec.caption), parent);
    case ControlKind::TextBox:
      return new TextBox(parent);
    case ControlKind::TextView:
      return new TerminalView(parent);
    case ControlKind::Panel:
      return MakePanel(new Panel(parent), spec);
    case ControlKind::FloodPanel:
      return MakePanel(new FloodPanel(parent), spec);
    case ControlKind::PictureBox:
      return new QFrame(parent);
    case ControlKind::Picture:
      return MakePicture(parent);
    case ControlKind::Button:
      return new QPushButton(QString::fromLatin1(spec.caption), parent);
    case ControlKind::CheckBox:
      return new QCheckBox(QString::fromLatin1(spec.caption), parent);
    case ControlKind::Option:
      return MakeOption(spec, parent);
  }
  return nullptr;
}

}  // namespace

void BuildForm(QWidget* client, std::span<const ControlSpec> table) {
  QWidget* previous = nullptr;
  for (const ControlSpec& spec : table) {
    auto* parent =
        spec.parent == nullptr ? client : client->findChild<QWidget*>(QString::fromLatin1(spec.parent));
    QWidget* control = MakeControl(spec, parent);
    control->setObjectName(QString::fromLatin1(spec.name));
    const char* spoken = spec.description[0] != '\0' ? spec.description : spec.caption;
    control->setAccessibleName(QString::fromLatin1(spoken).remove(u'&'));
    PlaceControl(control, spec.left, spec.top, spec.width, spec.height);
    if (previous != nullptr && control->focusPolicy() != Qt::NoFocus) QWidget::setTabOrder(previous, control);
    if (control->focusPolicy() != Qt::NoFocus) previous = control;
  }
}

std::string ElementName(const char* row, int element) {
  return row + std::to_string(element);
}

void PlaceControl(QWidget* control, double left, double top, double width, double height) {
  control->setGeometry(PixelsFromTwips(left), PixelsFromTwips(top), PixelsFromTwips(width),
                       PixelsFromTwips(height));
}

}  // namespace vorda::controls
