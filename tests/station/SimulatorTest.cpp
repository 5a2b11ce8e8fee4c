// The wire simulator from outside: what it sends, when, and how it ends.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <memory>

#include "station/Program.h"
#include "support/EventLoop.h"
#include "support/PseudoTerminal.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

using namespace std::string_literals;

// The reader at the far end of a line.
class Reader {
 public:
  explicit Reader(const std::string& path)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK)) {}
  ~Reader() { Close(); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  void Close() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
  }
  const std::string& Bytes() {
    char buffer[65536];
    for (ssize_t count = 0; (count = ::read(descriptor_, buffer, sizeof(buffer))) > 0;) {
      bytes_.append(buffer, static_cast<size_t>(count));
    }
    return bytes_;
  }
  // All that comes until the program has ended.
  std::string ReadToEndOf(Program& program) {
    const auto ended = [&] {
      Bytes();
      return !program.Runs();
    };
    EXPECT_TRUE(WaitUntil(ended, 20000));
    return Bytes();
  }

 private:
  int descriptor_;
  std::string bytes_;
};

class SimulatorTest : public ::testing::Test {
 protected:
  SimulatorTest() {
    WriteWholeFile(directory_ / "a.txt", "first\r\r\n");
    WriteWholeFile(directory_ / "b.txt", "second\0\xff\r\r\n"s);
  }

  std::string File(std::string_view name) const { return directory_ / name; }
  std::string Text(std::string_view name) const { return ReadWholeFile(directory_ / name); }

  // Starts the simulator on a pseudo-terminal, at full speed unless the options say otherwise.
  Program& Start(const std::vector<std::string>& options) {
    std::vector<std::string> command = {BuiltProgram("vdwire"), "--pty", link_, "--pace", "0", "--verbose"};
    command.insert(command.end(), options.begin(), options.end());
    program_ = std::make_unique<Program>(command);
    EXPECT_TRUE(WaitUntil([this] { return std::filesystem::exists(link_) || !program_->Runs(); }));
    return *program_;
  }
  // What the line carries from start to end.
  std::string Played(const std::vector<std::string>& options) {
    Program& program = Start(options);
    Reader reader(link_);
    const std::string bytes = reader.ReadToEndOf(program);
    EXPECT_EQ(program.ExitCode(), 0) << program.output();
    return bytes;
  }
  // Runs it where it has to refuse.
  static int Refused(std::vector<std::string> command) {
    command.insert(command.begin(), BuiltProgram("vdwire"));
    return RunToEnd(command);
  }

  TempDirectory directory_;
  const std::string link_ = directory_ / "line";
  std::unique_ptr<Program> program_;
};

TEST_F(SimulatorTest, StoriesGoDownTheLineBetweenTheirCodes) {
  EXPECT_EQ(Played({File("a.txt"), File("b.txt")}),
            "\x01"
            "first\r\r\n\x03\x01second\0\xff\r\r\n\x03"s);
}

TEST_F(SimulatorTest, EndOfTransmissionAndAnyTwoCodesCanFrameThem) {
  EXPECT_EQ(Played({"--framing", "soh-eot", File("a.txt")}),
            "\x01"
            "first\r\r\n\x04");
  EXPECT_EQ(Played({"--framing", "0:255", File("a.txt")}), "\0first\r\r\n\xff"s);
}

TEST_F(SimulatorTest, FramingOfACapturedFileGivesWayToTheLines) {
  WriteWholeFile(File("captured.txt"), "\x01text\r\r\n\x03\r\n");
  EXPECT_EQ(Played({"--framing", "soh-eot", File("captured.txt")}), "\x01text\r\r\n\x04");
}

TEST_F(SimulatorTest, DirectoryIsPlayedInTheOrderOfItsNames) {
  std::filesystem::create_directory(File("copy"));
  WriteWholeFile(File("copy/2"), "two");
  WriteWholeFile(File("copy/10"), "ten");
  WriteWholeFile(File("copy/.hidden"), "hidden");
  EXPECT_EQ(Played({File("copy")}), "\x01ten\x03\x01two\x03");
}

TEST_F(SimulatorTest, RawStreamComesByteForByte) {
  const std::string stream = std::string(VORDA_TEST_DATA) + "/wire/stream/wire-open.raw";
  EXPECT_EQ(Played({"--raw", stream, "--chunk", "4096"}), ReadWholeFile(stream));
}

TEST_F(SimulatorTest, SentFileHoldsTheBytesThatTheReaderGot) {
  const std::string bytes = Played({"--noise", "--sent", File("sent"), File("a.txt"), File("b.txt")});
  EXPECT_EQ(Text("sent"), bytes);
  EXPECT_NE(bytes.find("\x01"
                       "first\r\r\n\x03"),
            std::string::npos);
}

