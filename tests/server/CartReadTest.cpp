// Reading a cart's record, from its list and from its own file.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/FileFault.h"
#include "platform/RunTimeError.h"
#include "support/WallFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using test::BlankCartRecord;
using test::FullCartRecord;

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinite = std::numeric_limits<float>::infinity();

struct Times {
  float length, start, end, playLength;
};

class CartReadTest : public test::WallFixture {
 protected:
  // What a read gives, as the bytes of the record; the result is kept.
  std::string Read(std::int32_t cart) {
    CartInfo info;
    info.Title1.fill('?');
    info.AudioLength = 99;
    result_ = ReadCartInfo(info, cart);
    const CartRecord record = PackCartInfo(info);
    return {record.data(), record.size()};
  }
  static std::string RecordOf(const Times& times) {
    std::string record = FullCartRecord("A cart with a title", times.length);
    test::PutFloat(record, test::kPlayStartAt, times.start);
    test::PutFloat(record, test::kPlayEndAt, times.end);
    test::PutFloat(record, test::kPlayLengthAt, times.playLength);
    return record;
  }
  void ExpectReadAs(const Times& onDisk, const Times& read) {
    SetRecordBytes(7, RecordOf(onDisk));
    EXPECT_EQ(Read(7), RecordOf(read))
        << onDisk.length << " " << onDisk.start << " " << onDisk.end << " " << onDisk.playLength;
    EXPECT_EQ(result_, 0);
  }
  void WriteOwnFile(std::int32_t cart, std::string_view bytes) {
    UseIndividualFiles();
    test::WriteWholeFile(CartFile(cart, "LST"), bytes);
  }

  std::int16_t result_ = 99;
};

TEST_F(CartReadTest, NumbersOutsideTheWallAreRefusedAndReadBlank) {
  for (const std::int32_t cart : {-2147483647 - 1, -1, 0, 10000, 10001, 2147483647}) {
    EXPECT_EQ(Read(cart), BlankCartRecord()) << cart;
    EXPECT_EQ(result_, -1) << cart;
  }
}

