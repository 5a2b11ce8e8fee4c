// Kill -9 at random moments of a running wire: what was whole before stays whole.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "station/Station.h"
#include "support/EventLoop.h"

namespace vorda::test {
namespace {

namespace fs = std::filesystem;
using Random = std::mt19937;

constexpr unsigned kSeed = 20261121;
constexpr int kKills = 20;
constexpr std::size_t kWireLength = 400'000;    // bytes
constexpr std::size_t kLatestKill = 60'000;     // bytes on the line
constexpr std::size_t kLongestSending = 1'500;  // bytes at once
constexpr int kLongestMoment = 1'500;           // microseconds
constexpr std::string_view kAnnouncement = " Processed New Story\r\n";

std::size_t Choose(Random& random, std::size_t least, std::size_t most) {
  return std::uniform_int_distribution<std::size_t>(least, most)(random);
}

// Stories of every length and byte, save the codes and what the display's filter works on; line ends as the
// filter leaves them.
struct Wire {
  Wire(Random& random, std::size_t longest) {
    while (line.size() < kWireLength) {
      const std::size_t most = random() % 3 == 0 ? longest : 300;
      stories.push_back(Story(random, Choose(random, 1, most)));
      line += "\x01" + stories.back() + "\x04";
    }
  }
  static std::string Story(Random& random, std::size_t length) {
    constexpr std::string_view kCodes = "\x01\x04\b\n\r";
    std::string story;
    while (story.size() < length) {
      const char byte = static_cast<char>(random());
      if (kCodes.find(byte) == std::string_view::npos) story += byte;
      if (random() % 64 == 0) story += "\r\n";
    }
    return story;
  }

  std::vector<std::string> stories;
  std::string line;
};

std::size_t Announced(StatusClient& client) {
  const std::string& text = client.Text();
  std::size_t count = 0;
  for (std::size_t at = text.find(kAnnouncement); at != std::string::npos;
       at = text.find(kAnnouncement, at + 1))
    ++count;
  return count;
}

using Files = std::map<std::string, std::string>;  // by name

Files FilesIn(const std::string& directory) {
  Files files;
  for (const auto& entry : fs::directory_iterator(directory))
    if (entry.is_regular_file())
      files[entry.path().filename().string()] = ReadWholeFile(entry.path().string());
  return files;
}

class KilledServer : public ::testing::TestWithParam<unsigned> {
 protected:
  KilledServer() {
    // As each start leaves it: it then stays as it is.
    station.AddFeed(1, "CapturePort=1\r\n",
                    "[General]\r\nName=Wire\r\n[AudioCapture]\r\nCurrentlyRecordingCartNumber=0\r\n");
    // Without a story tool every story stays where it was written.
    fs::remove(fs::path(station.News(1)).parent_path() / "tools/ItemFile");
    news = FilesIn(station.News(1));
    home = FilesIn(station.Home());
  }

  // What had happened by a kill.
  struct Kill {
    std::size_t sent = 0;       // bytes that had gone down the line
    std::size_t announced = 0;  // stories that the status port had told of
  };

  // Starts the server on a fresh line, and kills it while stories go down that line.
  Kill KillOnce() {
    station.com1.reset();
    station.com1 = std::make_unique<PseudoTerminal>(station.Com(1));
    station.Start();
    StatusClient client;
    EXPECT_TRUE(station.Connect(client)) << station.Server().output();
    Kill kill;
    kill.sent = SendUntilTheMoment(client);
    EXPECT_TRUE(station.Server().Runs());
    station.Server().Signal(SIGKILL);
    EXPECT_EQ(station.Server().ExitCode(), 1000 + SIGKILL);
    EXPECT_LT(kill.sent, wire.line.size());
    EXPECT_TRUE(client.WaitForEnd());
    kill.announced = Announced(client);
    return kill;
  }

  // Sends a random number of bytes, until at least one story is through; then goes on for a random moment, so
  // that the line is busy to the end. The number of bytes sent.
  std::size_t SendUntilTheMoment(StatusClient& client) {
    using Clock = std::chrono::steady_clock;
    const std::size_t enough = Choose(random, 1, kLatestKill);
    std::size_t sent = 0;
    const auto send = [&] {
      const std::size_t length = Choose(random, 1, kLongestSending);
      const std::string_view piece = std::string_view(wire.line).substr(sent, length);
      sent += piece.size();
      RunPendingEvents();  // takes in what the server says
      return !piece.empty() && station.com1->Write(piece);
    };
    while (sent < enough || Announced(client) == 0)
      if (!send()) return sent;
    const auto moment = Clock::now() + std::chrono::microseconds(Choose(random, 0, kLongestMoment));
    while (Clock::now() < moment)
      if (!send()) return sent;
    return sent;
  }

