// The server, with a look at the ticks of its feeds' own 50 ms timers: each goes as one line, "TIMER
// NANOSECONDS", to the file that VORDA_BENCH_TICKS names, when the timer's event is delivered. The timers
// themselves are left alone.

#include <QApplication>
#include <QEvent>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "Moments.h"
#include "controls/DesktopServices.h"
#include "platform/Settings.h"
#include "shell/ServerState.h"
#include "shell/frmVordaServer.h"

namespace {

constexpr int kInterval = 50;  // milliseconds

class TickWriter : public QObject {
 public:
  explicit TickWriter(const char* path) : file_(std::fopen(path, "w")) {
    if (file_ != nullptr) std::setvbuf(file_, nullptr, _IOLBF, BUFSIZ);
  }
  ~TickWriter() override {
    if (file_ != nullptr) std::fclose(file_);
  }
  TickWriter(const TickWriter&) = delete;
  TickWriter& operator=(const TickWriter&) = delete;

  bool Opened() const { return file_ != nullptr; }

  bool eventFilter(QObject* receiver, QEvent* event) override {
    if (event->type() == QEvent::Timer) {
      const auto* timer = qobject_cast<QTimer*>(receiver);
      if (timer != nullptr && timer->interval() == kInterval) Write(timer);
    }
    return false;
  }

 private:
  void Write(const QTimer* timer) {
    const int number = numbers_.try_emplace(timer, static_cast<int>(numbers_.size()) + 1).first->second;
    std::fprintf(file_, "%d %lld\n", number, static_cast<long long>(vorda::bench::Now()));
  }

  std::FILE* const file_;
  std::map<const QTimer*, int> numbers_;
};

}  // namespace

int main(int argc, char** argv) {
  const char* path = std::getenv("VORDA_BENCH_TICKS");
  if (path == nullptr) return 2;
  vorda::TakeCommandLine(0, nullptr);
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  TickWriter ticks(path);
  if (!ticks.Opened()) return 1;
  application.installEventFilter(&ticks);
  vorda::controls::InstallDesktop(vorda::controls::Operator::Absent);
  vorda::platform::LoadPlatformSettings();
  QTimer::singleShot(0, &application, [] { vorda::frmVordaServer::Default().Load(); });
  return QApplication::exec();
}
