#include "shell/frmGoodInputBox.h"

#include <QCoreApplication>
#include <QPushButton>

#include "controls/FormBuilder.h"
#include "controls/Panels.h"
#include "controls/TextBox.h"
#include "controls/Twips.h"
#include "platform/Desktop.h"
#include "platform/NumericValue.h"
#include "platform/Text.h"

namespace vorda {

namespace {

using controls::CaptionLabel;
using controls::ControlKind;
using controls::ControlSpec;
using controls::TextBox;

constexpr double kWidth = 6600;
constexpr double kHeight = 1950;

constexpr ControlSpec kControls[] = {
    {"Label1", ControlKind::Label, "", 180, 120, kWidth - 360, 600},
    {"Text1", ControlKind::TextBox, "", 180, 780, kWidth - 360, 390, nullptr, "Answer"},
    {"Command2", ControlKind::Button, "OK", kWidth - 2880, 1320, 1260, 450},
    {"Command1", ControlKind::Button, "Cancel", kWidth - 1440, 1320, 1260, 450},
    // Not seen: they hold how the box was answered and how long an answer may be.
    {"CancelL", ControlKind::Label, "1", 0, 0, 300, 300},
    {"TLength", ControlKind::Label, "", 0, 0, 300, 300},
};

}  // namespace

frmGoodInputBox& frmGoodInputBox::Default() {
  static auto& form = *new frmGoodInputBox;  // never destroyed: it would outlive the toolkit
  return form;
}

QWidget* frmGoodInputBox::MakeHost() {
  auto* window = new QWidget(nullptr, Qt::Dialog | Qt::WindowStaysOnTopHint);
  window->setAttribute(Qt::WA_QuitOnClose, false);
  window->setFixedSize(controls::PixelsFromTwips(kWidth), controls::PixelsFromTwips(kHeight));
  return window;
}

void frmGoodInputBox::BuildControls(QWidget* client) {
  controls::BuildForm(client, kControls);
  for (const char* name : {"CancelL", "TLength"}) Control<CaptionLabel>(name)->hide();
  auto* question = Control<CaptionLabel>("Label1");
  question->setWordWrap(true);
  question->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  auto* text = Control<TextBox>("Text1");
  text->SetSelectsOnFocus(true);
  auto* length = Control<CaptionLabel>("TLength");
  length->Change = [text, length] {
    text->SetLimit(static_cast<int>(platform::NumericValue(length->Caption())));
  };
  QObject::connect(Control<QPushButton>("Command2"), &QPushButton::clicked, client,
                   [this] { Answer(false); });
  QObject::connect(Control<QPushButton>("Command1"), &QPushButton::clicked, client, [this] { Answer(true); });
}

void frmGoodInputBox::Ask(const std::string& prompt, const std::string& title, const std::string& defaultText,
                          std::int32_t maxLength) {
  SetText(platform::Trim(title));
  Control<CaptionLabel>("Label1")->SetCaption(platform::Trim(prompt));
  Control<TextBox>("Text1")->SetText(defaultText);
  Control<CaptionLabel>("TLength")->SetCaption(std::to_string(maxLength));
}

void frmGoodInputBox::Answer(bool cancelled) {
  Control<CaptionLabel>("CancelL")->SetCaption(cancelled ? "1" : "0");
  SetTag(cancelled ? std::string() : Control<TextBox>("Text1")->Text());
  Hide();
}

bool frmGoodInputBox::Cancelled() {
  return platform::NumericValue(Control<CaptionLabel>("CancelL")->Caption()) > 0;
}

void frmGoodInputBox::OnActivate() {
  auto* text = Control<TextBox>("Text1");
  text->SetLimit(static_cast<int>(platform::NumericValue(Control<CaptionLabel>("TLength")->Caption())));
  platform::SetPointer(platform::Pointer::Default);
  text->setFocus();
  text->selectAll();
}

void frmGoodInputBox::OnDeactivate() {
  platform::SetPointer(platform::Pointer::Default);
}

bool frmGoodInputBox::OnKeyPress(int key) {
  if (key != Qt::Key_Return && key != Qt::Key_Enter && key != Qt::Key_Escape) return false;
  // On a button Enter presses that button.
  if (key != Qt::Key_Escape && Control<QPushButton>("Command1")->hasFocus()) key = Qt::Key_Escape;
  Answer(key == Qt::Key_Escape);
  return true;
}

std::int32_t GoodInputBox(const std::string& prompt, const std::string& title, const std::string& defaultText,
                          std::int32_t maxLength, std::string& result, controls::Form& callerForm) {
  frmGoodInputBox& box = frmGoodInputBox::Default();
  box.SetOwner(callerForm);
  box.Ask(prompt, title, defaultText, maxLength);
  box.Show();
  while (box.Visible()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  const bool cancelled = box.Cancelled();
  result = cancelled ? std::string() : box.Tag();
  callerForm.Show();
  return cancelled ? -1 : 0;
}

}  // namespace vorda
