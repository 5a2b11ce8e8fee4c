#include "controls/Form.h"

#include <QEvent>
#include <QKeyEvent>
#include <QWindow>

#include "controls/Twips.h"
#include "platform/ReentrantTimer.h"
#include "platform/Text.h"

namespace vorda::controls {

Form::Form(const char* name) : name_(name) {}

Form::~Form() {
  delete host_.data();
}

void Form::Load() {
  if (Loaded()) return;
  host_ = MakeHost();
  client_ = MakeClient(host_);
  host_->setObjectName(QString::fromLatin1(name_));
  BuildControls(client_);
  host_->installEventFilter(this);
  if (client_ != host_) client_->installEventFilter(this);
  OnLoad();
}

void Form::Unload() {
  // OnUnload may wait behind a box, where the operator could ask for the same once more.
  if (!Loaded() || unloading_) return;
  unloading_ = true;
  OnUnload();
  unloading_ = false;
  QWidget* host = host_;
  host->removeEventFilter(this);
  client_->removeEventFilter(this);
  for (auto* timer : host->findChildren<QObject*>()) {
    if (auto* formTimer = dynamic_cast<platform::ReentrantTimer*>(timer)) formTimer->SetEnabled(false);
  }
  host_ = nullptr;
  client_ = nullptr;
  tag_.clear();
  TakeDownHost(host);
  host->deleteLater();
}

void Form::TakeDownHost(QWidget* host) {
  host->hide();
}

bool Form::Close(CloseCause cause) {
  if (Loaded() && !OnQueryUnload(cause)) return false;
  Unload();
  return true;
}

void Form::Show() {
  Load();
  ShowHost(host_);
  if (Loaded()) OnActivate();
}

void Form::Hide() {
  if (Loaded()) host_->hide();
}

void Form::SetOwner(const Form& owner) {
  if (!owner.Loaded()) return;
  Load();
  host_->winId();  // makes the system's window, which alone can belong to another
  host_->windowHandle()->setTransientParent(owner.host_->window()->windowHandle());
  // The window system asks who belongs to whom when a window comes up, and only then: raising it loses
  // against a window that is just coming up.
  if (!host_->isVisible()) return;
  host_->hide();
  host_->show();
}

bool Form::Visible() const {
  return Loaded() && host_->isVisible();
}

void Form::TakeKeyboard() const {
  if (Visible()) host_->window()->activateWindow();
}

const std::string& Form::Tag() {
  Load();
  return tag_;
}

void Form::SetTag(std::string_view tag) {
  Load();
  tag_ = tag;
}

std::string Form::Text() {
  Load();
  return platform::FromUnicode(host_->windowTitle());
}

void Form::SetText(std::string_view text) {
  Load();
  host_->setWindowTitle(platform::ToUnicode(text));
}

double Form::Left() {
  Load();
  return TwipsFromPixels(host_->pos().x());
}

double Form::Top() {
  Load();
  return TwipsFromPixels(host_->pos().y());
}

double Form::Width() {
  Load();
  return TwipsFromPixels(host_->width());
}

double Form::Height() {
  Load();
  return TwipsFromPixels(host_->height());
}

void Form::Move(double left, double top, double width, double height) {
  Load();
  host_->setGeometry(PixelsFromTwips(left), PixelsFromTwips(top), PixelsFromTwips(width),
                     PixelsFromTwips(height));
}

void Form::SetLeft(double left) {
  Load();
  host_->move(PixelsFromTwips(left), host_->pos().y());
}

void Form::SetWidth(double width) {
  Load();
  host_->resize(PixelsFromTwips(width), host_->height());
}

double Form::ClientWidth() {
  Load();
  return TwipsFromPixels(client_->width());
}

double Form::ClientHeight() {
  Load();
  return TwipsFromPixels(client_->height());
}

bool Form::Minimized() const {
  return Loaded() && host_->isMinimized();
}

QWidget* Form::MakeHost() {
  auto* window = new QWidget;
  window->setAttribute(Qt::WA_QuitOnClose, false);
  return window;
}

void Form::ShowHost(QWidget* host) {
  host->show();
  host->raise();
  host->activateWindow();
}

bool Form::eventFilter(QObject* watched, QEvent* event) {
  if (!Loaded()) return false;
  if (watched == host_ && event->type() == QEvent::Close) {
    // The window goes the form's way: what the toolkit would do with it by itself is held back.
    event->ignore();
    Close(CloseCause::FormControlMenu);
    return true;
  }
  if (watched == client_ && event->type() == QEvent::Resize) OnResize();
  if (watched == host_ && event->type() == QEvent::WindowDeactivate) OnDeactivate();
  if (watched != host_ || event->type() != QEvent::KeyPress) return false;
  const auto* const press = static_cast<QKeyEvent*>(event);
  constexpr Qt::KeyboardModifiers kCommands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
  return (press->modifiers() & kCommands) == 0 && OnKeyPress(press->key());
}

}  // namespace vorda::controls