TEST_F(CartReadTest, EachCartHasItsPlaceInTheListOfItsPart) {
  Connect(10);
  const auto put = [](const std::string& list, std::size_t offset, const std::string& title) {
    std::string bytes = test::ReadWholeFile(list);
    bytes.replace(offset, 300, FullCartRecord(title, 5));
    test::WriteWholeFile(list, bytes);
  };
  put(wall_ / "Carts1.lst", 0, "1");
  put(wall_ / "Carts1.lst", 299'700, "1000");
  put(wall_ / "Carts2.lst", 0, "1001");
  put(wall_ / "Carts2.lst", 299'700, "2000");
  put(wall_ / "Carts10.lst", 0, "9001");
  put(wall_ / "Carts10.lst", 299'400, "9999");
  for (const std::int32_t cart : {1, 1000, 1001, 2000, 9001, 9999}) {
    EXPECT_EQ(Read(cart), FullCartRecord(std::to_string(cart), 5));
    EXPECT_EQ(result_, 0);
  }
  EXPECT_EQ(Read(2), BlankCartRecord());
  EXPECT_EQ(Read(9998), BlankCartRecord());
}

TEST_F(CartReadTest, EveryByteThatIsNotATimeIsCarried) {
  std::string record(300, '\0');
  for (std::size_t i = 0; i < 300; ++i) record[i] = static_cast<char>(255 - i % 256);
  record.replace(274, 16, FullCartRecord("", 5).substr(274, 16));
  SetRecordBytes(7, record);
  EXPECT_EQ(Read(7), record);
}

TEST_F(CartReadTest, EmptyCartIsTheBlankRecordByteForByte) {
  EXPECT_EQ(Read(7), BlankCartRecord());
  SetRecordBytes(7, test::EmptiedCartRecord());
  EXPECT_EQ(Read(7), BlankCartRecord());
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, EmptyCartLosesItsTitleAndEverythingElse) {
  std::string record(300, 'x');
  test::PutFloat(record, test::kAudioLengthAt, -1);
  SetRecordBytes(7, record);
  EXPECT_EQ(Read(7), BlankCartRecord());
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, EmptyCartHasTheConfiguredColours) {
  gBlankCartInfo.BackColor = 0x00332211;
  EXPECT_EQ(Read(7).substr(60, 4), (std::string{"\x11\x22\x33\x00", 4}));
}

TEST_F(CartReadTest, LengthOfNothingOrNearlyMinusOneIsNoEmptyCart) {
  for (const float length : {0.0F, -0.0F, -0.99999994F, -1.0000001F, -2.0F}) {
    std::string record = FullCartRecord("Renamed", length);
    SetRecordBytes(7, record);
    EXPECT_EQ(Read(7).substr(0, 7), "Renamed") << length;
    EXPECT_EQ(result_, 0);
  }
}

TEST_F(CartReadTest, TimesOfPlayAreTheWholeAudioUnlessBothAreAboveZero) {
  constexpr Times whole{60, 0, 60, 60};
  ExpectReadAs({60, 5, 30, 25}, {60, 5, 30, 25});
  ExpectReadAs({60, 5, 30, 0}, whole);
  ExpectReadAs({60, 5, 30, -1}, whole);
  ExpectReadAs({60, 5, 0, 25}, whole);
  ExpectReadAs({60, 5, -0.0F, 25}, whole);
  ExpectReadAs({60, 5, -30, 25}, whole);
  ExpectReadAs({60, 0, 0, 0}, whole);
  ExpectReadAs({60, 5, 1e-30F, 1e-30F}, {60, 5, 1e-30F, 1e-30F});
  ExpectReadAs({0, 5, 30, 0}, {0, 0, 0, 0});
  ExpectReadAs({60, 99, 1e30F, 1e30F}, {60, 99, 1e30F, 1e30F});
}

TEST_F(CartReadTest, TimesThatAreNoNumbersAreNotAboveZero) {
  ExpectReadAs({60, 5, kNoNumber, 25}, {60, 0, 60, 60});
  ExpectReadAs({60, 5, 30, kNoNumber}, {60, 0, 60, 60});
  ExpectReadAs({60, 5, -kInfinite, 25}, {60, 0, 60, 60});
  ExpectReadAs({60, kNoNumber, kInfinite, kInfinite}, {60, kNoNumber, kInfinite, kInfinite});
  ExpectReadAs({kNoNumber, 5, 30, 0}, {kNoNumber, 0, kNoNumber, kNoNumber});
}

TEST_F(CartReadTest, PartThatIsNotConnectedIsAnErrorAndReadsBlank) {
  EXPECT_EQ(Read(2001), BlankCartRecord());
  EXPECT_EQ(result_, platform::kBadFileNumber);
}

TEST_F(CartReadTest, ListThatCannotBeReadIsAnErrorAndReadsBlank) {
  SetRecordBytes(7, FullCartRecord("A title", 5));
  const ScopedFileFault fault(FileOperation::Read, EIO, 1, 1, "Carts1.lst");
  EXPECT_EQ(Read(7), BlankCartRecord());
  EXPECT_EQ(result_, platform::kDeviceIoError);
  EXPECT_EQ(Read(7), FullCartRecord("A title", 5));
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, ErrorThatWasPendingBeforeIsNobodysResult) {
  platform::SetCurrentError(platform::kDiskFull);
  Read(7);
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, ListThatEndsAheadOfTheRecordHoldsAnEmptyCart) {
  std::filesystem::resize_file(wall_ / "Carts1.lst", 6 * 300);
  EXPECT_EQ(Read(7), BlankCartRecord());
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, ListThatEndsInTheRecordLeavesBlankValuesInTheRest) {
  SetRecordBytes(7, FullCartRecord("A title", 5));
  // Behind the length of the audio, in the end of play.
  std::filesystem::resize_file(wall_ / "Carts1.lst", 6 * 300 + 280);
  EXPECT_EQ(Read(7), FullCartRecord("A title", 5)) << "its play is its length";
  EXPECT_EQ(result_, 0);
  // Ahead of it: no length is an empty cart's.
  std::filesystem::resize_file(wall_ / "Carts1.lst", 6 * 300 + 274);
  EXPECT_EQ(Read(7), BlankCartRecord());
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, OwnFileIsNotLookedAtUnlessInUse) {
  WriteOwnFile(7, FullCartRecord("Own", 5));
  gAudioWallSettings.UseIndividualCartListFiles = 0;
  SetRecordBytes(7, FullCartRecord("List", 5));
  const ScopedFileFault watch(FileOperation::Open, EIO, 1, 1, "LST");
  EXPECT_EQ(Read(7), FullCartRecord("List", 5));
  EXPECT_EQ(watch.calls(), 0);
}

TEST_F(CartReadTest, OwnFileGoesAheadOfTheList) {
  SetRecordBytes(7, FullCartRecord("List", 5));
  WriteOwnFile(7, FullCartRecord("Own", 8));
  EXPECT_EQ(Read(7), FullCartRecord("Own", 8));
  gAudioWallSettings.UseIndividualCartListFiles = -1;
  gAudioWallSettings.MaintainLegacyCartList = 0;
  EXPECT_EQ(Read(7), FullCartRecord("Own", 8));
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, OwnFileNeedsNoList) {
  UseIndividualFiles();
  test::WriteWholeFile(CartFile(2001, "LST"), FullCartRecord("Own", 8));
  EXPECT_EQ(Read(2001), FullCartRecord("Own", 8));
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, MissingOrEmptyOwnFileFallsBackOnTheList) {
  UseIndividualFiles();
  SetRecordBytes(7, FullCartRecord("List", 5));
  EXPECT_EQ(Read(7), FullCartRecord("List", 5));
  WriteOwnFile(7, "");
  EXPECT_EQ(Read(7), FullCartRecord("List", 5));
  gAudioWallSettings.MaintainLegacyCartList = 0;
  EXPECT_EQ(Read(7), FullCartRecord("List", 5));
  EXPECT_EQ(result_, 0);
  EXPECT_EQ(Read(2001), BlankCartRecord());
  EXPECT_EQ(result_, platform::kBadFileNumber);
}

TEST_F(CartReadTest, DirectoryIsNoOwnFile) {
  UseIndividualFiles();
  SetRecordBytes(7, FullCartRecord("List", 5));
  std::filesystem::create_directory(CartFile(7, "LST"));
  EXPECT_EQ(Read(7), FullCartRecord("List", 5));
}

TEST_F(CartReadTest, OwnFileThatCannotBeReadIsAnErrorAndTheListNoWayOut) {
  SetRecordBytes(7, FullCartRecord("List", 5));
  WriteOwnFile(7, FullCartRecord("Own", 8));
  {
    const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1000, "ORV00007.LST");
    EXPECT_EQ(Read(7), BlankCartRecord());
    EXPECT_EQ(result_, platform::kPermissionDenied);
  }
  const ScopedFileFault fault(FileOperation::Read, EIO, 1, 1, "ORV00007.LST");
  EXPECT_EQ(Read(7), BlankCartRecord());
  EXPECT_EQ(result_, platform::kDeviceIoError);
  EXPECT_EQ(Read(7), FullCartRecord("Own", 8));
}

TEST_F(CartReadTest, OwnFilesOfOddLengths) {
  SetRecordBytes(7, FullCartRecord("List", 5));
  WriteOwnFile(7, FullCartRecord("Own", 8) + FullCartRecord("Second", 9));
  EXPECT_EQ(Read(7), FullCartRecord("Own", 8));
  WriteOwnFile(7, FullCartRecord("Own", 8).substr(0, 280));
  EXPECT_EQ(Read(7), FullCartRecord("Own", 8));
  WriteOwnFile(7, "O");
  EXPECT_EQ(Read(7), BlankCartRecord()) << "one byte is a file";
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, EmptyCartInItsOwnFileIsEmptyWhateverTheListSays) {
  SetRecordBytes(7, FullCartRecord("List", 5));
  WriteOwnFile(7, FullCartRecord("Own", -1));
  EXPECT_EQ(Read(7), BlankCartRecord());
  EXPECT_EQ(result_, 0);
}

TEST_F(CartReadTest, OwnFilesTimesOfPlayAreLookedAtTheSameWay) {
  WriteOwnFile(7, RecordOf({60, 5, 30, 0}));
  EXPECT_EQ(Read(7), RecordOf({60, 0, 60, 60}));
  WriteOwnFile(7, RecordOf({60, 5, 30, 25}));
  EXPECT_EQ(Read(7), RecordOf({60, 5, 30, 25}));
}

TEST_F(CartReadTest, OwnFileIsFoundInAnyCaseOfItsName) {
  UseIndividualFiles();
  test::WriteWholeFile(wall_ / "orv00007.lst", FullCartRecord("Own", 8));
  EXPECT_EQ(Read(7), FullCartRecord("Own", 8));
}

TEST_F(CartReadTest, ReadingNeverChangesTheSharedBlankRecord) {
  SetRecordBytes(7, FullCartRecord("A title", 5));
  for (const std::int32_t cart : {0, 1, 7, 2001}) Read(cart);
  const CartRecord record = PackCartInfo(gBlankCartInfo);
  EXPECT_EQ(std::string(record.data(), record.size()), BlankCartRecord());
}

}  // namespace
}  // namespace vorda
