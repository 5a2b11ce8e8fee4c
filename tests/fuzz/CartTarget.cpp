// Cart records of any bytes, in a list and in a cart's own file: what a read gives and what a write leaves.
//
// Input: which stores are in use and whether the record is read first (one byte), the cart (two), how much of
// the rest is the cart's own file (two), the rest: that file, then the list of part 1. A record to be written
// that isn't read first is the 300 bytes that end the input.

#include <cstring>
#include <filesystem>
#include <string>

#include "Target.h"
#include "carts/Orvane_Audio_Routines.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "support/TempDirectory.h"
#include "support/WallLists.h"

namespace vorda::fuzz {
namespace {

constexpr std::size_t kSize = 300;
constexpr std::size_t kLengthAt = 274;
constexpr std::size_t kStartAt = 278;
constexpr std::size_t kEndAt = 282;
constexpr std::size_t kPlayLengthAt = 286;

float FloatAt(const std::string& record, std::size_t place) {
  std::uint32_t bits = 0;
  for (std::size_t i = 4; i > 0; --i) bits = bits * 256 + static_cast<unsigned char>(record[place + i - 1]);
  float value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// Nothing taken away from the length leaves it as it is, or at least as something that is no number.
void PlainPlayWhole(std::string& record) {
  record.replace(kStartAt, 4, std::string(4, '\0'));
  record.replace(kEndAt, 4, record, kLengthAt, 4);
  record.replace(kPlayLengthAt, 4, record, kLengthAt, 4);
}

// Equal but for the length of play of a record whose times are no numbers.
bool SameRecord(std::string a, std::string b) {
  const float length = FloatAt(a, kLengthAt);
  if (length != length && FloatAt(a, kPlayLengthAt) != FloatAt(a, kPlayLengthAt) &&
      FloatAt(b, kPlayLengthAt) != FloatAt(b, kPlayLengthAt))
    b.replace(kPlayLengthAt, 4, a, kPlayLengthAt, 4);
  return a == b;
}

std::string PlainOver(const std::string& blank, const std::string& file, std::size_t offset) {
  const std::string there = offset < file.size() ? file.substr(offset, kSize) : std::string();
  return there + blank.substr(there.size());
}

// The record as a plain reader finds it.
std::string PlainRead(const std::string& blank, const std::string& own, const std::string& list,
                      std::size_t offset) {
  std::string record = own.empty() ? PlainOver(blank, list, offset) : PlainOver(blank, own, 0);
  if (FloatAt(record, kLengthAt) == -1.0F) return blank;
  const bool plays = FloatAt(record, kEndAt) > 0 && FloatAt(record, kPlayLengthAt) > 0;
  if (!plays) PlainPlayWhole(record);
  return record;
}

std::string BytesOf(const CartInfo& info) {
  const CartRecord record = PackCartInfo(info);
  return {record.data(), record.size()};
}

struct Wall {
  Wall() {
    ReadAudioWallSettings(directory / "none.ini");
    gAudioWallParts[0].Location = directory.path();
    Require(ConnectAudioWall(1, true) == 0, "an empty directory connects");
  }
  void Lay(const std::string& ownBytes, const std::string& listBytes) const {
    if (ownBytes.empty()) {
      std::filesystem::remove(own);
    } else {
      test::WriteWholeFile(own, ownBytes);
    }
    test::WriteWholeFile(list, listBytes);
  }

  test::TempDirectory directory;
  std::string list = directory / "Carts1.lst";
  std::string own;
  std::string blank = test::BlankCartRecord();
};

void CheckFormat(const std::string& record) {
  CartInfo info;
  UnpackCartInfo(record, info);
  CartInfo copy;
  copy = info;
  Require(BytesOf(copy) == record, "a record comes back as it was");
}

void CheckWrite(const Wall& wall, CartInfo& info, std::int32_t cart, std::string ownBytes,
                std::string listBytes) {
  std::string record = BytesOf(info);
  if (!(FloatAt(record, kEndAt) > 0)) PlainPlayWhole(record);
  const bool empty = FloatAt(record, kLengthAt) == -1.0F;
  const bool inOwn = gAudioWallSettings.UseIndividualCartListFiles != 0;
  const std::size_t offset = static_cast<std::size_t>(cart - 1) * kSize;
  Require(WriteCartInfo(info, cart, false) == 0, "what is there is written");
  Require(SameRecord(record, BytesOf(info)), "the caller gets what was written");
  record = BytesOf(info);
  if (gAudioWallSettings.MaintainLegacyCartList != 0) {
    if (listBytes.size() < offset + kSize) listBytes.resize(offset + kSize, '\0');
    listBytes.replace(offset, kSize, record);
  }
  if (inOwn && empty) ownBytes.clear();
  if (inOwn && !empty) ownBytes.replace(0, std::min(kSize, ownBytes.size()), record);
  Require(test::ReadWholeFile(wall.list) == listBytes, "the list gets the record in its place alone");
  Require(test::ReadWholeFile(wall.own) == ownBytes, "the cart's own file begins with it");
}

}  // namespace
}  // namespace vorda::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vorda;
  using namespace vorda::fuzz;
  static Wall wall;
  // The one box that may come: an empty cart had no file of its own.
  const platform::ScopedHook boxes(platform::MessageBoxHook(), [](const platform::BoxRequest&) {
    Require(!std::filesystem::exists(wall.own), "a file that is there can be removed");
    return platform::BoxAnswer::Ok;
  });
  Input input(bytes, size);
  const unsigned stores = input.Byte();
  const std::int32_t cart = 1 + (static_cast<std::uint16_t>(input.Short()) % 1000);
  const std::size_t ownLength = static_cast<std::uint16_t>(input.Short());
  const std::string rest(input.Rest());
  const bool inOwn = (stores & 2U) != 0;
  gAudioWallSettings.MaintainLegacyCartList = static_cast<std::int16_t>(stores & 1U);
  gAudioWallSettings.UseIndividualCartListFiles = static_cast<std::int16_t>(inOwn ? 1 : 0);
  wall.own = CartFileStem(cart) + ".LST";
  const std::string ownBytes = rest.substr(0, ownLength);
  const std::string listBytes = rest.substr(std::min(ownLength, rest.size()));
  wall.Lay(ownBytes, listBytes);

  CartInfo info;
  Require(ReadCartInfo(info, cart) == 0, "what is there is read");
  const std::size_t offset = static_cast<std::size_t>(cart - 1) * kSize;
  const std::string plain = PlainRead(wall.blank, inOwn ? ownBytes : std::string(), listBytes, offset);
  Require(SameRecord(plain, BytesOf(info)), "the record is what the plain reader finds");
  CheckFormat(plain);
  if ((stores & 4U) == 0) {
    const std::string last = rest.substr(rest.size() - std::min(kSize, rest.size()));
    info = gBlankCartInfo;
    UnpackCartInfo(last, info);
  }
  CheckWrite(wall, info, cart, ownBytes, listBytes);
  Require(BytesOf(gBlankCartInfo) == wall.blank, "the shared blank record stays what it was");
  std::filesystem::remove(wall.own);
  return 0;
}
