// A cart's number becomes a directory and names; a link gives its audio another place.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/FileFault.h"
#include "platform/Settings.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

class CartNamesTest : public ::testing::Test {
 protected:
  CartNamesTest() {
    gAudioWallParts = {};
    gAudioWallSettings = {};
    for (std::size_t i = 0; i < gAudioWallParts.size(); ++i)
      gAudioWallParts[i].Location = "D:\\AUDIO" + std::to_string(i + 1);
  }
  ~CartNamesTest() override {
    gAudioWallParts = {};
    gAudioWallSettings = {};
  }

  test::FakeBoxes boxes_;
};

TEST_F(CartNamesTest, ThousandCartsAPart) {
  EXPECT_EQ(CartLocationIndex(0), 0);
  EXPECT_EQ(CartLocationIndex(1), 1);
  EXPECT_EQ(CartLocationIndex(1000), 1);
  EXPECT_EQ(CartLocationIndex(1001), 2);
  EXPECT_EQ(CartLocationIndex(2000), 2);
  EXPECT_EQ(CartLocationIndex(9000), 9);
  EXPECT_EQ(CartLocationIndex(9001), 10);
  EXPECT_EQ(CartLocationIndex(9999), 10);
  EXPECT_EQ(CartLocationIndex(10000), 10);
}

TEST_F(CartNamesTest, NumbersThatAreNoCartsBelongToTheLastPart) {
  EXPECT_EQ(CartLocationIndex(-1), 11);
  EXPECT_EQ(CartLocationIndex(10001), 11);
  EXPECT_EQ(CartLocationIndex(2147483647), 11);
  EXPECT_EQ(CartLocationIndex(-2147483647 - 1), 11);
}

TEST_F(CartNamesTest, DirectoryIsThatOfThePart) {
  EXPECT_EQ(CartDirectory(1), "D:\\AUDIO1");
  EXPECT_EQ(CartDirectory(1000), "D:\\AUDIO1");
  EXPECT_EQ(CartDirectory(1001), "D:\\AUDIO2");
  EXPECT_EQ(CartDirectory(9000), "D:\\AUDIO9");
  EXPECT_EQ(CartDirectory(9001), "D:\\AUDIO10");
  EXPECT_EQ(CartDirectory(9999), "D:\\AUDIO10");
}

TEST_F(CartNamesTest, CartZeroLivesInTheEleventhDirectoryAndOtherNumbersInNone) {
  EXPECT_EQ(CartDirectory(0), "D:\\AUDIO11");
  EXPECT_EQ(CartDirectory(-1), "");
  EXPECT_EQ(CartDirectory(10000), "");
  EXPECT_EQ(CartDirectory(10001), "");
}

TEST_F(CartNamesTest, StemIsTheDirectoryAndFiveDigits) {
  EXPECT_EQ(CartFileStem(7), "D:\\AUDIO1\\ORV00007");
  EXPECT_EQ(CartFileStem(1000), "D:\\AUDIO1\\ORV01000");
  EXPECT_EQ(CartFileStem(1001), "D:\\AUDIO2\\ORV01001");
  EXPECT_EQ(CartFileStem(9000), "D:\\AUDIO9\\ORV09000");
  EXPECT_EQ(CartFileStem(9001), "D:\\AUDIO10\\ORV09001");
  EXPECT_EQ(CartFileStem(9999), "D:\\AUDIO10\\ORV09999");
}

TEST_F(CartNamesTest, NumbersOutsideTheWallHaveNoStem) {
  for (const std::int32_t cart : {-1, 0, 10000, 10001}) {
    EXPECT_EQ(CartFileStem(cart), "") << cart;
    EXPECT_EQ(CartTextFileName(cart), "") << cart;
  }
}

TEST_F(CartNamesTest, AudioAndTextStandBesideEachOther) {
  EXPECT_EQ(CartAudioFileName(7), "D:\\AUDIO1\\ORV00007.WAV");
  EXPECT_EQ(CartTextFileName(7), "D:\\AUDIO1\\ORV00007.TXT");
}

