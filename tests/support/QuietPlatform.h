// Keeps the offscreen platform from telling on standard error what it can't do, for tests that read that.

#pragma once

#include <QString>
#include <QtGlobal>

namespace vorda::test {

class QuietPlatform {
 public:
  QuietPlatform() { Previous() = qInstallMessageHandler(Tell); }
  ~QuietPlatform() { qInstallMessageHandler(Previous()); }
  QuietPlatform(const QuietPlatform&) = delete;
  QuietPlatform& operator=(const QuietPlatform&) = delete;

 private:
  static QtMessageHandler& Previous() {
    static QtMessageHandler previous = nullptr;
    return previous;
  }
  static void Tell(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (!message.startsWith(QStringLiteral("This plugin does not support")))
      Previous()(type, context, message);
  }
};

}  // namespace vorda::test
