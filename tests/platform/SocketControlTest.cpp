// What a socket control listens on.

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "platform/Settings.h"
#include "platform/SocketControl.h"
#include "support/Loopback.h"
#include "support/PlainClient.h"

namespace vorda::platform {
namespace {

// A port of this process's own: the addresses are everybody's.
const int kPort = 8000 + static_cast<int>(::getpid()) % 20000;

class SocketControlTest : public ::testing::Test {
 protected:
  // Listens on the address that the platform settings would name.
  bool ListenOn(const std::string& address) {
    Settings settings;
    settings.statusPortAddress = address;
    const ScopedSettings scoped(settings);
    control_->SetLocalPort(kPort);
    return control_->Listen();
  }
  static bool SomebodyListensOn(const std::string& address) {
    test::PlainClient client;
    return client.Connect(address, kPort);
  }

  std::unique_ptr<SocketControl> control_ = MakeSocketControl();
  const std::string kOwn = test::OwnLoopbackAddress();
};

TEST_F(SocketControlTest, NoAddressIsEveryAddress) {
  EXPECT_TRUE(ListenOn(""));
  EXPECT_EQ(control_->State(), sckListening);
  EXPECT_TRUE(SomebodyListensOn("127.0.0.1"));
  EXPECT_TRUE(SomebodyListensOn(kOwn));
}

TEST_F(SocketControlTest, AddressIsThatOneOnly) {
  EXPECT_TRUE(ListenOn(kOwn));
  EXPECT_TRUE(SomebodyListensOn(kOwn));
  EXPECT_FALSE(SomebodyListensOn("127.0.0.1"));
}

TEST_F(SocketControlTest, LocalhostIsItsAddressOnly) {
  for (const char* name : {"localhost", "LocalHost"}) {
    EXPECT_TRUE(ListenOn(name)) << name;
    EXPECT_TRUE(SomebodyListensOn("127.0.0.1")) << name;
    EXPECT_FALSE(SomebodyListensOn(kOwn)) << name;
    control_->Close();
  }
}

TEST_F(SocketControlTest, TextThatIsNoAddressListensNowhere) {
  for (const char* text : {"station", "127.0.0.256", "127.0.0.1:6960", "*", " ", "localhost."}) {
    EXPECT_FALSE(ListenOn(text)) << text;
    EXPECT_EQ(control_->State(), sckClosed) << text;
    EXPECT_FALSE(SomebodyListensOn("127.0.0.1")) << text;
    EXPECT_FALSE(SomebodyListensOn(kOwn)) << text;
    control_->Close();
  }
  EXPECT_TRUE(ListenOn(kOwn));
}

}  // namespace
}  // namespace vorda::platform
