// What a recording does from its start to its end: to the gate, the file, the wall and the keys.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/AudioIntakeFixture.h"

namespace vorda {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class StartRecordingTest : public test::AudioIntakeFixture {};

TEST_F(StartRecordingTest, StepsInTheirOrder) {
  GiveCart(5, "Old", 30);
  GiveCart(6, "Old", 30);
  EXPECT_EQ(intake_.StartRecording(5), 0);
  EXPECT_THAT(TakeSteps(), ElementsAre("remove ORV00005.WAV",
                                       "line Opened Audio File " + CartFile(5, "WAV") +
                                           ", handle = " + std::to_string(intake_.AudioFileHandle),
                                       "shows \"5\"", "key feed.ini", "record Carts1.lst",
                                       "remove ORV00006.WAV", "record Carts1.lst", "red (open)"));
}

TEST_F(StartRecordingTest, WhatStandsWhenTheGateIsOpen) {
  EXPECT_EQ(intake_.StartRecording(5), 0);
  EXPECT_TRUE(intake_.Recording);
  EXPECT_EQ(intake_.CurrentRecordCart, 5);
  EXPECT_NE(intake_.AudioFileHandle, 0);
  EXPECT_EQ(Audio(5), OpenWave(""));
  EXPECT_EQ(RecordBytes(5), RecordingRecord());
  EXPECT_EQ(Ini(), "[AudioCapture]\r\nCurrentlyRecordingCartNumber=5\r\n");
  EXPECT_EQ(feed_.RecordStartStamp.Day, now_.day);
  EXPECT_EQ(feed_.RecordStartStamp.Seconds, 37859.25F);
  EXPECT_EQ(feed_.LastRecordedCartNumber, 0);
}

TEST_F(StartRecordingTest, LimitOfTheCutIsSetAfresh) {
  feed_.ThisItemMaxLength = 3;
  intake_.StartRecording(5);
  EXPECT_EQ(feed_.ThisItemMaxLength, 600);
}

TEST_F(StartRecordingTest, ClearsBehindTheCartAndNotTheCart) {
  for (std::int32_t cart = 1; cart <= 10; ++cart) GiveCart(cart, "Old", 30);
  intake_.StartRecording(5);
  for (const std::int32_t cart : {6, 7, 8}) EXPECT_EQ(RecordBytes(cart), test::EmptiedCartRecord()) << cart;
  for (const std::int32_t cart : {4, 9})
    EXPECT_EQ(RecordBytes(cart), test::FullCartRecord("Old", 30)) << cart;
}

TEST_F(StartRecordingTest, NumbersThatAreNoCartsAreRefusedInSilence) {
  for (const std::int32_t cart : {0, -1, 10000}) EXPECT_EQ(intake_.StartRecording(cart), -1) << cart;
  EXPECT_THAT(TakeSteps(), IsEmpty());
  EXPECT_FALSE(intake_.Recording);
  EXPECT_THAT(askedFor_, IsEmpty());
}

TEST_F(StartRecordingTest, FirstAndLastCartOfTheWallAreTaken) {
  Connect(10);
  EXPECT_EQ(intake_.StartRecording(1), 0);
  intake_.EndRecording();
  EXPECT_EQ(intake_.StartRecording(9999), 0);
  EXPECT_EQ(intake_.CurrentRecordCart, 9999);
}

TEST_F(StartRecordingTest, LessThanTenSecondsOfRoomRefusesInSilence) {
  GiveCart(5, "Old", 30);
  freeBytes_ = 9999;
  EXPECT_EQ(intake_.StartRecording(5), -2);
  EXPECT_THAT(TakeSteps(), IsEmpty());
  EXPECT_EQ(Audio(5), ContentOf(5, "WAV"));
  EXPECT_THAT(askedFor_, ElementsAre(CartFile(5, "WAV")));
}

struct Room {
  std::uint64_t bytes;
  bool enough;
};

class RoomTest : public StartRecordingTest, public ::testing::WithParamInterface<Room> {};

TEST_P(RoomTest, LowHalfWithoutItsSignCountsWhereTheHighHalfIsNothing) {
  freeBytes_ = GetParam().bytes;
  EXPECT_EQ(intake_.StartRecording(5), GetParam().enough ? 0 : -2);
}

INSTANTIATE_TEST_SUITE_P(Free, RoomTest,
                         ::testing::Values(Room{10000, true}, Room{0, false}, Room{0x7FFFFFFF, true},
                                           Room{0x80000000, true}, Room{0xFFFFFFFF, false},
                                           Room{0x1'0000'0000 - 9999, false},
                                           Room{0x1'0000'0000 - 10000, true}, Room{0x1'0000'0000, true},
                                           Room{0x5'0000'0001, true}));

TEST_F(StartRecordingTest, FormatWithoutBytesNeedsNoRoom) {
  feed_.RecordFormat.nAvgBytesPerSec = 0;
  freeBytes_ = 0;
  EXPECT_EQ(intake_.StartRecording(5), 0);
  EXPECT_TRUE(intake_.Recording);
}

// Ten seconds of it don't fit 32 bits.
TEST_F(StartRecordingTest, LargestFormatIsMultipliedOut) {
  feed_.RecordFormat.nAvgBytesPerSec = 0x7FFFFFFF;
  freeBytes_ = 0x7FFFFFFF;
  EXPECT_EQ(intake_.StartRecording(5), -2);
}

TEST_F(StartRecordingTest, WindowWithoutAFeedOrAStreamOpensNoGate) {
  hasFeed_ = false;
  intake_.StartRecording(5);
  hasFeed_ = true;
  streamOfWindow_ = nullptr;
  intake_.StartRecording(5);
  EXPECT_THAT(TakeSteps(), IsEmpty());
  EXPECT_FALSE(intake_.Recording);
}

class EndRecordingTest : public test::AudioIntakeFixture {
 protected:
  void Record(std::int32_t cart, const std::string& letters) {
    ASSERT_EQ(intake_.StartRecording(cart), 0);
    for (const char letter : letters) Play(letter);
    TakeSteps();
  }
};

TEST_F(EndRecordingTest, StepsInTheirOrder) {
  Record(5, "ab");
  test::WriteWholeFile(feed_.FullConfigFile, "[AudioCapture]\r\n");
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_THAT(TakeSteps(),
              ElementsAre("EndOfCut (open)", "line Closed Audio File", "shows \"\"", "record Carts1.lst",
                          "key feed.ini", "key feed.ini", "record Carts2.lst", "wall", "grey"));
  EXPECT_EQ(Ini(), "[AudioCapture]\r\nLastRecordedCartNumber=5\r\nCurrentlyRecordingCartNumber=0\r\n");
}

TEST_F(EndRecordingTest, WhatStandsBehindIt) {
  Record(5, "ab");
  intake_.EndRecording();
  EXPECT_FALSE(intake_.Recording);
  EXPECT_EQ(intake_.CurrentRecordCart, 0);
  EXPECT_EQ(intake_.AudioFileHandle, 0);
  EXPECT_EQ(Audio(5), ClosedWave(Block('a') + Block('b')));
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0.2F));
  EXPECT_EQ(RecordBytes(1900), IndexRecord(5));
  EXPECT_EQ(feed_.LastRecordedCartNumber, 5);
}