TEST_F(CartNamesTest, AudioOfCartZeroIsAnExtensionAndOfOtherNumbersNothing) {
  EXPECT_EQ(CartAudioFileName(0), ".WAV");
  EXPECT_EQ(CartAudioFileName(-1), "");
  EXPECT_EQ(CartAudioFileName(10000), "");
  EXPECT_EQ(CartAudioFileName(10001), "");
}

TEST_F(CartNamesTest, DirectoryWithASlashIsJoinedByOne) {
  gAudioWallParts[0].Location = "/srv/audio";
  EXPECT_EQ(CartFileStem(7), "/srv/audio/ORV00007");
  EXPECT_EQ(CartAudioFileName(7), "/srv/audio/ORV00007.WAV");
}

TEST_F(CartNamesTest, ShareIsJoinedAsADriveIs) {
  gAudioWallParts[0].Location = "\\\\STUDIO\\AUDIO";
  EXPECT_EQ(CartFileStem(7), "\\\\STUDIO\\AUDIO\\ORV00007");
}

TEST_F(CartNamesTest, TrailingSeparatorIsNotLookedAt) {
  gAudioWallParts[0].Location = "D:\\AUDIO\\";
  gAudioWallParts[1].Location = "/srv/audio/";
  EXPECT_EQ(CartFileStem(7), "D:\\AUDIO\\\\ORV00007");
  EXPECT_EQ(CartFileStem(1007), "/srv/audio//ORV01007");
}

TEST_F(CartNamesTest, BlankDirectoryLeavesTheNameBehindItsSeparator) {
  gAudioWallParts[0].Location = "";
  gAudioWallParts[1].Location = "  ";
  EXPECT_EQ(CartDirectory(7), "");
  EXPECT_EQ(CartFileStem(7), "\\ORV00007");
  EXPECT_EQ(CartAudioFileName(7), "\\ORV00007.WAV");
  EXPECT_EQ(CartFileStem(1007), "  \\ORV01007");
}

class CartLinkTest : public CartNamesTest {
 protected:
  CartLinkTest() {
    gAudioWallParts[0].Location = directory_.path();
    gAudioWallSettings.AllowAudioFileLinking = 1;
  }
  std::string LinkedBy(const std::string& bytes) {
    test::WriteWholeFile(link_, bytes);
    return CartAudioFileName(7);
  }

  test::TempDirectory directory_;
  const std::string own_ = directory_ / "ORV00007.WAV";
  const std::string link_ = directory_ / "ORV00007.FLK";
};

TEST_F(CartLinkTest, FirstLineIsTheAudiosPath) {
  EXPECT_EQ(LinkedBy("D:\\ELSEWHERE\\SONG.WAV\r\nsecond line\r\n"), "D:\\ELSEWHERE\\SONG.WAV");
  EXPECT_EQ(LinkedBy("/srv/elsewhere/song.wav\nsecond line\n"), "/srv/elsewhere/song.wav");
  EXPECT_EQ(LinkedBy("/no/line/end.wav"), "/no/line/end.wav");
  EXPECT_EQ(LinkedBy("x"), "x");
}

TEST_F(CartLinkTest, LineIsReturnedAsItStands) {
  EXPECT_EQ(LinkedBy("  /blanks/stay.wav \t\r\n"), "  /blanks/stay.wav \t");
  EXPECT_EQ(LinkedBy("\"/quotes/stay.wav\"\r\n"), "\"/quotes/stay.wav\"");
  EXPECT_EQ(LinkedBy("   \r\n"), "   ");
  EXPECT_EQ(LinkedBy("D:\\M\xFCnchen\\\x80.WAV\r\n"), "D:\\M\xFCnchen\\\x80.WAV");
}

TEST_F(CartLinkTest, EmptyFileOrFirstLineLinksNothing) {
  EXPECT_EQ(LinkedBy(""), own_);
  EXPECT_EQ(LinkedBy("\r\n/second/line.wav\r\n"), own_);
  EXPECT_EQ(LinkedBy("\n/second/line.wav\n"), own_);
}

