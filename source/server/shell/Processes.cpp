// Starting other programs.

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include "platform/Desktop.h"
#include "platform/NativePath.h"
#include "shell/GeneralFunctions.h"

namespace vorda {

namespace {

// How long an event loop sleeps before it looks again whether the process has ended.
constexpr int kLookInterval = 20;

void WaitForEnd(const platform::ProcessInformation& process, QEventLoop::ProcessEventsFlags events) {
  QTimer look;
  look.start(kLookInterval);
  while (!platform::ProcessHasEnded(process))
    QCoreApplication::processEvents(events | QEventLoop::WaitForMoreEvents);
  // Input that was left waiting is looked at only when the next comes, or on a call.
  QAbstractEventDispatcher::instance()->wakeUp();
}

}  // namespace

std::int32_t RunProcess(const std::string& program, const std::string& arguments, std::int32_t creationFlags,
                        std::int32_t waitMode, [[maybe_unused]] std::int32_t showWindow,
                        platform::ProcessInformation& information) {
  platform::SetPointer(platform::Pointer::Hourglass);
  platform::ProcessStart start{platform::NativePath(program), platform::SplitArguments(arguments),
                               (creationFlags & kIdlePriorityClass) != 0};
  bool started = platform::StartProcess(start, information);
  if (!started && program.find_first_of(" \"") != std::string::npos) {
    // A program with arguments of its own, or in quotation marks.
    start.arguments = platform::SplitArguments(program + " " + arguments);
    if (!start.arguments.empty()) {
      start.program = platform::NativePath(start.arguments.front());
      start.arguments.erase(start.arguments.begin());
      started = platform::StartProcess(start, information);
    }
  }
  if (started && waitMode == kWaitYielding) WaitForEnd(information, QEventLoop::AllEvents);
  if (started && waitMode == kWaitBlocking) WaitForEnd(information, QEventLoop::ExcludeUserInputEvents);
  platform::SetPointer(platform::Pointer::Default);
  return started ? 1 : 0;
}

}  // namespace vorda
