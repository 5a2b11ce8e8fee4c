#include "feed/CommEventWords.h"

#include "platform/SerialControl.h"

namespace vorda {

namespace {

struct Entry {
  std::int16_t value;
  CommEventWords words;
};

constexpr Entry kEntries[] = {
    {platform::comEvReceive, {CommEventClass::Data, ""}},
    {platform::comEvSend, {CommEventClass::Ignored, ""}},
    {platform::comEvCTS, {CommEventClass::Event, "Change in CTS Detected"}},
    {platform::comEvDSR, {CommEventClass::Event, "Change in DSR Detected"}},
    {platform::comEvCD, {CommEventClass::Event, "Change in CD Detected"}},
    {platform::comEvRing, {CommEventClass::Event, "The Phone is Ringing?"}},
    {platform::comEvEOF, {CommEventClass::Event, "End of File Detected"}},
    {platform::comEventBreak, {CommEventClass::Error, "Break Received"}},
    {platform::comEventCTSTO, {CommEventClass::Error, "CTS Timeout"}},
    {platform::comEventDSRTO, {CommEventClass::Error, "DSR Timeout"}},
    {platform::comEventFrame, {CommEventClass::Error, "Framing Error"}},
    {platform::comEventOverrun, {CommEventClass::Error, "Overrun Error"}},
    {platform::comEventCDTO, {CommEventClass::Error, "Carrier Detect Timeout"}},
    {platform::comEventRxOver, {CommEventClass::Error, "Receive Buffer Overflow"}},
    {platform::comEventRxParity, {CommEventClass::Error, "Parity Error"}},
    {platform::comEventTxFull, {CommEventClass::Error, "Transmit Buffer Full"}},
    {platform::comEventDCB, {CommEventClass::Error, "Error retrieving DCB"}},
};

}  // namespace

CommEventWords WordsOfCommEvent(std::int16_t commEvent) {
  for (const Entry& entry : kEntries) {
    if (entry.value == commEvent) return entry.words;
  }
  return {CommEventClass::Error, "Unknown error or event"};
}

}  // namespace vorda
