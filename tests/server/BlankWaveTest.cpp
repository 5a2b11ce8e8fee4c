// The wave file without sound: its 44 bytes, worked out by hand.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "audio/AudioRoutines.h"
#include "platform/FileFault.h"
#include "platform/Settings.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

using namespace std::string_view_literals;
using platform::FileOperation;
using platform::ScopedFileFault;

class BlankWaveTest : public ::testing::Test {
 protected:
  void ExpectTold(const std::string& path, const std::string& error) {
    EXPECT_EQ(boxes_.Last().title, "Error: " + error);
    EXPECT_EQ(boxes_.Last().icon, platform::BoxIcon::Critical);
    EXPECT_EQ(boxes_.Last().buttons, platform::BoxButtons::Ok);
    EXPECT_EQ(boxes_.Last().text, "Error Creating Cart : " + path);
  }

  test::FakeBoxes boxes_;
  test::TempDirectory directory_;
  const std::string path_ = directory_ / "blank.wav";
};

TEST_F(BlankWaveTest, SixteenBitMonoIsTheseBytes) {
  EXPECT_TRUE(CreateBlankWave(path_, 44100, 16, 1));
  EXPECT_EQ(test::ReadWholeFile(path_),
            "RIFF\x2E\x00\x00\x00WAVE"
            "fmt \x10\x00\x00\x00\x01\x00\x01\x00\x44\xAC\x00\x00\x88\x58\x01\x00\x02\x00\x10\x00"
            "data\x0A\x00\x00\x00"sv);
}

TEST_F(BlankWaveTest, SixteenBitStereoIsTheseBytes) {
  EXPECT_TRUE(CreateBlankWave(path_, 22050, 16, 2));
  EXPECT_EQ(test::ReadWholeFile(path_),
            "RIFF\x2E\x00\x00\x00WAVE"
            "fmt \x10\x00\x00\x00\x01\x00\x02\x00\x22\x56\x00\x00\x88\x58\x01\x00\x04\x00\x10\x00"
            "data\x0A\x00\x00\x00"sv);
}

TEST_F(BlankWaveTest, BitsStandInThePlaceOfTheChunksSize) {
  EXPECT_TRUE(CreateBlankWave(path_, 8000, 8, 1));
  EXPECT_EQ(test::ReadWholeFile(path_),
            "RIFF\x2E\x00\x00\x00WAVE"
            "fmt \x08\x00\x00\x00\x01\x00\x01\x00\x40\x1F\x00\x00\x40\x1F\x00\x00\x01\x00\x08\x00"
            "data\x0A\x00\x00\x00"sv);
}

TEST_F(BlankWaveTest, EmptyFileIsFilled) {
  test::WriteWholeFile(path_, "");
  EXPECT_TRUE(CreateBlankWave(path_, 44100, 16, 1));
  EXPECT_EQ(test::ReadWholeFile(path_).size(), 44U);
}

TEST_F(BlankWaveTest, ConfiguredPathIsOpenedWhereItLies) {
  platform::Settings settings;
  settings.drives['D'] = directory_.path();
  const platform::ScopedSettings scoped(settings);
  EXPECT_TRUE(CreateBlankWave("D:\\BLANK.WAV", 44100, 16, 1));
  EXPECT_EQ(test::ReadWholeFile(directory_ / "BLANK.WAV").size(), 44U);
}

TEST_F(BlankWaveTest, EmptyPathMakesNothingAndSaysNothing) {
  EXPECT_FALSE(CreateBlankWave("", 44100, 16, 1));
  EXPECT_EQ(test::JoinedNames(directory_.path()), "");
}

TEST_F(BlankWaveTest, FileThatCannotBeMadeIsTold) {
  const std::string path = directory_ / "none/blank.wav";
  boxes_.Expect("Error Creating Cart : " + path);
  EXPECT_FALSE(CreateBlankWave(path, 44100, 16, 1));
  ExpectTold(path, "File not found");
}

TEST_F(BlankWaveTest, PathThatMapsToNothingIsTold) {
  boxes_.Expect("Error Creating Cart : Q:\\AUDIO\\ORV00001.WAV");
  EXPECT_FALSE(CreateBlankWave("Q:\\AUDIO\\ORV00001.WAV", 44100, 16, 1));
  ExpectTold("Q:\\AUDIO\\ORV00001.WAV", "Path not found");
}

TEST_F(BlankWaveTest, FullDiskIsTold) {
  const ScopedFileFault fault(FileOperation::Write, ENOSPC, 1, 1, "blank.wav");
  boxes_.Expect("Error Creating Cart : " + path_);
  EXPECT_FALSE(CreateBlankWave(path_, 44100, 16, 1));
  ExpectTold(path_, "Disk full");
}

// A file left open would be refused or held against the editor that it was made for.
TEST_F(BlankWaveTest, FileIsClosedWhenMadeAndWhenNot) {
  EXPECT_TRUE(CreateBlankWave(path_, 44100, 16, 1));
  const std::string open = test::JoinedNames("/proc/self/fd");
  EXPECT_TRUE(CreateBlankWave(path_, 44100, 16, 1));
  {
    const ScopedFileFault fault(FileOperation::Write, EIO, 1, 1, "blank.wav");
    boxes_.Expect("Error Creating Cart : " + path_);
    EXPECT_FALSE(CreateBlankWave(path_, 44100, 16, 1));
  }
  EXPECT_EQ(test::JoinedNames("/proc/self/fd"), open);
}

}  // namespace
}  // namespace vorda
