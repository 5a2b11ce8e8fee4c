// Who is told of the sound server's inputs, and which of them have a number.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/Descriptor.h"
#include "platform/SoundInputs.h"
#include "platform/SoundServerFixture.h"
#include "platform/WaveDevices.h"

namespace vorda::platform {
namespace {

using Names = std::vector<std::string>;

// What a watch was told.
struct Watcher {
  Watcher() {
    watch = WatchSoundInputs([this](const Names& names) {
      told.push_back(names);
      if (ends) watch.reset();
    });
  }
  bool WaitFor(const Names& names) const {
    return WaitUntil([&] { return !told.empty() && told.back() == names; });
  }

  bool ends = false;
  std::vector<Names> told;
  std::unique_ptr<SoundInputsWatch> watch;
};

class SoundInputsTest : public SoundServerFixture {
 protected:
  const Names one_ = {"feed1.monitor"};
  const Names both_ = {"feed1.monitor", "feed2.monitor"};
};

TEST_F(SoundInputsTest, AllWhoWatchAreToldOfEachChange) {
  Start(2);
  const Watcher first;
  const Watcher second;
  for (const Watcher* watcher : {&first, &second}) EXPECT_TRUE(watcher->WaitFor(both_));
  ASSERT_TRUE(server_->Unplug(2));
  for (const Watcher* watcher : {&first, &second}) EXPECT_TRUE(watcher->WaitFor(one_));
  ASSERT_TRUE(server_->Plug(2));
  for (const Watcher* watcher : {&first, &second}) EXPECT_TRUE(watcher->WaitFor(both_));
}

TEST_F(SoundInputsTest, LaterOneIsToldOfWhatIsThere) {
  Start(2);
  const Watcher first;
  ASSERT_TRUE(first.WaitFor(both_));
  const std::size_t before = first.told.size();
  const Watcher second;
  EXPECT_TRUE(second.WaitFor(both_));
  EXPECT_EQ(first.told.size(), before);
}

TEST_F(SoundInputsTest, OneThatHasEndedIsToldNothingThatWasOnItsWay) {
  Start(2);
  const Watcher first;
  ASSERT_TRUE(first.WaitFor(both_));
  Watcher second;  // its first call waits for the event loop
  second.watch.reset();
  test::RunPendingEvents();
  EXPECT_TRUE(second.told.empty());
  ASSERT_TRUE(server_->Unplug(2));
  EXPECT_TRUE(first.WaitFor(one_));
  test::RunPendingEvents();
  EXPECT_TRUE(second.told.empty());
}

TEST_F(SoundInputsTest, OneMayEndWithinItsCall) {
  Start(2);
  Watcher once;
  once.ends = true;
  const Watcher other;
  ASSERT_TRUE(other.WaitFor(both_));
  ASSERT_TRUE(server_->Unplug(2));
  ASSERT_TRUE(other.WaitFor(one_));
  test::RunPendingEvents();
  EXPECT_EQ(once.told.size(), 1U);
}

// platform.ini under a lock that another program doesn't give back: it can be read and not be written.
class UnwritableNumbersTest : public SoundInputsTest {
 protected:
  void Hold() {
    held_ = OpenFile(file_, O_RDWR | O_CREAT);
    ASSERT_EQ(::flock(held_.number(), LOCK_EX), 0);
  }
  void GiveBack() { held_ = {}; }

  std::vector<std::string> told_;
  ScopedHook<void(const std::string&)> hook_{WaveInTroubleHook(),
                                             [this](const std::string& text) { told_.push_back(text); }};
  Descriptor held_;
};

TEST_F(UnwritableNumbersTest, NewInputIsToldOnceAndTakenUpByItselfWhenItsNumberIsWritten) {
  Start(2);
  test::WriteWholeFile(file_, "[WaveIn]\r\n1=feed2.monitor\r\n");
  Hold();
  const Listener known(1);
  const Listener fresh(2);
  ASSERT_TRUE(known.WaitUntilRuns());
  ASSERT_TRUE(WaitUntil([this] { return !told_.empty(); }));
  // Another look finds it again.
  ASSERT_TRUE(server_->Unplug(2));
  ASSERT_TRUE(known.WaitUntilWaits());
  ASSERT_TRUE(server_->Plug(2));
  ASSERT_TRUE(known.WaitUntilRuns());
  EXPECT_EQ(fresh.stream->StreamState(), kStreamWaiting);
  GiveBack();
  EXPECT_TRUE(fresh.WaitUntilRuns());
  EXPECT_EQ(test::ReadWholeFile(file_), "[WaveIn]\r\n1=feed2.monitor\r\n2=feed1.monitor\r\n");
  EXPECT_EQ(told_, Names{"No number for feed1.monitor : platform.ini can't be written"});
}

}  // namespace
}  // namespace vorda::platform
