// What the operator is told of failures.

#include "platform/Desktop.h"
#include "platform/MessageBox.h"
#include "platform/ProgramVersion.h"
#include "platform/RunTimeError.h"
#include "platform/Text.h"
#include "platform/WaveErrors.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

// The buffer that the multimedia system's texts go through, with its terminator.
constexpr std::size_t kErrorTextSize = 128;

}  // namespace

void ReportProblem(std::string_view what, std::int16_t errorNumber) {
  const platform::Pointer pointer = platform::CurrentPointer();
  platform::SetPointer(platform::Pointer::Default);
  std::string text = "There was a problem " + platform::Trim(what);
  if (errorNumber >= 1) {
    text += " and the error's description was reported as : \n\"" + platform::ErrorText(errorNumber) +
            "\" (" + std::to_string(platform::CurrentError()) + ")";
  }
  platform::ShowMessageBox(text, platform::BoxIcon::Information);
  platform::SetPointer(pointer);
}

std::int32_t ReportMultimediaError(std::int32_t code, bool showError, std::string_view context) {
  if (code == 0 || !showError) return code;
  std::string text = platform::WaveErrorText(code).substr(0, kErrorTextSize - 1);
  if (text.empty()) {
    text = "The Windows Multimedia Sub-System has returned with an unknown error, the code was: " +
           std::to_string(code);
  }
  std::string title = platform::kProgramTitle;
  if (!context.empty()) title += " - " + std::string(context);
  platform::ShowMessageBox({text, platform::BoxIcon::Information, platform::BoxButtons::Ok, title});
  return code;
}

}  // namespace vorda
