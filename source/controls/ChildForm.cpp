#include "controls/ChildForm.h"

#include <QMdiSubWindow>

#include <map>

namespace vorda::controls {

// Which child is the active one. The toolkit announces activations too often (after each box) and not at all
// in other cases (a child shown again, a child closed), so what it says is weighed against what is known.
class ActiveChild {
 public:
  static ActiveChild& Instance() {
    static auto& instance = *new ActiveChild;  // outlives every form
    return instance;
  }

  void SetArea(QMdiArea* area) {
    area_ = area;
    active_ = nullptr;
    if (area == nullptr) return;
    // When a child goes, the area activates the next one below, not the next one made.
    area->setActivationOrder(QMdiArea::StackingOrder);
    QObject::connect(area, &QMdiArea::subWindowActivated, area, [this](QMdiSubWindow* window) {
      const auto form = forms_.find(window);
      // A child that is loaded and not shown yet is no active one, whatever the area makes of it.
      if (form == forms_.end() || form->second == active_ || changing_ || window->isHidden()) return;
      active_ = form->second;
      active_->OnActivate();
    });
  }
  QMdiArea* Area() const { return area_; }

  void Add(QMdiSubWindow* window, ChildForm* form) { forms_[window] = form; }

  // Shows the window as the active one; the caller runs OnActivate.
  void Show(QMdiSubWindow* window, ChildForm* form) {
    changing_ = true;
    window->isMinimized() ? window->showNormal() : window->show();
    MakeActive(window, form);
    changing_ = false;
  }

  void Remove(QMdiSubWindow* window) {
    const auto form = forms_.find(window);
    const bool wasActive = form != forms_.end() && form->second == active_;
    changing_ = true;
    forms_.erase(window);
    window->hide();
    if (area_ != nullptr) area_->removeSubWindow(window);
    changing_ = false;
    if (wasActive) ActivateNext();
  }

 private:
  void ActivateNext() {
    active_ = nullptr;
    if (area_ == nullptr) return;
    const QList<QMdiSubWindow*> windows = area_->subWindowList(QMdiArea::StackingOrder);
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
      const auto form = forms_.find(*window);
      if (form == forms_.end() || !(*window)->isVisible()) continue;
      ChildForm* next = form->second;
      // A minimised one stays minimised.
      changing_ = true;
      MakeActive(*window, next);
      changing_ = false;
      next->OnActivate();
      return;
    }
  }

  void MakeActive(QMdiSubWindow* window, ChildForm* form) {
    if (area_ != nullptr) area_->setActiveSubWindow(window);
    active_ = form;
  }

  QPointer<QMdiArea> area_;
  std::map<QMdiSubWindow*, ChildForm*> forms_;
  ChildForm* active_ = nullptr;
  bool changing_ = false;
};

void SetChildArea(QMdiArea* area) {
  ActiveChild::Instance().SetArea(area);
}
QMdiArea* ChildArea() {
  return ActiveChild::Instance().Area();
}

ChildForm::~ChildForm() {
  if (auto* window = qobject_cast<QMdiSubWindow*>(Host())) ActiveChild::Instance().Remove(window);
}

QWidget* ChildForm::MakeHost() {
  auto* window = new QMdiSubWindow;
  // No smallest size but the one that a form keeps by itself.
  window->setMinimumSize(1, 1);
  if (ChildArea() != nullptr) ChildArea()->addSubWindow(window);
  ActiveChild::Instance().Add(window, this);
  return window;
}

QWidget* ChildForm::MakeClient(QWidget* host) {
  auto* client = new QWidget;
  static_cast<QMdiSubWindow*>(host)->setWidget(client);
  return client;
}

void ChildForm::ShowHost(QWidget* host) {
  ActiveChild::Instance().Show(static_cast<QMdiSubWindow*>(host), this);
  // The child's frame may stand behind a window of its own, such as a question that has just been answered.
  if (QWidget* const frame = host->window(); frame != host && frame->isVisible()) frame->activateWindow();
}

void ChildForm::TakeDownHost(QWidget* host) {
  ActiveChild::Instance().Remove(static_cast<QMdiSubWindow*>(host));
}

}  // namespace vorda::controls
