#include "shell/frmHistory.h"

#include <array>

#include "controls/FormBuilder.h"
#include "controls/Panels.h"
#include "controls/Twips.h"
#include "platform/WaveDevices.h"
#include "shell/EventHistory.h"
#include "shell/frmVordaServer.h"

namespace vorda {

namespace {

using controls::ControlKind;
using controls::ControlSpec;

constexpr double kLineHeight = 255;
constexpr double kMargin = 60;
constexpr double kDesignWidth = 6000;
constexpr double kDesignHeight = 2250;

constexpr std::array<const char*, kHistorySize> kLineNames = {
    "lblEventhist0", "lblEventhist1", "lblEventhist2", "lblEventhist3", "lblEventhist4", "lblEventhist5"};

}  // namespace

frmHistory& frmHistory::Default() {
  static auto& form = *new frmHistory;  // never destroyed: it would outlive the toolkit
  return form;
}

void frmHistory::BuildControls(QWidget* client) {
  const ControlSpec background[] = {{"Picture1", ControlKind::PictureBox, "", kMargin, kMargin,
                                     kDesignWidth - 2 * kMargin, kHistorySize * kLineHeight + 2 * kMargin,
                                     nullptr, "Event history"}};
  controls::BuildForm(client, background);
  for (std::size_t i = 0; i < kLineNames.size(); ++i) {
    const ControlSpec line[] = {{kLineNames[i], ControlKind::Label, "", kMargin,
                                 kMargin + static_cast<double>(i) * kLineHeight, kDesignWidth - 4 * kMargin,
                                 kLineHeight, "Picture1"}};
    controls::BuildForm(client, line);
  }
  SetText("History:");
}

void frmHistory::OnLoad() {
  Move(Left(), Top(), kDesignWidth, kDesignHeight);
  HistoryChangedHook().Swap([this] { ShowLines(); });
  platform::WaveInTroubleHook().Swap(AddHistoryEvent);
  ShowLines();
}

void frmHistory::OnUnload() {
  HistoryChangedHook().Swap([] {});
  platform::WaveInTroubleHook().Swap([](const std::string&) {});
}

void frmHistory::OnResize() {
  if (frmVordaServer::Default().Minimized()) return;
  auto* picture = Control<QWidget>("Picture1");
  picture->resize(Client()->width() - 2 * picture->x(), picture->height());
  for (const char* name : kLineNames) {
    auto* line = Control<QWidget>(name);
    line->resize(picture->width() - 2 * line->x(), line->height());
  }
}

// The operator can't close it; the program's end can.
bool frmHistory::OnQueryUnload(controls::CloseCause cause) {
  return cause != controls::CloseCause::FormControlMenu;
}

void frmHistory::ShowLines() {
  for (std::size_t i = 0; i < kLineNames.size(); ++i) {
    Control<controls::CaptionLabel>(kLineNames[i])->SetCaption(gHistoryLines[i]);
  }
}

}  // namespace vorda
