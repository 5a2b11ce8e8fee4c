#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ostream>
#include <string>
#include <vector>

#include "platform/FileFault.h"
#include "platform/MciDevice.h"
#include "shell/GeneralFunctions.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"
#include "support/WaveBytes.h"

namespace vorda::test {
namespace {

using platform::BoxAnswer;

constexpr const char* kNoSound =
    "The specified file cannot be played on the specified MCI device. The file may be corrupt, or not in "
    "the correct format.";

class WaveLengthTest : public ::testing::Test {
 protected:
  ~WaveLengthTest() override {
    EXPECT_EQ(platform::MciSendString("close lengthtest"), 263) << "a length was asked and left open";
  }

  float LengthOf(const std::string& bytes) {
    WriteWholeFile(path_, bytes);
    return WaveLengthSeconds(path_);
  }

  TempDirectory directory_;
  const std::string path_ = directory_ / "sound.wav";
  FakeBoxes boxes_;
};

TEST_F(WaveLengthTest, IsCutToTheMillisecondAndNotRounded) {
  EXPECT_EQ(LengthOf(Wave(kCdMono, std::size_t{44100} * 2)), 1.0F);
  EXPECT_EQ(LengthOf(Wave(kCdMono, std::size_t{44099} * 2)), 0.999F);
  EXPECT_EQ(LengthOf(Wave({}, 24030)), 1.501F);
}

TEST_F(WaveLengthTest, IsAnsweredAgainAndAgain) {
  EXPECT_EQ(LengthOf(Wave({}, 16000)), 1.0F);
  EXPECT_EQ(LengthOf(Wave({}, 32000)), 2.0F);
}

TEST_F(WaveLengthTest, MissingFileIsZeroAndSaysNothing) {
  EXPECT_EQ(WaveLengthSeconds(directory_ / "none.wav"), 0.0F);
  EXPECT_EQ(WaveLengthSeconds(directory_ / "none/none.wav"), 0.0F);
  EXPECT_EQ(WaveLengthSeconds("Q:\\carts\\none at all.wav"), 0.0F);
  EXPECT_EQ(WaveLengthSeconds("\\\\nowhere\\carts\\none.wav"), 0.0F);
  ASSERT_EQ(::symlink("nowhere.wav", path_.c_str()), 0);
  EXPECT_EQ(WaveLengthSeconds(path_), 0.0F);
}

TEST_F(WaveLengthTest, EmptyPathIsZeroAndSaysNothing) {
  EXPECT_EQ(WaveLengthSeconds(""), 0.0F);
  EXPECT_EQ(WaveLengthSeconds("   "), 0.0F);
}

TEST_F(WaveLengthTest, PathWithBlanksInOtherCaseOrInQuotationMarks) {
  WriteWholeFile(directory_ / "News at Six.wav", Wave({}, 16000));
  EXPECT_EQ(WaveLengthSeconds(directory_ / "News at Six.wav"), 1.0F);
  EXPECT_EQ(WaveLengthSeconds("  " + (directory_ / "NEWS AT SIX.WAV") + "  "), 1.0F);
  EXPECT_EQ(WaveLengthSeconds(directory_.path() + "\\news at six.WAV"), 1.0F);
  EXPECT_EQ(WaveLengthSeconds("\"" + (directory_ / "News at Six.wav") + "\""), 1.0F);
}

struct LengthRow {
  const char* name;
  std::string bytes;
  float seconds;
};
void PrintTo(const LengthRow& row, std::ostream* out) {
  *out << row.name;
}
class WaveKindsTest : public WaveLengthTest, public ::testing::WithParamInterface<LengthRow> {};

TEST_P(WaveKindsTest, LengthWithoutAWord) {
  EXPECT_EQ(LengthOf(GetParam().bytes), GetParam().seconds);
}

std::string Compressed(const WaveHeader& header, std::uint32_t samples, std::size_t bytes) {
  return Riff(FormatChunk(header) + Chunk("fact", Number(samples, 4)) + Chunk("data", Sound(bytes)));
}
const std::vector<LengthRow> kKinds = {
    {"NoData", Riff(FormatChunk()), 0.0F},
    {"NeverClosed", BareChunk("RIFF", 0, "WAVE") + FormatChunk() + BareChunk("data", 0, Sound(16000)), 0.0F},
    {"BlankForAnEditor", BareChunk("RIFF", 46, "WAVE") + FormatChunk(kCdMono) + BareChunk("data", 10, ""),
     0.0F},
    {"Truncated", Riff(FormatChunk() + BareChunk("data", 64000, Sound(8000))), 0.5F},
    {"Rf64",
     Riff(Chunk("ds64", Number(0, 8) + Number(16000, 8) + Number(0, 12)) + FormatChunk() +
              BareChunk("data", 0xFFFFFFFF, Sound(16000)),
          "RF64"),
     1.0F},
    {"Extensible", Riff(Chunk("fmt ", ExtensibleBytes({}, 1)) + Chunk("data", Sound(16000))), 1.0F},
    {"MuLaw", Wave({7, 1, 8000, 8000, 1, 8}, 12000), 1.5F},
    {"Adpcm", Compressed(kAdpcm, 22050, 11264), 1.0F},
    {"Mp2", Compressed(kMp2, 96000, 64512), 2.0F},
    {"Mp3", Compressed(kMp3, 66000, 24000), 1.496F},
    {"NoRate", Wave({1, 1, 0, 0, 2, 16}, 16000), 0.0F},
};
INSTANTIATE_TEST_SUITE_P(Kinds, WaveKindsTest, ::testing::ValuesIn(kKinds));

TEST_F(WaveLengthTest, FileThatIsNoWaveIsToldOnceAndZero) {
  boxes_.Expect(kNoSound, BoxAnswer::Cancel);
  EXPECT_EQ(LengthOf("Here is the news."), 0.0F);
  EXPECT_EQ(boxes_.Last().icon, platform::BoxIcon::Exclamation);
  EXPECT_EQ(boxes_.Last().buttons, platform::BoxButtons::RetryCancel);
  EXPECT_EQ(boxes_.Last().title, "MCI ERROR: 296");
}

TEST_F(WaveLengthTest, RetryIsNotTakenUp) {
  boxes_.Expect(kNoSound, BoxAnswer::Retry, [this] { WriteWholeFile(path_, Wave({}, 16000)); });
  EXPECT_EQ(LengthOf("Here is the news."), 0.0F);
}

TEST_F(WaveLengthTest, DirectoryAndFileThatCannotBeReadAreTold) {
  boxes_.Expect(kNoSound, BoxAnswer::Cancel);
  EXPECT_EQ(WaveLengthSeconds(directory_.path()), 0.0F);
  boxes_.Expect(kNoSound, BoxAnswer::Cancel);
  const platform::ScopedFileFault noPermission(platform::FileOperation::Open, EACCES);
  EXPECT_EQ(LengthOf(Wave({}, 16000)), 0.0F);
}

TEST_F(WaveLengthTest, QuotationMarkWithoutItsPairIsTold) {
  boxes_.Expect("A closing double-quotation mark is missing from the parameter value. Please supply one.",
                BoxAnswer::Cancel);
  EXPECT_EQ(WaveLengthSeconds("\"" + path_), 0.0F);
  EXPECT_EQ(boxes_.Last().title, "MCI ERROR: 294");
}

TEST_F(WaveLengthTest, LengthAskedForBehindTheBoxIsAnswered) {
  const std::string other = directory_ / "other.wav";
  WriteWholeFile(other, Wave({}, 32000));
  boxes_.Expect(kNoSound, BoxAnswer::Cancel, [&other] { EXPECT_EQ(WaveLengthSeconds(other), 2.0F); });
  EXPECT_EQ(LengthOf("Here is the news."), 0.0F);
}

TEST_F(WaveLengthTest, DeviceLeftUnderItsAliasIsToldAndClosed) {
  WriteWholeFile(path_, Wave({}, 16000));
  ASSERT_EQ(platform::MciSendString("open " + path_ + " alias LENGTHTEST"), 0);
  boxes_.Expect("The specified alias is already being used in this application. Use a unique alias.",
                BoxAnswer::Cancel);
  EXPECT_EQ(WaveLengthSeconds(path_), 0.0F);
  EXPECT_EQ(boxes_.Last().title, "MCI ERROR: 289");
  EXPECT_EQ(WaveLengthSeconds(path_), 1.0F);
}

}  // namespace
}  // namespace vorda::test
