// The strip at the foot of a feed's window, in each of its states.

#pragma once

#include <QImage>

namespace vorda {

// One picture of them all, one below the other, each under a line that says what happens. Empty where it
// can't be made.
QImage StripStates();

}  // namespace vorda
