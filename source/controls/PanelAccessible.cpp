#include "controls/PanelAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "controls/Panels.h"
#include "platform/Text.h"

namespace vorda::controls {
namespace {

// Asks the panel when somebody wants to know: counts change too often to be kept a second time.
class PanelAccessible : public QAccessibleWidget {
 public:
  explicit PanelAccessible(Panel& panel) : QAccessibleWidget(&panel, QAccessible::Border), panel_(panel) {}

  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Description ? platform::ToUnicode(panel_.Caption())
                                            : QAccessibleWidget::text(kind);
  }

 private:
  Panel& panel_;
};

QAccessibleInterface* MakeAccessible(const QString&, QObject* object) {
  auto* const panel = dynamic_cast<Panel*>(object);
  return panel != nullptr ? new PanelAccessible(*panel) : nullptr;
}

}  // namespace

void InstallPanelAccessible() {
  static const bool installed = [] {
    QAccessible::installFactory(MakeAccessible);
    return true;
  }();
  static_cast<void>(installed);
}

void TellCaptionChanged(Panel& panel) {
  if (!QAccessible::isActive()) return;
  QAccessibleEvent event(&panel, QAccessible::DescriptionChanged);
  QAccessible::updateAccessibility(&event);
}

}  // namespace vorda::controls
