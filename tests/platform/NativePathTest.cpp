#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>

#include "platform/FileFault.h"
#include "platform/NativePath.h"
#include "platform/Settings.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

using test::TempDirectory;
using test::WriteWholeFile;

constexpr int kEver = std::numeric_limits<int>::max();

// Where the test program was started: taken before any test can go elsewhere.
const std::string startedIn = std::filesystem::current_path().string();

class NativePathTest : public ::testing::Test {
 protected:
  // Makes the file with all directories above it.
  std::string Make(const std::string& name) {
    const std::string path = directory_ / name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    WriteWholeFile(path, "x");
    return path;
  }
  std::string At(const std::string& name) const { return directory_ / name; }

  TempDirectory directory_;
};

TEST_F(NativePathTest, JoinTakesTheSeparatorOfTheDirectorysFirstCharacter) {
  EXPECT_EQ(JoinPath("/srv/wall", "00001.WAV"), "/srv/wall/00001.WAV");
  EXPECT_EQ(JoinPath("D:\\WALL", "00001.WAV"), "D:\\WALL\\00001.WAV");
  EXPECT_EQ(JoinPath("\\\\S\\W", "x"), "\\\\S\\W\\x");
  EXPECT_EQ(JoinPath("", "x"), "\\x");
  EXPECT_EQ(JoinPath("wall/a", "x"), "wall/a\\x");
}

TEST_F(NativePathTest, JoinNeverLooksAtTheDirectorysEnd) {
  EXPECT_EQ(JoinPath("/srv/", "x"), "/srv//x");
  EXPECT_EQ(JoinPath("D:\\", "x"), "D:\\\\x");
}

TEST_F(NativePathTest, TextsWithoutAPath) {
  const ScopedSettings none{Settings()};
  using namespace std::string_literals;
  for (const std::string& text : {""s, "D:"s, "D:\\x"s, "\\x"s, "\\"s, "\\/x"s, "\\\\server\\share\\x"s,
                                  "\\\\"s, "\\\\server"s, "/tmp/\0x"s}) {
    EXPECT_EQ(NativePath(text), "") << text;
    EXPECT_EQ(NativePathOfNewFile(text), "") << text;
  }
}

TEST_F(NativePathTest, AbsoluteTexts) {
  for (const char* text : {"/x", "\\x", "\\\\s\\x", "D:\\x", "d:x"})
    EXPECT_TRUE(IsAbsolutePath(text)) << text;
  for (const char* text : {"", "x", "x/y", "1:x", "..\\x"}) EXPECT_FALSE(IsAbsolutePath(text)) << text;
}

TEST_F(NativePathTest, DrivesInEitherCaseAndWithEitherSeparator) {
  Make("wall/00001.WAV");
  Settings settings;
  settings.drives['D'] = directory_.path();
  const ScopedSettings scoped(settings);
  for (const char* text : {"D:\\wall\\00001.WAV", "d:/wall/00001.WAV", "D:wall\\00001.WAV",
                           "D:\\WALL\\00001.wav", "D:\\\\wall//00001.WAV\\"}) {
    EXPECT_EQ(NativePath(text), At("wall/00001.WAV")) << text;
  }
  EXPECT_EQ(NativePath("D:"), directory_.path());
  EXPECT_EQ(NativePath("D:\\"), directory_.path());
  EXPECT_EQ(NativePath("E:\\wall"), "");
}

TEST_F(NativePathTest, SharesWithoutRegardToCase) {
  Make("carts/a.lst");
  Settings settings;
  settings.shares["\\\\NEWS1\\WALL"] = directory_.path() + "/";
  const ScopedSettings scoped(settings);
  EXPECT_EQ(NativePath("\\\\News1\\Wall\\carts\\a.lst"), At("carts/a.lst"));
  EXPECT_EQ(NativePath("\\\\news1/wall/CARTS/A.LST"), At("carts/a.lst"));
  EXPECT_EQ(NativePath("\\\\NEWS1\\WALL"), directory_.path());
  EXPECT_EQ(NativePath("\\\\NEWS1\\WALL2\\x"), "");
}

