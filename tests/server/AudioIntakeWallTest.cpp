// Recordings on a wall that refuses, goes away and comes back, is shared by ranges that overlap, and in
// formats of every kind.

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>

#include "feed/CartRotation.h"
#include "support/AudioIntakeFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::IsEmpty;

class AudioWallFaultTest : public test::AudioIntakeFixture {
 protected:
  // Every operation on the wall fails, but for those that only look where `looks` are let through.
  ScopedFileFault RefuseWall(int systemError, bool looks) const {
    return ScopedFileFault([=, wall = wall_.path()](FileOperation operation, std::string_view path) {
      const bool looking = operation == FileOperation::Read || operation == FileOperation::Stat;
      return path.starts_with(wall) && !(looks && looking) ? systemError : 0;
    });
  }
  // Of the length that can't be had.
  static constexpr const char* kCannotPlay =
      "The specified file cannot be played on the specified MCI device. The file may be corrupt, or not in "
      "the correct format.";
  void ExpectNotOpened() {
    boxes_.Expect("Failed to open file.");
    boxes_.Expect(test::kInvalidParameterText);
  }
  void ExpectWholeRecordingInto(std::int32_t cart) {
    EXPECT_EQ(intake_.StartRecording(cart), 0);
    Play('x');
    intake_.EndRecording();
    EXPECT_EQ(Audio(cart), ClosedWave(Block('x')));
    EXPECT_EQ(RecordBytes(cart), RecordedRecord("10:30", 0.1F));
  }
};

TEST_F(AudioWallFaultTest, WallThatMayOnlyBeReadRefusesEachStartWithItsBoxAndIsTakenUpAgain) {
  GiveCart(6, "Old", 30);
  {
    const ScopedFileFault readOnly = RefuseWall(EROFS, true);
    ExpectNotOpened();
    EXPECT_EQ(intake_.StartRecording(5), 0);
    boxes_.Expect("Cannot delete " + CartFile(6, "WAV"));
    EXPECT_EQ(intake_.StartRecording(6), 0);
    EXPECT_FALSE(intake_.Recording);
    EXPECT_EQ(intake_.CurrentRecordCart, 0);
  }
  EXPECT_EQ(RecordBytes(5), test::BlankCartRecord());
  EXPECT_EQ(RecordBytes(6), test::FullCartRecord("Old", 30));
  EXPECT_EQ(Audio(6), ContentOf(6, "WAV"));
  ExpectWholeRecordingInto(6);
}

TEST_F(AudioWallFaultTest, WallThatGoesAwayInARecordingCostsItsCartAndIsTakenUpAgain) {
  EXPECT_EQ(intake_.StartRecording(5), 0);
  Play('a');
  {
    const ScopedFileFault gone = RefuseWall(EIO, false);
    for (const char letter : {'b', 'c'}) {
      boxes_.Expect("Failed to write data during 'WriteAudioData'");
      Play(letter);
    }
    EXPECT_TRUE(intake_.Recording);
    boxes_.Expect(test::kCannotWriteText);
    boxes_.Expect(kCannotPlay, platform::BoxAnswer::Cancel);
    EXPECT_EQ(intake_.EndRecording(), 0);
    EXPECT_FALSE(intake_.Recording);
    EXPECT_EQ(intake_.CurrentRecordCart, 0);
    ExpectNotOpened();
    EXPECT_EQ(intake_.StartRecording(6), 0);
    EXPECT_FALSE(intake_.Recording);
  }
  EXPECT_EQ(Audio(5), OpenWave(Block('a')));
  EXPECT_EQ(Key("LastRecordedCartNumber"), "5");
  EXPECT_EQ(Key("CurrentlyRecordingCartNumber"), "0");
  ExpectWholeRecordingInto(7);
}

TEST_F(AudioWallFaultTest, WallThatIsRemovedInARecordingLosesItsCartWithoutABoxAndServesAgainWhenItIsBack) {
  EXPECT_EQ(intake_.StartRecording(5), 0);
  Play('a');
  std::filesystem::remove_all(wall_.path());
  Play('b');
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_EQ(intake_.AudioFileHandle, 0);
  EXPECT_EQ(intake_.CurrentRecordCart, 0);
  EXPECT_EQ(Key("LastRecordedCartNumber"), "5");
  ExpectNotOpened();
  EXPECT_EQ(intake_.StartRecording(6), 0);
  EXPECT_FALSE(intake_.Recording);

  test::MakeWallLists(wall_.path());
  EXPECT_EQ(intake_.StartRecording(7), 0);
  Play('x');
  intake_.EndRecording();
  EXPECT_EQ(Audio(7), ClosedWave(Block('x')));
  EXPECT_EQ(RecordBytes(7), RecordedRecord("10:30", 0.1F));
}

