// A window's life.
//
// A Form is the lasting object that others hold; its controls come and go. Load builds them in a host (the
// frame's own window, a child window of the frame, a window of its own), Unload takes them down and the Tag
// with them, while the form's own fields live on. Reading or setting a property loads the form first. Show
// activates. A closing by the operator is asked about and may be refused.

#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <string>
#include <string_view>

namespace vorda::controls {

// Why a form is to close.
enum class CloseCause { FormControlMenu, Code };

class Form : public QObject {
 public:
  // `name` becomes the window's objectName.
  explicit Form(const char* name);
  ~Form() override;

  bool Loaded() const { return host_ != nullptr; }
  // Builds the controls and runs OnLoad; nothing when loaded already.
  void Load();
  // Runs OnUnload and takes the controls down; they are deleted by the event loop, so that a form may unload
  // itself inside a handler of one of its controls. Nothing when not loaded.
  void Unload();
  // Asks OnQueryUnload first. False when refused.
  bool Close(CloseCause cause);

  // Brings the form up, loading it if need be, and activates it.
  virtual void Show();
  void Hide();
  bool Visible() const;
  // Asks for the keyboard, if the form is up.
  void TakeKeyboard() const;
  // Has this window stand above another form's, from now on if it is up, and be reachable while that one is
  // modal.
  void SetOwner(const Form& owner);

  // A text of the form's users; empty on a form that has just been loaded.
  const std::string& Tag();
  void SetTag(std::string_view tag);
  // The title.
  std::string Text();
  void SetText(std::string_view text);

  // Outer place in twips.
  double Left();
  double Top();
  double Width();
  double Height();
  void Move(double left, double top, double width, double height);
  void SetLeft(double left);
  void SetWidth(double width);
  // The inner size in twips.
  double ClientWidth();
  double ClientHeight();
  bool Minimized() const;

  // A control by its name; null when the form has none of that name and kind. Loads the form.
  template <class Widget>
  Widget* Control(const char* name) {
    Load();
    return dynamic_cast<Widget*>(client_->findChild<QWidget*>(QString::fromLatin1(name)));
  }

 protected:
  // Makes the window that holds the form. Default: a top-level window.
  virtual QWidget* MakeHost();
  // Makes the client area in the host. Default: the host itself.
  virtual QWidget* MakeClient(QWidget* host) { return host; }
  // Brings the host up; `host` is loaded.
  virtual void ShowHost(QWidget* host);
  // Takes the host off the screen; it is deleted afterwards. The form counts as not loaded by now.
  virtual void TakeDownHost(QWidget* host);

  virtual void BuildControls(QWidget* client) = 0;
  virtual void OnLoad() {}
  virtual void OnActivate() {}
  virtual void OnDeactivate() {}
  // A key that no control has taken, without Ctrl or Alt. True when the form takes it.
  virtual bool OnKeyPress(int) { return false; }
  virtual void OnResize() {}
  // False refuses the closing.
  virtual bool OnQueryUnload(CloseCause) { return true; }
  virtual void OnUnload() {}

  QWidget* Host() const { return host_; }
  QWidget* Client() const { return client_; }

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  const char* name_;
  QPointer<QWidget> host_;
  QPointer<QWidget> client_;
  std::string tag_;
  bool unloading_ = false;
};

}  // namespace vorda::controls
