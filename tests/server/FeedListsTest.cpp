// The tables of a feed: categories, priorities, bulletin types, flash channels.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "config/Vorda_Common_API.h"
#include "platform/MessageBox.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda {
namespace {

class FeedListsTest : public ::testing::Test {
 protected:
  FeedListsTest() { gWireFeeds = {}; }
  ~FeedListsTest() override { gWireFeeds = {}; }

  const WireFeedRecord& Load(const std::string& text) {
    test::WriteWholeFile(directory_ / "vorda.ini", text);
    gWireFeeds[1].FullConfigFile = directory_ / "vorda.ini";
    ReadFeedLists(2);
    return gWireFeeds[1];
  }

  test::FakeBoxes boxes_;
  test::TempDirectory directory_;
};

TEST_F(FeedListsTest, CategoriesWithoutTheFile) {
  const WireFeedRecord& feed = Load(";\r\n");
  EXPECT_EQ(feed.Categories[0].Code, "ALL");
  EXPECT_EQ(feed.Categories[0].Name, "All Stories");
  EXPECT_EQ(feed.Categories[0].Expiry, 0);
  for (std::size_t n = 1; n <= 26; ++n) {
    EXPECT_EQ(feed.Categories[n].Name, "") << n;
    EXPECT_EQ(feed.Categories[n].Code, "") << n;
    EXPECT_EQ(feed.Categories[n].Expiry, 10) << n;
  }
  EXPECT_EQ(feed.UnknownCategory, 1);
  EXPECT_EQ(feed.HighlightCategory, 0);
}

TEST_F(FeedListsTest, CategoriesAreNumberedFrom1To26) {
  std::string text = "[Categories]\r\nName0=zero\r\nCode0=Z\r\nExpiry0=99\r\nName27=over\r\n";
  for (int n = 1; n <= 26; ++n) {
    const std::string number = std::to_string(n);
    text += "Name" + number + "=name " + number + "\r\nCode" + number + "=c" + number + "\r\nExpiry" +
            number + "=" + std::to_string(100 + n) + "\r\n";
  }
  const WireFeedRecord& feed = Load(text + "UnknownCategory=70000\r\nHighlightCategory=-2\r\n");
  EXPECT_EQ(feed.Categories[0].Name, "All Stories");
  EXPECT_EQ(feed.Categories[0].Code, "ALL");
  EXPECT_EQ(feed.Categories[0].Expiry, 0);
  for (int n = 1; n <= 26; ++n) {
    const FeedCategory& category = feed.Categories[static_cast<std::size_t>(n)];
    EXPECT_EQ(category.Name, "name " + std::to_string(n));
    EXPECT_EQ(category.Code, "c" + std::to_string(n));
    EXPECT_EQ(category.Expiry, 100 + n);
  }
  EXPECT_EQ(feed.UnknownCategory, 70000);
  EXPECT_EQ(feed.HighlightCategory, -2);
}

TEST_F(FeedListsTest, PrioritiesWithoutTheFileAreRed) {
  const WireFeedRecord& feed = Load(";\r\n");
  for (const FeedPriority& priority : feed.Priorities) {
    EXPECT_EQ(priority.Name, "");
    EXPECT_EQ(priority.Code, "");
    EXPECT_EQ(priority.Colour, 255);
  }
}

TEST_F(FeedListsTest, PrioritiesAreNumberedFrom1To3) {
  const WireFeedRecord& feed = Load(
      "[Priorities]\r\nName1=Flash\r\nCode1=F\r\nColour1=16711680\r\nName2=Urgent\r\nCode2=U\r\n"
      "Colour2=65280\r\nName3=Routine\r\nCode3=R\r\nColour3=-1\r\n");
  EXPECT_EQ(feed.Priorities[0].Name, "Flash");
  EXPECT_EQ(feed.Priorities[0].Code, "F");
  EXPECT_EQ(feed.Priorities[0].Colour, 16711680);
  EXPECT_EQ(feed.Priorities[1].Name, "Urgent");
  EXPECT_EQ(feed.Priorities[1].Code, "U");
  EXPECT_EQ(feed.Priorities[1].Colour, 65280);
  EXPECT_EQ(feed.Priorities[2].Name, "Routine");
  EXPECT_EQ(feed.Priorities[2].Code, "R");
  EXPECT_EQ(feed.Priorities[2].Colour, -1);
}

TEST_F(FeedListsTest, ColourIsTheTextsNumericValueRoundedHalfToEven) {
  const WireFeedRecord& feed = Load("[Priorities]\r\nColour1=abc\r\nColour2=12.5\r\nColour3= 13.5 red\r\n");
  EXPECT_EQ(feed.Priorities[0].Colour, 0);
  EXPECT_EQ(feed.Priorities[1].Colour, 12);
  EXPECT_EQ(feed.Priorities[2].Colour, 14);
}

TEST_F(FeedListsTest, ColourHoldsThirtyTwoBits) {
  const WireFeedRecord& feed = Load("[Priorities]\r\nColour1=2147483647\r\nColour2=-2147483648\r\n");
  EXPECT_EQ(feed.Priorities[0].Colour, 2147483647);
  EXPECT_EQ(feed.Priorities[1].Colour, -2147483647 - 1);
}

TEST_F(FeedListsTest, ColourBeyondThirtyTwoBitsStopsTheProgram) {
  const platform::ScopedHook toStandardError(platform::MessageBoxHook(),
                                             [](const platform::BoxRequest& request) {
                                               std::fputs(request.text.c_str(), stderr);
                                               return platform::BoxAnswer::Ok;
                                             });
  for (const char* colour : {"2147483648", "-2147483649", "1e10"})
    EXPECT_EXIT(Load("[Priorities]\r\nColour3=" + std::string(colour) + "\r\n"), ::testing::ExitedWithCode(1),
                "^Run-time error '6':\n\nOverflow$")
        << colour;
}

TEST_F(FeedListsTest, FirstTenBulletinTypesBearTheirKeysNames) {
  const WireFeedRecord& feed = Load(";\r\n");
  EXPECT_EQ(feed.BulletinTypes[0], "Type A");
  EXPECT_EQ(feed.BulletinTypes[1], "Type B");
  EXPECT_EQ(feed.BulletinTypes[9], "Type J");
  for (std::size_t i = 10; i < 26; ++i) EXPECT_EQ(feed.BulletinTypes[i], "") << i;
}

TEST_F(FeedListsTest, BulletinTypesHaveALetterEach) {
  std::string text = "[Bulletin]\r\n";
  for (char letter = 'A'; letter <= 'Z'; ++letter)
    text += std::string("Type ") + letter + "=bulletin " + letter + "\r\n";
  const WireFeedRecord& feed = Load(text);
  for (char letter = 'A'; letter <= 'Z'; ++letter)
    EXPECT_EQ(feed.BulletinTypes[static_cast<std::size_t>(letter - 'A')], std::string("bulletin ") + letter);
}

TEST_F(FeedListsTest, FirstTenFlashChannelsHaveANumberedName) {
  const WireFeedRecord& feed = Load(";\r\n");
  EXPECT_EQ(feed.FlashChannels[0], "Channel 1");
  EXPECT_EQ(feed.FlashChannels[8], "Channel 9");
  EXPECT_EQ(feed.FlashChannels[9], "Channel 10");
  for (std::size_t i = 10; i < 99; ++i) EXPECT_EQ(feed.FlashChannels[i], "") << i;
}

TEST_F(FeedListsTest, FlashChannelsAreNumberedFrom1To99) {
  std::string text = "[Bulletin]\r\n";
  for (int n = 1; n <= 99; ++n)
    text += "FlashChannel" + std::to_string(n) + "=flash " + std::to_string(n) + "\r\n";
  const WireFeedRecord& feed = Load(text);
  for (int n = 1; n <= 99; ++n)
    EXPECT_EQ(feed.FlashChannels[static_cast<std::size_t>(n - 1)], "flash " + std::to_string(n));
}

TEST_F(FeedListsTest, ValueThatHasGoneEmptyLeavesTheFormerText) {
  Load(
      "[Categories]\r\nName5=Sport\r\nCode5=S\r\nExpiry5=3\r\n[Priorities]\r\nName2=Urgent\r\nCode2="
      "U\r\nColour2=7\r\n"
      "[Bulletin]\r\nType A=Noon\r\nType Z=Night\r\nFlashChannel3=Three\r\nFlashChannel99=Last\r\n");
  const WireFeedRecord& feed = Load(
      "[Categories]\r\nName5=\r\nCode5=\r\nExpiry5=\r\n[Priorities]\r\nName2=\r\nCode2=\r\nColour2=\r\n"
      "[Bulletin]\r\nType A=\r\nType Z=\r\nFlashChannel3=\r\nFlashChannel99=\r\n");
  EXPECT_EQ(feed.Categories[5].Name, "Sport");
  EXPECT_EQ(feed.Categories[5].Code, "S");
  EXPECT_EQ(feed.Categories[5].Expiry, 10);
  EXPECT_EQ(feed.Priorities[1].Name, "Urgent");
  EXPECT_EQ(feed.Priorities[1].Code, "U");
  EXPECT_EQ(feed.Priorities[1].Colour, 7);
  EXPECT_EQ(feed.BulletinTypes[0], "Noon");
  EXPECT_EQ(feed.BulletinTypes[25], "Night");
  EXPECT_EQ(feed.FlashChannels[2], "Three");
  EXPECT_EQ(feed.FlashChannels[98], "Last");
}

TEST_F(FeedListsTest, KeyThatHasGoneFallsBackOnItsDefaultWhereItHasOne) {
  Load(
      "[Categories]\r\nName5=Sport\r\n[Priorities]\r\nColour2=7\r\n[Bulletin]\r\nType A=Noon\r\nType "
      "Z=Night\r\n"
      "FlashChannel3=Three\r\nFlashChannel99=Last\r\n");
  const WireFeedRecord& feed = Load(";\r\n");
  EXPECT_EQ(feed.Categories[5].Name, "Sport");
  EXPECT_EQ(feed.Priorities[1].Colour, 255);
  EXPECT_EQ(feed.BulletinTypes[0], "Type A");
  EXPECT_EQ(feed.BulletinTypes[25], "Night");
  EXPECT_EQ(feed.FlashChannels[2], "Channel 3");
  EXPECT_EQ(feed.FlashChannels[98], "Last");
}

TEST_F(FeedListsTest, EmptyNameEmptiesTheFeedsName) {
  EXPECT_EQ(Load("[General]\r\nName=Sport\r\n").Name, "Sport");
  EXPECT_EQ(Load("[General]\r\nName=\r\n").Name, "");
  EXPECT_EQ(Load("[General]\r\nName=Sport\r\n").Name, "Sport");
  EXPECT_EQ(Load(";\r\n").Name, "");
}

TEST_F(FeedListsTest, OneFeedsListsLeaveTheOthersAlone) {
  Load("[General]\r\nName=Sport\r\n");
  EXPECT_EQ(gWireFeeds[0].Categories[0].Name, "");
  EXPECT_EQ(gWireFeeds[2].Name, "");
}

}  // namespace
}  // namespace vorda
