// A wire of any bytes, in arrivals of any lengths, through the display's filter and the cutter into story
// files.
//
// Input: start code and end code (two bytes each), how often the wire comes (one byte), the lengths of the
// arrivals (a text), the wire.

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Target.h"
#include "WireModel.h"
#include "config/Vorda_Common_API.h"
#include "feed/CaptureText.h"
#include "feed/StoryCapture.h"
#include "platform/Files.h"
#include "platform/Process.h"
#include "support/TempDirectory.h"

namespace vorda::fuzz {
namespace {

constexpr std::size_t kLongestArrival = 4096;
// Each story is a file. More of them show nothing new and cost the time that other inputs need.
constexpr std::size_t kEnoughStories = 200;
constexpr std::size_t kEnoughArrivals = 10000;
constexpr std::size_t kEnoughBytes = 600000;

// Feed 1 with a news directory of its own, and a story tool that takes the stories away.
class Feed {
 public:
  Feed(std::int16_t startChar, std::int16_t endChar) : model_(startChar, endChar) {
    gWireFeeds = {};
    record().NewsPath = News().path();
    record().FullConfigFile = "/vorda.ini";
    record().StartChar = startChar;
    record().EndChar = endChar;
  }
  ~Feed() { gWireFeeds = {}; }
  Feed(const Feed&) = delete;
  Feed& operator=(const Feed&) = delete;

  bool HasEnough() const {
    return stories_.size() > kEnoughStories || arrivals_ > kEnoughArrivals || filtered_.size() > kEnoughBytes;
  }

  void Receive(std::string_view arrival) {
    ++arrivals_;
    std::string data(arrival);
    const std::size_t before = text_.Text().size();
    text_.Append(data);
    CheckFilter(arrival, data, before);
    filtered_ += data;
    capture_.Take(data);
    CheckStories(data);
  }

  // What is left at the end of the wire.
  void Finish() {
    std::string unfinished;
    if (record().StoryFileHandle != 0) {
      unfinished = test::ReadWholeFile(record().StoryFileName);
      Require(unfinished == model_.Open(), "the open story holds all that came for it");
      platform::CloseFile(record().StoryFileHandle);
      Require(platform::RemoveNativeFile(record().StoryFileName) == 0, "the open story is a file");
    }
    Require(std::filesystem::is_empty(News().path()), "nothing but stories in the news directory");
    std::string all;
    for (const std::string& story : stories_) all += story;
    Require(all + unfinished == WithoutCodes(filtered_), "every byte but the codes is in one story");
  }

 private:
  static const test::TempDirectory& News() {
    static const test::TempDirectory directory;
    return directory;
  }
  static WireFeedRecord& record() { return gWireFeeds[0]; }

  static bool IsCode(char c) {
    const int code = static_cast<unsigned char>(c);
    return code == record().StartChar || code == record().EndChar;
  }
  static std::string WithoutCodes(std::string text) {
    std::erase_if(text, IsCode);
    return text;
  }

  void CheckFilter(std::string_view arrival, const std::string& data, std::size_t before) {
    Require(data == model_.Take(arrival), "the filter leaves what the plain one leaves");
    Require(text_.Text() == model_.Shown(), "the screen shows what the plain one shows");
    const std::size_t kept = before > 16000 ? before - 4096 : before;
    Require(text_.Text().size() <= kept + data.size(), "an arrival never makes the text longer than itself");
    Require(text_.Text().size() <= kMostShown + 2 * kLongestArrival, "the text never grows without end");
    for (std::size_t i = 0; i < data.size(); ++i) {
      Require(data[i] != '\b', "no backspace is left");
      Require(data[i] != '\n' || (i > 0 && data[i - 1] == '\r'), "a line feed stands behind a CR only");
      Require(data[i] != '\r' || (i + 1 < data.size() && data[i + 1] == '\n'), "and behind each one");
    }
  }

  void CheckStories(const std::string& data) {
    Require(stories_.size() == model_.Stories().size(), "as many stories as the plain cutter hands on");
    Require(announced_ == stories_.size(), "each is announced");
    for (; checked_ < stories_.size(); ++checked_) {
      Require(stories_[checked_] == model_.Stories()[checked_], "a story is what the plain cutter cuts");
      Require(std::none_of(stories_[checked_].begin(), stories_[checked_].end(), IsCode),
              "no start or end code in a story");
    }
    const bool open = record().StoryFileHandle != 0;
    Require(open == model_.Open().has_value(), "a story is open when the plain cutter has one");
    Require(open != record().StoryFileName.empty(), "an open story has a name, and no other");
    const bool ended = !data.empty() && static_cast<unsigned char>(data.back()) == record().EndChar;
    Require(!open || !ended, "none is open behind an end code");
  }

  void Hand(const platform::ProcessStart& start) {
    Require(start.arguments.size() == 1, "the tool gets one argument");
    const std::string& argument = start.arguments.front();
    const std::string path = argument.substr(0, argument.find('|'));
    Require(std::filesystem::is_regular_file(path), "the story is there when its tool starts");
    stories_.push_back(test::ReadWholeFile(path));
    std::filesystem::remove(path);
  }

  WireModel model_;
  CaptureText text_;
  std::size_t arrivals_ = 0;
  std::string filtered_;
  std::vector<std::string> stories_;
  std::size_t announced_ = 0;
  std::size_t checked_ = 0;
  platform::ScopedHook<bool(const platform::ProcessStart&, platform::ProcessInformation&)> tool_{
      platform::ProcessHook(), [this](const platform::ProcessStart& start, platform::ProcessInformation&) {
        Hand(start);
        return true;
      }};
  StoryCapture capture_{[] { return std::string("1"); }, [this](std::string_view) { ++announced_; }};
};

}  // namespace
}  // namespace vorda::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vorda::fuzz;
  Input input(bytes, size);
  const std::int16_t startChar = input.Short();
  const std::int16_t endChar = input.Short();
  const int times = 1 + input.Byte() % 128;
  const std::string_view lengths = input.Text();
  const std::string_view wire = input.Rest();
  Feed feed(startChar, endChar);
  for (int i = 0; i < times; ++i) {
    for (const std::string_view arrival : Pieces(wire, lengths, kLongestArrival)) {
      if (!feed.HasEnough()) feed.Receive(arrival);
    }
  }
  feed.Finish();
  return 0;
}
