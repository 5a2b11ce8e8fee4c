// A whole feed window between two ports: what the bounce port, the screen and the story tool get of a wire of
// any bytes, whatever the operator and the line do between two arrivals.
//
// Input: start code and end code (two bytes each), how often the wire comes (one byte), the lengths of the
// arrivals (a text), what happens behind each (a text), the wire.

#include <QApplication>
#include <QPixmap>
#include <QWidget>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Target.h"
#include "WireModel.h"
#include "config/ServerConfig.h"
#include "platform/Desktop.h"
#include "platform/Files.h"
#include "platform/Process.h"
#include "platform/Settings.h"
#include "support/EventLoop.h"
#include "support/FakeSerialControl.h"
#include "support/FormFrame.h"
#include "support/Loopback.h"
#include "support/TempDirectory.h"

namespace vorda::fuzz {
namespace {

constexpr std::size_t kLongestArrival = 4096;
constexpr std::size_t kEnoughStories = 50;
constexpr std::size_t kEnoughBytes = 40000;

// What all inputs share.
struct Surroundings {
  static platform::Settings OnLoopback() {
    platform::Settings settings;
    settings.statusPortAddress = test::OwnLoopbackAddress();
    return settings;
  }

  platform::ScopedSettings settings{OnLoopback()};
  platform::ScopedHook<void()> silence{platform::BeepHook(), [] {}};
  test::TempDirectory news;
};

Surroundings& Here() {
  static Surroundings surroundings;
  return surroundings;
}

// The application belongs to the process: at its end the toolkit's own statics are gone before ours are.
void MakeApplication() {
  static int argumentCount = 1;
  static char name[] = "fuzz";
  static char* arguments[] = {name, nullptr};
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static const QApplication* const application = new QApplication(argumentCount, arguments);
  static_cast<void>(application);
}

class Feed {
 public:
  Feed(std::int16_t startChar, std::int16_t endChar) : model_(startChar, endChar) {
    gWireFeeds = {};
    gFeedFormCount = 0;
    record().NewsPath = Here().news.path();
    record().CapturePort = 1;
    record().BouncePort = 2;
    const std::string config = Here().news / "vorda.ini";
    test::WriteWholeFile(config, "[StoryDelimiters]\r\nStartChar=" + std::to_string(startChar) +
                                     "\r\nEndChar=" + std::to_string(endChar) + "\r\n");
    form().SetTag("1");
    form().lblConfigFile()->SetCaption(config);
    form().Show();
    capture_ = ports_.OpenOn(1);
    bounce_ = ports_.OpenOn(2);
    Require(capture_ != nullptr && bounce_ != nullptr, "a feed opens its ports");
    Require(record().StartChar == startChar && record().EndChar == endChar, "and knows its codes");
  }
  ~Feed() {
    gFeedForms[0].reset();
    platform::CloseAllFiles();
    gWireFeeds = {};
    test::RunPendingEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  Feed(const Feed&) = delete;
  Feed& operator=(const Feed&) = delete;

  void Receive(std::string_view arrival) {
    capture_->Arrive(arrival);
    arrived_ += arrival;
    model_.Take(arrival);
    Require(bounce_->sent() == arrived_, "the bounce port gets every byte as it came");
    Require(view().Text() == model_.Shown(), "the screen's text is the plain reader's");
    Require(stories_ == model_.Stories(), "the stories are the plain cutter's");
  }
  bool HasEnough() const { return stories_.size() > kEnoughStories || arrived_.size() > kEnoughBytes; }

  // What an operator or the line may do at any time. None of it touches what is received.
  void Meanwhile(unsigned what) {
    const std::size_t place = what * 64U;
    switch (what % 8) {
      case 0:
        break;
      case 1:
        Require(!form().lblConfigFile()->parentWidget()->grab().isNull(), "the window can be painted");
        break;
      case 2:
        Select(place, place / 3);
        break;
      case 3:
        capture_->RaiseEvent(static_cast<std::int16_t>(1000 + what / 8));
        break;
      case 4:
        view().resize(static_cast<int>(what) * 4, static_cast<int>(what));
        break;
      case 5:
        view().ScrollTo(place);
        break;
      case 6:
        view().SelectAll();
        Require(view().SelectedText() == model_.Shown(), "all that is shown can be selected");
        break;
      default:
        test::RunPendingEvents();
        break;
    }
  }

  void Finish() {
    if (model_.Open()) {
      Require(test::ReadWholeFile(record().StoryFileName) == model_.Open(), "the open story is complete");
      std::filesystem::remove(record().StoryFileName);
    }
    Require(record().StoryFileName.empty() != model_.Open().has_value(), "only an open story has a name");
    Require(test::JoinedNames(Here().news.path()) == "vorda.ini", "nothing else in the news directory");
  }

 private:
  static WireFeedRecord& record() { return gWireFeeds[0]; }
  static frmWireFeed& form() { return FeedForm(1); }
  static controls::TerminalView& view() { return *form().txtCapture(); }

  static void Select(std::size_t anchor, std::size_t cursor) {
    view().Select(anchor, cursor);
    const std::string shown(view().ShownText());
    const std::size_t begin = std::min({anchor, cursor, shown.size()});
    const std::size_t end = std::min(std::max(anchor, cursor), shown.size());
    Require(view().SelectedText() == shown.substr(begin, end - begin), "what is selected is what is shown");
    view().CellRect(cursor);
    view().PositionOfCell(view().CellRect(anchor).center());
  }

  void Hand(const platform::ProcessStart& start) {
    // The timers start the daily tools as well.
    if (start.program.find("ItemFile") == std::string::npos) return;
    const std::string& argument = start.arguments.at(0);
    const std::string path = argument.substr(0, argument.find('|'));
    stories_.push_back(test::ReadWholeFile(path));
    Require(std::filesystem::remove(path), "the story is there when its tool starts");
  }

  WireModel model_;
  std::string arrived_;
  std::vector<std::string> stories_;
  test::FormFrame frame_;
  test::FakeSerialControls ports_;
  platform::ScopedHook<bool(const platform::ProcessStart&, platform::ProcessInformation&)> tools_{
      platform::ProcessHook(), [this](const platform::ProcessStart& start, platform::ProcessInformation&) {
        Hand(start);
        return true;
      }};
  test::FakeSerialControl* capture_ = nullptr;
  test::FakeSerialControl* bounce_ = nullptr;
};

}  // namespace
}  // namespace vorda::fuzz

// The font library keeps what it has loaded.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vorda::fuzz;
  MakeApplication();
  Input input(bytes, size);
  const std::int16_t startChar = input.Short();
  const std::int16_t endChar = input.Short();
  const int times = 1 + input.Byte() % 32;
  const std::string_view lengths = input.Text();
  const std::string_view meanwhile = input.Text();
  const std::string_view wire = input.Rest();
  Feed feed(startChar, endChar);
  std::size_t count = 0;
  for (int i = 0; i < times; ++i) {
    for (const std::string_view arrival : Pieces(wire, lengths, kLongestArrival)) {
      if (feed.HasEnough()) break;
      feed.Receive(arrival);
      if (count < meanwhile.size()) feed.Meanwhile(static_cast<unsigned char>(meanwhile[count++]));
    }
  }
  feed.Finish();
  return 0;
}