TEST_F(SimulatorTest, DroppedStoryIsInThePlanAndNotOnTheLine) {
  const std::string bytes = Played({"--drop", "1", "--plan", File("plan"), File("a.txt"), File("b.txt")});
  EXPECT_EQ(bytes, "\x01second\0\xff\r\r\n\x03"s);
  EXPECT_EQ(Text("plan"),
            "\x01"
            "first\r\r\n\x03" +
                bytes);
}

TEST_F(SimulatorTest, DropTakesNothingElseOfTheNoise) {
  Played({"--noise", "--plan", File("whole"), File("a.txt"), File("b.txt")});
  const std::string bytes =
      Played({"--noise", "--drop", "1", "--plan", File("plan"), File("a.txt"), File("b.txt")});
  std::string expected = Text("whole");
  EXPECT_EQ(Text("plan"), expected);
  const std::string story =
      "\x01"
      "first\r\r\n\x03";
  EXPECT_EQ(bytes, expected.erase(expected.find(story), story.size()));
}

TEST_F(SimulatorTest, NoiseIsTheSameForASeedAndNeverACodeThatMatters) {
  const std::vector<std::string> options = {"--noise", "--framing", "0:127", "--loop", "50", File("a.txt")};
  const auto played = [&](const char* seed) {
    std::vector<std::string> all = options;
    all.insert(all.end(), {"--seed", seed});
    return Played(all);
  };
  const std::string bytes = played("7");
  EXPECT_EQ(played("7"), bytes);
  EXPECT_NE(played("8"), bytes);
  // 50 start codes and 50 end codes: the noise, which would have NUL and DEL, keeps clear of both.
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\0'), 50);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\x7f'), 50);
  EXPECT_EQ(bytes.find('\b'), std::string::npos);
  EXPECT_NE(bytes.find('\x16'), std::string::npos);
}

TEST_F(SimulatorTest, LoopPlaysAgainAndCountsOn) {
  EXPECT_EQ(Played({"--loop", "3", "--drop", "2", File("a.txt")}),
            "\x01"
            "first\r\r\n\x03\x01"
            "first\r\r\n\x03");
  EXPECT_NE(program_->output().find("story 3: 10 bytes, a.txt"), std::string::npos);
  EXPECT_NE(program_->output().find("2 stories, 20 bytes in "), std::string::npos);
  EXPECT_NE(program_->output().find("; 1 left out"), std::string::npos);
}

TEST_F(SimulatorTest, FirstByteWaitsForAReader) {
  Program& program = Start({"--sent", File("sent"), File("a.txt")});
  ASSERT_TRUE(WaitUntil([&] { return program.output().find("waiting for a reader") != std::string::npos; }));
  EXPECT_EQ(Text("sent"), "");
  Reader reader(link_);
  EXPECT_EQ(reader.ReadToEndOf(program),
            "\x01"
            "first\r\r\n\x03");
}

TEST_F(SimulatorTest, FirstByteWaitsForEnter) {
  Program& program = Start({"--on-enter", "--sent", File("sent"), File("a.txt")});
  Reader reader(link_);
  ASSERT_TRUE(WaitUntil([&] { return program.output().find("press Enter") != std::string::npos; }));
  EXPECT_EQ(reader.Bytes(), "");
  program.Type("\n");
  EXPECT_EQ(reader.ReadToEndOf(program),
            "\x01"
            "first\r\r\n\x03");
}

TEST_F(SimulatorTest, CopyComesNoFasterThanItsBaudRate) {
  WriteWholeFile(File("c.txt"), std::string(58, 'c'));
  Program program(
      {BuiltProgram("vdwire"), "--pty", link_, "--settings", "1200,n,8,1", "--chunk", "1", File("c.txt")});
  ASSERT_TRUE(WaitUntil([&] { return std::filesystem::exists(link_); }));
  const auto before = std::chrono::steady_clock::now();
  Reader reader(link_);
  ASSERT_TRUE(WaitUntil([&] { return reader.Bytes().size() == 60; }));
  // The last byte is due 59 bytes after the first, at 120 a second; the catching up of a held-up sender may
  // save 50 ms.
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(59 * 1000 / 120 - 50));
  EXPECT_EQ(program.ExitCode(), 0) << program.output();
}

TEST_F(SimulatorTest, SlowReaderLosesNothing) {
  WriteWholeFile(File("long"), std::string(100000, 'x') + std::string(100000, 'y'));
  Program& program = Start({"--raw", File("long"), "--chunk", "4096", "--sent", File("sent")});
  Reader reader(link_);
  // The line's buffer takes some and then no more.
  ASSERT_TRUE(WaitUntil([&] { return Text("sent").size() >= 4096; }));
  EXPECT_TRUE(program.Runs());
  EXPECT_EQ(reader.ReadToEndOf(program), Text("long"));
}

TEST_F(SimulatorTest, LinkGoesAtTheEndAndWhenInterrupted) {
  Played({File("a.txt")});
  EXPECT_FALSE(std::filesystem::is_symlink(link_));
  Program& program = Start({File("a.txt")});
  program.Signal(SIGTERM);
  EXPECT_EQ(program.ExitCode(), 130);
  EXPECT_FALSE(std::filesystem::is_symlink(link_));
}