TEST_F(EndRecordingTest, TitleTellsTheStartsMinuteOfTheRoundedSecond) {
  now_.seconds = 37859.75;
  Record(5, "a");
  now_ = {now_.day + 1, 100};
  intake_.EndRecording();
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:31", 0.1F));
}

TEST_F(EndRecordingTest, WithNothingUnderWayNothingIsDone) {
  EXPECT_EQ(intake_.EndRecording(), 0);
  intake_.Recording = true;
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_TRUE(intake_.Recording) << "the cart's number decides, not the gate";
  EXPECT_THAT(TakeSteps(), IsEmpty());
  EXPECT_EQ(Ini(), "[AudioCapture]\r\n");
}

TEST_F(EndRecordingTest, SecondEndDoesNothing) {
  Record(5, "a");
  intake_.EndRecording();
  TakeSteps();
  EXPECT_EQ(intake_.EndRecording(), 0);
  EXPECT_THAT(TakeSteps(), IsEmpty());
}

TEST_F(EndRecordingTest, CartIsEndedThoughItsGateIsShut) {
  Record(5, "a");
  intake_.Recording = false;
  intake_.EndRecording();
  EXPECT_EQ(Audio(5), ClosedWave(Block('a')));
  EXPECT_EQ(intake_.CurrentRecordCart, 0);
}

