// The display's filter against its own rules, carried out one step and one character at a time.

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "feed/CaptureText.h"

namespace vorda {
namespace {

// The text box and its selection. Slow, and so plain that it can be read against the rules.
class TextBoxByTheSteps {
 public:
  const std::string& text() const { return text_; }

  void Append(std::string& data) {
    std::size_t length = text_.size();
    if (length > 16000) {
      text_ = text_.substr(4096);
      length = text_.size();
    }
    std::size_t selectionStart = length;
    std::size_t selectionLength = 0;
    for (;;) {
      const std::size_t position = PositionOf(data, '\b');  // counts from 1
      if (position == 0) break;
      if (position == 1) {
        if (length > 0) {
          selectionStart = length - 1;
          selectionLength = 1;
        }
        data = data.substr(1);
      } else {
        data = data.substr(0, position - 2) + data.substr(position);
      }
    }
    data = WithoutLineFeeds(data);
    data = WithLineFeedsBehindReturns(data);
    text_ = text_.substr(0, selectionStart) + data + text_.substr(selectionStart + selectionLength);
  }

 private:
  static std::size_t PositionOf(const std::string& data, char c) {
    for (std::size_t i = 0; i < data.size(); ++i) {
      if (data[i] == c) return i + 1;
    }
    return 0;
  }
  static std::string WithoutLineFeeds(const std::string& data) {
    std::string result;
    for (const char c : data) {
      if (c != '\n') result += c;
    }
    return result;
  }
  static std::string WithLineFeedsBehindReturns(const std::string& data) {
    std::string result;
    for (const char c : data) {
      result += c;
      if (c == '\r') result += '\n';
    }
    return result;
  }

  std::string text_;
};

class Arrivals {
 public:
  explicit Arrivals(unsigned seed, int specialPercent) : random_(seed), specialPercent_(specialPercent) {}

  std::string Next(std::size_t longest) {
    std::string data(Below(longest + 1), '\0');
    for (char& c : data) c = Below(100) < specialPercent_ ? Special() : static_cast<char>(Below(256));
    return data;
  }

 private:
  std::size_t Below(std::size_t bound) { return random_() % bound; }
  char Special() { return "\b\b\b\r\n\x01\x04\r"[Below(8)]; }

  std::mt19937 random_;
  std::size_t specialPercent_;
};

void CompareOnArrivals(Arrivals arrivals, std::size_t longest, int count) {
  CaptureText text;
  TextBoxByTheSteps byTheSteps;
  for (int i = 0; i < count; ++i) {
    std::string data = arrivals.Next(longest);
    std::string dataByTheSteps = data;
    text.Append(data);
    byTheSteps.Append(dataByTheSteps);
    ASSERT_EQ(data, dataByTheSteps) << "arrival " << i;
    ASSERT_EQ(text.Text(), byTheSteps.text()) << "arrival " << i;
  }
}

TEST(CaptureTextStepsTest, SingleCharacters) {
  CompareOnArrivals(Arrivals(1, 50), 1, 20000);
}

TEST(CaptureTextStepsTest, ShortArrivalsFullOfControlCodes) {
  CompareOnArrivals(Arrivals(2, 60), 12, 10000);
}

TEST(CaptureTextStepsTest, MoreBackspacesThanText) {
  CompareOnArrivals(Arrivals(3, 95), 200, 1500);
}

TEST(CaptureTextStepsTest, FullReadsAcrossManyCuts) {
  CompareOnArrivals(Arrivals(4, 4), 4096, 150);
}

TEST(CaptureTextStepsTest, ArrivalsLongerThanTheTextMayBe) {
  CompareOnArrivals(Arrivals(5, 1), 40000, 12);
}

}  // namespace
}  // namespace vorda
