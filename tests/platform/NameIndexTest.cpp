// The index of a directory's names: whatever was added and removed before, it holds what the directory holds.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <string>

#include "platform/NameIndex.h"
#include "support/HeapInUse.h"

namespace vorda::platform {
namespace {

using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

std::string Name(int number) {
  return "ORV" + std::to_string(10000 + number) + ".WAV";
}

TEST(NameIndexTest, EmptyIndexHoldsNothing) {
  NameIndex index;
  index.Remove("ORV00005.WAV");
  EXPECT_EQ(index.size(), 0u);
  EXPECT_EQ(index.Match("ORV00005.WAV"), "");
  EXPECT_THAT(index.WithStem("ORV00005"), IsEmpty());
}

TEST(NameIndexTest, AccentsMatchWithoutCaseHoweverTheyStandOnDisk) {
  NameIndex index;
  index.AddNew("caf\xC3\xA9.wav");  // UTF-8
  index.AddNew(
      "b\xE9"
      "b\xE9.wav");  // the code page's own bytes
  EXPECT_EQ(index.Match("CAF\xC9.WAV"), "caf\xC3\xA9.wav");
  EXPECT_EQ(index.Match("B\xC9"
                        "B\xC9.WAV"),
            "b\xE9"
            "b\xE9.wav");
  EXPECT_THAT(index.WithStem("Caf\xE9"), UnorderedElementsAre("caf\xC3\xA9.wav"));
  // Alike but for characters beyond ASCII, and others that only look alike without their case bit.
  EXPECT_EQ(index.Match("CAF\xC8.WAV"), "");
  EXPECT_EQ(index.Match("CAF.WAV"), "");
  index.AddNew("a[b.wav");
  EXPECT_EQ(index.Match("a{b.wav"), "");
}

TEST(NameIndexTest, NameThatIsAddedTwiceIsHeldOnce) {
  NameIndex index;
  index.Add("ORV00005.WAV");
  index.Add("ORV00005.WAV");
  index.Add("orv00005.wav");
  EXPECT_EQ(index.size(), 2u);
  EXPECT_THAT(index.WithStem("ORV00005"), UnorderedElementsAre("ORV00005.WAV", "orv00005.wav"));
  EXPECT_EQ(index.Match("Orv00005.Wav"), "ORV00005.WAV");
  index.Remove("ORV00005.WAV");
  EXPECT_THAT(index.WithStem("ORV00005"), UnorderedElementsAre("orv00005.wav"));
}

// The directory's length is a hint: one that is far too small or large changes nothing.
class FilledIndexTest : public ::testing::TestWithParam<std::int64_t> {};

TEST_P(FilledIndexTest, HoldsWhatWasAddedAndNotRemoved) {
  constexpr int kNames = 2000;
  NameIndex index;
  index.Reserve(GetParam());
  std::set<int> held;
  std::minstd_rand random;
  for (int turn = 0; turn < 10 * kNames; ++turn) {
    const int number = static_cast<int>(random() % kNames);
    // Mostly filled in the first half, mostly emptied in the second.
    const bool adds = (random() % 4 == 0) != (turn < 5 * kNames);
    if (adds) {
      index.Add(Name(number));
      held.insert(number);
    } else {
      index.Remove(Name(number));
      held.erase(number);
    }
    ASSERT_EQ(index.size(), held.size()) << turn;
  }
  for (int number = 0; number < kNames; ++number)
    ASSERT_EQ(index.Match(Name(number)), held.contains(number) ? Name(number) : "") << number;
}

INSTANTIATE_TEST_SUITE_P(Reserved, FilledIndexTest,
                         ::testing::Values(std::int64_t{-1}, std::int64_t{0}, std::int64_t{4096},
                                           std::int64_t{1} << 40),
                         [](const auto& test) { return "Room" + std::to_string(test.index); });

TEST(NameIndexTest, NamesThatComeAndGoLeaveNoMemory) {
  NameIndex index;
  for (int number = 0; number < 100; ++number) index.Add(Name(number));
  const auto comeAndGo = [&index](int times) {
    for (int number = 0; number < times; ++number) {
      index.Add("B" + Name(number));
      index.Remove("B" + Name(number));
    }
  };
  comeAndGo(1000);
  const std::size_t before = test::HeapInUse();
  comeAndGo(100'000);
  EXPECT_LT(test::HeapInUse(), before + 65536);
  EXPECT_EQ(index.size(), 100u);
}

}  // namespace
}  // namespace vorda::platform
