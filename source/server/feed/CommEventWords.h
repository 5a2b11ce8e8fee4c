// What the operator reads of a serial port's events.

#pragma once

#include <cstdint>

namespace vorda {

enum class CommEventClass { Data, Ignored, Event, Error };

struct CommEventWords {
  CommEventClass kind;
  const char* words;
};

// The class and the words of a value of CommEvent. A value that is in no list is an error.
CommEventWords WordsOfCommEvent(std::int16_t commEvent);

}  // namespace vorda