// A disk that can't be asked counts as full.
TEST_F(AudioWallFaultTest, RoomOfNothingRefusesWithoutABoxHoweverOften) {
  freeBytes_ = 0;
  for (int tick = 0; tick < 100; ++tick) EXPECT_EQ(intake_.StartRecording(5), -2);
  EXPECT_THAT(TakeSteps(), IsEmpty());
  freeBytes_ = kPlenty;
  ExpectWholeRecordingInto(5);
}

// Two feeds whose ranges overlap are not told apart.
class OverlappingRangesTest : public test::AudioIntakeFixture {
 protected:
  OverlappingRangesTest() {
    second_ = feed_;
    second_.FullConfigFile = home_ / "second.ini";
    otherStream_.AudioData = [this](const char* bytes, std::int32_t length) { other_.Take(bytes, length); };
    otherStream_.numberchannels = 2;
    otherStream_.samplerate = 1000;
  }

  WireFeedRecord second_;
  test::FakeStream otherStream_;
  AudioIntake other_{{[this] { return &second_; }, [this] { return &otherStream_; }, [](std::string_view) {},
                      [](const std::string&) {}, [](bool) {}}};
};

TEST_F(OverlappingRangesTest, CartThatTheOtherFeedRecordsIntoIsNotFoundEmpty) {
  EXPECT_EQ(intake_.StartRecording(GetNextRecordCartNumber(feed_)), 0);
  EXPECT_EQ(intake_.CurrentRecordCart, 1);
  EXPECT_EQ(GetNextRecordCartNumber(second_), 2);
}

TEST_F(OverlappingRangesTest, StartBesideTheOtherFeedsRecordingErasesItsCartAndTheOtherGoesOn) {
  EXPECT_EQ(intake_.StartRecording(5), 0);
  Play('a');
  EXPECT_EQ(other_.StartRecording(4), 0);
  EXPECT_EQ(RecordBytes(5), test::EmptiedCartRecord());
  EXPECT_FALSE(std::filesystem::exists(CartFile(5, "WAV")));
  Play('b');
  otherStream_.Play(Block('c'));
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_EQ(other_.EndRecording(), 0);
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0)) << "filed without its audio, and no box";
  EXPECT_EQ(Audio(4), ClosedWave(Block('c')));
  EXPECT_EQ(RecordBytes(4), RecordedRecord("10:30", 0.1F));
}

using Format = std::pair<std::int16_t, std::int32_t>;  // channels and rate

class RecordedFormatTest : public test::AudioIntakeFixture, public ::testing::WithParamInterface<Format> {
 protected:
  RecordedFormatTest() { std::tie(stream_.numberchannels, stream_.samplerate) = GetParam(); }
};

TEST_P(RecordedFormatTest, IsDeclaredAsTheStreamHasItAndTheLengthFollowsFromIt) {
  const auto [channels, rate] = GetParam();
  const auto align = static_cast<std::uint16_t>(2 * channels);
  const std::uint32_t bytesPerSecond = static_cast<std::uint32_t>(rate) * align;
  const test::WaveHeader header{
      1, static_cast<std::uint16_t>(channels), static_cast<std::uint32_t>(rate), bytesPerSecond, align, 16};
  const std::string sound(2 * bytesPerSecond, 's');
  ASSERT_EQ(intake_.StartRecording(5), 0);
  stream_.Play(sound);
  intake_.EndRecording();
  EXPECT_EQ(Audio(5), test::Riff(test::FormatChunk(header) + test::Chunk("data", sound)));
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 2));
}

INSTANTIATE_TEST_SUITE_P(Formats, RecordedFormatTest,
                         ::testing::Values(Format{1, 8000}, Format{2, 8000}, Format{3, 8000},
                                           Format{1, 11025}, Format{2, 44100}, Format{1, 48000},
                                           Format{2, 96000}, Format{1, 192000}, Format{2, 192000}));

// Such a sound has no length.
class NoFormatTest : public RecordedFormatTest {};

TEST_P(NoFormatTest, IsDeclaredAsItIsAndTheRecordingIsFiled) {
  const auto [channels, rate] = GetParam();
  const auto align = static_cast<std::uint16_t>(2 * channels);
  const test::WaveHeader header{1,
                                static_cast<std::uint16_t>(channels),
                                static_cast<std::uint32_t>(rate),
                                static_cast<std::uint32_t>(rate) * align,
                                align,
                                16};
  ASSERT_EQ(intake_.StartRecording(5), 0);
  stream_.Play("sound.");
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_EQ(Audio(5), test::Riff(test::FormatChunk(header) + test::Chunk("data", "sound.")));
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0));
  EXPECT_EQ(Key("CurrentlyRecordingCartNumber"), "0");
}

INSTANTIATE_TEST_SUITE_P(Formats, NoFormatTest,
                         ::testing::Values(Format{0, 8000}, Format{1, 0}, Format{0, 0}));

}  // namespace
}  // namespace vorda
