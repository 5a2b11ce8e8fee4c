// Samples between two threads, and their level.

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <random>
#include <thread>
#include <vector>

#include "platform/SampleIntake.h"
#include "support/EventLoop.h"

namespace vorda::platform {
namespace {

using Samples = std::vector<std::int16_t>;

constexpr int kRate = 1000;
constexpr std::size_t kTwentiethOfASecond = kRate / 20;

class SampleIntakeTest : public ::testing::Test {
 protected:
  Samples FetchAll() {
    Samples all;
    for (SampleBlock block = intake_.Fetch(); !block.empty(); block = intake_.Fetch())
      all.insert(all.end(), block.begin(), block.end());
    return all;
  }

  int woken_ = 0;
  SampleIntake intake_{{1, kRate}, [this] { ++woken_; }};
};

TEST_F(SampleIntakeTest, BlocksComeOutWholeAndInOrder) {
  intake_.Put(Samples{1, 2, 3});
  intake_.Put(Samples{4});
  intake_.Put(Samples{5, 6});
  EXPECT_EQ(intake_.Fetch(), (Samples{1, 2, 3}));
  EXPECT_EQ(intake_.Fetch(), (Samples{4}));
  EXPECT_TRUE(intake_.Waiting());
  EXPECT_EQ(intake_.Fetch(), (Samples{5, 6}));
  EXPECT_FALSE(intake_.Waiting());
  EXPECT_EQ(intake_.Fetch(), Samples{});
}

TEST_F(SampleIntakeTest, WakesOnlyWhenThereIsSomethingAgain) {
  intake_.Put({});
  EXPECT_EQ(woken_, 0);
  intake_.Put(Samples{1});
  intake_.Put(Samples{2});
  EXPECT_EQ(woken_, 1);
  intake_.Fetch();
  intake_.Put(Samples{3});
  EXPECT_EQ(woken_, 1) << "one block was still there";
  FetchAll();
  EXPECT_EQ(woken_, 1);
  intake_.Put(Samples{4});
  EXPECT_EQ(woken_, 2);
}

TEST_F(SampleIntakeTest, TwoMinutesAreKeptAndTheNewestIsDroppedAndCounted) {
  std::vector<std::int16_t> seconds;
  for (std::int16_t second = 0; second < 120; ++second) {
    intake_.Put(Samples(kRate, second));
    seconds.push_back(second);
  }
  EXPECT_EQ(intake_.Dropped(), 0U);
  intake_.Put(Samples(3, 1000));
  intake_.Put(Samples(1, 1000));
  EXPECT_EQ(intake_.Dropped(), 4U);
  for (const std::int16_t second : seconds) EXPECT_EQ(intake_.Fetch(), Samples(kRate, second));
  EXPECT_EQ(intake_.Fetch(), Samples{});
}

TEST_F(SampleIntakeTest, RoomThatWasMadeIsUsedAgain) {
  for (int second = 0; second < 120; ++second) intake_.Put(Samples(kRate, 1));
  intake_.Fetch();
  intake_.Put(Samples(kRate, 2));
  EXPECT_EQ(intake_.Dropped(), 0U);
  EXPECT_EQ(FetchAll().size(), std::size_t{120} * kRate);
}

TEST_F(SampleIntakeTest, BoundCountsAllChannels) {
  SampleIntake stereo({2, kRate}, [] {});
  stereo.Put(Samples(std::size_t{240} * kRate, 1));
  EXPECT_EQ(stereo.Dropped(), 0U);
  stereo.Put(Samples{1, 1});
  EXPECT_EQ(stereo.Dropped(), 2U);
}

TEST(PeakLevelTest, NearestPerCentOfFullScale) {
  EXPECT_EQ(PeakLevel({}), 0);
  EXPECT_EQ(PeakLevel(Samples{0}), 0);
  EXPECT_EQ(PeakLevel(Samples{163}), 0);  // 0.497
  EXPECT_EQ(PeakLevel(Samples{164}), 1);  // 0.5005
  EXPECT_EQ(PeakLevel(Samples{16383}), 50);
  EXPECT_EQ(PeakLevel(Samples{32603}), 99);   // 99.4995
  EXPECT_EQ(PeakLevel(Samples{32604}), 100);  // 99.503
  EXPECT_EQ(PeakLevel(Samples{32767}), 100);
}

TEST(PeakLevelTest, BothPolaritiesCountAndTheLowestIsAHundred) {
  EXPECT_EQ(PeakLevel(Samples{1, -16384, 3}), 50);
  EXPECT_EQ(PeakLevel(Samples{std::numeric_limits<std::int16_t>::min()}), 100);
}

// The level falls to 0 by itself, so it is asked right behind the samples.
class SampleLevelTest : public SampleIntakeTest {
 protected:
  int LevelBehind(const Samples& samples) {
    intake_.Put(samples);
    return intake_.Level();
  }
  static Samples PeakAt(std::size_t place, std::size_t size) {
    Samples samples(size, 0);
    samples[place] = 32767;
    return samples;
  }
};

TEST_F(SampleLevelTest, NothingYetIsNoLevel) {
  EXPECT_EQ(intake_.Level(), 0);
}

TEST_F(SampleLevelTest, ExactlyTheNewestTwentiethOfASecondCounts) {
  EXPECT_EQ(LevelBehind(PeakAt(0, kTwentiethOfASecond)), 100);
  EXPECT_EQ(LevelBehind({0}), 0);
  EXPECT_EQ(LevelBehind(PeakAt(kTwentiethOfASecond, 2 * kTwentiethOfASecond)), 100);
  EXPECT_EQ(LevelBehind(PeakAt(kTwentiethOfASecond - 1, 2 * kTwentiethOfASecond)), 0);
}

TEST_F(SampleLevelTest, PeakCountsAcrossBlocksUntilItIsTooOld) {
  EXPECT_EQ(LevelBehind({16384}), 50);
  for (std::size_t i = 1; i < kTwentiethOfASecond; ++i) ASSERT_EQ(LevelBehind({0}), 50) << i;
  EXPECT_EQ(LevelBehind({0}), 0);
}

TEST_F(SampleLevelTest, LevelIsThatOfWhatWasDroppedToo) {
  for (int second = 0; second < 120; ++second) intake_.Put(Samples(kRate, 0));
  EXPECT_EQ(LevelBehind(Samples(kTwentiethOfASecond, 32767)), 100);
}

TEST_F(SampleLevelTest, FetchingTakesNothingOffTheLevel) {
  intake_.Put(Samples(10, 32767));
  FetchAll();
  EXPECT_EQ(intake_.Level(), 100);
}

// 11030 frames a second: 551 whole frames are a twentieth.
TEST_F(SampleLevelTest, AllChannelsCountAndFramesStayWhole) {
  for (const std::size_t channel : {0, 1, 2}) {
    SampleIntake intake({3, 11030}, [] {});
    Samples frame(3, 0);
    frame[channel] = -32767;
    intake.Put(frame);
    intake.Put(Samples(std::size_t{550} * 3, 0));
    EXPECT_EQ(intake.Level(), 100) << channel;
    intake.Put(Samples(3, 0));
    EXPECT_EQ(intake.Level(), 0) << channel;
  }
}

// Of sounds as inputs have them: nothing of their form counts but the peak.
TEST_F(SampleLevelTest, SilenceDirectCurrentADeadChannelAndNoiseAtFullScale) {
  EXPECT_EQ(LevelBehind(Samples(2 * kTwentiethOfASecond, 0)), 0);
  EXPECT_EQ(LevelBehind(Samples(2 * kTwentiethOfASecond, -16384)), 50)
      << "a constant is as loud as it is high";
  Samples dead(2 * kTwentiethOfASecond, 0);
  for (std::size_t i = 0; i < dead.size(); i += 2)
    dead[i] = static_cast<std::int16_t>(i % 4 == 0 ? 3277 : -3277);
  SampleIntake stereo({2, kRate}, [] {});
  stereo.Put(dead);
  EXPECT_EQ(stereo.Level(), 10);
  Samples noise;
  std::minstd_rand random(20261121);
  for (std::size_t i = 0; i < 2 * kTwentiethOfASecond; ++i)
    noise.push_back(random() % 2 == 0 ? std::numeric_limits<std::int16_t>::max()
                                      : std::numeric_limits<std::int16_t>::min());
  EXPECT_EQ(LevelBehind(noise), 100) << "and no more";
}

TEST_F(SampleLevelTest, FallsToNothingWhenNothingComes) {
  EXPECT_EQ(LevelBehind({32767}), 100);
  EXPECT_TRUE(test::WaitUntil([this] { return intake_.Level() == 0; }));
  EXPECT_EQ(LevelBehind({0}), 100) << "the newest that came, however long ago";
}

TEST(SampleIntakeThreadsTest, RampArrivesWholeFromAnotherThread) {
  constexpr int kSamples = 30000;
  std::atomic<int> woken = 0;
  SampleIntake intake({1, kRate}, [&] { ++woken; });
  std::thread putting([&] {
    Samples block;
    for (int next = 0; next < kSamples;) {
      block.clear();
      for (int i = 0; i <= next % 7 && next < kSamples; ++i)
        block.push_back(static_cast<std::int16_t>(next++));
      intake.Put(block);
    }
  });
  int expected = 0;
  bool inOrder = true;
  EXPECT_TRUE(test::WaitUntil(
      [&] {
        for (SampleBlock block = intake.Fetch(); !block.empty(); block = intake.Fetch()) {
          for (const std::int16_t sample : block) inOrder = inOrder && sample == expected++;
        }
        intake.Level();
        return expected >= kSamples;
      },
      30000));
  putting.join();
  EXPECT_TRUE(inOrder);
  EXPECT_EQ(expected, kSamples);
  EXPECT_EQ(intake.Dropped(), 0U);
  EXPECT_GE(woken, 1);
}

}  // namespace
}  // namespace vorda::platform
