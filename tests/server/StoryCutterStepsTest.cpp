// The cutter against its table of states, carried out one character at a time.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/StoryFixture.h"

namespace vorda {
namespace {

// What is open and what was handed on, by the table alone.
class CutterByTheTable {
 public:
  void Take(std::string_view data, int startChar, int endChar) {
    for (const char c : data) {
      const int code = static_cast<unsigned char>(c);
      if (code == endChar) {
        HandOn();
      } else if (code == startChar) {
        HandOn();
        open_ = true;
      } else {
        open_ = true;
        text_ += c;
      }
    }
  }
  const std::vector<std::string>& handed() const { return handed_; }
  bool open() const { return open_; }
  const std::string& text() const { return text_; }

 private:
  void HandOn() {
    if (open_) handed_.push_back(text_);
    open_ = false;
    text_.clear();
  }

  bool open_ = false;
  std::string text_;
  std::vector<std::string> handed_;
};

struct Codes {
  const char* name;
  std::int16_t startChar;
  std::int16_t endChar;
};
void PrintTo(const Codes& codes, std::ostream* out) {
  *out << codes.startChar << " and " << codes.endChar;
}

class StoryCutterStepsTest : public test::StoryFixture, public ::testing::WithParamInterface<Codes> {};

TEST_P(StoryCutterStepsTest, RandomArrivalsAreCutByTheTable) {
  feed().StartChar = GetParam().startChar;
  feed().EndChar = GetParam().endChar;
  std::mt19937 random(7);
  const std::string alphabet("ab\x01\x04\r\n\0\x7F\x80\xFF", 10);
  CutterByTheTable byTheTable;
  for (int i = 0; i < 300; ++i) {
    std::string arrival(random() % 24, '\0');
    for (char& c : arrival) c = alphabet[random() % alphabet.size()];
    Take(arrival);
    byTheTable.Take(arrival, feed().StartChar, feed().EndChar);
    ASSERT_EQ(Handed(), byTheTable.handed()) << "arrival " << i;
    ASSERT_EQ(feed().StoryFileHandle > 0, byTheTable.open()) << "arrival " << i;
    if (byTheTable.open()) {
      ASSERT_EQ(OpenText(), byTheTable.text()) << "arrival " << i;
    }
  }
  EXPECT_EQ(announced_.size(), byTheTable.handed().size());
}

constexpr Codes kCodes[] = {
    {"Usual", 1, 4},   {"Exchanged", 4, 1},     {"Equal", 1, 1},
    {"Nul", 0, 4},     {"HighCodes", 128, 255}, {"NoStart", -1, 4},
    {"NoEnd", 1, 256}, {"Neither", -255, 511},  {"LineEnds", 13, 10},
};
INSTANTIATE_TEST_SUITE_P(Codes, StoryCutterStepsTest, ::testing::ValuesIn(kCodes),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace vorda
