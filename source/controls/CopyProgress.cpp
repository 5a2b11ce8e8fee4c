#include "controls/CopyProgress.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

#include "platform/Text.h"

namespace vorda::controls {

namespace {

// A copy that is over by then passes without a window.
constexpr int kShowAfter = 400;    // ms
constexpr int kLookInterval = 50;  // ms
constexpr int kSteps = 1000;       // of the bar
constexpr int kBarWidth = 420;     // pixels

QString HowFar(const platform::FileCopy& copy) {
  const QLocale locale;
  QString done = locale.formattedDataSize(static_cast<qint64>(copy.Done()));
  // The size of what a pipe or a device will give is not known.
  if (copy.Total() == 0) return done;
  return done + QStringLiteral(" of ") + locale.formattedDataSize(static_cast<qint64>(copy.Total()));
}

// Esc and the close box reject a dialog, which cancels here as the button does.
class CopyWindow : public QDialog {
 public:
  CopyWindow(platform::FileCopy& copy, const platform::ShellOperation& operation)
      : QDialog(operation.owner != nullptr ? operation.owner : QApplication::activeWindow()), copy_(copy) {
    setObjectName(QStringLiteral("copyProgress"));
    setWindowTitle(platform::ToUnicode(operation.progressTitle));
    setWindowModality(Qt::ApplicationModal);
    bar_->setRange(0, kSteps);
    bar_->setMinimumWidth(kBarWidth);
    bar_->setAccessibleName(windowTitle());
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(bar_);
    layout->addWidget(label_);
    layout->addWidget(buttons_);
    buttons_->button(QDialogButtonBox::Cancel)->setFocus();
    connect(buttons_, &QDialogButtonBox::rejected, this, [this] { reject(); });
    Look();
  }

  void Look() {
    if (cancelled_) return;
    label_->setText(HowFar(copy_));
    const std::uint64_t total = copy_.Total();
    bar_->setValue(total == 0 ? 0 : static_cast<int>(std::min(copy_.Done(), total) * kSteps / total));
  }

  void reject() override {
    cancelled_ = true;
    copy_.Cancel();
    label_->setText(QStringLiteral("Cancelling..."));
    buttons_->setEnabled(false);
  }

 private:
  platform::FileCopy& copy_;
  bool cancelled_ = false;
  // Owned by the window.
  QProgressBar* bar_ = new QProgressBar(this);
  QLabel* label_ = new QLabel(this);
  QDialogButtonBox* buttons_ = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
};

}  // namespace

void ShowCopyProgress(platform::FileCopy& copy, const platform::ShellOperation& operation) {
  CopyWindow window(copy, operation);
  QElapsedTimer since;
  since.start();
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, &window, [&] {
    if (!window.isVisible() && since.elapsed() >= kShowAfter) window.show();
    window.Look();
  });
  look.start(kLookInterval);
  // What the operator types before the window stands keeps until the copy is over.
  while (!copy.Ended()) {
    const auto events = window.isVisible() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents;
    QCoreApplication::processEvents(events | QEventLoop::WaitForMoreEvents);
  }
}

void WaitForCopy(platform::FileCopy& copy, const platform::ShellOperation&) {
  QTimer look;
  look.start(kLookInterval);
  while (!copy.Ended())
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

}  // namespace vorda::controls
