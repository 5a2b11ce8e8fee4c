// How often the event loop wakes up, for tests that nothing spins.

#pragma once

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QTimer>

namespace vorda::test {

// Runs events for a fifth of a second and answers how often they came. Where nothing happens that is a
// handful; a descriptor that is ready and that nobody serves makes it tens of thousands.
inline int WakeUps() {
  int count = 0;
  QEventLoop loop;
  QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, &loop,
                   [&count] { ++count; });
  QTimer::singleShot(200, &loop, [&loop] { loop.quit(); });
  loop.exec();
  return count;
}
inline constexpr int kQuiet = 100;

}  // namespace vorda::test
