// The real program beside a sound server that hangs, and with inputs that can't be had.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <csignal>
#include <string>

#include "platform/Descriptor.h"
#include "station/AudioCaptureFixture.h"

namespace vorda::test {
namespace {

class AudioCaptureSoundServer : public AudioCapture {
 protected:
  std::string Settings() const { return station_.Home() + "/platform.ini"; }
  // Makes another input of the one that platform.ini numbers.
  void Renumber(const std::string& lines) {
    const std::string numbered = "1=" + SoundServerProcess::Input(1) + "\r\n";
    std::string text = ReadWholeFile(Settings());
    text.replace(text.find(numbered), numbered.size(), lines);
    WriteWholeFile(Settings(), text);
  }
  // Starts the server, and waits until the feed runs.
  void StartWithoutSound() {
    std::vector<std::string> environment = sound_->Environment();
    environment.emplace_back("QT_QPA_PLATFORM=offscreen");
    station_.StartWith(environment);
    StatusClient client;
    ASSERT_TRUE(station_.Connect(client, 1)) << station_.Server().output();
  }
  void ExpectEndAtOnce() {
    station_.Server().Signal(SIGTERM);
    // What waits for a sound server or a pipe waits for half a minute or for ever.
    EXPECT_EQ(station_.Server().ExitCode(20000), 0);
    EXPECT_EQ(station_.Server().output(), "");
  }
};

TEST_F(AudioCaptureSoundServer, TerminationWhileItHangsFilesTheCartAtOnce) {
  Prepare(1, "AudioStartDuration=0\r\n");
  Start();
  const Samples sound = MarkedSound(1, 60 * kSecond);
  const auto player = sound_->Play(1, sound);
  ASSERT_TRUE(WaitForSound(9001, kSecond / 4));
  sound_->Signal(SIGSTOP);
  ExpectEndAtOnce();
  EXPECT_TRUE(IsWhole(9001));
  EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(9001)), sound));
  EXPECT_EQ(Key(1, "LastRecordedCartNumber"), "9001");
}

TEST_F(AudioCaptureSoundServer, StartsAndEndsWhileItHangs) {
  Prepare(1);
  sound_->Signal(SIGSTOP);
  StartWithoutSound();
  ASSERT_TRUE(WaitUntil([&] { return sound_->Connections() == 1; }, kPatience));
  ExpectEndAtOnce();
}

TEST_F(AudioCaptureSoundServer, HangEndsTheCartAndTheNextIsFilledBehindIt) {
  Prepare(1, "AudioStartDuration=0\r\n");
  Start();
  const Samples sound = MarkedSound(1, 30 * kSecond);
  auto player = sound_->Play(1, sound);
  ASSERT_TRUE(WaitForSound(9001, kSecond / 4));
  sound_->Signal(SIGSTOP);
  ASSERT_TRUE(WaitForRecorded(1, 9001));
  EXPECT_TRUE(IsWhole(9001));
  EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(9001)), sound));
  sound_->Signal(SIGCONT);
  ASSERT_TRUE(WaitForSound(9002, kSecond / 4));
  player.reset();
  ASSERT_TRUE(WaitForRecorded(1, 9002));
  EXPECT_TRUE(PlaceOf(WithoutSilence(Recorded(9002)), sound));
}

TEST_F(AudioCaptureSoundServer, PipeInASoundFilesPlaceHoldsNothingUp) {
  Prepare(1);
  const std::string pipe = station_.Home() + "/sound.wav";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  Renumber("1=file:" + pipe + "\r\n");
  StartWithoutSound();
  ExpectEndAtOnce();
}

// Another program keeps platform.ini locked.
TEST_F(AudioCaptureSoundServer, InputThatCannotBeNumberedIsToldOnceAndRecordedWhenItCan) {
  Prepare(1, "AudioStartDuration=0\r\n");
  Renumber("");
  platform::Descriptor held = platform::OpenFile(Settings(), O_RDWR);
  ASSERT_EQ(::flock(held.number(), LOCK_EX), 0);
  StartWithoutSound();
  const std::string told =
      "vdserver: No number for " + SoundServerProcess::Input(1) + " : platform.ini can't be written\n";
  ASSERT_TRUE(WaitUntil([&] { return station_.Server().output() == told; }, kPatience))
      << station_.Server().output();
  EXPECT_EQ(sound_->Streams(), 0);
  held = {};
  ASSERT_TRUE(WaitForStreams(1));
  const auto player = sound_->Play(1, MarkedSound(1, kSecond));
  ASSERT_TRUE(WaitForRecorded(1, 9001));
  EXPECT_EQ(station_.Server().output(), told);
}

}  // namespace
}  // namespace vorda::test
