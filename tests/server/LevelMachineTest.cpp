// When a recording begins and ends, told as levels over time.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "feed/LevelMachine.h"

namespace vorda {
namespace {

constexpr std::int32_t kDay = 46000;
constexpr double kNoon = 43200;
constexpr double kTick = 0.0625;  // a fraction that a stamp holds exactly

// A feed's window as far as the machine is concerned: starts and ends succeed unless told otherwise.
class LevelMachineTest : public ::testing::Test {
 protected:
  // A tick at `seconds` behind noon. The level stays until the next.
  LevelAction Tick(double seconds, float level) {
    const TimeStamp now = At(seconds);
    const LevelAction action = machine_.Decide(level, recording_, rules_, now);
    if (action == LevelAction::StartRecording && startsSucceed_) recording_ = true;
    if (action == LevelAction::EndRecording) recording_ = false;
    machine_.Rearm(level, rules_, now);
    return action;
  }
  // Ticks from `from` up to, not including, `to`; the moments at which the machine acted.
  std::vector<double> Run(double from, double to, float level) {
    std::vector<double> acted;
    for (double at = from; at < to; at += kTick) {
      if (Tick(at, level) != LevelAction::None) acted.push_back(at);
    }
    return acted;
  }
  static TimeStamp At(double seconds) { return {kDay, static_cast<float>(kNoon + seconds)}; }

