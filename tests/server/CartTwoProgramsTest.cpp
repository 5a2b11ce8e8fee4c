// Two programs that write the same list at the same time: no lock is taken, and no record is torn.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <new>
#include <string>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/Descriptor.h"
#include "support/WallFixture.h"

namespace vorda {
namespace {

constexpr std::int32_t kCarts = 1000;
constexpr std::int32_t kOthersWritesPerCart = 100;

constexpr char kOurs = 'A';
constexpr char kTheOthers = 'a';

// A writer's record: every field of it says whose it is, for which cart, and which of that writer's.
CartInfo RecordOf(char writer, std::int32_t cart, std::int32_t count) {
  CartInfo info;
  const std::string bytes(test::kRecordBytes, static_cast<char>(writer + count % 16));
  UnpackCartInfo(bytes, info);
  info.SmallFlag = writer;
  info.BackColor = cart;
  info.ForeColor = count;
  info.PlayStart = 0;
  info.AudioLength = info.PlayEnd = info.PlayLength = static_cast<float>(count + 1);
  info.ReservedValues.fill(count);
  return info;
}

std::string BytesOf(const CartInfo& info) {
  const CartRecord record = PackCartInfo(info);
  return {record.data(), record.size()};
}

std::size_t PlaceOf(std::int32_t cart) {
  return static_cast<std::size_t>(cart - 1) * test::kRecordBytes;
}

// A number that both programs see.
class SharedNumber {
 public:
  SharedNumber()
      : number_(new (::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
                    std::atomic<std::int32_t>(0)) {}
  ~SharedNumber() { ::munmap(number_, kSize); }
  SharedNumber(const SharedNumber&) = delete;
  SharedNumber& operator=(const SharedNumber&) = delete;

  std::atomic<std::int32_t>& operator*() { return *number_; }

 private:
  static constexpr std::size_t kSize = sizeof(std::atomic<std::int32_t>);
  std::atomic<std::int32_t>* number_;
};

// The other program: it goes from cart to cart, and tells at which it is.
[[noreturn]] void BeTheOther(const std::string& path, std::atomic<std::int32_t>& at) {
  const platform::Descriptor list(::open(path.c_str(), O_RDWR | O_CLOEXEC));
  for (std::int32_t cart = 1; cart <= kCarts; ++cart) {
    at = cart;
    for (std::int32_t count = 0; count < kOthersWritesPerCart; ++count) {
      const std::string record = BytesOf(RecordOf(kTheOthers, cart, count));
      const ssize_t written =
          ::pwrite(list.number(), record.data(), record.size(), static_cast<off_t>(PlaceOf(cart)));
      if (written != static_cast<ssize_t>(record.size())) ::_exit(1);
    }
  }
  ::_exit(0);
}

class CartTwoProgramsTest : public test::WallFixture {};

TEST_F(CartTwoProgramsTest, EachRecordIsOneWritersAndWhole) {
  SharedNumber at;
  const pid_t other = ::fork();
  ASSERT_GE(other, 0);
  if (other == 0) BeTheOther(ListFileOf(1), *at);

  // Always the cart that the other one writes just now.
  int status = -1;
  for (std::int32_t count = 0; ::waitpid(other, &status, WNOHANG) == 0; ++count) {
    const std::int32_t cart = *at;
    if (cart == 0) continue;
    CartInfo info = RecordOf(kOurs, cart, count);
    ASSERT_EQ(WriteCartInfo(info, cart, true), 0);
  }
  EXPECT_EQ(status, 0) << "the other program's writes";

  const std::string list = test::ReadWholeFile(ListFileOf(1));
  ASSERT_EQ(list.size(), PlaceOf(kCarts + 1));
  for (std::int32_t cart = 1; cart <= kCarts; ++cart) {
    const std::string bytes = list.substr(PlaceOf(cart), test::kRecordBytes);
    CartInfo info;
    UnpackCartInfo(bytes, info);
    const char writer = info.SmallFlag == kOurs ? kOurs : kTheOthers;
    ASSERT_EQ(bytes, BytesOf(RecordOf(writer, cart, info.ForeColor))) << cart;
  }
}

}  // namespace
}  // namespace vorda
