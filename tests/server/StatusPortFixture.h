// A status port on the network, at an address and a port of this process's own.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "feed/StatusPort.h"
#include "platform/Clock.h"
#include "platform/Settings.h"
#include "support/EventLoop.h"
#include "support/FakeDesktop.h"
#include "support/PlainClient.h"

namespace vorda::test {

class StatusPortFixture : public ::testing::Test {
 protected:
  StatusPortFixture() { port_.Start(SoundCard()); }

  // Tests may run side by side.
  static std::int16_t SoundCard() { return static_cast<std::int16_t>(::getpid() % 20000); }
  static std::string Address() { return "127.0.0." + std::to_string(2 + ::getpid() / 20000 % 250); }

  // True when somebody listens: the client is then in, or about to be.
  static bool Connect(PlainClient& client) { return client.Connect(Address(), 6960 + SoundCard()); }
  static bool SomebodyListens() {
    PlainClient client;
    return Connect(client);
  }
  static bool Receives(PlainClient& client, const std::string& bytes) {
    return WaitUntil([&] {
             client.Read();
             return client.Received().size() >= bytes.size();
           }) &&
           client.Received() == bytes;
  }
  // What a client has received that came in, and was sent one line.
  static std::string BlockAnd(const std::string& line) {
    return std::string(kBlock) + "2026-11-21 23:59:59 " + line + "\r\n";
  }

  static platform::Settings LoopbackSettings() {
    platform::Settings settings;
    settings.statusPortAddress = Address();
    settings.shortDate = "yyyy-MM-dd";
    return settings;
  }

  static constexpr const char* kBlock =
      "2026-11-21 23:59:59 Status Information:\r\n"
      "2026-11-21 23:59:59 ------------------------------------------------------\r\n"
      "2026-11-21 23:59:59 Log Name          : Feed\r\n"
      "2026-11-21 23:59:59 Last Record       : 9000\r\n"
      "2026-11-21 23:59:59 Current Recording : 9001\r\n"
      "2026-11-21 23:59:59 ------------------------------------------------------\r\n"
      "2026-11-21 23:59:59 \r\n";

  platform::ScopedSettings settings_{LoopbackSettings()};
  platform::ScopedClock clock_{platform::Moment{platform::DayNumber(2026, 11, 21), 86399.5}};
  FakeBoxes boxes_;
  StatusPort port_{[] { return StatusPortState{"Feed", 9000, 9001}; }};
};

}  // namespace vorda::test
