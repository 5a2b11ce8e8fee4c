// Writing a cart's record, to its list and to its own file.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/Descriptor.h"
#include "platform/FileFault.h"
#include "platform/RunTimeError.h"
#include "support/WallFixture.h"

namespace vorda {
namespace {

using platform::FileOperation;
using platform::ScopedFileFault;
using test::BlankCartRecord;
using test::EmptiedCartRecord;
using test::FullCartRecord;
using test::ProblemText;

constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

class CartWriteTest : public test::WallFixture {
 protected:
  CartWriteTest() { Use(FullCartRecord("Written", 5)); }

  void Use(std::string_view record) { UnpackCartInfo(record, info_); }
  void UseEmptyCart() { info_ = gBlankCartInfo; }
  static std::string BytesOf(const CartInfo& info) {
    const CartRecord record = PackCartInfo(info);
    return {record.data(), record.size()};
  }
  // Both stores have a cart already.
  void HaveBothStores() {
    UseIndividualFiles();
    SetRecordBytes(7, FullCartRecord("List", 9));
    test::WriteWholeFile(own_, FullCartRecord("Own", 9));
  }
  static void MaintainNoLists() { gAudioWallSettings.MaintainLegacyCartList = 0; }
  void ExpectRemovalReport(std::int32_t cart, int error) {
    boxes_.Expect(ProblemText("removing the information file for cart " + std::to_string(cart), error));
  }
  std::string Own() const { return test::ReadWholeFile(own_); }
  bool HasOwn() const { return std::filesystem::exists(own_); }

