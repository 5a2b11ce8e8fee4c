// Recordings at the end of the program: filed when the frame closes, whatever one of them meets.

#include <QMainWindow>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "controls/DesktopServices.h"
#include "platform/Clock.h"
#include "platform/FileFault.h"
#include "support/FrameScenario.h"
#include "support/WaveBytes.h"

namespace vorda::test {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::HasSubstr;

// Feed n records into the ten carts behind 9000 + 100 * n.
std::int32_t IndexCart(int feed) {
  return 9000 + 100 * feed;
}
std::int32_t FirstCart(int feed) {
  return IndexCart(feed) + 1;
}

class FrameRecordingEndDeathTest : public FrameScenario {
 protected:
  void WriteFeeds(const std::vector<int>& feeds) {
    WriteIni(feeds);
    std::string ini = WallKeys(Wall());
    for (const int feed : feeds) {
      const std::string number = std::to_string(feed);
      ini += "[WireFeed" + number + "]\r\nNewsPath=" + News(feed) + "\r\nSoundCard=" + number + "\r\n";
      WriteWholeFile(
          News(feed) + "/vorda.ini",
          "[General]\r\nName=Wire\r\n[AudioCapture]\r\nIndexCartNumber=" + std::to_string(IndexCart(feed)) +
              "\r\nStartCartNumber=" + std::to_string(FirstCart(feed)) +
              "\r\nEndCartNumber=" + std::to_string(FirstCart(feed) + 9) +
              "\r\n[RecordAudioFormat]\r\nChannels=1\r\nSampleRate=8000\r\n");
    }
    WriteWholeFile(home / "vdServer.INI", ini);
  }
  // Starts the server, and a second of a recording into the first cart of each feed.
  void StartRecordings(const std::vector<int>& feeds) {
    Server().Load();
    std::size_t stream = 0;
    for (const int feed : feeds) {
      EXPECT_EQ(FeedForm(static_cast<std::int16_t>(feed)).StartRecording(FirstCart(feed)), 0);
      streams.made.at(stream++)->Play(Sounds(feed));
    }
    now_.seconds += 3600;
    EndIfFailed();
  }
  static std::string Sounds(int feed) { return std::string(16000, static_cast<char>('a' + feed)); }

  std::string Audio(int feed) const {
    return ReadWholeFile(Wall() + "/ORV0" + std::to_string(FirstCart(feed)) + ".WAV");
  }
  static std::string OpenWave(int feed) {
    return BareChunk("RIFF", 0, "WAVE") + FormatChunk() + BareChunk("data", 0, Sounds(feed));
  }
  std::string RecordBytes(std::int32_t cart) const {
    constexpr std::size_t kBytes = 300;
    return ReadWholeFile(Wall() + "/Carts10.lst")
        .substr(static_cast<std::size_t>(cart - 9001) * kBytes, kBytes);
  }
  std::string Title(std::int32_t cart) const {
    const std::string title = RecordBytes(cart).substr(0, 60);
    return title.substr(0, title.find_last_not_of(' ') + 1);
  }
  static std::string LengthBytes(std::uint32_t bits) { return Number(bits, 4); }
  std::string Ini(int feed) const { return ReadWholeFile(News(feed) + "/vorda.ini"); }

  void ExpectFiled(int feed) const {
    EXPECT_EQ(Audio(feed), Riff(FormatChunk() + Chunk("data", Sounds(feed)))) << feed;
    EXPECT_EQ(Title(FirstCart(feed)), "Recorded by Vorda Server 21/11/2026 12:00") << feed;
    // The four lengths of a second.
    for (const std::size_t place : {270, 274, 282, 286})
      EXPECT_EQ(RecordBytes(FirstCart(feed)).substr(place, 4), LengthBytes(0x3F800000)) << feed;
    ExpectTurned(feed);
  }
  void ExpectTurned(int feed) const {
    EXPECT_EQ(Title(IndexCart(feed)), "Last recorded cart was : " + std::to_string(FirstCart(feed))) << feed;
    EXPECT_THAT(Ini(feed), HasSubstr("\nLastRecordedCartNumber=" + std::to_string(FirstCart(feed)) + "\r"));
    EXPECT_THAT(Ini(feed), HasSubstr("\nCurrentlyRecordingCartNumber=0\r"));
  }

