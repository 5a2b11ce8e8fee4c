// What comes in while a recording's box waits for the operator: the feed goes on behind it.

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "feed/CartRotation.h"
#include "support/AudioIntakeFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::ElementsAre;

class BehindABoxTest : public test::AudioIntakeFixture {
 protected:
  // A cart ahead that AutoErase stops at with a box.
  static void StopAutoErase() {
    UseIndividualFiles();
    SetRecordBytes(6, test::FullCartRecord("Old", 30));
  }
  static constexpr const char* kNoRecordFile = "removing the information file for cart 6";
};

TEST_F(BehindABoxTest, AnotherStartTakesTheFeedWhileAFirstTellsThatItsFileCannotBeOpened) {
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, "ORV00005.WAV");
  boxes_.Expect("Failed to open file.", platform::BoxAnswer::Ok, [this] {
    EXPECT_EQ(intake_.StartRecording(6), 0);
    Play('a');
  });
  boxes_.Expect(test::kInvalidParameterText);
  EXPECT_EQ(intake_.StartRecording(5), 0);
  Play('b');
  EXPECT_EQ(intake_.CurrentRecordCart, 6);
  intake_.EndRecording();
  EXPECT_EQ(Audio(6), ClosedWave(Block('a') + Block('b')));
  EXPECT_EQ(RecordBytes(5), test::BlankCartRecord());
}

TEST_F(BehindABoxTest, AnotherStartTakesTheFeedWhileAFirstTellsThatItsFormatIsNotWritten) {
  const ScopedFileFault fault = FailWrite(6);
  boxes_.Expect("No Data written during 'Write Wave Format'", platform::BoxAnswer::Ok,
                [this] { EXPECT_EQ(intake_.StartRecording(6), 0); });
  EXPECT_EQ(intake_.StartRecording(5), 0);
  Play('a');
  EXPECT_EQ(intake_.CurrentRecordCart, 6);
  intake_.EndRecording();
  EXPECT_EQ(Audio(6), ClosedWave(Block('a')));
  EXPECT_EQ(RecordBytes(5), test::BlankCartRecord());
}

TEST_F(BehindABoxTest, AnotherStartInTheMiddleOfClearingIsTheOneThatRecords) {
  StopAutoErase();
  boxes_.Expect(test::ProblemText(kNoRecordFile, 53), platform::BoxAnswer::Ok, [this] {
    EXPECT_EQ(intake_.StartRecording(20), 0);
    Play('a');
  });
  EXPECT_EQ(intake_.StartRecording(5), 0);
  Play('b');
  EXPECT_TRUE(intake_.Recording);
  EXPECT_EQ(intake_.CurrentRecordCart, 20);
  intake_.EndRecording();
  EXPECT_EQ(Audio(20), ClosedWave(Block('a') + Block('b')));
}

// A gate without a file would tell of each block for ever, with nothing that ends it.
TEST_F(BehindABoxTest, EndInTheMiddleOfClearingKeepsTheGateShut) {
  StopAutoErase();
  boxes_.Expect(test::ProblemText(kNoRecordFile, 53), platform::BoxAnswer::Ok,
                [this] { EXPECT_EQ(intake_.EndRecording(), 0); });
  EXPECT_EQ(intake_.StartRecording(5), 0);
  EXPECT_FALSE(intake_.Recording);
  EXPECT_EQ(TakeSteps().back(), "grey");
  Play('a');
  EXPECT_EQ(Audio(5), ClosedWave(""));
}

// The start behind the box takes the feed's file away and then fails: nothing must be written into the first
// one's cart by a gate that has no file.
TEST_F(BehindABoxTest, StartThatFailsInTheMiddleOfClearingKeepsTheGateShut) {
  StopAutoErase();
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, "ORV00020.WAV");
  boxes_.Expect(test::ProblemText(kNoRecordFile, 53), platform::BoxAnswer::Ok,
                [this] { EXPECT_EQ(intake_.StartRecording(20), 0); });
  boxes_.Expect("Failed to open file.");
  boxes_.Expect(test::kInvalidParameterText);
  EXPECT_EQ(intake_.StartRecording(5), 0);
  EXPECT_FALSE(intake_.Recording);
  Play('a');
  EXPECT_EQ(intake_.StartRecording(21), 0);
  Play('b');
  intake_.EndRecording();
  EXPECT_EQ(Audio(21), ClosedWave(Block('b')));
}

