// Recordings that meet failures: what is told, what is kept, and what comes in behind the boxes.

#include <gmock/gmock.h>
#include <signal.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "feed/CartRotation.h"
#include "platform/OtherProcess.h"
#include "support/AudioIntakeFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class AudioFaultTest : public test::AudioIntakeFixture {
 protected:
  // The nth write to the cart's file from now on fails, and `times - 1` behind it.
  static ScopedFileFault FailWrite(int nth, int times = 1) {
    return {FileOperation::Write, ENOSPC, nth, times, "ORV00005.WAV"};
  }
  void ExpectShut() const {
    EXPECT_FALSE(intake_.Recording);
    EXPECT_EQ(intake_.CurrentRecordCart, 0);
    EXPECT_EQ(RecordBytes(5), test::BlankCartRecord());
    EXPECT_EQ(Ini(), "[AudioCapture]\r\n");
  }

  static constexpr int kPermissionDenied = 70;
  static constexpr std::int32_t kInvalidParameter = 11;
  static constexpr std::int32_t kCannotWrite = 262;
};

TEST_F(AudioFaultTest, FileThatCannotBeDeletedEndsTheStartAndPassesForASuccess) {
  GiveFile(5, "WAV");
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 2, "ORV00005.WAV");
  boxes_.Expect("Cannot delete " + CartFile(5, "WAV"));
  EXPECT_EQ(intake_.OpenAudioFile(5), kPermissionDenied);
  boxes_.Expect("Cannot delete " + CartFile(5, "WAV"));
  TakeSteps();
  EXPECT_EQ(intake_.StartRecording(5), 0);
  EXPECT_THAT(TakeSteps(), ElementsAre("remove ORV00005.WAV"));
  EXPECT_EQ(Audio(5), ContentOf(5, "WAV"));
  ExpectShut();
}

TEST_F(AudioFaultTest, FileThatCannotBeOpenedGivesTwoBoxesAndTheSecondsCode) {
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 2, "ORV00005.WAV");
  for (int i = 0; i < 2; ++i) {
    boxes_.Expect("Failed to open file.");
    boxes_.Expect(test::kInvalidParameterText);
  }
  EXPECT_EQ(intake_.OpenAudioFile(5), kInvalidParameter);
  EXPECT_EQ(boxes_.Last().icon, platform::BoxIcon::Information);
  EXPECT_EQ(intake_.StartRecording(5), 0);
  EXPECT_EQ(intake_.AudioFileHandle, 0);
  EXPECT_THAT(TakeSteps(), IsEmpty());
  ExpectShut();
}

TEST_F(AudioFaultTest, DirectoryThatIsGoneIsOneThatCannotBeOpened) {
  std::filesystem::remove_all(far_.path());
  gAudioWallParts[0].Location = far_.path();
  boxes_.Expect("Failed to open file.");
  boxes_.Expect(test::kInvalidParameterText);
  EXPECT_EQ(intake_.OpenAudioFile(5), kInvalidParameter);
}

// Each write of the header but the format's own: three of the first chunk, two of each that follows.
TEST_F(AudioFaultTest, ChunkThatCannotBeWrittenEndsTheStart) {
  for (const int nth : {1, 2, 3, 4, 5, 7, 8}) {
    const ScopedFileFault fault = FailWrite(nth);
    boxes_.Expect(test::kCannotWriteText);
    EXPECT_EQ(intake_.OpenAudioFile(5), kCannotWrite) << nth;
  }
  TakeSteps();
  const ScopedFileFault fault = FailWrite(1);
  boxes_.Expect(test::kCannotWriteText);
  EXPECT_EQ(intake_.StartRecording(5), 0);
  EXPECT_THAT(TakeSteps(), ElementsAre("remove ORV00005.WAV"));
  ExpectShut();
}

TEST_F(AudioFaultTest, FormatThatCannotBeWrittenOpensTheGateOnAFileWithoutADataChunk) {
  {
    const ScopedFileFault fault = FailWrite(6);
    boxes_.Expect("No Data written during 'Write Wave Format'");
    EXPECT_EQ(intake_.StartRecording(5), 0);
  }
  EXPECT_THAT(TakeSteps(), ElementsAre("shows \"5\"", "key feed.ini", "record Carts1.lst", "red (open)"));
  Play('a');
  EXPECT_EQ(Audio(5), test::BareChunk("RIFF", 0, "WAVE") + "fmt " + test::Number(16, 4) + Block('a'));
  boxes_.Expect(test::kInvalidParameterText);
  EXPECT_EQ(intake_.CloseAudioFile(), kInvalidParameter);
  EXPECT_NE(intake_.AudioFileHandle, 0);
}