  platform::Moment now_{platform::DayNumber(2026, 11, 21), 43200};
  platform::ScopedClock clock_{[this] { return now_; }};
  static constexpr const char* kCannotWrite =
      "The Windows Multimedia Sub-System has returned with an unknown error, the code was: 262\n$";
};

TEST_F(FrameRecordingEndDeathTest, ClosingTheFrameFilesEveryFeedsRecordingWithTheTimeOfItsStart) {
  WriteFeeds({1, 2, 3, 4});
  ExpectEnd(0, "^$", [this] {
    StartRecordings({1, 2, 3, 4});
    MainWindow()->close();
  });
  for (const int feed : {1, 2, 3, 4}) ExpectFiled(feed);
}

TEST_F(FrameRecordingEndDeathTest, FeedBehindAGapInTheNumbersIsNotEnded) {
  WriteFeeds({1, 3});
  ExpectEnd(0, "^$", [this] {
    StartRecordings({1, 3});
    MainWindow()->close();
  });
  ExpectFiled(1);
  // As a kill would leave it: every block is there.
  EXPECT_EQ(Audio(3), OpenWave(3));
  EXPECT_EQ(Title(FirstCart(3)), "Vorda Server is recording into this cart");
  EXPECT_EQ(RecordBytes(FirstCart(3)).substr(274, 4), LengthBytes(0));
  EXPECT_EQ(Title(IndexCart(3)), "");
  EXPECT_THAT(Ini(3), HasSubstr("\nCurrentlyRecordingCartNumber=" + std::to_string(FirstCart(3)) + "\r"));
  EXPECT_EQ(Ini(3).find("LastRecordedCartNumber"), std::string::npos);
}

TEST_F(FrameRecordingEndDeathTest, FeedsOneAndTwoAreEndedThoughFourLiesBehindAGap) {
  WriteFeeds({1, 2, 4});
  ExpectEnd(0, "^$", [this] {
    StartRecordings({1, 2, 4});
    MainWindow()->close();
  });
  ExpectFiled(1);
  ExpectFiled(2);
  EXPECT_EQ(Audio(4), OpenWave(4));
}

// Nobody is asked, and the others' ends don't wait.
TEST_F(FrameRecordingEndDeathTest, CloseThatFailsIsToldOnStandardErrorAndTheOthersAreFiled) {
  WriteFeeds({1, 2, 3});
  ExpectEnd(0, kCannotWrite, [this] {
    StartRecordings({1, 2, 3});
    const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09101.WAV");
    MainWindow()->close();
  });
  EXPECT_EQ(Audio(1), OpenWave(1)) << "its blocks are there, its length is not";
  EXPECT_EQ(Title(FirstCart(1)), "Recorded by Vorda Server 21/11/2026 12:00");
  ExpectTurned(1);
  ExpectFiled(2);
  ExpectFiled(3);
}

TEST_F(FrameRecordingEndDeathTest, LastBlockThatCannotBeWrittenIsToldOnStandardErrorAndTheRestIsFiled) {
  WriteFeeds({1, 2});
  ExpectEnd(0, "Failed to write data during 'WriteAudioData'\n$", [this] {
    StartRecordings({1, 2});
    streams.made.at(0)->Keep("lost");
    const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09101.WAV");
    MainWindow()->close();
  });
  ExpectFiled(1);
  ExpectFiled(2);
}

// A box that waits for the operator holds nothing up: what is behind it never runs.
TEST_F(FrameRecordingEndDeathTest, FrameThatClosesBehindTheBoxOfALostBlockFilesTheRecording) {
  WriteFeeds({1, 2});
  ExpectEnd(0, "^$", [this] {
    StartRecordings({1, 2});
    const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09101.WAV");
    boxes.Expect("Failed to write data during 'WriteAudioData'", platform::BoxAnswer::Ok,
                 [] { Server().Unload(); });
    streams.made.at(0)->Play("lost");
    std::fputs("behind the box", stderr);
  });
  ExpectFiled(1);
  ExpectFiled(2);
}

}  // namespace
}  // namespace vorda::test
