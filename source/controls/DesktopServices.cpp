#include "controls/DesktopServices.h"

#include <QApplication>
#include <QFileDialog>
#include <QGridLayout>
#include <QMessageBox>
#include <QPointer>
#include <QSpacerItem>

#include <memory>
#include <set>
#include <string>

#include "controls/CopyProgress.h"
#include "platform/Clock.h"
#include "platform/Desktop.h"
#include "platform/MessageBox.h"
#include "platform/NativePath.h"
#include "platform/ProgramVersion.h"
#include "platform/StandardError.h"
#include "platform/Text.h"

namespace vorda::controls {

namespace {

using platform::BoxAnswer;
using platform::BoxButtons;
using platform::BoxIcon;
using platform::BoxRequest;

struct BoxButton {
  BoxAnswer answer;
  QMessageBox::StandardButton button;
};

constexpr BoxButton kButtons[] = {
    {BoxAnswer::Ok, QMessageBox::Ok},       {BoxAnswer::Cancel, QMessageBox::Cancel},
    {BoxAnswer::Retry, QMessageBox::Retry}, {BoxAnswer::Yes, QMessageBox::Yes},
    {BoxAnswer::No, QMessageBox::No},
};

QMessageBox::StandardButtons ButtonsOf(BoxButtons buttons) {
  switch (buttons) {
    case BoxButtons::Ok:
      return QMessageBox::Ok;
    case BoxButtons::OkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case BoxButtons::YesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case BoxButtons::YesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case BoxButtons::RetryCancel:
      return QMessageBox::Retry | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

QMessageBox::Icon IconOf(BoxIcon icon) {
  switch (icon) {
    case BoxIcon::None:
      return QMessageBox::NoIcon;
    case BoxIcon::Critical:
      return QMessageBox::Critical;
    case BoxIcon::Question:
      return QMessageBox::Question;
    case BoxIcon::Exclamation:
      return QMessageBox::Warning;
    case BoxIcon::Information:
      return QMessageBox::Information;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButton ButtonOf(BoxAnswer answer) {
  for (const BoxButton& entry : kButtons) {
    if (entry.answer == answer) return entry.button;
  }
  return QMessageBox::NoButton;
}

BoxAnswer AnswerOf(int button, BoxButtons buttons) {
  for (const BoxButton& entry : kButtons) {
    if (entry.button == button) return entry.answer;
  }
  return platform::RefusalOf(buttons);
}

// A box's words for standard error: a title of its own may tell what the text is about.
std::string WordsOf(const BoxRequest& request) {
  return request.title.empty() ? request.text : request.title + ": " + request.text;
}

// The toolkit reckons with fewer and smaller buttons beside the title than most desktops have: a box with few
// words would cut it off.
void MakeRoomForTitle(QMessageBox& box) {
  constexpr int kBesidesTitle = 140;
  auto* const layout = qobject_cast<QGridLayout*>(box.layout());
  if (layout == nullptr) return;
  const int width = box.fontMetrics().horizontalAdvance(box.windowTitle()) + kBesidesTitle;
  layout->addItem(new QSpacerItem(width, 0), layout->rowCount(), 0, 1, layout->columnCount());
}

BoxAnswer ShowBox(const BoxRequest& request) {
  static int open = 0;
  if (open >= kMostBoxes) {
    static std::set<std::string> told;
    // The set is as bounded as the screen was: past it, further texts are dropped.
    if (told.size() < 1000 && told.insert(WordsOf(request)).second)
      platform::WriteToStandardError(WordsOf(request));
    return platform::RefusalOf(request.buttons);
  }
  // A window may go while its box is open and takes the box along, which then counts as refused.
  const QPointer<QMessageBox> window = new QMessageBox(QApplication::activeWindow());
  QMessageBox& box = *window;
  box.setObjectName(QStringLiteral("messageBox"));
  box.setWindowTitle(platform::ToUnicode(request.title.empty() ? platform::kProgramTitle : request.title));
  box.setTextFormat(Qt::PlainText);
  box.setText(platform::ToUnicode(request.text));
  box.setIcon(IconOf(request.icon));
  box.setStandardButtons(ButtonsOf(request.buttons));
  box.setDefaultButton(ButtonOf(request.defaultAnswer));
  box.setEscapeButton(ButtonOf(platform::RefusalOf(request.buttons)));
  MakeRoomForTitle(box);
  ++open;
  const int pressed = box.exec();
  --open;
  delete window.data();
  return AnswerOf(pressed, request.buttons);
}

void TellUnattended(platform::RepeatedTexts& texts, const std::string& text) {
  if (const auto told = texts.Take(text, platform::ReadClock())) platform::WriteToStandardError(*told);
}

// No rather than Cancel where a box has both: a question of the start-up goes on with No and ends the program
// with Cancel.
BoxAnswer AnswerUnattended(BoxButtons buttons) {
  return buttons == BoxButtons::YesNoCancel ? BoxAnswer::No : platform::RefusalOf(buttons);
}

// Everything is answered at once and told on standard error.
void InstallUnattended() {
  const auto texts = std::make_shared<platform::RepeatedTexts>();
  platform::MessageBoxHook().Swap([texts](const BoxRequest& request) {
    TellUnattended(*texts, WordsOf(request));
    return AnswerUnattended(request.buttons);
  });
  platform::FolderPickerHook().Swap([texts](const platform::FolderRequest& request) {
    TellUnattended(*texts, request.title + ": nobody is there to choose, so it counts as cancelled");
    return std::string();
  });
  platform::CopyProgressHook().Swap(WaitForCopy);
}

// A folder whose name the code page can't hold would be lost in the INI file: the operator is told and asked
// again.
std::string ShowFolderPicker(const platform::FolderRequest& request) {
  for (;;) {
    const QString chosen = QFileDialog::getExistingDirectory(
        request.owner != nullptr ? request.owner : QApplication::activeWindow(),
        platform::ToUnicode(request.title),
        QString::fromLocal8Bit(platform::NativePath(request.startFolder).c_str()));
    std::string folder = platform::FromUnicode(chosen);
    if (platform::ToUnicode(folder) == chosen) return folder;
    platform::ShowMessageBox("The name of this folder holds characters that Vorda Server can't store:\n" +
                                 folder + "\nPlease choose another folder.",
                             BoxIcon::Exclamation);
  }
}

void InstallAttended() {
  platform::MessageBoxHook().Swap(ShowBox);
  platform::FolderPickerHook().Swap(ShowFolderPicker);
  platform::CopyProgressHook().Swap(ShowCopyProgress);
}

void ShowPointer(platform::Pointer pointer) {
  // One value and not a stack: whatever was there before goes.
  while (QApplication::overrideCursor() != nullptr) QApplication::restoreOverrideCursor();
  if (pointer == platform::Pointer::Hourglass) QApplication::setOverrideCursor(Qt::WaitCursor);
}

bool operatorIsPresent = true;

}  // namespace

bool OperatorIsPresent() {
  return operatorIsPresent;
}

void InstallDesktop(Operator who) {
  operatorIsPresent = who == Operator::Present;
  who == Operator::Present ? InstallAttended() : InstallUnattended();
  platform::PointerHook().Swap(ShowPointer);
  platform::BeepHook().Swap([] { QApplication::beep(); });
}

}  // namespace vorda::controls