TEST_F(BehindABoxTest, ClearingStopsWhereARecordingHasBegunBehindItsBox) {
  StopAutoErase();
  boxes_.Expect(test::ProblemText(kNoRecordFile, 53), platform::BoxAnswer::Ok, [this] {
    EXPECT_EQ(intake_.StartRecording(7), 0);
    Play('a');
  });
  EXPECT_EQ(intake_.StartRecording(5), 0);
  Play('b');
  intake_.EndRecording();
  EXPECT_EQ(Audio(7), ClosedWave(Block('a') + Block('b')));
}

TEST_F(BehindABoxTest, CartThatIsBeingDeletedIsNotTaken) {
  StopAutoErase();
  SetRecordBytes(5, test::FullCartRecord("Old", 30));
  feed_.LastRecordedCartNumber = 4;
  boxes_.Expect(test::ProblemText("removing the information file for cart 5", 53), platform::BoxAnswer::Ok,
                [this] { EXPECT_EQ(GetNextRecordCartNumber(feed_), 7); });
  AutoErase(feed_, 5, 1);
  EXPECT_EQ(GetNextRecordCartNumber(feed_), 5);
}

// The number is the same, and the recording another one.
TEST_F(BehindABoxTest, SameCartBegunAgainBehindACloseThatFailsIsLeftRunning) {
  intake_.StartRecording(5);
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect(test::kCannotWriteText, platform::BoxAnswer::Ok,
                [this] { EXPECT_EQ(intake_.StartRecording(5), 0); });
  intake_.EndRecording();
  EXPECT_TRUE(intake_.Recording);
  EXPECT_EQ(intake_.CurrentRecordCart, 5);
  Play('b');
  intake_.EndRecording();
  EXPECT_FALSE(intake_.Recording);
  EXPECT_EQ(Audio(5), ClosedWave(Block('b')));
}

TEST_F(BehindABoxTest, EndWithinAnEndIsOneEnd) {
  intake_.StartRecording(5);
  stream_.Keep(Block('a'));
  stream_.Keep(Block('b'));
  TakeSteps();
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect("Failed to write data during 'WriteAudioData'", platform::BoxAnswer::Ok,
                [this] { EXPECT_EQ(intake_.EndRecording(), 0); });
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_THAT(TakeSteps(), ElementsAre("EndOfCut (open)", "EndOfCut (open)", "line Closed Audio File",
                                       "shows \"\"", "record Carts1.lst", "key feed.ini", "key feed.ini",
                                       "record Carts2.lst", "wall", "grey"));
  EXPECT_EQ(Audio(5), ClosedWave(Block('b')));
}

TEST_F(BehindABoxTest, SameCartBegunAgainBehindTheCutsLastBlockIsLeftRunning) {
  intake_.StartRecording(5);
  stream_.Keep(Block('a'));
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect("Failed to write data during 'WriteAudioData'", platform::BoxAnswer::Ok, [this] {
    intake_.EndRecording();
    EXPECT_EQ(intake_.StartRecording(5), 0);
  });
  intake_.EndRecording();
  EXPECT_TRUE(intake_.Recording);
  Play('b');
  intake_.EndRecording();
  EXPECT_EQ(Audio(5), ClosedWave(Block('b')));
}

TEST_F(BehindABoxTest, BlockBehindABlocksBoxIsWritten) {
  intake_.StartRecording(5);
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect("Failed to write data during 'WriteAudioData'", platform::BoxAnswer::Ok,
                [this] { Play('b'); });
  Play('a');
  Play('c');
  intake_.EndRecording();
  EXPECT_EQ(Audio(5), ClosedWave(Block('b') + Block('c')));
}

