// The audio side of a feed's window as it comes to life and as it goes: what is done in which order, and what
// is left alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileFault.h"
#include "support/FeedAudioFixture.h"
#include "support/PlainClient.h"

namespace vorda::test {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class FeedAudioOrder : public FeedAudioFixture {
 protected:
  static void Close(frmWireFeed& form) { form.Close(controls::CloseCause::FormControlMenu); }
};

// Each step with whether the status port listens by then.
TEST_F(FeedAudioOrder, StreamThenStatusPortThenClearingThenTheKey) {
  Fill(9004);
  WriteWholeFile(CartPath(9004), "former");
  std::vector<std::string> steps;
  const auto note = [&](const std::string& step) {
    PlainClient client;
    const bool listens = client.Connect(OwnLoopbackAddress(), 6961);
    steps.push_back(step + (listens ? ", listening" : ""));
    client.LeaveByReset();
  };
  streams.atCall = note;
  const ScopedFileFault watch([&](FileOperation operation, std::string_view path) {
    if (operation == FileOperation::Remove || operation == FileOperation::Rename)
      note(std::string(path.substr(path.rfind('/') + 1)));
    return 0;
  });
  StartFeed("LastRecordedCartNumber=9003\r\nCurrentlyRecordingCartNumber=9003\r\n");
  EXPECT_THAT(steps, ElementsAre("StartStream", "ORV09004.WAV, listening", "feed1.ini, listening"));
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=0\r\n"));
}

// The cart is taken and its gate not open yet: there is nothing to end, and as behind a crash the wall and
// the key tell of the recording.
TEST_F(FeedAudioOrder, WindowThatGoesWhileTheStartOfARecordingStillClearsEndsNothing) {
  frmWireFeed& form = StartFeed();
  FillInListOnly(9002);
  boxes.Expect(NoOwnFile(9002), platform::BoxAnswer::Ok, [&] {
    EXPECT_EQ(Caption(form, "pnlCartNo"), "9001");
    Close(form);
    EXPECT_FALSE(form.Loaded());
  });
  EXPECT_EQ(form.StartRecording(9001), 0);
  EXPECT_THAT(streams.calls, ElementsAre("StartStream", "StopStream"));
  EXPECT_EQ(Title(9001), "Vorda Server is recording into this cart");
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=9001\r\n"));
  EXPECT_THAT(ReadWholeFile(config_), Not(HasSubstr("LastRecordedCartNumber")));
}

// The sound goes on, and the end that the closing brings waits behind a box. Another feed's ticks tell that
// there was time for some.
TEST_F(FeedAudioOrder, ClosingWindowBeginsNoOtherRecordingBehindTheBoxOfItsEnd) {
  frmWireFeed& form = StartFeed();
  Start(2, WriteConfig(2, AudioKeys("")));
  FakeStream& other = *streams.made.at(1);
  Record5SecondsOfSound(0);
  Stream().Play("abcd");
  const ScopedFileFault full(FileOperation::Write, ENOSPC, 1, 1, "ORV09001.WAV");
  boxes.Expect("The Windows Multimedia Sub-System has returned with an unknown error, the code was: 262",
               platform::BoxAnswer::Ok, [&] {
                 const int asked = Stream().asked;
                 const int until = other.asked + 4;
                 EXPECT_TRUE(WaitUntil([&] { return other.asked >= until; }, kLimit));
                 EXPECT_EQ(Stream().asked, asked);
               });
  Close(form);
  EXPECT_FALSE(form.Loaded());
  EXPECT_EQ(Title(9001), "Recorded by Vorda Server 21/11/2026 12:00");
  EXPECT_TRUE(IsEmptyCart(Info(9002)));
  EXPECT_EQ(Audio(9002), "");
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("LastRecordedCartNumber=9001\r\n"));
  EXPECT_THAT(ReadWholeFile(config_), HasSubstr("CurrentlyRecordingCartNumber=0\r\n"));
}

}  // namespace
}  // namespace vorda::test