TEST_F(CartLinkTest, MissingLinkIsNone) {
  EXPECT_EQ(CartAudioFileName(7), own_);
  gAudioWallParts[0].Location = directory_ / "none";
  EXPECT_EQ(CartAudioFileName(7), directory_ / "none/ORV00007.WAV");
  gAudioWallParts[0].Location = "Q:\\AUDIO";
  EXPECT_EQ(CartAudioFileName(7), "Q:\\AUDIO\\ORV00007.WAV");
}

TEST_F(CartLinkTest, LinkIsLookedAtOnlyWhereLinkingIsAllowed) {
  test::WriteWholeFile(link_, "/elsewhere.wav\r\n");
  gAudioWallSettings.AllowAudioFileLinking = 0;
  const platform::ScopedFileFault watch(platform::FileOperation::Open, EIO, 1, 1, ".FLK");
  EXPECT_EQ(CartAudioFileName(7), own_);
  EXPECT_EQ(watch.calls(), 0);
}

TEST_F(CartLinkTest, AnyNumberButZeroAllowsLinking) {
  gAudioWallSettings.AllowAudioFileLinking = -1;
  EXPECT_EQ(LinkedBy("/elsewhere.wav\r\n"), "/elsewhere.wav");
}

// The bare extension would be a link of its own in the working directory.
TEST_F(CartLinkTest, CartZeroHasNoLink) {
  gAudioWallParts[10].Location = directory_.path();
  test::WriteWholeFile(directory_ / "ORV00000.FLK", "/elsewhere.wav\r\n");
  test::WriteWholeFile(directory_ / ".FLK", "/elsewhere.wav\r\n");
  const platform::ScopedFileFault watch(platform::FileOperation::Open, EIO, 1, 1, "FLK");
  EXPECT_EQ(CartAudioFileName(0), ".WAV");
  EXPECT_EQ(watch.calls(), 0);
}

TEST_F(CartLinkTest, LinkThatCannotBeReadLinksNothingAndSaysNothing) {
  test::WriteWholeFile(link_, "/elsewhere.wav\r\n");
  {
    const platform::ScopedFileFault fault(platform::FileOperation::Open, EACCES, 1, 1000, ".FLK");
    EXPECT_EQ(CartAudioFileName(7), own_);
    EXPECT_GT(fault.calls(), 0);
  }
  {
    const platform::ScopedFileFault fault(platform::FileOperation::Read, EIO, 1, 1, ".FLK");
    EXPECT_EQ(CartAudioFileName(7), own_);
    EXPECT_EQ(fault.calls(), 1);
  }
  EXPECT_EQ(CartAudioFileName(7), "/elsewhere.wav");
}

TEST_F(CartLinkTest, DirectoryOfThatNameLinksNothing) {
  std::filesystem::create_directory(link_);
  EXPECT_EQ(CartAudioFileName(7), own_);
}

TEST_F(CartLinkTest, LinkIsFoundInAnyCaseOfItsName) {
  test::WriteWholeFile(directory_ / "orv00007.flk", "/elsewhere.wav\r\n");
  EXPECT_EQ(CartAudioFileName(7), "/elsewhere.wav");
}

TEST_F(CartLinkTest, LongestPathOfTheSystemFitsInALine) {
  const std::string path = "/" + std::string(4095, 'x');
  EXPECT_EQ(LinkedBy(path + "\r\nsecond line\r\n"), path);
  EXPECT_EQ(LinkedBy(path + std::string(100'000, 'y')).substr(0, path.size()), path);
}

TEST_F(CartLinkTest, ChangedLinkIsReadAnew) {
  EXPECT_EQ(LinkedBy("/one.wav\r\n"), "/one.wav");
  EXPECT_EQ(LinkedBy("/two.wav\r\n"), "/two.wav");
  std::filesystem::remove(link_);
  EXPECT_EQ(CartAudioFileName(7), own_);
}

}  // namespace
}  // namespace vorda