TEST_F(NativePathTest, TwoSlashesAreNoShare) {
  Settings settings;
  settings.shares["\\\\NEWS1\\WALL"] = directory_.path();
  const ScopedSettings scoped(settings);
  EXPECT_EQ(NativePath("//news1/wall/x"), "/news1/wall/x");
}

TEST_F(NativePathTest, RelativeTextHangsOnTheDirectoryAtTheStart) {
  std::filesystem::current_path(directory_.path());
  const std::string path = NativePath("some-new\\file");
  std::filesystem::current_path(startedIn);
  EXPECT_EQ(path, startedIn + "/some-new/file");
}

TEST_F(NativePathTest, DotsArePassedOn) {
  Make("a/b/c");
  EXPECT_EQ(NativePath(At("a\\.\\..\\A\\B\\C")), At("a/./../a/b/c"));
  EXPECT_EQ(NativePath("/.."), "/..");
  EXPECT_EQ(NativePath("/"), "/");
}

TEST_F(NativePathTest, RightCaseCostsOneSystemCall) {
  const std::string path = Make("a/b/c/d.txt");
  const ScopedFileFault stats(FileOperation::Stat, EIO, kEver);
  const ScopedFileFault opens(FileOperation::Open, EIO, kEver);
  EXPECT_EQ(NativePath(path), path);
  EXPECT_EQ(stats.calls(), 1);
  EXPECT_EQ(opens.calls(), 0);
}

TEST_F(NativePathTest, EveryComponentIsMatchedWithoutRegardToCase) {
  const std::string path = Make("News/Wire One/Vorda.ini");
  EXPECT_EQ(NativePath(At("NEWS/WIRE ONE/VORDA.INI")), path);
  EXPECT_EQ(NativePath(At("news/wire one/vorda.ini")), path);
}

TEST_F(NativePathTest, ExactNameComesFirstThenByteOrder) {
  Make("Name.txt");
  Make("nAME.txt");
  Make("name.TXT");
  EXPECT_EQ(NativePath(At("nAME.txt")), At("nAME.txt"));
  EXPECT_EQ(NativePath(At("NAME.TXT")), At("Name.txt"));
  EXPECT_EQ(NativePath(At("name.txt")), At("Name.txt"));
}

TEST_F(NativePathTest, ComponentsFromTheFirstMissingOneStayAsTheyStand) {
  Make("Wall/x");
  EXPECT_EQ(NativePath(At("WALL\\New\\X")), At("Wall/New/X"));
  EXPECT_EQ(NativePath(At("Wall/y")), At("Wall/y"));
  EXPECT_EQ(NativePath(At("Wall/X/Deeper")), At("Wall/x/Deeper"));
}

TEST_F(NativePathTest, LinksThatLeadNowhereAreThere) {
  std::filesystem::create_symlink("nowhere", directory_ / "Link");
  EXPECT_EQ(NativePath(At("Link")), At("Link"));
  EXPECT_EQ(NativePath(At("LINK")), At("Link"));
}

TEST_F(NativePathTest, BytesComeBeforeUtf8) {
  const std::string utf8 = Make(
      "Stra\xC3\x9F"
      "e \xC3\xBC.txt");
  EXPECT_EQ(NativePath(At("Stra\xDF"
                          "e \xFC.txt")),
            utf8);
  const std::string bytes = Make(
      "Stra\xDF"
      "e \xFC.txt");
  EXPECT_EQ(NativePath(At("Stra\xDF"
                          "e \xFC.txt")),
            bytes);
}

TEST_F(NativePathTest, AccentedLettersMatchWithoutRegardToCase) {
  const std::string path = Make("M\xC3\xBCnchen/caf\xC3\xA9 \xC5\xA1.ini");
  EXPECT_EQ(NativePath(At("M\xDCNCHEN/CAF\xC9 \x8A.INI")), path);
  const std::string bytes = Make("k\xF6ln");
  EXPECT_EQ(NativePath(At("K\xD6LN")), bytes);
}

