// The fake keeps the real control's contract where tests lean on it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/RunTimeError.h"
#include "platform/SerialControl.h"
#include "support/FakeSerialControl.h"

namespace vorda::test {
namespace {

using ::testing::ElementsAre;
using namespace platform;

TEST(FakeSerialControl, IsWhatTheFactoryMakes) {
  FakeSerialControls fakes;
  auto control = MakeSerialControl();
  ASSERT_EQ(fakes.size(), 1u);
  EXPECT_EQ(fakes[0], control.get());
  control.reset();
  EXPECT_EQ(fakes[0], nullptr);
}

TEST(FakeSerialControl, AnArrivalRaisesOneEventAndFillsTheInput) {
  FakeSerialControls fakes;
  const auto control = MakeSerialControl();
  std::vector<std::int16_t> events;
  control->OnComm = [&] { events.push_back(control->CommEvent()); };
  control->SetRThreshold(1);
  fakes[0]->Arrive("port closed");
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  fakes[0]->Arrive("text");
  EXPECT_EQ(control->Input(), "text");
  fakes[0]->RaiseEvent(1009);
  EXPECT_THAT(events, ElementsAre(2, 1009));
  control->SetRThreshold(0);
  fakes[0]->Arrive("dropped");
  EXPECT_EQ(control->Input(), "");
}

TEST(FakeSerialControl, OpensAndFailsAsTold) {
  FakeSerialControls fakes;
  const auto control = MakeSerialControl();
  fakes.FailOpenWith(kPermissionDenied, 2);
  control->SetCommPort(2);
  EXPECT_EQ(control->SetPortOpen(true), kPermissionDenied);
  EXPECT_EQ(CurrentError(), kPermissionDenied);
  control->SetCommPort(5);
  EXPECT_EQ(control->SetPortOpen(true), kDeviceUnavailable);
  fakes.FailOpenWith(kNoError, 2);
  control->SetCommPort(2);
  EXPECT_EQ(control->SetPortOpen(true), kNoError);
  EXPECT_THAT(fakes.openingsTried(), ElementsAre(2, 5, 2));
  EXPECT_EQ(fakes.OpenOn(2), control.get());

  const auto second = MakeSerialControl();
  second->SetCommPort(2);
  EXPECT_EQ(second->SetPortOpen(true), kFileAlreadyOpen);
}

TEST(FakeSerialControl, RecordsWhatIsSentWhileOpen) {
  FakeSerialControls fakes;
  const auto control = MakeSerialControl();
  control->Output("lost");
  ASSERT_EQ(control->SetPortOpen(true), kNoError);
  control->Output("sent ");
  fakes[0]->Unplug();
  control->Output("lost");
  fakes[0]->Replug();
  control->Output("again");
  EXPECT_EQ(fakes[0]->sent(), "sent again");
  EXPECT_EQ(fakes[0]->lost(), "lostlost");
}

TEST(FakeSerialControl, LeavesFormerSettingsAtInvalidOnes) {
  FakeSerialControls fakes;
  const auto control = MakeSerialControl();
  control->SetSettings("1200,X,8,1");
  control->SetHandshaking(4);
  EXPECT_EQ(control->Settings(), "9600,n,8,1");
  EXPECT_EQ(control->Handshaking(), 0);
}

}  // namespace
}  // namespace vorda::test
