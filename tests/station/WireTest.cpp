// Wires that few stations have, through the real program from outside: every byte value one by one, and a
// story of fifty megabytes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include "station/ServerProcess.h"
#include "station/Station.h"
#include "station/WireStories.h"
#include "support/EventLoop.h"

namespace vorda::test {
namespace {

constexpr std::int64_t kMebibyte = 1'048'576;

// A build with the address sanitizer would keep freed memory back, and what is resident would tell nothing.
const std::vector<std::string> kOffscreen = {"QT_QPA_PLATFORM=offscreen",
                                             "ASAN_OPTIONS=detect_leaks=0:quarantine_size_mb=1"};

std::multiset<std::string> Texts(const Station& station) {
  std::multiset<std::string> texts;
  for (const Station::Story& story : station.Stories()) texts.insert(story.text);
  return texts;
}

// 1 and 4 are the story codes. Alone in its arrival a backspace finds nothing that it could take.
TEST(Wire, EveryByteValueOneByOneReachesTheBounceLineAndItsStory) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\nBouncePort=2\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  std::string behind;
  for (int code = 0; code < 256; ++code) {
    const std::string byte(1, static_cast<char>(code));
    ASSERT_TRUE(station.com1->Write(byte));
    ASSERT_EQ(station.com2->Read(1), byte) << code;
    if (code > 4 && code != 8 && code != 10) behind += byte;
    if (code == 13) behind += '\n';
  }
  ASSERT_TRUE(station.com1->Write("\1later\4"));
  ASSERT_TRUE(station.WaitForStories(4));
  EXPECT_EQ(Texts(station), (std::multiset<std::string>{std::string(1, '\0'), "\2\3", behind, "later"}));
}

TEST(Wire, StoryOfFiftyMegabytesGrowsInItsFileAlone) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.StartWith(kOffscreen);
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  std::string block;
  while (block.size() < 4096 * 64)
    block += std::string(61, static_cast<char>('0' + block.size() % 71)) + "\r\r\n";
  std::string filed;
  for (const char c : block) {
    if (c != '\n') filed += c;
    if (c == '\r') filed += '\n';
  }
  constexpr std::uintmax_t kBlocks = 200;
  ASSERT_GE(kBlocks * block.size(), 50'000'000u);

  ASSERT_TRUE(station.com1->Write("\1"));
  std::int64_t memory = 0;
  for (std::uintmax_t i = 0; i < kBlocks; ++i) {
    if (i == 8) memory = ResidentMemory(ServerProcess());
    ASSERT_TRUE(station.com1->Write(block)) << i;
  }
  ASSERT_TRUE(WaitUntil(
      [&] { return std::filesystem::file_size(station.StoryFiles(1).at(0)) == kBlocks * filed.size(); },
      20'000));
  ASSERT_GT(memory, 0);
  EXPECT_LT(ResidentMemory(ServerProcess()), memory + 16 * kMebibyte);

  ASSERT_TRUE(station.com1->Write("\4\1later\4"));
  ASSERT_TRUE(WaitUntil([&] { return StoriesKept(station) == 2; }, 20'000));
  const std::multiset<std::string> texts = Texts(station);
  ASSERT_EQ(texts.count("later"), 1u);
  const std::string_view large = *std::max_element(
      texts.begin(), texts.end(), [](const auto& a, const auto& b) { return a.size() < b.size(); });
  ASSERT_EQ(large.size(), kBlocks * filed.size());
  for (std::uintmax_t i = 0; i < kBlocks; ++i)
    ASSERT_TRUE(large.substr(i * filed.size(), filed.size()) == filed) << i;
}

}  // namespace
}  // namespace vorda::test