  // The stories that this run has left, in the order of their opening.
  std::vector<std::string> NewStories() {
    std::vector<std::string> stories;
    Files fresh;
    for (const auto& entry : fs::directory_iterator(station.News(1)))
      if (const std::string name = entry.path().filename().string(); !news.contains(name))
        fresh[name] = ReadWholeFile(entry.path().string());
    for (const auto& [name, text] : fresh) {
      if (name.ends_with(".RA1")) {
        stories.push_back(text);
      } else {
        // The kill may have hit between the making of a name and its use.
        EXPECT_TRUE(name.ends_with(".TMP") && text.empty()) << name;
      }
      // An empty file counts as no file: the next run may come upon the same name and take it.
      if (text.empty()) {
        fs::remove(station.News(1) + "/" + name);
      } else {
        news[name] = text;
      }
    }
    return stories;
  }

  const unsigned seed = kSeed + GetParam();
  Random random{seed};
  // Short stories are killed while they are handed on, long ones while they come in.
  const Wire wire{random, GetParam() % 2 == 0 ? 6'000u : 30'000u};
  Station station;
  Files news;  // what has to be in the news directory and in the home
  Files home;
};

TEST_P(KilledServer, LeavesEveryFinishedStoryWhole) {
  int cut = 0;
  int behind = 0;
  for (int i = 0; i < kKills; ++i) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", kill " + std::to_string(i));
    const Kill kill = KillOnce();
    const std::vector<std::string> stories = NewStories();
    ASSERT_GT(kill.announced, 0u);
    ASSERT_GE(stories.size(), kill.announced);
    // A story is opened only behind the end of the one before it, so that at most the last is unfinished.
    const std::size_t whole = std::max(kill.announced, stories.size() - 1);
    std::size_t taken = 0;  // bytes of the line
    for (std::size_t n = 0; n < whole; ++n) {
      ASSERT_TRUE(stories[n] == wire.stories.at(n)) << "story " << n << " of " << stories.size();
      taken += stories[n].size() + 2;
    }
    const std::string& last = wire.stories.at(stories.size() - 1);
    ASSERT_TRUE(last.starts_with(stories.back()));
    const bool isCut = last.size() > stories.back().size();
    if (whole < stories.size()) taken += 1 + stories.back().size() + (isCut ? 0 : 1);
    // The wire was running: there was more to take in, or a story was being taken in.
    EXPECT_TRUE(isCut || taken < kill.sent);
    cut += isCut;
    behind += taken < kill.sent;
    EXPECT_EQ(FilesIn(station.Home()), home);
    if (HasFailure()) return;
  }
  // What earlier runs had left was touched by no later one.
  EXPECT_TRUE(FilesIn(station.News(1)) == news);
  std::printf("seed %u: %d kills, %d in the midst of a story, %d with bytes waiting on the line\n", seed,
              kKills, cut, behind);
}

INSTANTIATE_TEST_SUITE_P(TwentyKills, KilledServer, ::testing::Range(0u, 10u));

// A tool is on its own from its start.
TEST(KilledServerWithTool, StoriesThatWereHandedOnAreFiledWhole) {
  Station station;
  station.AddFeed(1, "CapturePort=1\r\n");
  station.Start();
  StatusClient client;
  ASSERT_TRUE(station.Connect(client));
  Random random(kSeed);
  const Wire wire(random, 6'000);
  std::size_t sent = 0;
  while (Announced(client) < 5) {
    ASSERT_TRUE(station.com1->Write(std::string_view(wire.line).substr(sent, kLongestSending)));
    sent += kLongestSending;
    RunPendingEvents();
  }
  station.Server().Signal(SIGKILL);
  EXPECT_EQ(station.Server().ExitCode(), 1000 + SIGKILL);
  ASSERT_TRUE(client.WaitForEnd());
  const std::size_t announced = Announced(client);
  const auto filed = [&](const std::string& text) {
    const std::vector<Station::Story> stories = station.Stories();
    return std::any_of(stories.begin(), stories.end(),
                       [&](const Station::Story& story) { return story.text == text; });
  };
  for (std::size_t i = 0; i < announced; ++i)
    ASSERT_TRUE(WaitUntil([&] { return filed(wire.stories[i]); }, 20000)) << i << " of " << announced;
}

}  // namespace
}  // namespace vorda::test
