// A feed window on real serial lines.

#include <gtest/gtest.h>

#include "support/FeedWindows.h"
#include "support/PseudoTerminal.h"

namespace vorda::test {
namespace {

class FeedLine : public FeedWindows {
 protected:
  FeedLine() {
    ports.reset();
    platform::Settings mapped = TestSettings();
    mapped.serialPorts = {capture.path(), bounce.path(), directory / "no-device", ""};
    lines.emplace(mapped);
  }

  PseudoTerminal capture{directory / "com1"};
  PseudoTerminal bounce{directory / "com2"};
  std::optional<platform::ScopedSettings> lines;
};

TEST_F(FeedLine, StoryGoesFromTheLineToTheFileAndRawToTheBounceLine) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  std::string story;
  processes.atStart = [&](const platform::ProcessStart& start) {
    story = ReadWholeFile(start.arguments.at(0).substr(0, start.arguments.at(0).find('|')));
  };
  frmWireFeed& form = Start(1);
  std::string every;
  for (int code = 5; code < 256; ++code)
    if (code != 8 && code != 10 && code != 13) every += static_cast<char>(code);
  const std::string sent = "\x01" + every + "\r\nend\n\x04";
  ASSERT_TRUE(capture.Write(sent));
  EXPECT_EQ(bounce.Read(sent.size()), sent);
  ASSERT_TRUE(WaitUntil([&] { return !processes.started.empty(); }));
  EXPECT_EQ(story, every + "\r\nend");
  EXPECT_EQ(form.txtCapture()->Text(), "\x01" + every + "\r\nend\x04");
}

TEST_F(FeedLine, PortOfAnotherFeedIsInUse) {
  Record(1).CapturePort = 1;
  Record(2).CapturePort = 1;
  Start(1);
  boxes.Expect("Couldn't open port 1 for data capture, error : File already open");
  frmWireFeed& second = Start(2);
  EXPECT_EQ(second.Text(), "Vorda Server : Wire 2");
  ASSERT_TRUE(capture.Write("still feed 1's"));
  EXPECT_TRUE(WaitUntil([] { return FeedForm(1).txtCapture()->Text() == "still feed 1's"; }));
  EXPECT_EQ(second.txtCapture()->Text(), "");
}

TEST_F(FeedLine, MissingAndUnmappedPortsAreUnavailable) {
  Record(1).CapturePort = 3;
  boxes.Expect("Couldn't open port 3 for data capture, error : Device unavailable");
  Start(1);
  Record(2).CapturePort = 1;
  Record(2).BouncePort = 4;
  boxes.Expect("Couldn't open Bounce port 4 for data re-feed, error : Device unavailable");
  Start(2);
}

TEST_F(FeedLine, ClosedWindowGivesItsPortsBack) {
  Record(1).CapturePort = 1;
  Record(1).BouncePort = 2;
  frmWireFeed& form = Start(1);
  ChildWindowOf(form.lblConfigFile())->close();
  Record(2).CapturePort = 2;
  Record(2).BouncePort = 1;
  Start(2);
  ASSERT_TRUE(bounce.Write("turned round"));
  EXPECT_EQ(capture.Read(12), "turned round");
}

}  // namespace
}  // namespace vorda::test
