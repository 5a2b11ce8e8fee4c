// Serial lines that are away, held by another program, or read by nobody, seen from outside the real program.

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "station/ServerProcess.h"
#include "station/Station.h"
#include "station/WireStories.h"
#include "support/EventLoop.h"

namespace vorda::test {
namespace {

constexpr std::size_t kMebibyte = 1'048'576;

bool FilesStory(const Station& station, const std::string& text) {
  return WaitUntil([&] { return HasStory(station, text); }, 20'000);
}

// From the moment when the server has seen the plug pulled until it has the line again.
TEST(Port, LineThatIsAwayCostsNoProcessorTimeAndNoLaterStory) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\nBouncePort=2\r\n",
                  "[General]\r\nName=Wire\r\n[TextData]\r\nSettings=1200,n,8,1\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  const pid_t server = ServerProcess();
  ASSERT_GT(server, 0);
  std::int64_t processorTime = 0;
  std::int64_t time = 0;
  for (int turn = 0; turn < 4; ++turn) {
    const std::string story = "story " + std::to_string(turn);
    ASSERT_TRUE(station.com1->Write("\1" + story + "\4"));
    ASSERT_TRUE(FilesStory(station, story));
    station.com1.reset();
    const std::int64_t before = ProcessorTime(server);
    QElapsedTimer elapsed;
    elapsed.start();
    // The bounce line goes and comes back as well.
    station.com2.reset();
    station.com2 = std::make_unique<PseudoTerminal>(station.Com(2));
    station.com1 = std::make_unique<PseudoTerminal>(station.Com(1));
    const auto open = [](const PseudoTerminal& line) { return line.Modes().baud == 1200; };
    ASSERT_TRUE(WaitUntil([&] { return open(*station.com1) && open(*station.com2); }, 20'000));
    processorTime += ProcessorTime(server) - before;
    time += elapsed.elapsed();
  }
  EXPECT_GE(time, 1000);
  EXPECT_LT(processorTime, time / 8);

  ASSERT_TRUE(station.com1->Write("\1later\4"));
  EXPECT_EQ(station.com2->Read(7), "\1later\4");
  EXPECT_TRUE(FilesStory(station, "later"));
  EXPECT_EQ(station.Server().output(), "");
}

TEST(Port, LineOfAnotherServerIsToldAsInUseAndBothServersFileTheirStories) {
  Station holder;
  holder.AddFeed(1, "CapturePort=1\r\n");
  holder.Start();
  StatusClient client;
  ASSERT_TRUE(holder.Connect(client));

  Station second;
  std::string platform = ReadWholeFile(second.Home() + "/platform.ini");
  platform.replace(platform.find(second.Com(1)), second.Com(1).size(), holder.Com(1));
  WriteWholeFile(second.Home() + "/platform.ini", platform);
  // The bounce port behind the capture port that is taken stays free for feed 3.
  second.AddFeed(1, "CapturePort=1\r\nBouncePort=2\r\nSoundCard=2\r\n");
  second.AddFeed(3, "CapturePort=2\r\nSoundCard=3\r\n");
  second.Start({}, Station::Screen::None);
  StatusClient secondClient;
  ASSERT_TRUE(second.Connect(secondClient, 3));
  EXPECT_TRUE(second.Server().output().ends_with(
      "\nvdserver: Couldn't open port 1 for data capture, error : File already open\n"))
      << second.Server().output();

  ASSERT_TRUE(holder.com1->Write("\1the holder's\4"));
  ASSERT_TRUE(second.com2->Write("\1the second's\4"));
  EXPECT_TRUE(FilesStory(holder, "the holder's"));
  EXPECT_TRUE(FilesStory(second, "the second's"));
  EXPECT_EQ(holder.Stories().size(), 1u);
  EXPECT_EQ(second.Stories().size(), 1u);
}

TEST(Port, BounceLineThatNobodyReadsHoldsNothingUp) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\nBouncePort=2\r\n");
  // A build with the address sanitizer would keep freed memory back, and what is resident would tell nothing.
  station.StartWith({"QT_QPA_PLATFORM=offscreen", "ASAN_OPTIONS=detect_leaks=0:quarantine_size_mb=1"});
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  const std::string half(kMebibyte / 2, 'x');
  constexpr std::size_t kStories = 16;
  std::int64_t memory = 0;
  for (std::size_t i = 0; i < kStories; ++i) {
    ASSERT_TRUE(station.com1->Write("\1" + half + half + "\4")) << i;
    if (i == 0) memory = ResidentMemory(ServerProcess());
  }
  ASSERT_TRUE(station.com1->Write("\1later\4"));
  ASSERT_TRUE(WaitUntil([&] { return StoriesKept(station) == kStories + 1; }, 20'000));
  ASSERT_GT(memory, 0);
  EXPECT_LT(ResidentMemory(ServerProcess()), memory + 8 * static_cast<std::int64_t>(kMebibyte));
  EXPECT_TRUE(HasStory(station, "later"));

  // It holds a mebibyte and what the line took by itself, and goes on behind that.
  std::string bounced;
  ASSERT_TRUE(WaitUntil([&] { return (bounced += station.com2->Read()).size() > kMebibyte; }));
  ASSERT_TRUE(station.com1->Write("\1last\4"));
  ASSERT_TRUE(WaitUntil([&] { return (bounced += station.com2->Read()).ends_with("\1last\4"); }));
  EXPECT_LT(bounced.size(), kMebibyte + 256 * 1024);
  ASSERT_TRUE(WaitUntil([&] { return StoriesKept(station) == kStories + 2; }, 20'000));
  EXPECT_TRUE(HasStory(station, "last"));
}

}  // namespace
}  // namespace vorda::test