TEST_F(AudioFaultTest, BlockThatCannotBeWrittenIsLostWithABoxAndTheRecordingGoesOn) {
  intake_.StartRecording(5);
  Play('a');
  {
    const ScopedFileFault fault = FailWrite(1, 2);
    for (const char letter : {'b', 'c'}) {
      boxes_.Expect("Failed to write data during 'WriteAudioData'");
      Play(letter);
      EXPECT_TRUE(intake_.Recording);
    }
  }
  Play('d');
  intake_.EndRecording();
  EXPECT_EQ(Audio(5), ClosedWave(Block('a') + Block('d')));
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0.2F));
}

TEST_F(AudioFaultTest, BlockWithoutAFileIsAnInvalidParameter) {
  boxes_.Expect(test::kInvalidParameterText);
  EXPECT_EQ(intake_.WriteAudioData("ab", 2), kInvalidParameter);
  boxes_.Expect(test::kInvalidParameterText);
  EXPECT_EQ(intake_.CloseAudioFile(), kInvalidParameter);
}

// The first write is the samples' length, the second the file's.
TEST_F(AudioFaultTest, CloseThatFailsKeepsTheHandleAndTheEndGoesOn) {
  for (const int nth : {1, 2}) {
    intake_.StartRecording(5);
    const platform::MmioHandle handle = intake_.AudioFileHandle;
    Play('a');
    TakeSteps();
    const ScopedFileFault fault = FailWrite(nth);
    boxes_.Expect(test::kCannotWriteText);
    EXPECT_EQ(intake_.EndRecording(), 0);
    EXPECT_EQ(intake_.AudioFileHandle, handle);
    EXPECT_FALSE(intake_.Recording);
    EXPECT_EQ(intake_.CurrentRecordCart, 0);
    EXPECT_THAT(TakeSteps(), ElementsAre("EndOfCut (open)", "shows \"\"", "record Carts1.lst", "key feed.ini",
                                         "key feed.ini", "record Carts2.lst", "wall", "grey"));
    EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", nth == 1 ? 0 : 0.1F));
    EXPECT_EQ(RecordBytes(1900), IndexRecord(5));
    feed_.LastRecordedCartNumber = 0;
    feed_.IndexCartNumber = 1900;
    SetRecordBytes(1900, test::BlankCartRecord());
    test::WriteWholeFile(feed_.FullConfigFile, "[AudioCapture]\r\n");
  }
}

TEST_F(AudioFaultTest, RecordingBehindACloseThatFailedIsWhole) {
  intake_.StartRecording(5);
  {
    const ScopedFileFault fault = FailWrite(1);
    boxes_.Expect(test::kCannotWriteText);
    intake_.EndRecording();
  }
  const platform::MmioHandle former = intake_.AudioFileHandle;
  EXPECT_EQ(intake_.StartRecording(6), 0);
  EXPECT_NE(intake_.AudioFileHandle, former);
  platform::MMIOINFO info;
  EXPECT_NE(platform::mmioGetInfo(former, &info, 0), 0) << "the former file is let go of";
  Play('a');
  intake_.EndRecording();
  EXPECT_EQ(Audio(6), ClosedWave(Block('a')));
}

TEST_F(AudioFaultTest, KilledRecordingHasEveryBlockThatWasDelivered) {
  test::OtherProcess recording([this] {
    intake_.StartRecording(5);
    for (const char letter : {'a', 'b', 'c'}) Play(letter);
    ::raise(SIGSTOP);
    return false;
  });
  ASSERT_TRUE(recording.HasStopped());
  recording.Kill();
  EXPECT_EQ(Audio(5), OpenWave(Block('a') + Block('b') + Block('c')));
  EXPECT_EQ(RecordBytes(5), RecordingRecord());
  EXPECT_EQ(Key("CurrentlyRecordingCartNumber"), "5");
}

// What comes in behind a box: the operator hasn't answered, and the feed goes on.
class BehindABoxTest : public AudioFaultTest {
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

}  // namespace
}  // namespace vorda
