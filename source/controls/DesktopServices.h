// The desktop behind the platform's boxes, pickers, pointer and beep.

#pragma once

namespace vorda::controls {

// At most this many message boxes are open at once. A further one is not shown: it counts as refused and its
// text goes to standard error, once. A fault that raises a box twenty times a second must not end a server
// that nobody watches.
inline constexpr int kMostBoxes = 32;

// Whether an operator answers.
enum class Operator {
  Present,  // boxes wait for an answer
  Absent,   // no display: each box goes to standard error and is answered at once: OK, Cancel where Retry is
            // offered, No; pickers are cancelled. The same text is told once a minute at most
};

// Installs the desktop's boxes, folder picker, copy progress, pointer and beep. Needs the application object.
void InstallDesktop(Operator who);

// Whether windows that wait for an answer get one.
bool OperatorIsPresent();

}  // namespace vorda::controls
