// Recordings that meet failures: what is told, and what is kept.

#include <gmock/gmock.h>
#include <signal.h>

#include <cerrno>
#include <filesystem>
#include <string>

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

}  // namespace
}  // namespace vorda
