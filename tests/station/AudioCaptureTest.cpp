// Unattended recording by the real program: what sounds at a feed's input is in a cart when it is over.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <ctime>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "station/AudioCaptureFixture.h"

namespace vorda::test {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

// What the lines say that a client got behind the block, without their date and time.
std::vector<std::string> Lines(StatusClient& client) {
  constexpr std::size_t kStamp = 20;
  std::istringstream text(client.Text());
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line.substr(kStamp));
  lines.erase(lines.begin(), lines.begin() + 7);
  for (std::string& line : lines) line.pop_back();  // CR
  return lines;
}

bool WaitForLine(StatusClient& client, const std::string& line) {
  return WaitUntil([&] { return client.Text().find(" " + line + "\r\n") != std::string::npos; }, kPatience);
}

float FloatAt(const std::string& record, std::size_t place) {
  float value = 0;
  std::memcpy(&value, record.data() + place, sizeof value);
  return value;
}

// The titles of a recording that begins now: the time of day is told in whole seconds, the nearest ones.
void AddTitles(std::set<std::string>& titles) {
  for (const std::time_t later : {0, 1}) {
    const std::time_t moment = std::time(nullptr) + later;
    char text[80];
    std::strftime(text, sizeof text, "Recorded by Vorda Server %d/%m/%Y %H:%M", std::localtime(&moment));
    titles.insert(text);
  }
}

// The part of a sound that a recording holds, which is to be its end, with the silence that ended it.
struct Cut {
  Cut(const Samples& recorded, const Samples& sound) : piece(WithoutSilence(recorded)) {
    place = PlaceOf(piece, sound);
    silence = recorded.size() - piece.size();
    isTheEnd = place && *place + piece.size() == sound.size();
  }
  Samples piece;
  std::optional<std::size_t> place;
  std::size_t silence = 0;
  bool isTheEnd = false;
};

TEST_F(AudioCapture, SoundBecomesACart) {
  Prepare(1, "AudioStartDuration=1\r\n");
  Start();
  StatusClient client;
  ASSERT_TRUE(station_.Connect(client, 1));
  const Samples sound = MarkedSound(1, 60 * kSecond);
  std::set<std::string> titles;
  AddTitles(titles);
  auto player = sound_->Play(1, sound);

  ASSERT_TRUE(WaitForLine(client, "Started Recording"));
  AddTitles(titles);
  EXPECT_EQ(Key(1, "CurrentlyRecordingCartNumber"), "9001");
  EXPECT_EQ(Key(1, "LastRecordedCartNumber"), "");
  EXPECT_EQ(Title(9001), "Vorda Server is recording into this cart");
  EXPECT_EQ(FloatAt(Record(9001), 274), 0);
  EXPECT_TRUE(IsUnfinished(9001));
  ASSERT_TRUE(WaitForSound(9001, kSecond));

  player.reset();
  ASSERT_TRUE(WaitForLine(client, "Stopped Recording"));
  EXPECT_THAT(Lines(client),
              ElementsAre(MatchesRegex("Opened Audio File .*/wall/ORV09001\\.WAV, handle = [1-9][0-9]*"),
                          "Started Recording", "Closed Audio File", "Stopped Recording"));
  EXPECT_TRUE(IsWhole(9001));
  const Cut cut(Recorded(9001), sound);
  ASSERT_TRUE(cut.place);
  // What went by while the level had to hold is not in it; the silence that had to hold is.
  EXPECT_GE(*cut.place, kSecond * 9 / 10);
  EXPECT_GE(cut.silence, kSecond * 9 / 10);

  const float length = static_cast<float>(Recorded(9001).size()) / kSecond;
  for (const std::size_t field : {270, 274, 282, 286})
    EXPECT_EQ(FloatAt(Record(9001), field), length) << field;
  EXPECT_TRUE(titles.contains(Title(9001))) << Title(9001);
  EXPECT_EQ(Key(1, "LastRecordedCartNumber"), "9001");
  EXPECT_EQ(Key(1, "CurrentlyRecordingCartNumber"), "0");
  EXPECT_EQ(Title(9000), "Last recorded cart was : 9001");
  EXPECT_EQ(station_.Server().output(), "");
}

