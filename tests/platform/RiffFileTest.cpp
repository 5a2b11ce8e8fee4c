#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "platform/FileFault.h"
#include "platform/RiffFile.h"
#include "support/TempDirectory.h"
#include "support/WaveBytes.h"

namespace vorda::test {
namespace {

using platform::kNotAWave;
using platform::ReadRiffWave;
using platform::RiffWave;

constexpr std::uint32_t kUnknown = 0xFFFFFFFF;

class RiffFileTest : public ::testing::Test {
 protected:
  int Read(const std::string& bytes) {
    WriteWholeFile(path_, bytes);
    return ReadRiffWave(path_, wave_);
  }
  std::uint64_t LengthOf(const std::string& bytes) {
    EXPECT_EQ(Read(bytes), 0);
    return wave_.milliseconds;
  }

  TempDirectory directory_;
  const std::string path_ = directory_ / "sound.wav";
  RiffWave wave_;
};

TEST_F(RiffFileTest, TellsTheFormatAndWhereTheSoundIs) {
  ASSERT_EQ(Read(Wave({1, 2, 44100, 176400, 4, 16}, 176400)), 0);
  EXPECT_EQ(wave_.format.wFormatTag, 1);
  EXPECT_EQ(wave_.format.nChannels, 2);
  EXPECT_EQ(wave_.format.nSamplesPerSec, 44100U);
  EXPECT_EQ(wave_.format.nAvgBytesPerSec, 176400U);
  EXPECT_EQ(wave_.format.nBlockAlign, 4);
  EXPECT_EQ(wave_.format.wBitsPerSample, 16);
  EXPECT_EQ(wave_.format.coding, 1);
  EXPECT_EQ(wave_.dataBegin, 44U);
  EXPECT_EQ(wave_.dataBytes, 176400U);
  EXPECT_EQ(wave_.milliseconds, 1000U);
}

struct LengthRow {
  const char* name;
  std::string bytes;
  std::uint64_t milliseconds;
};
void PrintTo(const LengthRow& row, std::ostream* out) {
  *out << row.name;
}
class RiffLengthTest : public RiffFileTest, public ::testing::WithParamInterface<LengthRow> {};

TEST_P(RiffLengthTest, LengthOfWhatTheFileHolds) {
  EXPECT_EQ(LengthOf(GetParam().bytes), GetParam().milliseconds);
}

std::string Fact(std::uint32_t samples) {
  return Chunk("fact", Number(samples, 4));
}
// A compressed file whose fact chunk says so many samples.
std::string Compressed(const WaveHeader& header, std::uint32_t samples, std::size_t bytes) {
  return Riff(Chunk("fmt ", FormatBytes(header) + Number(0, 2)) + Fact(samples) +
              Chunk("data", Sound(bytes)));
}
std::string WithFormat(std::string_view chunk, std::size_t bytes = 16000) {
  return Riff(Chunk("fmt ", chunk) + Chunk("data", Sound(bytes)));
}

// What sample formats hold: blocks at the rate.
const std::vector<LengthRow> kSampleRows = {
    {"SampleShortOfASecond", Wave(kCdMono, std::size_t{44099} * 2), 999},
    {"JustASecond", Wave(kCdMono, std::size_t{44100} * 2), 1000},
    {"SampleShortOfAMillisecond", Wave({1, 1, 8000, 8000, 1, 8}, 7), 0},
    {"BrokenBlockAtTheEnd", Wave({1, 2, 1000, 4000, 4, 16}, 4003), 1000},
    {"AverageIsNotAskedOfSamples", Wave({1, 1, 8000, 1, 2, 16}, 16000), 1000},
    {"Float", Wave({3, 2, 48000, 1, 8, 32}, 384000), 1000},
    {"ALaw", Wave({6, 1, 8000, 1, 1, 8}, 12000), 1500},
    {"MuLaw", Wave({7, 1, 8000, 1, 1, 8}, 12000), 1500},
    {"FactIsNotAskedOfSamples",
     Riff(FormatChunk({7, 1, 8000, 8000, 1, 8}) + Fact(100) + Chunk("data", Sound(8000))), 1000},
    {"ExtensiblePcm", WithFormat(ExtensibleBytes({1, 1, 8000, 1, 4, 24}, 1), 32000), 1000},
    {"ExtensibleMuLaw", WithFormat(ExtensibleBytes({1, 1, 8000, 1, 1, 8}, 7), 8000), 1000},
    {"ExtensibleWithoutItsSubFormat", WithFormat(ExtensibleBytes({}, 1).substr(0, 24)), 1000},
    {"HighestRate", Wave({1, 1, 0xFFFFFFFF, 0xFFFFFFFF, 1, 8}, 4294968), 1},
    {"LongerThanAnHourOfSamplesByTheSecond", Wave({1, 1, 1, 1, 1, 8}, 3601), 3601000},
};
INSTANTIATE_TEST_SUITE_P(Samples, RiffLengthTest, ::testing::ValuesIn(kSampleRows));

// What other formats hold: what the fact chunk tells, or the bytes at their average.
const std::vector<LengthRow> kCompressedRows = {
    {"Adpcm", Compressed(kAdpcm, 22050, 11264), 1000},
    {"Gsm", Compressed(kGsm, 12345, 2535), 1543},
    {"Mp2", Compressed(kMp2, 96000, 64512), 2000},
    {"Mp3", Compressed(kMp3, 66000, 24000), 1496},
    {"Mp2WithoutFact", Wave(kMp2, 48000), 1500},
    {"FactOfNothing", Compressed(kMp3, 0, 24000), 1500},
    {"FactOfAStream", Compressed(kMp3, kUnknown, 24000), 1500},
    {"FactFarTooLong", Compressed(kMp3, 44100 * 60, 24000), 1500},
    {"FactFarTooShort", Compressed(kMp3, 1, 160000), 10000},
    {"FactOfAChangingBitRate", Compressed(kMp3, 44100 * 3, 24000), 3000},
    {"FactTooShortToTell",
     Riff(FormatChunk(kMp3) + Chunk("fact", Number(22050, 3)) + Chunk("data", Sound(16000))), 1000},
    {"FirstFactCounts", Riff(FormatChunk(kAdpcm) + Fact(22050) + Fact(11025) + Chunk("data", Sound(11264))),
     1000},
    {"FirstDataCountsThoughFactIsBehind",
     Riff(FormatChunk(kMp3) + Chunk("data", Sound(16000)) + Chunk("data", Sound(32000)) + Fact(0)), 1000},
    {"FactBehindTheData", Riff(FormatChunk(kAdpcm) + Chunk("data", Sound(11264)) + Fact(22050)), 1000},
    {"FactWithoutData", Riff(FormatChunk(kAdpcm) + Fact(22050)), 0},
    {"FactWithEmptyData", Compressed(kAdpcm, 22050, 0), 0},
    {"CutShortAndFactAsDeclared",
     Riff(FormatChunk(kMp3) + Fact(88200) + BareChunk("data", 32000, Sound(16000))), 1000},
    {"NoAverageButFact", Compressed({2, 1, 22050, 0, 512, 4}, 22050, 11264), 1000},
    {"NoAverageAndTheFactOfAStream", Compressed({2, 1, 22050, 0, 512, 4}, kUnknown, 11264), 0},
    {"NoAverageAndNoFact", Wave({2, 1, 22050, 0, 512, 4}, 11264), 0},
    {"NoBlockAlignIsNoMatterHere", Wave({0x55, 2, 44100, 16000, 0, 0}, 16000), 1000},
    {"ExtensibleMp2", WithFormat(ExtensibleBytes(kMp2, 0x50), 48000), 1500},
};
INSTANTIATE_TEST_SUITE_P(Compressed, RiffLengthTest, ::testing::ValuesIn(kCompressedRows));

const std::vector<LengthRow> kNothingRows = {
    {"NoRate", Wave({1, 1, 0, 16000, 2, 16}, 16000), 0},
    {"NoBlockAlign", Wave({1, 1, 8000, 16000, 0, 16}, 16000), 0},
    {"NoChannels", Wave({1, 0, 8000, 16000, 2, 16}, 16000), 0},
    {"CompressedWithoutRate", Compressed({0x55, 2, 0, 16000, 1, 0}, 16000, 16000), 0},
    {"CompressedWithoutChannels", Compressed({0x55, 0, 44100, 16000, 1, 0}, 44100, 16000), 0},
    {"NoDataChunk", Riff(FormatChunk()), 0},
    {"EmptyDataChunk", Wave({}, 0), 0},
    {"NeverClosed", BareChunk("RIFF", 0, "WAVE") + FormatChunk() + BareChunk("data", 0, Sound(16000)), 0},
    {"BlankOfAnEditor", BareChunk("RIFF", 46, "WAVE") + FormatChunk() + BareChunk("data", 10, ""), 0},
};
INSTANTIATE_TEST_SUITE_P(Nothing, RiffLengthTest, ::testing::ValuesIn(kNothingRows));

// Sizes that aren't so, and where the chunks are found nevertheless.
const std::vector<LengthRow> kLayoutRows = {
    {"Truncated", Riff(FormatChunk() + BareChunk("data", 64000, Sound(8000))), 500},
    {"Stream", BareChunk("RIFF", kUnknown, "WAVE") + FormatChunk() + BareChunk("data", kUnknown, Sound(8000)),
     500},
    {"RiffSizeTooSmall", BareChunk("RIFF", 4, "WAVE") + FormatChunk() + Chunk("data", Sound(16000)), 1000},
    {"DataEndsAheadOfTheFile", Riff(FormatChunk() + Chunk("data", Sound(8000)) + Chunk("LIST", Sound(90))),
     500},
    {"FirstDataChunkCounts", Riff(FormatChunk() + Chunk("data", Sound(8000)) + Chunk("data", Sound(80))),
     500},
    {"FirstFormatCounts",
     Riff(FormatChunk() + FormatChunk({1, 1, 4000, 8000, 2, 16}) + Chunk("data", Sound(8000))), 500},
    {"FormatBehindTheData", Riff(Chunk("data", Sound(8000)) + FormatChunk()), 500},
    {"Format14", WithFormat(FormatBytes({}).substr(0, 14)), 1000},
    {"Format18", WithFormat(FormatBytes({}) + Sound(2)), 1000},
    {"Format20", WithFormat(FormatBytes({}) + Sound(4)), 1000},
    {"Format17AndItsPad", WithFormat(FormatBytes({}) + Sound(1)), 1000},
    {"Format4000", WithFormat(FormatBytes({}) + Sound(4000)), 1000},
    {"FormatAtTheCutEnd", Riff(Chunk("data", Sound(8000)) + BareChunk("fmt ", 40, FormatBytes({}))), 500},
    {"OddChunk", Riff(FormatChunk() + Chunk("LIST", "odd") + Chunk("data", Sound(8000))), 500},
    {"OddChunkWithoutPad", Riff(FormatChunk() + BareChunk("LIST", 3, "odd") + Chunk("data", Sound(8000))),
     500},
    {"OddFormatWithoutPad",
     Riff(BareChunk("fmt ", 17, FormatBytes({}) + "x") + BareChunk("bext", 3, "odd") + Chunk("LIST", "even") +
          Chunk("data", Sound(8000))),
     500},
    {"OddChunkWithNoiseForAPad",
     Riff(FormatChunk() + BareChunk("LIST", 3, "oddX") + Chunk("data", Sound(8000))), 500},
    {"UnknownOddChunk", Riff(FormatChunk() + Chunk("zzzz", "odd") + Chunk("data", Sound(8000))), 500},
    {"HugeChunkHidesTheRest",
     Riff(FormatChunk() + BareChunk("LIST", 0xFFFFFFF0, "") + Chunk("data", Sound(8000))), 0},
    {"HugeFormat", Riff(BareChunk("fmt ", kUnknown, FormatBytes({}) + Sound(100))), 0},
};
INSTANTIATE_TEST_SUITE_P(Layout, RiffLengthTest, ::testing::ValuesIn(kLayoutRows));

std::string Ds64(std::uint64_t dataSize) {
  return Chunk("ds64", Number(0, 8) + Number(dataSize, 8) + Number(0, 8) + Number(0, 4));
}
std::string LongRiff(std::string_view ds64, std::uint32_t size, std::string_view id = "RF64") {
  return Riff(
      std::string(ds64) + FormatChunk() + BareChunk("data", size, Sound(16000)) + Chunk("LIST", "info"), id);
}
const std::vector<LengthRow> kLongRows = {
    {"SizeInDs64", LongRiff(Ds64(16000), kUnknown), 1000},
    {"Bw64", LongRiff(Ds64(16000), kUnknown, "BW64"), 1000},
    {"SizeInTheDataChunk", LongRiff(Ds64(4), 8000), 500},
    {"NeverClosed", LongRiff(Ds64(0), kUnknown), 0},
    {"HugeSize", LongRiff(Ds64(0xFFFFFFFFFFFFFFFF), kUnknown), 1000},
    {"LargestSignedSize", LongRiff(Ds64(0x7FFFFFFFFFFFFFFF), kUnknown), 1000},
    {"WithoutDs64", LongRiff("", kUnknown), 1000},
    // What follows it would read as a size of 8000.
    {"ShortDs64", LongRiff(Chunk("ds64", Sound(8)) + Chunk(Number(8000, 4), ""), kUnknown), 1000},
};
INSTANTIATE_TEST_SUITE_P(Rf64, RiffLengthTest, ::testing::ValuesIn(kLongRows));

TEST_F(RiffFileTest, SizeAboveFourGigabytes) {
  constexpr std::uint64_t kBytes = 6000000000;
  WriteWholeFile(path_, Riff(Ds64(kBytes) + FormatChunk() + BareChunk("data", kUnknown, ""), "RF64"));
  ASSERT_EQ(ReadRiffWave(path_, wave_), 0);
  EXPECT_EQ(wave_.dataBytes, 0U);
  // A hole costs no disk.
  ASSERT_EQ(::truncate(path_.c_str(), static_cast<off_t>(wave_.dataBegin + kBytes)), 0);
  ASSERT_EQ(ReadRiffWave(path_, wave_), 0);
  EXPECT_EQ(wave_.dataBytes, kBytes);
  EXPECT_EQ(wave_.milliseconds, kBytes / 16);
}

TEST_F(RiffFileTest, ExtensibleTellsItsCoding) {
  ASSERT_EQ(Read(WithFormat(ExtensibleBytes({}, 7))), 0);
  EXPECT_EQ(wave_.format.wFormatTag, 0xFFFE);
  EXPECT_EQ(wave_.format.coding, 7);
  std::string ambisonic = ExtensibleBytes({}, 1);
  ambisonic.back() = '\x72';
  ASSERT_EQ(Read(WithFormat(ambisonic)), 0);
  EXPECT_EQ(wave_.format.coding, 0);
}

TEST_F(RiffFileTest, ChunksWithoutEndAreGivenUp) {
  std::string many;
  for (int i = 0; i < 900; ++i) many += Chunk("JUNK", "");
  EXPECT_EQ(LengthOf(Riff(FormatChunk() + many + Chunk("data", Sound(8000)))), 500U);
  EXPECT_EQ(LengthOf(Riff(FormatChunk() + many + many + Chunk("data", Sound(8000)))), 0U);
}

struct NoWaveRow {
  const char* name;
  std::string bytes;
};
void PrintTo(const NoWaveRow& row, std::ostream* out) {
  *out << row.name;
}
class NoWaveTest : public RiffFileTest, public ::testing::WithParamInterface<NoWaveRow> {};

TEST_P(NoWaveTest, IsAnErrorAndLeavesNothing) {
  wave_.milliseconds = 1;
  EXPECT_EQ(Read(GetParam().bytes), kNotAWave);
  EXPECT_EQ(wave_.milliseconds, 0U);
  EXPECT_EQ(wave_.format.nChannels, 0);
}

const std::vector<NoWaveRow> kNoWaves = {
    {"Empty", ""},
    {"Text", "Here is the news at six."},
    {"Aiff", BareChunk("FORM", 4, "AIFF") + Chunk("COMM", Sound(18))},
    {"Mp3WithoutRiff", "\xFF\xFB\x90" + Sound(400)},
    {"BigEndianWave", Riff(FormatChunk(), "RIFX")},
    {"OtherRiff", BareChunk("RIFF", 4, "AVI ") + FormatChunk()},
    {"HeaderAlone", Riff("")},
    {"ElevenBytes", Riff("").substr(0, 11)},
    {"NoFormat", Riff(Chunk("data", Sound(100)))},
    {"FormatTooShort", WithFormat(FormatBytes({}).substr(0, 12))},
    {"FormatCutOff", Riff(BareChunk("fmt ", 16, FormatBytes({}).substr(0, 13)))},
};
INSTANTIATE_TEST_SUITE_P(NoWaves, NoWaveTest, ::testing::ValuesIn(kNoWaves));

TEST_F(RiffFileTest, MissingFileTellsItsErrno) {
  EXPECT_EQ(ReadRiffWave(path_, wave_), ENOENT);
  EXPECT_EQ(ReadRiffWave("", wave_), ENOENT);
  EXPECT_EQ(ReadRiffWave(path_ + "/below", wave_), ENOENT);
  WriteWholeFile(path_, Wave({}, 0));
  EXPECT_EQ(ReadRiffWave(path_ + "/below", wave_), ENOTDIR);
}

TEST_F(RiffFileTest, WhatIsNoPlainFileIsNeitherWaitedForNorRead) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(ReadRiffWave(path_, wave_), kNotAWave);
  EXPECT_EQ(ReadRiffWave(directory_.path(), wave_), kNotAWave);
  EXPECT_EQ(ReadRiffWave("/dev/zero", wave_), kNotAWave);
}

TEST_F(RiffFileTest, FaultsOfTheFileSystemAreHandedOn) {
  WriteWholeFile(path_, Wave({}, 16000));
  {
    const platform::ScopedFileFault noPermission(platform::FileOperation::Open, EACCES);
    EXPECT_EQ(ReadRiffWave(path_, wave_), EACCES);
  }
  {
    const platform::ScopedFileFault noStatus(platform::FileOperation::Stat, EIO);
    EXPECT_EQ(ReadRiffWave(path_, wave_), EIO);
  }
  EXPECT_EQ(ReadRiffWave(path_, wave_), 0);
}

TEST_F(RiffFileTest, FaultOfAnyReadIsHandedOnAndLeavesNothing) {
  const std::string wave = Riff(FormatChunk(kAdpcm) + Chunk("fact", Number(22050, 4)) +
                                BareChunk("LIST", 3, "odd") + Chunk("data", Sound(11264)));
  // The header; format, its bytes; fact, its bytes; LIST, what stands behind it; data.
  for (int nth = 1; nth <= 8; ++nth) {
    const platform::ScopedFileFault fault(platform::FileOperation::Read, EIO, nth);
    EXPECT_EQ(Read(wave), EIO) << nth;
    EXPECT_EQ(wave_.milliseconds, 0U) << nth;
    EXPECT_EQ(fault.calls(), nth);
  }
  EXPECT_EQ(LengthOf(wave), 1000U);
}

}  // namespace
}  // namespace vorda::test
