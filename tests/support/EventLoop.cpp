#include "support/EventLoop.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

namespace vorda::test {

bool WaitUntil(const std::function<bool()>& condition, int milliseconds) {
  QElapsedTimer elapsed;
  elapsed.start();
  // Keeps the loop turning, so that a condition that no event announces is seen as well.
  QTimer turning;
  turning.start(1);
  while (!condition()) {
    if (elapsed.hasExpired(milliseconds)) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

void RunPendingEvents() {
  QCoreApplication::processEvents();
}

}  // namespace vorda::test