TEST_F(SimulatorTest, InterruptedInAStoryItSumsUpWhatWent) {
  WriteWholeFile(File("c.txt"), std::string(5000, 'c'));
  Program& program = Start({"--pace", "2000", "--sent", File("sent"), File("c.txt")});
  Reader reader(link_);
  ASSERT_TRUE(WaitUntil([&] { return reader.Bytes().size() > 100; }));
  program.Signal(SIGINT);
  EXPECT_EQ(program.ExitCode(), 130);
  EXPECT_NE(program.output().find("0 stories, "), std::string::npos);
  EXPECT_GT(Text("sent").size(), 100u);
  EXPECT_LT(Text("sent").size(), 5002u);
}

TEST_F(SimulatorTest, EndlessLoopEndsWellOnInterrupt) {
  Program& program = Start({"--loop", "0", "--pace", "5000", File("a.txt")});
  Reader reader(link_);
  ASSERT_TRUE(WaitUntil([&] { return program.output().find("story 4:") != std::string::npos; }));
  program.Signal(SIGINT);
  EXPECT_EQ(program.ExitCode(), 0);
}

TEST_F(SimulatorTest, LineStaysUpUntilTheReaderGoes) {
  Program& program = Start({"--stay", File("a.txt")});
  Reader reader(link_);
  ASSERT_TRUE(WaitUntil(
      [&] { return reader.Bytes().size() == 10 && program.output().find("a second") != std::string::npos; }));
  EXPECT_TRUE(program.Runs());
  reader.Close();
  EXPECT_EQ(program.ExitCode(), 0);
}

TEST_F(SimulatorTest, ReaderThatGoesInTheMiddleIsALineThatIsGone) {
  Program& program = Start({"--loop", "0", File("a.txt")});
  Reader reader(link_);
  ASSERT_TRUE(WaitUntil([&] { return reader.Bytes().size() > 100; }));
  reader.Close();
  EXPECT_EQ(program.ExitCode(), 1);
  EXPECT_NE(program.output().find("the line is gone"), std::string::npos);
}

TEST_F(SimulatorTest, DeviceGetsItsSettingsAndTheStories) {
  PseudoTerminal device;
  Program program(
      {BuiltProgram("vdwire"), "--port", device.path(), "--settings", "1200,n,8,2", File("a.txt")});
  EXPECT_EQ(device.Read(10),
            "\x01"
            "first\r\r\n\x03");
  EXPECT_EQ(device.Modes().baud, 1200u);
  EXPECT_EQ(program.ExitCode(), 0) << program.output();
}

TEST_F(SimulatorTest, DeviceThatIsPulledOutIsALineThatIsGone) {
  PseudoTerminal device;
  Program program(
      {BuiltProgram("vdwire"), "--port", device.path(), "--loop", "0", "--verbose", File("a.txt")});
  ASSERT_NE(device.Read(10), "");
  device.HangUp();
  EXPECT_EQ(program.ExitCode(), 1);
  EXPECT_NE(program.output().find("the line is gone"), std::string::npos);
}

TEST_F(SimulatorTest, WrongArgumentsAndMissingFilesAreRefused) {
  EXPECT_EQ(Refused({}), 2);
  EXPECT_EQ(Refused({"--pty", link_}), 2);
  EXPECT_EQ(Refused({"--pty", link_, "--port", "/dev/null", File("a.txt")}), 2);
  EXPECT_EQ(Refused({"--pty", link_, "--framing", "1:256", File("a.txt")}), 2);
  EXPECT_EQ(Refused({"--pty", link_, "--settings", "9600,x,8,1", File("a.txt")}), 2);
  EXPECT_EQ(Refused({"--pty", link_, File("a.txt"), "--gap"}), 2);
  EXPECT_EQ(Refused({"--pty", link_, "--raw", File("a.txt"), "--drop", "1"}), 2);
  EXPECT_EQ(Refused({"--pty", link_, "--loop", "2", "--drop", "3", File("a.txt")}), 2);
  EXPECT_EQ(Refused({"--pty", link_, File("nothing.txt")}), 1);
  EXPECT_EQ(Refused({"--port", File("nothing"), File("a.txt")}), 1);
  EXPECT_EQ(Refused({"--port", "/dev/null", File("a.txt")}), 1);
}

TEST_F(SimulatorTest, OnlyALeftOverLinkIsReplaced) {
  std::filesystem::create_symlink("/dev/pts/999999", link_);
  EXPECT_EQ(Played({File("a.txt")}),
            "\x01"
            "first\r\r\n\x03");
  WriteWholeFile(link_, "somebody's file");
  EXPECT_EQ(Refused({"--pty", link_, File("a.txt")}), 1);
  EXPECT_EQ(ReadWholeFile(link_), "somebody's file");
}

}  // namespace
}  // namespace vorda::test
