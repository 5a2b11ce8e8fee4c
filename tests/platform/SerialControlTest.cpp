// What passes a serial port.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"
#include "platform/SerialFixture.h"

namespace vorda::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Le;
using ::testing::SizeIs;
using namespace platform;

constexpr size_t kMebibyte = 1'048'576;

// Text in which every four bytes tell where they stand.
std::string NumberedText(size_t length) {
  std::string text;
  for (std::uint32_t place = 0; text.size() < length; ++place)
    for (const int shift : {24, 16, 8, 0}) text += static_cast<char>((place >> shift) & 0xFF);
  text.resize(length);
  return text;
}

std::string AllBytesWithRunsOfFF() {
  std::string bytes;
  for (int value = 0; value < 256; ++value) bytes += static_cast<char>(value);
  return bytes + std::string(5, '\xFF') + std::string(3, '\0') + "\xFF" + std::string(1, '\0') + "A";
}

using SerialControlTest = SerialTest;

TEST_F(SerialControlTest, EveryByteValueArrives) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(terminal_.Write(AllBytesWithRunsOfFF()));
  EXPECT_TRUE(port.Receives(AllBytesWithRunsOfFF()));
  EXPECT_THAT(port.events, Each(comEvReceive));
}

TEST_F(SerialControlTest, EveryByteValueIsSent) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output(AllBytesWithRunsOfFF());
  EXPECT_EQ(terminal_.Read(AllBytesWithRunsOfFF().size()), AllBytesWithRunsOfFF());
}

TEST_F(SerialControlTest, OneEventAnArrivalAndInputTakesAllOfIt) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  ASSERT_TRUE(terminal_.Write("one arrival"));
  ASSERT_TRUE(WaitUntil([&] { return !port.arrivals.empty(); }));
  EXPECT_THAT(port.arrivals, ElementsAre("one arrival"));
  EXPECT_EQ(port.control->Input(), "");
  EXPECT_EQ(port.control->CommEvent(), comEvReceive);
}

TEST_F(SerialControlTest, InputKeepsWhatAnEventLeftUnread) {
  const auto control = MakeSerialControl();
  int events = 0;
  control->OnComm = [&] { ++events; };
  control->SetRThreshold(1);
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  ASSERT_TRUE(terminal_.Write("first "));
  ASSERT_TRUE(WaitUntil([&] { return events == 1; }));
  ASSERT_TRUE(terminal_.Write("second"));
  ASSERT_TRUE(WaitUntil([&] { return events == 2; }));
  EXPECT_EQ(control->Input(), "first second");
}

TEST_F(SerialControlTest, ABurstArrivesWholeInPiecesOfTheInputBuffer) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const std::string burst = NumberedText(100'000);
  ASSERT_TRUE(terminal_.Write(burst));
  EXPECT_TRUE(port.Receives(burst));
  EXPECT_THAT(port.arrivals, Each(SizeIs(Le(4096u))));
}

TEST_F(SerialControlTest, WithoutAThresholdArrivalsAreReadAndDropped) {
  RecordedPort port;
  port.control->SetRThreshold(0);
  ASSERT_EQ(port.Open(1), kNoError);
  // More than the line itself holds, so that it only goes through if somebody reads.
  ASSERT_TRUE(terminal_.Write(NumberedText(200'000)));
  EXPECT_TRUE(port.events.empty());
  EXPECT_EQ(port.control->Input(), "");
}

TEST_F(SerialControlTest, AnUnreadLineKeepsAMebibyteAndDropsTheRest) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const std::string text = NumberedText(3 * kMebibyte);
  for (size_t at = 0; at < text.size(); at += 4096)
    port.control->Output(std::string_view(text).substr(at, 4096));

  std::string sent;
  ASSERT_TRUE(WaitUntil([&] { return (sent += terminal_.Read()).size() >= kMebibyte; }));
  port.control->Output("<end>");
  ASSERT_TRUE(WaitUntil([&] { return (sent += terminal_.Read()).ends_with("<end>"); }));
  sent.resize(sent.size() - 5);

  // What the line had taken by itself comes on top of the backlog.
  constexpr size_t kLineHoldsAtMost = 128 * 1024;
  EXPECT_GT(sent.size(), kMebibyte);
  EXPECT_LE(sent.size(), kMebibyte + kLineHoldsAtMost);
  EXPECT_EQ(sent, text.substr(0, sent.size()));
}

TEST_F(SerialControlTest, AnUnreadLineDoesNotKeepTheEventLoopBusy) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output(NumberedText(kMebibyte));
  const ActivationCount activations;
  for (int turn = 0; turn < 1000; ++turn) RunPendingEvents();
  EXPECT_LE(activations.count(), 20);
  EXPECT_TRUE(port.control->PortOpen());
}

TEST_F(SerialControlTest, ALineThatTakesAllDoesNotKeepTheEventLoopBusy) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output("taken at once");
  // More than the line takes at once, so that the rest waits and then drains.
  port.control->Output(NumberedText(kMebibyte / 2));
  ASSERT_EQ(terminal_.Read(13 + kMebibyte / 2).size(), 13 + kMebibyte / 2);
  const ActivationCount activations;
  for (int turn = 0; turn < 1000; ++turn) RunPendingEvents();
  EXPECT_LE(activations.count(), 1);
}

TEST_F(SerialControlTest, OneOutputOverTheBacklogIsCutNotRefused) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const std::string text = NumberedText(2 * kMebibyte);
  port.control->Output(text);
  std::string sent;
  ASSERT_TRUE(WaitUntil([&] { return (sent += terminal_.Read()).size() > kMebibyte; }));
  EXPECT_EQ(sent, text.substr(0, sent.size()));
}

TEST_F(SerialControlTest, LaterOutputNeverOvertakesTheBacklog) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  const std::string text = NumberedText(kMebibyte / 2);
  port.control->Output(std::string_view(text).substr(0, kMebibyte / 4));
  // The line has room again, but the event loop hasn't turned: the backlog still stands.
  std::string sent = terminal_.Read();
  port.control->Output(std::string_view(text).substr(kMebibyte / 4));
  ASSERT_TRUE(WaitUntil([&] { return (sent += terminal_.Read()).size() >= text.size(); }));
  EXPECT_EQ(sent, text);
}

TEST_F(SerialControlTest, AnOpeningStartsWithAnEmptyInput) {
  const auto control = MakeSerialControl();
  bool arrived = false;
  control->OnComm = [&] { arrived = true; };
  control->SetRThreshold(1);
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  ASSERT_TRUE(terminal_.Write("of the last opening"));
  ASSERT_TRUE(WaitUntil([&] { return arrived; }));
  control->SetPortOpen(false);
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  EXPECT_EQ(control->Input(), "");
}

TEST_F(SerialControlTest, OutputOfAClosedPortIsDropped) {
  RecordedPort port;
  port.control->Output("lost");
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output("sent");
  EXPECT_EQ(terminal_.Read(4), "sent");
}

TEST_F(SerialControlTest, ClosingAPortWithABacklogDoesNotWait) {
  RecordedPort port;
  ASSERT_EQ(port.Open(1), kNoError);
  port.control->Output(NumberedText(kMebibyte));
  EXPECT_EQ(port.control->SetPortOpen(false), kNoError);
  EXPECT_FALSE(port.control->PortOpen());
}

}  // namespace
}  // namespace vorda::test