  LevelRules rules_{50, 5, 25};
  LevelMachine machine_;
  bool recording_ = false;
  bool startsSucceed_ = true;
};

using Moments = std::vector<double>;

TEST_F(LevelMachineTest, FirstTickAboveOnlySetsTheStamp) {
  EXPECT_EQ(Tick(0, 51), LevelAction::None);
  EXPECT_TRUE(IsSet(machine_.LevelAboveStamp));
  EXPECT_FALSE(IsSet(machine_.LevelBelowStamp));
}

TEST_F(LevelMachineTest, StartsOnTheFirstTickAtTheDuration) {
  EXPECT_EQ(Run(0, 6, 51), (Moments{5}));
}

TEST_F(LevelMachineTest, LevelEqualToTheThresholdIsBelow) {
  EXPECT_EQ(Run(0, 10, 50), Moments{});
  EXPECT_FALSE(IsSet(machine_.LevelAboveStamp));
}

TEST_F(LevelMachineTest, ThresholdOfAHundredNeverStarts) {
  rules_.AudioActivationLevel = 100;
  EXPECT_EQ(Run(0, 60, 100), Moments{});
}

TEST_F(LevelMachineTest, ThresholdAsItComesLeavesAHundredAlone) {
  rules_.AudioActivationLevel = 99;
  EXPECT_EQ(Run(0, 10, 99), Moments{});
  EXPECT_EQ(Run(10, 20, 100), (Moments{15}));
}

TEST_F(LevelMachineTest, ThresholdOfZeroStartsAtAnyLevelButSilence) {
  rules_.AudioActivationLevel = 0;
  EXPECT_EQ(Run(0, 10, 0), Moments{});
  EXPECT_EQ(Run(10, 20, 1), (Moments{15}));
}

TEST_F(LevelMachineTest, StartDurationOfZeroStartsOnTheSecondTickAndTakesTheStampAfreshOnEach) {
  rules_.AudioStartDuration = 0;
  EXPECT_EQ(Tick(0, 51), LevelAction::None);
  EXPECT_TRUE(IsSet(machine_.LevelAboveStamp));
  EXPECT_EQ(Tick(kTick, 51), LevelAction::StartRecording);
  EXPECT_FALSE(IsSet(machine_.LevelAboveStamp));
  Tick(2 * kTick, 51);
  EXPECT_TRUE(IsSet(machine_.LevelAboveStamp));
  Tick(3 * kTick, 51);
  EXPECT_FALSE(IsSet(machine_.LevelAboveStamp));
}

TEST_F(LevelMachineTest, DipUpToTheStartDurationDoesNotBreakTheRun) {
  Run(0, 2, 51);
  EXPECT_EQ(Run(2, 7 + kTick, 50), Moments{});
  EXPECT_TRUE(IsSet(machine_.LevelAboveStamp));
  EXPECT_EQ(Tick(7 + kTick, 51), LevelAction::StartRecording);
}

TEST_F(LevelMachineTest, LongerDipBreaksIt) {
  Run(0, 2, 51);
  EXPECT_EQ(Run(2, 7 + 2 * kTick, 50), Moments{});
  EXPECT_FALSE(IsSet(machine_.LevelAboveStamp));
  EXPECT_EQ(Run(8, 14, 51), (Moments{13}));
}

TEST_F(LevelMachineTest, EndsAtTheEndDuration) {
  Run(0, 6, 51);
  ASSERT_TRUE(recording_);
  EXPECT_EQ(Run(6, 40, 50), (Moments{31}));
  EXPECT_FALSE(recording_);
}

TEST_F(LevelMachineTest, AnyTickAboveWipesTheLowCount) {
  Run(0, 6, 51);
  EXPECT_EQ(Run(6, 30, 50), Moments{});
  Tick(30, 51);
  EXPECT_FALSE(IsSet(machine_.LevelBelowStamp));
  EXPECT_EQ(Run(31, 60, 50), (Moments{56}));
}

TEST_F(LevelMachineTest, DipWhileRecordingLeavesTheAboveStamp) {
  Run(0, 6, 51);
  Run(6, 20, 50);
  EXPECT_TRUE(IsSet(machine_.LevelAboveStamp));
}

TEST_F(LevelMachineTest, EndedByHandInSoundItStartsAgainOnTheNextTick) {
  Run(0, 6, 51);
  recording_ = false;
  EXPECT_EQ(Tick(6, 51), LevelAction::StartRecording);
}

TEST_F(LevelMachineTest, AboveStampIsTakenAfreshBehindFiveStartDurations) {
  Run(0, 25, 51);
  EXPECT_TRUE(IsSet(machine_.LevelAboveStamp));
  Tick(25, 51);
  EXPECT_TRUE(IsSet(machine_.LevelAboveStamp)) << "exactly five";
  Tick(25 + kTick, 51);
  EXPECT_FALSE(IsSet(machine_.LevelAboveStamp));
  Tick(25 + 2 * kTick, 51);
  EXPECT_EQ(TimeInText(machine_, At(25 + 2 * kTick)), "0.0");
}

TEST_F(LevelMachineTest, StartsThatFailAreTriedOnEachTickUntilTheStampIsTakenAfresh) {
  startsSucceed_ = false;
  const Moments tries = Run(0, 31, 51);
  // From 5 to 25 and one tick, and again from 5 seconds behind the new stamp.
  ASSERT_FALSE(tries.empty());
  EXPECT_EQ(tries.front(), 5);
  const auto count = static_cast<std::size_t>(20 / kTick) + 2;
  ASSERT_GT(tries.size(), count);
  EXPECT_EQ(tries[count - 1], 25 + kTick);
  EXPECT_EQ(tries[count], 30 + 2 * kTick);
}

TEST_F(LevelMachineTest, BelowStampIsTakenAfreshBehindFiveEndDurations) {
  Run(0, 125 + kTick, 10);
  EXPECT_TRUE(IsSet(machine_.LevelBelowStamp));
  Tick(125 + kTick, 10);
  EXPECT_FALSE(IsSet(machine_.LevelBelowStamp));
}

TEST_F(LevelMachineTest, AcrossMidnight) {
  rules_.AudioStartDuration = 4;
  machine_.Decide(51, false, rules_, {kDay, 86398});
  EXPECT_EQ(machine_.Decide(51, false, rules_, {kDay + 1, 1.9F}), LevelAction::None);
  EXPECT_EQ(machine_.Decide(51, false, rules_, {kDay + 1, 2}), LevelAction::StartRecording);
}

TEST_F(LevelMachineTest, ClockSetBackWaitsAndForwardActsAtOnce) {
  Tick(0, 51);
  EXPECT_EQ(Tick(-3600, 51), LevelAction::None);
  EXPECT_EQ(Tick(4.9375, 51), LevelAction::None);
  EXPECT_EQ(Tick(5, 51), LevelAction::StartRecording);
  EXPECT_EQ(machine_.Decide(10, true, rules_, At(6)), LevelAction::None);
  EXPECT_EQ(machine_.Decide(10, true, rules_, {kDay + 1, 0}), LevelAction::EndRecording);
}

TEST_F(LevelMachineTest, FlickerRoundTheThresholdForAnHourNeverEndsARecording) {
  recording_ = true;
  for (int tick = 0; tick < 57600; ++tick)
    ASSERT_EQ(Tick(tick * kTick, tick % 2 == 0 ? 51 : 50), LevelAction::None);
  EXPECT_TRUE(recording_);
}

TEST_F(LevelMachineTest, CountsOnTheScreen) {
  EXPECT_EQ(TimeInText(machine_, At(0)), "");
  EXPECT_EQ(TimeOutText(machine_, At(0)), "");
  Tick(0, 51);
  EXPECT_EQ(TimeInText(machine_, At(0)), "0.0");
  EXPECT_EQ(TimeInText(machine_, At(0.25)), "0.2");
  EXPECT_EQ(TimeInText(machine_, At(12.5)), "12.5");
  Tick(1, 10);
  EXPECT_EQ(TimeOutText(machine_, At(1.5)), "");
  EXPECT_EQ(TimeOutText(machine_, At(1.5625)), "0.6");
}

TEST(GaugeTest, IsLogarithmicAndEmptyAtOneAndBelow) {
  EXPECT_EQ(GaugePercent(-5), 0);
  EXPECT_EQ(GaugePercent(0), 0);
  EXPECT_EQ(GaugePercent(1), 0);
  EXPECT_FLOAT_EQ(static_cast<float>(GaugePercent(10)), 50);
  EXPECT_FLOAT_EQ(static_cast<float>(GaugePercent(100)), 100);
  EXPECT_FLOAT_EQ(static_cast<float>(GaugePercent(50)),
                  static_cast<float>(100 * std::log(50.0) / std::log(100.0)));
}

}  // namespace
}  // namespace vorda