TEST_F(BehindABoxTest, NextStartBehindACloseThatFailsIsLeftRunning) {
  intake_.StartRecording(5);
  Play('a');
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect(test::kCannotWriteText, platform::BoxAnswer::Ok, [this] {
    now_.seconds += 3600;
    EXPECT_EQ(intake_.StartRecording(6), 0);
    TakeSteps();
  });
  intake_.EndRecording();
  EXPECT_THAT(TakeSteps(), ElementsAre("record Carts1.lst (open)", "key feed.ini (open)",
                                       "record Carts2.lst (open)", "wall (open)"))
      << "the number shown, the key and the colours are the next recording's";
  EXPECT_EQ(intake_.CurrentRecordCart, 6);
  EXPECT_EQ(Key("CurrentlyRecordingCartNumber"), "6");
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0)) << "the time is its own start";
  Play('b');
  intake_.EndRecording();
  EXPECT_EQ(Audio(6), ClosedWave(Block('b')));
  EXPECT_EQ(RecordBytes(6), RecordedRecord("11:30", 0.1F));
}

// Of the last recording both the key and the index cart tell; a former one's end goes on behind them.
TEST_F(BehindABoxTest, LastRecordingNeverGoesBackBehindACloseThatFails) {
  intake_.StartRecording(5);
  Play('a');
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect(test::kCannotWriteText, platform::BoxAnswer::Ok, [this] {
    for (const std::int32_t cart : {6, 7}) {
      now_.seconds += 3600;
      EXPECT_EQ(intake_.StartRecording(cart), 0);
      Play('b');
      intake_.EndRecording();
    }
  });
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_EQ(feed_.LastRecordedCartNumber, 7);
  EXPECT_EQ(Key("LastRecordedCartNumber"), "7");
  EXPECT_EQ(Key("CurrentlyRecordingCartNumber"), "0");
  EXPECT_EQ(RecordBytes(1900), IndexRecord(7));
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0));
  EXPECT_EQ(RecordBytes(6), RecordedRecord("11:30", 0.1F));
  EXPECT_EQ(RecordBytes(7), RecordedRecord("12:30", 0.1F));
}

TEST_F(BehindABoxTest, RecordOfACartTakenAgainAndEndedBehindItsFailedCloseIsTheLaterOnes) {
  intake_.StartRecording(5);
  Play('a');
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect(test::kCannotWriteText, platform::BoxAnswer::Ok, [this] {
    now_.seconds += 3600;
    EXPECT_EQ(intake_.StartRecording(5), 0);
    Play('b');
    Play('c');
    intake_.EndRecording();
  });
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_EQ(RecordBytes(5), RecordedRecord("11:30", 0.2F));
  EXPECT_EQ(Audio(5), ClosedWave(Block('b') + Block('c')));
  EXPECT_EQ(Key("LastRecordedCartNumber"), "5");
  EXPECT_EQ(RecordBytes(1900), IndexRecord(5));
}

TEST_F(BehindABoxTest, RecordOfACartTakenAgainBehindItsFailedCloseTellsThatItIsBeingFilled) {
  intake_.StartRecording(5);
  Play('a');
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect(test::kCannotWriteText, platform::BoxAnswer::Ok, [this] {
    now_.seconds += 3600;
    EXPECT_EQ(intake_.StartRecording(5), 0);
    Play('b');
  });
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_EQ(RecordBytes(5), RecordingRecord());
  EXPECT_EQ(Key("CurrentlyRecordingCartNumber"), "5");
  Play('c');
  intake_.EndRecording();
  EXPECT_EQ(RecordBytes(5), RecordedRecord("11:30", 0.2F));
  EXPECT_EQ(Audio(5), ClosedWave(Block('b') + Block('c')));
}

}  // namespace
}  // namespace vorda
