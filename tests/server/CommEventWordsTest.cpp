#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "feed/CommEventWords.h"

namespace vorda {
namespace {

struct Row {
  std::int16_t value;
  CommEventClass kind;
  const char* words;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.value;
}

class CommEventWordsTest : public ::testing::TestWithParam<Row> {};

TEST_P(CommEventWordsTest, EveryValueHasItsClassAndItsWords) {
  const CommEventWords found = WordsOfCommEvent(GetParam().value);
  EXPECT_EQ(found.kind, GetParam().kind);
  EXPECT_STREQ(found.words, GetParam().words);
}

constexpr Row kRows[] = {
    {2, CommEventClass::Data, ""},
    {1, CommEventClass::Ignored, ""},
    {3, CommEventClass::Event, "Change in CTS Detected"},
    {4, CommEventClass::Event, "Change in DSR Detected"},
    {5, CommEventClass::Event, "Change in CD Detected"},
    {6, CommEventClass::Event, "The Phone is Ringing?"},
    {7, CommEventClass::Event, "End of File Detected"},
    {1001, CommEventClass::Error, "Break Received"},
    {1002, CommEventClass::Error, "CTS Timeout"},
    {1003, CommEventClass::Error, "DSR Timeout"},
    {1004, CommEventClass::Error, "Framing Error"},
    {1006, CommEventClass::Error, "Overrun Error"},
    {1007, CommEventClass::Error, "Carrier Detect Timeout"},
    {1008, CommEventClass::Error, "Receive Buffer Overflow"},
    {1009, CommEventClass::Error, "Parity Error"},
    {1010, CommEventClass::Error, "Transmit Buffer Full"},
    {1011, CommEventClass::Error, "Error retrieving DCB"},
    // Values of no list, the gap in the numbers among them.
    {1005, CommEventClass::Error, "Unknown error or event"},
    {0, CommEventClass::Error, "Unknown error or event"},
    {8, CommEventClass::Error, "Unknown error or event"},
    {1000, CommEventClass::Error, "Unknown error or event"},
    {1012, CommEventClass::Error, "Unknown error or event"},
    {-1, CommEventClass::Error, "Unknown error or event"},
};
INSTANTIATE_TEST_SUITE_P(Values, CommEventWordsTest, ::testing::ValuesIn(kRows));

}  // namespace
}  // namespace vorda
