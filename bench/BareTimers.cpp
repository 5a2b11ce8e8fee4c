// Nothing but the timers of four idle feeds: 2000, 1000 and 50 ms each. The baseline for the idle server.

#include <QCoreApplication>
#include <QTimer>

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  for (int feed = 0; feed < 4; ++feed) {
    for (const int interval : {2000, 1000, 50}) {
      auto* timer = new QTimer(&application);
      QObject::connect(timer, &QTimer::timeout, timer, [] {});
      timer->start(interval);
    }
  }
  return QCoreApplication::exec();
}
