// The real program and its screen: one that goes, one that can't be reached, none at all, and a standard
// error that nobody reads.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <string>

#include "station/Station.h"
#include "support/EventLoop.h"
#include "support/WaveBytes.h"

namespace vorda::test {
namespace {

// A display of the test's own, on a number that nobody else has.
class Display {
 public:
  Display() {
    server_ = std::make_unique<Program>(std::vector<std::string>{
        "sh", "-c", "exec Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>\"$0\"",
        directory_ / "number"});
    EXPECT_TRUE(WaitUntil([this] { return !server_->Runs() || Text().ends_with('\n'); }, 20000));
    EXPECT_TRUE(server_->Runs()) << server_->output();
  }
  ~Display() { End(); }
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;

  std::string Name() const {
    const std::string text = Text();
    return ":" + text.substr(0, text.find('\n'));
  }
  void End() {
    server_->Signal(SIGTERM);
    EXPECT_NE(server_->ExitCode(), -1);
  }

 private:
  std::string Text() const { return ReadWholeFile(directory_ / "number"); }

  TempDirectory directory_;
  std::unique_ptr<Program> server_;
};

TEST(ServerDisplay, LostOneEndsItWithOne) {
  Display display;
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.StartWith({"DISPLAY=" + display.Name()});
  StatusClient client;
  ASSERT_TRUE(station.Connect(client)) << station.Server().output();
  ASSERT_TRUE(station.com1->Write("\x01half a story"));
  ASSERT_TRUE(WaitUntil([&] {
    const std::vector<std::string> files = station.StoryFiles(1);
    return files.size() == 1 && ReadWholeFile(files[0]) == "half a story";
  }));
  display.End();
  EXPECT_EQ(station.Server().ExitCode(), 1) << station.Server().output();
  EXPECT_TRUE(client.WaitForEnd());
  ASSERT_EQ(station.StoryFiles(1).size(), 1u);
  EXPECT_EQ(ReadWholeFile(station.StoryFiles(1)[0]), "half a story");
}

// What was recorded is filed, with its length.
TEST(ServerDisplay, LostOneFilesTheRecording) {
  constexpr std::int32_t kRate = 8000;
  Display display;
  Station station;
  WriteWholeFile(station.Home() + "/sound.wav", Riff(FormatChunk({1, 1, kRate, 2 * kRate, 2, 16}) +
                                                     Chunk("data", std::string(4 * kRate, 'a'))));
  WriteWholeFile(station.Home() + "/platform.ini", ReadWholeFile(station.Home() + "/platform.ini") +
                                                       "[WaveIn]\r\n1=file:" + station.Home() +
                                                       "/sound.wav\r\n");
  station.AddFeed(
      1, "SoundCard=1\r\n",
      "[General]\r\nName=Wire\r\n[AudioCapture]\r\nAudioActivationLevel=1\r\nAudioStartDuration=0\r\n"
      "[RecordAudioFormat]\r\nSampleRate=8000\r\n");
  station.StartWith({"DISPLAY=" + display.Name()});
  const std::string cart = station.Wall() + "/ORV09001.WAV";
  ASSERT_TRUE(WaitUntil([&] { return ReadWholeFile(cart).size() > 1000; }, 20000))
      << station.Server().output();
  display.End();
  EXPECT_EQ(station.Server().ExitCode(), 1) << station.Server().output();
  const std::string audio = ReadWholeFile(cart);
  EXPECT_EQ(audio.substr(4, 4), Number(audio.size() - 8, 4));
  EXPECT_EQ(audio.substr(40, 4), Number(audio.size() - 44, 4));
  EXPECT_NE(ReadWholeFile(station.Wall() + "/Carts10.lst").find("Recorded by Vorda Server"),
            std::string::npos);
}

// Feed 2's warning waits for an operator, who isn't there.
TEST(ServerDisplay, LostOneEndsItWithOneBehindABox) {
  Display display;
  Station station;
  station.AddFeed(1, "");
  station.AddFeed(2, "", "");
  station.StartWith({"DISPLAY=" + display.Name()});
  StatusClient client;
  ASSERT_TRUE(station.Connect(client)) << station.Server().output();
  display.End();
  EXPECT_EQ(station.Server().ExitCode(), 1) << station.Server().output();
}

TEST(ServerDisplay, SignalEndsItWithZero) {
  const Display display;
  Station station;
  station.AddFeed(1, "");
  station.StartWith({"DISPLAY=" + display.Name()});
  StatusClient client;
  ASSERT_TRUE(station.Connect(client)) << station.Server().output();
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0) << station.Server().output();
}

// The test of the windows once more, with a real screen to look at: there a window is on the screen only when
// the display says so, and what is painted before is lost.
TEST(ServerDisplay, SplashIsPaintedBeforeTheFirstBox) {
  const Display display;
  Program test({"env", "DISPLAY=" + display.Name(), BuiltProgram("forms_tests"), "-platform", "xcb",
                "--gtest_death_test_style=threadsafe",
                "--gtest_filter=FrameDeathTest.SplashIsPaintedBeforeTheFirstBox"});
  EXPECT_EQ(test.ExitCode(60000), 0) << test.output();
  EXPECT_NE(test.output().find("[  PASSED  ] 1 test."), std::string::npos) << test.output();
}

TEST(ServerDisplay, OneThatCannotBeReachedEndsItWithOneAndALine) {
  Station station;
  station.AddFeed(1, "");
  station.StartWith({"DISPLAY=:47110"});
  EXPECT_EQ(station.Server().ExitCode(), 1);
  EXPECT_NE(station.Server().output().find("could not connect to display :47110\n"), std::string::npos)
      << station.Server().output();
}

TEST(ServerWithoutDisplay, EmptyNamesOfOneAreNone) {
  Station station;
  station.AddFeed(1, "");
  station.StartWith({"DISPLAY=", "WAYLAND_DISPLAY=", "QT_QPA_PLATFORM="});
  StatusClient client;
  ASSERT_TRUE(station.Connect(client)) << station.Server().output();
  const std::string output = station.Server().output();
  EXPECT_NE(output.find("no display"), std::string::npos) << output;
  EXPECT_EQ(output.find('\n'), output.size() - 1) << output;
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
}

// Feed 1's warning and feed 3's go to a pipe whose reader has gone.
TEST(ServerWithoutDisplay, StandardErrorThatNobodyReadsDoesNotEndIt) {
  const TempDirectory directory;
  const std::string pipe = directory / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  Station station;
  station.AddFeed(1, "", "");
  station.AddFeed(2, "CapturePort=1\r\nSoundCard=2\r\n");
  station.AddFeed(3, "", "");
  station.AddFeed(4, "SoundCard=4\r\n");
  station.StartWith({}, {"sh", "-c", "exec 3<>\"$0\" 2>\"$0\" 3>&-; exec \"$@\"", pipe});
  StatusClient client;
  ASSERT_TRUE(station.Connect(client, 4));
  ASSERT_TRUE(station.com1->Write("\x01Story\x04"));
  ASSERT_TRUE(station.WaitForStories(1));
  EXPECT_EQ(station.Stories().at(0).text, "Story");
  EXPECT_EQ(station.Server().output(), "");
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
}

// The same warnings, and a pipe that is full because its reader sleeps.
TEST(ServerWithoutDisplay, StandardErrorThatIsFullIsNotWaitedFor) {
  const TempDirectory directory;
  const std::string pipe = directory / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const int reader = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  const std::string page(4096, '.');
  while (::write(reader, page.data(), page.size()) > 0) continue;
  Station station;
  station.AddFeed(1, "", "");
  station.AddFeed(2, "CapturePort=1\r\nSoundCard=2\r\n");
  station.AddFeed(3, "", "");
  station.AddFeed(4, "SoundCard=4\r\n");
  station.StartWith({}, {"sh", "-c", "exec 2>\"$0\"; exec \"$@\"", pipe});
  StatusClient client;
  EXPECT_TRUE(station.Connect(client, 4));
  EXPECT_TRUE(station.com1->Write("\x01Story\x04"));
  EXPECT_TRUE(station.WaitForStories(1));
  station.Server().Signal(SIGTERM);
  EXPECT_EQ(station.Server().ExitCode(), 0);
  ::close(reader);
}

// Otherwise a port or a story would get the number of a stream, and all that is said there. The tool is told
// what the server has for them.
TEST(ServerStreams, ThoseThatAreMissingAreHeldByNothing) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  WriteWholeFile(station.News(1) + "/../tools/ItemFile",
                 "#!/bin/sh\nstreams=$(readlink /proc/$$/fd/1 /proc/$$/fd/2)\n"
                 "echo \"$streams\" > \"${0%/*}/streams\"\ntouch \"${0%/*}/kept/argument.1\"\n");
  station.StartWith({}, {"sh", "-c", "exec \"$@\" <&- >&- 2>&-", "sh"});
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  ASSERT_TRUE(station.com1->Write("\x01Story\x04"));
  ASSERT_TRUE(station.WaitForStories(1));
  EXPECT_EQ(ReadWholeFile(station.News(1) + "/../tools/streams"), "/dev/null\n/dev/null\n");
}

}  // namespace
}  // namespace vorda::test
