// Stories of nothing, of fifty megabytes, and without an end: the file grows, the program doesn't, and the
// story behind them is whole.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "feed/CaptureText.h"
#include "support/HeapInUse.h"
#include "support/StoryFixture.h"

namespace vorda {
namespace {

constexpr std::size_t kMegabyte = 1'000'000;
constexpr std::size_t kBlock = 4096;  // on the line
constexpr std::size_t kLines = kBlock / 64;

// A block of wire copy, with its number in its first line. Lines end as on the wire or, filed, as in a story.
std::string CopyBlock(std::uint32_t number, bool filed) {
  static const auto block = [](std::string_view lineEnd) {
    std::string text;
    for (std::size_t line = 0; line < kLines; ++line)
      text += std::string(61, static_cast<char>('0' + line)) + std::string(lineEnd);
    return text;
  };
  static const std::string onTheLine = block("\r\r\n");
  static const std::string inTheFile = block("\r\n\r\n");
  std::string text = filed ? inTheFile : onTheLine;
  std::array<char, 9> digits{};
  std::snprintf(digits.data(), digits.size(), "%08X", number);
  text.replace(0, 8, digits.data());
  return text;
}

class WireSizes : public test::StoryFixture {
 protected:
  WireSizes() {
    // A look at the whole of a story would need as much memory.
    processes_.atStart = [this](const platform::ProcessStart& start) {
      const std::string path = start.arguments.at(0).substr(0, start.arguments.at(0).find('|'));
      handedPaths_.push_back(path);
    };
  }

  void Receive(std::string arrival) {
    text_.Append(arrival);
    longestArrival_ = std::max(longestArrival_, arrival.size());
    longestText_ = std::max(longestText_, text_.Text().size());
    Take(arrival);
  }

  // Receives blocks until `length` bytes have come, in arrivals of `piece` bytes. Answers their number, and
  // what the program's memory grew by behind the first few of them.
  std::uint32_t ReceiveCopy(std::size_t length, std::size_t piece) {
    std::uint32_t number = 0;
    std::size_t heap = 0;
    for (; number < length / kBlock; ++number) {
      if (number == 32) heap = test::HeapInUse();
      const std::string block = CopyBlock(number, false);
      for (std::size_t at = 0; at < block.size(); at += piece) Receive(block.substr(at, piece));
    }
    const std::size_t now = test::HeapInUse();
    grown_ = now > heap ? now - heap : 0;
    return number;
  }

  // The story holds the first `blocks` blocks and nothing else.
  static void ExpectCopy(const std::string& path, std::uint32_t blocks) {
    ASSERT_EQ(std::filesystem::file_size(path), blocks * CopyBlock(0, true).size());
    std::ifstream file(path, std::ios::binary);
    std::string read(CopyBlock(0, true).size(), '\0');
    for (std::uint32_t number = 0; number < blocks; ++number) {
      ASSERT_TRUE(file.read(read.data(), static_cast<std::streamsize>(read.size())));
      ASSERT_EQ(read, CopyBlock(number, true)) << "block " << number;
    }
  }

  CaptureText text_;
  std::size_t longestArrival_ = 0;  // behind the filter
  std::size_t longestText_ = 0;
  std::size_t grown_ = 0;
  Texts handedPaths_;
};

TEST_F(WireSizes, StoryOfNothingIsHandedOnEmptyAndTheNextOneIsWhole) {
  Receive("\x01\x04");
  Receive("\x01");
  Receive("\n\b");
  Receive("\x04\x01later\x04");
  ASSERT_EQ(handedPaths_.size(), 3u);
  EXPECT_EQ(test::ReadWholeFile(handedPaths_[0]), "");
  EXPECT_EQ(test::ReadWholeFile(handedPaths_[1]), "");
  EXPECT_EQ(test::ReadWholeFile(handedPaths_[2]), "later");
  EXPECT_TRUE(std::filesystem::exists(handedPaths_[0]));
  EXPECT_TRUE(std::filesystem::exists(handedPaths_[1]));
}

TEST_F(WireSizes, StoryOfFiftyMegabytesGrowsInTheFileAlone) {
  Receive("\x01");
  const std::uint32_t blocks = ReceiveCopy(50 * kMegabyte, 512);
  EXPECT_LT(grown_, kMegabyte);
  EXPECT_LE(longestText_, 16000 + longestArrival_);
  EXPECT_TRUE(handedPaths_.empty());
  Receive("\x04");
  Receive("\x01later\x04");
  ASSERT_EQ(handedPaths_.size(), 2u);
  ExpectCopy(handedPaths_[0], blocks);
  EXPECT_EQ(test::ReadWholeFile(handedPaths_[1]), "later");
}

// Every read is full, and each becomes longer in the filter than what the display gives away for it.
TEST_F(WireSizes, StoryWithoutAnEndGrowsInTheFileAlone) {
  Receive("\x01");
  const std::uint32_t blocks = ReceiveCopy(200 * kMegabyte, kBlock);
  EXPECT_GT(longestArrival_, kBlock);
  EXPECT_LT(grown_, kMegabyte);
  EXPECT_LE(longestText_, (std::size_t{1} << 18) + longestArrival_);
  EXPECT_TRUE(handedPaths_.empty());
  ExpectCopy(feed().StoryFileName, blocks);
  // A start code ends it at last.
  Receive("\x01later\x04");
  ASSERT_EQ(handedPaths_.size(), 2u);
  EXPECT_EQ(std::filesystem::file_size(handedPaths_[0]), blocks * CopyBlock(0, true).size());
  EXPECT_EQ(test::ReadWholeFile(handedPaths_[1]), "later");
}

TEST_F(WireSizes, ReturnsAloneInFullReadsLeaveTheDisplayItsBound) {
  const std::string returns(kBlock, '\r');
  for (int arrival = 0; arrival < 2000; ++arrival) Receive(returns);
  EXPECT_LE(longestText_, (std::size_t{1} << 18) + 2 * kBlock);
  Receive("\x01later\x04");
  EXPECT_TRUE(text_.Text().ends_with("\x01later\x04"));
  ASSERT_EQ(handedPaths_.size(), 2u);
  EXPECT_EQ(std::filesystem::file_size(handedPaths_[0]), 2000 * 2 * kBlock);
  EXPECT_EQ(test::ReadWholeFile(handedPaths_[1]), "later");
}

}  // namespace
}  // namespace vorda
