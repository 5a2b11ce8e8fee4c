#include "controls/Colors.h"

#include <QGuiApplication>
#include <QPalette>

namespace vorda::controls {

namespace {

struct SystemColor {
  std::uint32_t index;
  QPalette::ColorRole role;
};

constexpr SystemColor kSystemColors[] = {
    {5, QPalette::Base},         {8, QPalette::WindowText},
    {13, QPalette::Highlight},   {14, QPalette::HighlightedText},
    {15, QPalette::Button},      {18, QPalette::ButtonText},
    {24, QPalette::ToolTipBase}, {23, QPalette::ToolTipText},
};

}  // namespace

QColor ColorOf(std::int32_t value) {
  const auto bits = static_cast<std::uint32_t>(value);
  constexpr std::uint32_t kSystem = 0x80000000;
  if ((bits & kSystem) == 0)
    return QColor(static_cast<int>(bits & 0xFF), static_cast<int>(bits >> 8 & 0xFF),
                  static_cast<int>(bits >> 16 & 0xFF));
  const QPalette palette = QGuiApplication::palette();
  for (const SystemColor& color : kSystemColors) {
    if (color.index == (bits & 0xFF)) return palette.color(color.role);
  }
  return palette.color(QPalette::Window);
}

}  // namespace vorda::controls