TEST_F(AudioCapture, ItemsOfTwoFeedsFillTheirOwnCartsOneByOne) {
  Prepare(2, "AudioStartDuration=0\r\n");
  Start();
  for (int item = 0; item < 3; ++item) {
    std::vector<std::unique_ptr<Program>> players;
    for (int feed = 1; feed <= 2; ++feed)
      players.push_back(sound_->Play(feed, MarkedSound(static_cast<unsigned>(10 * feed + item), kSecond)));
    for (int feed = 1; feed <= 2; ++feed) ASSERT_TRUE(WaitForRecorded(feed, FirstCart(feed) + item));
  }
  for (int feed = 1; feed <= 2; ++feed) {
    for (int item = 0; item < 3; ++item) {
      const std::int32_t cart = FirstCart(feed) + item;
      EXPECT_TRUE(IsWhole(cart)) << cart;
      const Cut cut(Recorded(cart), MarkedSound(static_cast<unsigned>(10 * feed + item), kSecond));
      EXPECT_TRUE(cut.isTheEnd) << cart;
    }
    EXPECT_EQ(Wave(FirstCart(feed) + 3), "");
  }
}

TEST_F(AudioCapture, EndlessSoundIsCutIntoConsecutiveCarts) {
  Prepare(1, "AudioStartDuration=0\r\nMaxCutLength=1\r\n");
  Start();
  const Samples sound = MarkedSound(1, 60 * kSecond);
  const auto player = sound_->Play(1, sound);
  constexpr std::int32_t kCuts = 3;
  ASSERT_TRUE(WaitForRecording(1, FirstCart(1) + kCuts));
  std::size_t end = 0;  // of the cut before
  for (std::int32_t cart = FirstCart(1); cart < FirstCart(1) + kCuts; ++cart) {
    EXPECT_TRUE(IsWhole(cart)) << cart;
    const Cut cut(Recorded(cart), sound);
    ASSERT_TRUE(cut.place) << cart;
    // The block that the first one begins with may have begun ahead of the sound.
    EXPECT_LE(cut.silence, cart == FirstCart(1) ? kSecond : 0) << cart;
    EXPECT_GE(cut.piece.size(), kSecond * 9 / 10) << cart;
    EXPECT_GE(*cut.place, end) << cart;
    end = *cut.place + cut.piece.size();
  }
}

TEST_F(AudioCapture, TerminationFilesTheCarts) {
  constexpr int kFeeds = 4;
  Prepare(kFeeds, "AudioStartDuration=0\r\n");
  Start();
  std::vector<std::unique_ptr<Program>> players;
  for (int feed = 1; feed <= kFeeds; ++feed)
    players.push_back(sound_->Play(feed, MarkedSound(static_cast<unsigned>(feed), 60 * kSecond)));
  for (int feed = 1; feed <= kFeeds; ++feed) ASSERT_TRUE(WaitForSound(FirstCart(feed), kSecond / 2));
  station_.Server().Signal(SIGTERM);
  EXPECT_EQ(station_.Server().ExitCode(), 0);
  for (int feed = 1; feed <= kFeeds; ++feed) {
    const std::int32_t cart = FirstCart(feed);
    EXPECT_TRUE(IsWhole(cart)) << cart;
    const Samples sound = MarkedSound(static_cast<unsigned>(feed), 60 * kSecond);
    EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(cart)), sound)) << cart;
    EXPECT_TRUE(Title(cart).starts_with("Recorded by Vorda Server ")) << Title(cart);
    EXPECT_EQ(Key(feed, "LastRecordedCartNumber"), std::to_string(cart));
    EXPECT_EQ(Key(feed, "CurrentlyRecordingCartNumber"), "0");
    EXPECT_EQ(Title(IndexCart(feed)), "Last recorded cart was : " + std::to_string(cart));
  }
}

}  // namespace
}  // namespace vorda::test