  CartInfo info_;
  const std::string own_ = wall_ / "ORV00007.LST";
  const std::string written_ = FullCartRecord("Written", 5);
};

TEST_F(CartWriteTest, NumbersOutsideTheWallAreRefusedAndNothingChanges) {
  UseIndividualFiles();
  const std::string list = test::ReadWholeFile(wall_ / "Carts1.lst");
  info_.PlayEnd = 0;
  const std::string before = BytesOf(info_);
  for (const std::int32_t cart : {-1, 0, 10000, 10001}) {
    EXPECT_EQ(WriteCartInfo(info_, cart, true), -1);
    EXPECT_EQ(BytesOf(info_), before);
  }
  EXPECT_EQ(test::ReadWholeFile(wall_ / "Carts1.lst"), list);
  EXPECT_EQ(FilesIn(wall_.path()), Names());
}

TEST_F(CartWriteTest, RecordGoesToItsPlaceAndTouchesNoOther) {
  std::string expected = test::ReadWholeFile(wall_ / "Carts1.lst");
  for (const std::int32_t cart : {1, 7, 1000}) {
    EXPECT_EQ(WriteCartInfo(info_, cart, false), 0);
    expected.replace(static_cast<std::size_t>(cart - 1) * 300, 300, written_);
    EXPECT_TRUE(test::ReadWholeFile(wall_ / "Carts1.lst") == expected) << cart;
  }
  EXPECT_EQ(WriteCartInfo(info_, 1001, false), 0);
  EXPECT_EQ(test::ReadWholeFile(wall_ / "Carts2.lst").substr(0, 300), written_);
  EXPECT_TRUE(test::ReadWholeFile(wall_ / "Carts1.lst") == expected);
  Connect(10);
  EXPECT_EQ(WriteCartInfo(info_, 9999, false), 0);
  EXPECT_EQ(test::ReadWholeFile(wall_ / "Carts10.lst").substr(299'400), written_);
}

TEST_F(CartWriteTest, OperatorWithoutTheRightIsRefusedUnlessTrusted) {
  UseIndividualFiles();
  std::vector<std::int32_t> asked;
  InstallRule([&asked](std::int32_t cart) {
    asked.push_back(cart);
    return cart != 7;
  });
  info_.PlayEnd = 0;
  const std::string before = BytesOf(info_);
  EXPECT_EQ(WriteCartInfo(info_, 7, false), -1);
  EXPECT_EQ(BytesOf(info_), before);
  EXPECT_EQ(RecordBytes(7), BlankCartRecord());
  EXPECT_FALSE(HasOwn());
  EXPECT_EQ(WriteCartInfo(info_, 8, false), 0);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(RecordBytes(7), written_);
  EXPECT_EQ(asked, (std::vector<std::int32_t>{7, 8}));
}

TEST_F(CartWriteTest, WithoutARuleEverybodyMayWrite) {
  EXPECT_TRUE(UserMayUseCart(7));
  EXPECT_EQ(WriteCartInfo(info_, 7, false), 0);
}

TEST_F(CartWriteTest, EndOfPlayThatIsNotAboveZeroBecomesTheWholeAudio) {
  for (const float end : {0.0F, -0.0F, -1.0F, kNoNumber}) {
    Use(written_);
    info_.PlayStart = 3;
    info_.PlayEnd = end;
    info_.PlayLength = 2;
    EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
    EXPECT_EQ(RecordBytes(7), written_) << end;
    EXPECT_EQ(BytesOf(info_), written_) << "the caller's record as well";
  }
}

TEST_F(CartWriteTest, LengthOfPlayIsNotLookedAt) {
  for (const float length : {0.0F, -1.0F, kNoNumber}) {
    std::string record = FullCartRecord("Odd", 60);
    test::PutFloat(record, test::kPlayStartAt, 5);
    test::PutFloat(record, test::kPlayEndAt, 30);
    test::PutFloat(record, test::kPlayLengthAt, length);
    Use(record);
    EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
    EXPECT_EQ(RecordBytes(7), record) << length;
    EXPECT_EQ(BytesOf(info_), record) << length;
    CartInfo read;
    EXPECT_EQ(ReadCartInfo(read, 7), 0);
    EXPECT_EQ(read.PlayEnd, 60) << "a reader does look";
  }
}

TEST_F(CartWriteTest, EveryByteThatIsNotATimeIsCarried) {
  std::string record(300, '\0');
  for (std::size_t i = 0; i < 300; ++i) record[i] = static_cast<char>(200 - i);
  record.replace(274, 16, written_.substr(274, 16));
  Use(record);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(RecordBytes(7), record);
}

TEST_F(CartWriteTest, BlankRecordIsStoredWithItsEndOfPlayAtMinusOne) {
  SetRecordBytes(7, written_);
  UseEmptyCart();
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(RecordBytes(7), EmptiedCartRecord());
  EXPECT_EQ(BytesOf(info_), EmptiedCartRecord());
  EXPECT_EQ(BytesOf(gBlankCartInfo), BlankCartRecord()) << "the shared value stays what it was";
}

TEST_F(CartWriteTest, RecordOfAnEmptyCartIsStoredWithItsTitle) {
  std::string record = FullCartRecord("Title of nothing", -1);
  Use(record);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(RecordBytes(7).substr(0, 16), "Title of nothing");
}

TEST_F(CartWriteTest, OtherProgramSeesTheRecordAtOnce) {
  const platform::Descriptor other(::open((wall_ / "Carts1.lst").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_TRUE(other.isOpen());
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  std::string bytes(300, '\0');
  EXPECT_EQ(::pread(other.number(), bytes.data(), bytes.size(), 1800), 300);
  EXPECT_EQ(bytes, written_);
}

// A list that was put in place of another is found by the opening behind the first write.
TEST_F(CartWriteTest, ListIsClosedAndOpenedAnewBehindEachWrite) {
  const std::string list = wall_ / "Carts1.lst";
  std::filesystem::create_hard_link(list, wall_ / "before");
  test::WriteWholeFile(wall_ / "new", test::ReadWholeFile(list));
  std::filesystem::rename(wall_ / "new", list);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(test::ReadWholeFile(wall_ / "before").substr(1800, 300), written_);
  EXPECT_EQ(RecordBytes(7), BlankCartRecord());
  EXPECT_EQ(WriteCartInfo(info_, 8, true), 0);
  EXPECT_EQ(RecordBytes(8), written_);
  EXPECT_EQ(test::ReadWholeFile(wall_ / "before").substr(2100, 300), BlankCartRecord());
}

TEST_F(CartWriteTest, ListThatCannotBeOpenedAnewIsTheNextWritesError) {
  const ScopedFileFault fault(FileOperation::Open, EIO, 1, 1000, "Carts1.lst");
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(RecordBytes(7), written_);
  EXPECT_EQ(WriteCartInfo(info_, 8, true), platform::kBadFileNumber);
}

TEST_F(CartWriteTest, ListThatIsGoneIsMadeAnew) {
  const std::string list = wall_ / "Carts1.lst";
  std::filesystem::remove(list);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0) << "it was still open";
  EXPECT_EQ(test::ReadWholeFile(list), "");
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(test::ReadWholeFile(list), std::string(1800, '\0') + written_);
}

TEST_F(CartWriteTest, ErrorsOfTheListAreTheResultAndNotShown) {
  for (const auto& [systemError, number] : std::vector<std::pair<int, int>>{
           {ENOSPC, platform::kDiskFull}, {EIO, platform::kDeviceIoError}, {ESTALE, 68}}) {
    const ScopedFileFault fault(FileOperation::Write, systemError, 1, 1, "Carts1.lst");
    EXPECT_EQ(WriteCartInfo(info_, 7, true), number);
    EXPECT_EQ(RecordBytes(7), BlankCartRecord());
    EXPECT_EQ(BytesOf(info_), written_) << "the caller's record stays";
  }
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0) << "the list was opened anew all the same";
  EXPECT_EQ(WriteCartInfo(info_, 2001, true), platform::kBadFileNumber);
}

TEST_F(CartWriteTest, ListThatMayOnlyBeReadIsAnError) {
  {
    const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, "Carts1.lst");
    ReopenCartList(1);
  }
  EXPECT_EQ(WriteCartInfo(info_, 7, true), platform::kPathFileAccessError);
  EXPECT_EQ(RecordBytes(7), BlankCartRecord());
}

TEST_F(CartWriteTest, ErrorThatWasPendingBeforeIsNobodysResult) {
  platform::SetCurrentError(platform::kDeviceIoError);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
}

TEST_F(CartWriteTest, WithoutListsNoListIsTouched) {
  MaintainNoLists();
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(WriteCartInfo(info_, 2001, true), 0);
  EXPECT_EQ(RecordBytes(7), BlankCartRecord());
  EXPECT_FALSE(HasOwn());
}

TEST_F(CartWriteTest, BothStoresGetTheRecord) {
  UseIndividualFiles();
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(RecordBytes(7), written_);
  EXPECT_EQ(Own(), written_);
  EXPECT_EQ(FilesIn(wall_.path()), Names({"ORV00007.LST"}));
}

TEST_F(CartWriteTest, OwnFileAloneGetsTheRecord) {
  UseIndividualFiles();
  MaintainNoLists();
  info_.PlayEnd = 0;
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(RecordBytes(7), BlankCartRecord());
  EXPECT_EQ(Own(), written_);
}

TEST_F(CartWriteTest, OwnFileIsWrittenOverInPlace) {
  UseIndividualFiles();
  test::WriteWholeFile(own_, std::string(310, 'x'));
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(Own(), written_ + std::string(10, 'x'));
}

TEST_F(CartWriteTest, OwnFileIsClosedAgain) {
  UseIndividualFiles();
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  const std::string open = test::JoinedNames("/proc/self/fd");
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  {
    const ScopedFileFault fault(FileOperation::Write, EIO, 1, 1, "ORV00007.LST");
    EXPECT_EQ(WriteCartInfo(info_, 7, true), -1);
  }
  EXPECT_EQ(test::JoinedNames("/proc/self/fd"), open);
}

TEST_F(CartWriteTest, ListsErrorIsTheResultThoughTheOwnFileWasWritten) {
  UseIndividualFiles();
  const ScopedFileFault fault(FileOperation::Write, ENOSPC, 1, 1, "Carts1.lst");
  EXPECT_EQ(WriteCartInfo(info_, 7, true), platform::kDiskFull);
  EXPECT_EQ(Own(), written_);
  EXPECT_EQ(BytesOf(info_), written_);
}

TEST_F(CartWriteTest, OwnFileThatCannotBeWrittenBlanksTheCallersRecordBehindTheList) {
  for (const FileOperation operation : {FileOperation::Open, FileOperation::Write}) {
    HaveBothStores();
    Use(written_);
    const ScopedFileFault fault(operation, ENOSPC, 1, 1000, "ORV00007.LST");
    EXPECT_EQ(WriteCartInfo(info_, 7, true), -1);
    EXPECT_EQ(BytesOf(info_), BlankCartRecord());
    EXPECT_EQ(RecordBytes(7), written_) << "the list has the new record";
    EXPECT_EQ(Own(), FullCartRecord("Own", 9));
  }
}

TEST_F(CartWriteTest, OwnFileThatMayOnlyBeReadIsOneThatCannotBeWritten) {
  HaveBothStores();
  const ScopedFileFault fault(FileOperation::Open, EACCES, 1, 1, "ORV00007.LST");
  EXPECT_EQ(WriteCartInfo(info_, 7, true), -1);
  EXPECT_EQ(BytesOf(info_), BlankCartRecord());
  EXPECT_EQ(Own(), FullCartRecord("Own", 9));
}

TEST_F(CartWriteTest, FailuresOfBothStoresAreTheOwnFiles) {
  HaveBothStores();
  const ScopedFileFault list(FileOperation::Write, ENOSPC, 1, 1, "Carts1.lst");
  const ScopedFileFault own(FileOperation::Write, EIO, 1, 1, "ORV00007.LST");
  EXPECT_EQ(WriteCartInfo(info_, 7, true), -1);
  EXPECT_EQ(RecordBytes(7), FullCartRecord("List", 9));
}

TEST_F(CartWriteTest, OwnFileInAMissingDirectoryCannotBeWritten) {
  UseIndividualFiles();
  gAudioWallParts[0].Location = wall_ / "none";
  EXPECT_EQ(WriteCartInfo(info_, 7, true), -1);
  gAudioWallParts[0].Location = "Q:\\AUDIO";
  Use(written_);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), -1);
}

TEST_F(CartWriteTest, EmptyCartsOwnFileIsRemoved) {
  HaveBothStores();
  UseEmptyCart();
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_FALSE(HasOwn());
  EXPECT_EQ(RecordBytes(7), EmptiedCartRecord());
}

TEST_F(CartWriteTest, OwnFileIsRemovedInAnyCaseOfItsName) {
  UseIndividualFiles();
  test::WriteWholeFile(wall_ / "orv00007.lst", written_);
  UseEmptyCart();
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(FilesIn(wall_.path()), Names());
}

TEST_F(CartWriteTest, EmptyCartWithoutAnOwnFileIsReported) {
  UseIndividualFiles();
  UseEmptyCart();
  ExpectRemovalReport(7, platform::kFileNotFound);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(boxes_.Last().icon, platform::BoxIcon::Information);
  EXPECT_EQ(BytesOf(info_), EmptiedCartRecord());
  EXPECT_EQ(RecordBytes(7), EmptiedCartRecord());
}

TEST_F(CartWriteTest, OwnFileThatCannotBeRemovedIsReported) {
  HaveBothStores();
  UseEmptyCart();
  const ScopedFileFault fault(FileOperation::Remove, EACCES, 1, 1, "ORV00007.LST");
  ExpectRemovalReport(7, platform::kPermissionDenied);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  EXPECT_EQ(Own(), FullCartRecord("Own", 9));
}

TEST_F(CartWriteTest, FailedRemovalLeavesTheListsErrorAsTheResult) {
  UseIndividualFiles();
  UseEmptyCart();
  const ScopedFileFault fault(FileOperation::Write, ENOSPC, 1, 1, "Carts1.lst");
  ExpectRemovalReport(7, platform::kFileNotFound);
  EXPECT_EQ(WriteCartInfo(info_, 7, true), platform::kDiskFull);
}

TEST_F(CartWriteTest, RemovalWhereThereIsNoPathIsReportedAsSuch) {
  UseIndividualFiles();
  MaintainNoLists();
  for (const char* location : {"", "Q:\\AUDIO"}) {
    gAudioWallParts[0].Location = location;
    UseEmptyCart();
    ExpectRemovalReport(7, platform::kPathNotFound);
    EXPECT_EQ(WriteCartInfo(info_, 7, true), 0);
  }
}

TEST_F(CartWriteTest, WritingNeverChangesTheSharedBlankRecord) {
  HaveBothStores();
  CartInfo copy = gBlankCartInfo;
  EXPECT_EQ(WriteCartInfo(copy, 7, true), 0);
  const ScopedFileFault fault(FileOperation::Write, EIO, 1, 1, "ORV00007.LST");
  EXPECT_EQ(WriteCartInfo(info_, 7, true), -1);
  EXPECT_EQ(BytesOf(gBlankCartInfo), BlankCartRecord());
}

}  // namespace
}  // namespace vorda
