#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ostream>
#include <string>

#include "platform/FileFault.h"
#include "platform/MciDevice.h"
#include "platform/MciErrors.h"
#include "support/TempDirectory.h"
#include "support/WaveBytes.h"

namespace vorda::test {
namespace {

using platform::MciErrorText;
using platform::MciSendString;

class MciDeviceTest : public ::testing::Test {
 protected:
  MciDeviceTest() { WriteWholeFile(path_, Wave({}, 24010)); }
  ~MciDeviceTest() override { MciSendString("close all"); }

  std::int32_t Send(const std::string& command) { return MciSendString(command, &reply_); }

  TempDirectory directory_;
  const std::string path_ = directory_ / "sound.wav";
  std::string reply_ = "what an earlier command left";
};

TEST_F(MciDeviceTest, OpenStatusClose) {
  EXPECT_EQ(Send("open " + path_ + " alias test"), 0);
  EXPECT_EQ(reply_, "");
  EXPECT_EQ(Send("status test length"), 0);
  EXPECT_EQ(reply_, "1500");  // and 0.6 of a millisecond
  EXPECT_EQ(Send("close test"), 0);
  EXPECT_EQ(reply_, "");
  EXPECT_EQ(Send("status test length"), 263);
}

TEST_F(MciDeviceTest, ReplyNeedNotBeAskedFor) {
  EXPECT_EQ(MciSendString("open " + path_ + " alias test"), 0);
  EXPECT_EQ(MciSendString("status test length"), 0);
}

TEST_F(MciDeviceTest, WordsAndAliasesInAnyCaseAndAnyBlanksBetween) {
  EXPECT_EQ(Send("  OPEN   " + path_ + "  Type WaveAudio  ALIAS LengthTest   NOTIFY "), 0);
  EXPECT_EQ(Send("Status LENGTHTEST  Length  WAIT"), 0);
  EXPECT_EQ(reply_, "1500");
  EXPECT_EQ(Send("Close lengthtest WAIT"), 0);
  EXPECT_EQ(Send("CLOSE lengthtest"), 263);
}

TEST_F(MciDeviceTest, PathInQuotationMarksMayHoldBlanksAndKeywords) {
  const std::string path = directory_ / "news at  six alias x.wav";
  WriteWholeFile(path, Wave({}, 16000));
  EXPECT_EQ(Send("open \"" + path + "\" alias test"), 0);
  EXPECT_EQ(Send("status test length"), 0);
  EXPECT_EQ(reply_, "1000");
}

TEST_F(MciDeviceTest, PathInOtherCaseAndWithOtherSeparators) {
  EXPECT_EQ(Send("open " + directory_.path() + "\\SOUND.WAV alias test"), 0);
}

TEST_F(MciDeviceTest, WithoutAnAliasThePathIsTheName) {
  EXPECT_EQ(Send("open " + path_), 0);
  EXPECT_EQ(Send("open " + path_), 289);
  EXPECT_EQ(Send("status " + path_ + " length"), 0);
  EXPECT_EQ(reply_, "1500");
  EXPECT_EQ(Send("close \"" + path_ + "\""), 0);
}

TEST_F(MciDeviceTest, OneFileUnderTwoAliases) {
  EXPECT_EQ(Send("open " + path_ + " alias one"), 0);
  EXPECT_EQ(Send("open " + path_ + " alias two"), 0);
  EXPECT_EQ(Send("close one"), 0);
  EXPECT_EQ(Send("status two length"), 0);
}

TEST_F(MciDeviceTest, TakenAliasKeepsItsDevice) {
  const std::string longer = directory_ / "longer.wav";
  WriteWholeFile(longer, Wave({}, 160000));
  EXPECT_EQ(Send("open " + path_ + " alias test"), 0);
  EXPECT_EQ(Send("open " + longer + " alias TEST"), 289);
  EXPECT_EQ(Send("status test length"), 0);
  EXPECT_EQ(reply_, "1500");
}

TEST_F(MciDeviceTest, CloseAll) {
  EXPECT_EQ(Send("open " + path_ + " alias one"), 0);
  EXPECT_EQ(Send("open " + path_ + " alias two"), 0);
  EXPECT_EQ(Send("CLOSE ALL WAIT"), 0);
  EXPECT_EQ(Send("close one"), 263);
  EXPECT_EQ(Send("close two"), 263);
  EXPECT_EQ(Send("close all"), 0);
}

TEST_F(MciDeviceTest, LengthIsThatOfTheOpening) {
  EXPECT_EQ(Send("open " + path_ + " alias test"), 0);
  ASSERT_EQ(::unlink(path_.c_str()), 0);
  EXPECT_EQ(Send("status test length"), 0);
  EXPECT_EQ(reply_, "1500");
}

TEST_F(MciDeviceTest, MissingFile) {
  EXPECT_EQ(Send("open " + (directory_ / "none.wav") + " alias test"), 275);
  EXPECT_EQ(Send("open " + (directory_ / "none/none.wav") + " alias test"), 275);
  EXPECT_EQ(Send("open " + path_ + "/none.wav alias test"), 275);
  EXPECT_EQ(Send("open Q:\\carts\\0001.wav alias test"), 275);
  EXPECT_EQ(Send("open \\\\nowhere\\carts\\0001.wav alias test"), 275);
  EXPECT_EQ(Send("open " + (directory_ / std::string(300, 'x')) + " alias test"), 275);
  ASSERT_EQ(::symlink("nowhere.wav", (directory_ / "link.wav").c_str()), 0);
  EXPECT_EQ(Send("open " + (directory_ / "link.wav") + " alias test"), 275);
  ASSERT_EQ(::symlink("ring.wav", (directory_ / "ring.wav").c_str()), 0);
  EXPECT_EQ(Send("open " + (directory_ / "ring.wav") + " alias test"), 275);
  EXPECT_EQ(Send("status test length"), 263);
}

TEST_F(MciDeviceTest, FileThatIsNoWave) {
  WriteWholeFile(path_, "Here is the news.");
  EXPECT_EQ(Send("open " + path_ + " alias test"), 296);
  EXPECT_EQ(Send("open " + directory_.path() + " alias test"), 296);
  ASSERT_EQ(::mkfifo((directory_ / "fifo.wav").c_str(), 0600), 0);
  EXPECT_EQ(Send("open " + (directory_ / "fifo.wav") + " alias test"), 296);
  EXPECT_EQ(Send("close test"), 263);
}

TEST_F(MciDeviceTest, FileThatCannotBeRead) {
  const auto opening = [this](int systemError) {
    const platform::ScopedFileFault fault(platform::FileOperation::Open, systemError);
    return Send("open " + path_ + " alias test");
  };
  EXPECT_EQ(opening(EACCES), 296);
  EXPECT_EQ(opening(EIO), 296);
  EXPECT_EQ(opening(EMFILE), 264);
  EXPECT_EQ(Send("open " + path_ + " alias test"), 0);
}

TEST_F(MciDeviceTest, ParametersThatDoNotFit) {
  EXPECT_EQ(Send("open " + path_ + " alias"), 269);
  EXPECT_EQ(Send("open " + path_ + " alias \"\""), 269);
  EXPECT_EQ(Send("open " + path_ + " alias a alias b"), 295);
  EXPECT_EQ(Send("open " + path_ + " wait wait"), 295);
  EXPECT_EQ(Send("open " + path_ + " nonsense"), 259);
  EXPECT_EQ(Send("open " + path_ + " \"alias\" a"), 259);
  EXPECT_EQ(Send("open " + path_ + " type cdaudio alias test"), 263);
  EXPECT_EQ(Send("open all alias test"), 279);
  EXPECT_EQ(Send("open " + path_ + " alias All"), 279);
  EXPECT_EQ(Send("open \"" + path_ + " alias test"), 294);
  EXPECT_EQ(Send("open \"" + path_ + "\"x alias test"), 305);
  EXPECT_EQ(Send("close test"), 263);

  ASSERT_EQ(Send("open " + path_ + " alias test"), 0);
  EXPECT_EQ(Send("status test"), 273);
  EXPECT_EQ(Send("status test wait"), 273);
  EXPECT_EQ(Send("status test loudness"), 259);
  EXPECT_EQ(Send("status all length"), 279);
  EXPECT_EQ(Send("close test length"), 259);
  EXPECT_EQ(Send("status test length"), 0);
}

struct CommandRow {
  const char* command;
  std::int32_t error;
};
void PrintTo(const CommandRow& row, std::ostream* out) {
  *out << '[' << row.command << ']';
}
class MciCommandTest : public ::testing::TestWithParam<CommandRow> {};

TEST_P(MciCommandTest, IsRefused) {
  std::string reply = "left";
  EXPECT_EQ(MciSendString(GetParam().command, &reply), GetParam().error);
  EXPECT_EQ(reply, "");
}

constexpr CommandRow kCommands[] = {
    {"", 267},           {"   ", 267},           {"yodel", 261},
    {"yodel test", 261}, {"openfile test", 261}, {"\"open\" test", 261},
    {"open", 292},       {"open \"\"", 292},     {"open \"\" alias test", 292},
    {"status", 292},     {"close ", 292},        {"status nobody length", 263},
    {"\"", 294},         {"close \"", 294},      {"close \"all\"", 263},
};
INSTANTIATE_TEST_SUITE_P(Commands, MciCommandTest, ::testing::ValuesIn(kCommands));

TEST(MciErrorTextTest, EveryAnswerHasItsText) {
  for (const std::int32_t code :
       {259, 261, 263, 264, 267, 269, 273, 275, 279, 289, 292, 294, 295, 296, 305}) {
    EXPECT_TRUE(MciErrorText(code).ends_with('.')) << code;
  }
  EXPECT_EQ(MciErrorText(275),
            "Cannot find the specified file. Make sure the path and filename are correct.");
  EXPECT_EQ(MciErrorText(263), "The specified device is not open or is not recognized by MCI.");
  EXPECT_EQ(MciErrorText(0), "");
  EXPECT_EQ(MciErrorText(256), "");
}

}  // namespace
}  // namespace vorda::test
