// What a feed's status port tells of its recordings, and what it doesn't.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "platform/FileFault.h"
#include "support/FeedAudioFixture.h"
#include "support/StatusClient.h"

namespace vorda::test {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;

class FeedAudioStatus : public FeedAudioFixture {
 protected:
  // Starts the feed, with a terminal at its status port.
  frmWireFeed& StartWithClient(const std::string& keys = {}) {
    frmWireFeed& form = StartFeed(keys);
    EXPECT_TRUE(WaitUntil([&] { return client_.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
    EXPECT_TRUE(client_.WaitFor("Current Recording : 0"));
    return form;
  }
  // All that was sent up to now.
  const std::string& Sent(frmWireFeed& form) {
    form.sendWinSockMessage("The end");
    EXPECT_TRUE(client_.WaitFor("The end\r\n"));
    return client_.Text();
  }
  static std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
  }
  ScopedFileFault HoldFirstCart() const {
    WriteWholeFile(CartPath(9001), "held");
    return {FileOperation::Remove, EACCES, 1, 1, "ORV09001.WAV"};
  }

  StatusClient client_;
};

TEST_F(FeedAudioStatus, RecordByHandIsToldAsAStartAndEjectSaysNothing) {
  frmWireFeed& form = StartWithClient();
  Click(form, "cmdRecord");
  ASSERT_TRUE(client_.WaitFor(" Started Recording\r\n"));
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  EXPECT_LT(client_.Text().find("Opened Audio File "), client_.Text().find("Started Recording"));
  Click(form, "cmdEject");
  const std::string& text = Sent(form);
  EXPECT_EQ(Count(text, " Started Recording\r\n"), 1u);
  EXPECT_EQ(Count(text, " Closed Audio File\r\n"), 1u);
  EXPECT_THAT(text, Not(HasSubstr("Stopped Recording")));
}

TEST_F(FeedAudioStatus, RecordByHandWhoseFileCannotBeOpenedIsToldAsAStart) {
  frmWireFeed& form = StartWithClient();
  const ScopedFileFault held = HoldFirstCart();
  boxes.Expect("Cannot delete " + CartPath(9001));
  Click(form, "cmdRecord");
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  EXPECT_TRUE(Enabled(form, "cmdRecord"));
  const std::string& text = Sent(form);
  EXPECT_EQ(Count(text, " Started Recording\r\n"), 1u);
  EXPECT_THAT(text, Not(HasSubstr("Opened Audio File")));
}

// The next tick's try succeeds.
TEST_F(FeedAudioStatus, StartBySoundWhoseFileCannotBeOpenedIsToldAsAStart) {
  frmWireFeed& form = StartWithClient();
  const ScopedFileFault held = HoldFirstCart();
  boxes.Expect("Cannot delete " + CartPath(9001));
  Record5SecondsOfSound(0);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
  const std::string& text = Sent(form);
  EXPECT_EQ(Count(text, " Started Recording\r\n"), 2u);
  EXPECT_EQ(Count(text, "Opened Audio File"), 1u);
  EXPECT_LT(text.find("Started Recording"), text.find("Opened Audio File"));
}

TEST_F(FeedAudioStatus, StartThatTheDiskIsTooFullForIsNotToldNeitherByHandNorBySound) {
  frmWireFeed& form = StartWithClient();
  int asked = 0;
  const platform::ScopedHook<std::uint64_t(const std::string&)> room(
      platform::FreeBytesHook(), [&](const std::string&) {
        ++asked;
        return std::uint64_t{319999};  // ten seconds but for a byte
      });
  Click(form, "cmdRecord");
  EXPECT_EQ(asked, 1);
  Record5SecondsOfSound(0);
  EXPECT_GT(asked, 1);
  EXPECT_EQ(Caption(form, "pnlCartNo"), "");
  EXPECT_THAT(Sent(form), Not(AnyOf(HasSubstr("Opened"), HasSubstr("Started"))));
}

TEST_F(FeedAudioStatus, BlockAtAConnectionTellsTheLastRecordingAndTheOneUnderWay) {
  frmWireFeed& form = StartFeed("LastRecordedCartNumber=9003\r\n");
  Click(form, "cmdRecord");
  ASSERT_TRUE(WaitUntil([&] { return client_.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
  ASSERT_TRUE(client_.WaitFor("Current Recording"));
  const std::string& first = Sent(form);
  EXPECT_THAT(first, HasSubstr("Last Record       : 9003\r\n"));
  EXPECT_THAT(first, HasSubstr("Current Recording : 9004\r\n"));
  Click(form, "cmdEject");
  StatusClient second;
  client_.Disconnect();
  ASSERT_TRUE(WaitUntil([&] { return second.Connect(OwnLoopbackAddress(), 6961); }, kLimit));
  EXPECT_TRUE(second.WaitFor("Last Record       : 9004\r\n"));
  EXPECT_TRUE(second.WaitFor("Current Recording : 0\r\n"));
}

}  // namespace
}  // namespace vorda::test
