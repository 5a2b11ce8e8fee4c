// A feed with a news directory of its own, whose stories are cut and handed on to tools that only look.

#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "config/Vorda_Common_API.h"
#include "feed/StoryCapture.h"
#include "platform/Settings.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda::test {

// A story that was handed on: what the story processor found at its start.
struct HandedStory {
  std::string path;  // native
  std::string text;
};

class StoryFixture : public ::testing::Test {
 protected:
  StoryFixture() {
    gWireFeeds = {};
    SetUpFeed(feed());
    processes_.atStart = [this](const platform::ProcessStart& start) { LookAt(start); };
  }
  ~StoryFixture() override { gWireFeeds = {}; }

  WireFeedRecord& feed() { return gWireFeeds[0]; }

  void SetUpFeed(WireFeedRecord& feed) {
    feed.NewsPath = news_.path();
    feed.FullConfigFile = news_ / "vorda.ini";
    feed.StartChar = 1;
    feed.EndChar = 4;
  }

  // One arrival, filtered already.
  void Take(std::string_view data) { capture_.Take(data); }

  // The texts of the stories handed on so far.
  std::vector<std::string> Handed() const {
    std::vector<std::string> texts;
    for (const HandedStory& story : handed_) texts.push_back(story.text);
    return texts;
  }
  // What the open story's file holds.
  std::string OpenText() { return ReadWholeFile(feed().StoryFileName); }

  void LookAt(const platform::ProcessStart& start) {
    ASSERT_EQ(start.arguments.size(), 1U);
    const std::string path = start.arguments[0].substr(0, start.arguments[0].find('|'));
    handed_.push_back({path, ReadWholeFile(path)});
  }

  using Texts = std::vector<std::string>;

  static platform::Settings WithProgramsIn(const std::string& directory) {
    platform::Settings settings;
    settings.programDirectory = directory;
    return settings;
  }

  TempDirectory news_;
  platform::ScopedSettings settings_{WithProgramsIn("/opt/tools")};
  FakeBoxes boxes_;
  FakeProcesses processes_;
  std::vector<HandedStory> handed_;
  std::vector<std::string> announced_;
  std::string tag_ = "1";
  StoryCapture capture_{[this] { return tag_; },
                        [this](std::string_view line) { announced_.emplace_back(line); }};
};

}  // namespace vorda::test