TEST_F(EndRecordingTest, WhatWasTakenInBeforeTheEndOfTheCutIsInTheFile) {
  Record(5, "a");
  stream_.Keep(Block('b'));
  stream_.Keep(Block('c'));
  intake_.EndRecording();
  EXPECT_EQ(Audio(5), ClosedWave(Block('a') + Block('b') + Block('c')));
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0.3F));
}

TEST_F(EndRecordingTest, BlocksBesideTheGateAreDropped) {
  Play('x');
  Record(5, "a");
  intake_.EndRecording();
  Play('y');
  EXPECT_EQ(Audio(5), ClosedWave(Block('a')));
}

// A feed without audio: its Record button makes such a cart.
TEST_F(EndRecordingTest, NoSoundAtAllMakesAFileOf44BytesAndACartOfNoLength) {
  Record(5, "");
  intake_.EndRecording();
  EXPECT_EQ(Audio(5).size(), 44U);
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0));
  CartInfo info;
  ASSERT_EQ(ReadCartInfo(info, 5), 0);
  EXPECT_FALSE(IsEmptyCart(info));
}

TEST_F(EndRecordingTest, OneRecordingBehindAnother) {
  Record(5, "a");
  intake_.EndRecording();
  Record(6, "b");
  EXPECT_EQ(Key("CurrentlyRecordingCartNumber"), "6");
  intake_.EndRecording();
  EXPECT_EQ(Audio(5), ClosedWave(Block('a')));
  EXPECT_EQ(Audio(6), ClosedWave(Block('b')));
  EXPECT_EQ(RecordBytes(1900), IndexRecord(6));
  EXPECT_EQ(Key("LastRecordedCartNumber"), "6");
}

TEST_F(EndRecordingTest, LinkedCartIsRecordedToWhereItsLinkPoints) {
  AllowLinks();
  const std::string target = far_ / "shared.wav";
  test::WriteWholeFile(target, "former");
  test::WriteWholeFile(CartFile(5, "FLK"), target + "\r\n");
  ASSERT_EQ(intake_.StartRecording(5), 0);
  EXPECT_THAT(askedFor_, ElementsAre(target));
  EXPECT_EQ(TakeSteps()[0], "remove shared.wav");
  Play('a');
  intake_.EndRecording();
  EXPECT_EQ(test::ReadWholeFile(target), ClosedWave(Block('a')));
  EXPECT_FALSE(std::filesystem::exists(CartFile(5, "WAV")));
  EXPECT_EQ(RecordBytes(5), RecordedRecord("10:30", 0.1F));
}

class AudioFileTest : public test::AudioIntakeFixture {};

TEST_F(AudioFileTest, HeaderIsOfTheStreamsPresentFormat) {
  feed_.RecordFormat = {2, 1, 8000, 16000, 2, 8, 0, 0};
  stream_.numberchannels = 1;
  stream_.samplerate = 44100;
  EXPECT_EQ(intake_.OpenAudioFile(5), 0);
  EXPECT_EQ(Audio(5), test::BareChunk("RIFF", 0, "WAVE") + test::FormatChunk(test::kCdMono) +
                          test::BareChunk("data", 0, ""));
}

TEST_F(AudioFileTest, EachBlockIsInTheFileAtOnceAndTheSizesStayNothing) {
  intake_.OpenAudioFile(5);
  EXPECT_EQ(intake_.WriteAudioData("abc", 3), 0);
  EXPECT_EQ(Audio(5), OpenWave("abc"));
  EXPECT_EQ(intake_.WriteAudioData("de", 2), 0);
  EXPECT_EQ(Audio(5), OpenWave("abcde"));
  EXPECT_EQ(intake_.CloseAudioFile(), 0);
  EXPECT_EQ(Audio(5), ClosedWave("abcde"));
}

TEST_F(AudioFileTest, EmptyFileIsDeletedToo) {
  test::WriteWholeFile(CartFile(5, "WAV"), "");
  EXPECT_EQ(intake_.OpenAudioFile(5), 0);
  EXPECT_EQ(TakeSteps()[0], "remove ORV00005.WAV");
}

// A player that holds the former recording keeps it.
TEST_F(AudioFileTest, FormerFileIsAnotherOne) {
  GiveFile(5, "WAV");
  std::ifstream playing(CartFile(5, "WAV"));
  intake_.OpenAudioFile(5);
  std::string line;
  std::getline(playing, line);
  EXPECT_EQ(line, ContentOf(5, "WAV"));
}

}  // namespace
}  // namespace vorda