TEST_F(NativePathTest, NewNamesAreMadeInUtf8) {
  Make("Wall/x");
  EXPECT_EQ(NativePath(At("wall/\xFC/\x80")), At("Wall/\xC3\xBC/\xE2\x82\xAC"));
  EXPECT_EQ(NativePathOfNewFile(At("wall/\xFC")), At("Wall/\xC3\xBC"));
  // Text of an editor of today isn't made UTF-8 twice, whatever alphabet it is in.
  EXPECT_EQ(NativePath(At("wall/\xC3\xBC")), At("Wall/\xC3\xBC"));
  EXPECT_EQ(NativePath(At("wall/\xD0\x96")), At("Wall/\xD0\x96"));
}

TEST_F(NativePathTest, NewFileKeepsItsNameBesideOthers) {
  Make("Wall/VOR00000001.TMP");
  EXPECT_EQ(NativePathOfNewFile(At("WALL\\vor00000001.tmp")), At("Wall/vor00000001.tmp"));
  EXPECT_EQ(NativePath(At("WALL\\vor00000001.tmp")), At("Wall/VOR00000001.TMP"));
  EXPECT_EQ(NativePathOfNewFile("/"), "/");
  EXPECT_EQ(NativePathOfNewFile("/x"), "/x");
}

TEST_F(NativePathTest, NamesMadeInTheSameTickAreSeen) {
  for (int i = 0; i < 200; ++i) {
    const std::string number = std::to_string(i);
    ASSERT_EQ(NativePath(At("NAME" + number)), At("NAME" + number));
    Make("name" + number);
    ASSERT_EQ(NativePath(At("NAME" + number)), At("name" + number));
    std::filesystem::rename(At("name" + number), At("Name" + number));
    ASSERT_EQ(NativePath(At("NAME" + number)), At("Name" + number));
  }
}

TEST_F(NativePathTest, ScanIsKeptOnceTheDirectoryIsQuiet) {
  const ScopedFileFault noNotices(FileOperation::Watch, ENOSPC, 1, kEver);
  const std::string path = Make("Some/File.txt");
  const auto matchesWithoutScan = [&] {
    const bool matched = NativePath(At("Some/FILE.TXT")) == path;
    const ScopedFileFault noScan(FileOperation::Open, EMFILE, 1, kEver);
    return matched && NativePath(At("Some/FILE.TXT")) == path && noScan.calls() == 0;
  };
  EXPECT_TRUE(test::WaitUntil(matchesWithoutScan));
}

TEST_F(NativePathTest, ScanOfADirectoryThatChangedJustNowIsNotKept) {
  // Holds when both looks come within the tick of the change, which takes a few tries on a busy machine.
  const ScopedFileFault noNotices(FileOperation::Watch, ENOSPC, 1, kEver);
  const auto secondLookScans = [this] {
    std::filesystem::remove(At("Some/Other"));
    Make("Some/Other");
    const ScopedFileFault scans(FileOperation::Open, EMFILE, kEver, 1, At("Some"));
    NativePath(At("Some/MISSING"));
    NativePath(At("Some/MISSING"));
    return scans.calls() == 2;
  };
  EXPECT_TRUE(test::WaitUntil(secondLookScans));
}

TEST_F(NativePathTest, ScanThatFailedIsNotKept) {
  const std::string path = Make("Some/File.txt");
  {
    const ScopedFileFault noScan(FileOperation::Open, EMFILE, 1, kEver);
    EXPECT_EQ(NativePath(At("Some/FILE.TXT")), At("Some/FILE.TXT"));
  }
  EXPECT_EQ(NativePath(At("Some/FILE.TXT")), path);
}

TEST_F(NativePathTest, MoreDirectoriesThanAreKept) {
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 100; ++i) {
      const std::string directory = "dir" + std::to_string(i);
      const std::string path = Make(directory + "/Name");
      ASSERT_EQ(NativePath(At(directory + "/NAME")), path);
    }
  }
}

TEST_F(NativePathTest, DirectoryPutInAnothersPlaceIsScannedAgain) {
  Make("a/Old");
  ASSERT_EQ(NativePath(At("a/OLD")), At("a/Old"));
  std::filesystem::rename(At("a"), At("b"));
  Make("a/New");
  EXPECT_EQ(NativePath(At("a/OLD")), At("a/OLD"));
  EXPECT_EQ(NativePath(At("a/NEW")), At("a/New"));
}

}  // namespace
}  // namespace vorda::platform
