// Titles of carts, and a cart's way into a player's slot and back.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/RunTimeError.h"
#include "support/WallFixture.h"

namespace vorda {
namespace {

using test::BlankCartRecord;
using test::FullCartRecord;

template <std::size_t count>
std::string Text(const std::array<char, count>& field) {
  return {field.data(), field.size()};
}

const std::string kBlanks(20, ' ');

TEST(CartTitlesTest, TitleIsSpreadOverThreeFieldsOfTwenty) {
  CartInfo info;
  SplitCartTitle("abcdefghijklmnopqrstABCDEFGHIJKLMNOPQRST01234567890123456789", info);
  EXPECT_EQ(Text(info.Title1), "abcdefghijklmnopqrst");
  EXPECT_EQ(Text(info.Title2), "ABCDEFGHIJKLMNOPQRST");
  EXPECT_EQ(Text(info.Title3), "01234567890123456789");
}

TEST(CartTitlesTest, ShortTitleIsPaddedWithBlanks) {
  CartInfo info;
  SplitCartTitle("Hello", info);
  EXPECT_EQ(Text(info.Title1), "Hello               ");
  EXPECT_EQ(Text(info.Title2), kBlanks);
  EXPECT_EQ(Text(info.Title3), kBlanks);
}

TEST(CartTitlesTest, TitleReplacesAllOfTheOneBefore) {
  CartInfo info;
  SplitCartTitle(std::string(60, 'x'), info);
  SplitCartTitle("", info);
  std::string title;
  EXPECT_EQ(JoinCartTitle(info, title), std::string(60, ' '));
}

TEST(CartTitlesTest, EdgesOfTheFields) {
  for (const std::size_t length : {0U, 1U, 19U, 20U, 21U, 39U, 40U, 41U, 59U, 60U}) {
    CartInfo info;
    std::string title(length, 'x');
    SplitCartTitle(title, info);
    std::string joined;
    JoinCartTitle(info, joined);
    title.resize(60, ' ');
    EXPECT_EQ(joined, title) << length;
  }
}

TEST(CartTitlesTest, WhatIsBeyondSixtyCharactersIsLost) {
  CartInfo info;
  const std::string title(60, 'x');
  SplitCartTitle(title + "0123456789", info);
  std::string joined;
  EXPECT_EQ(JoinCartTitle(info, joined), title);
}

TEST(CartTitlesTest, BlanksAndOtherBytesStayWhereTheyAre) {
  using namespace std::string_view_literals;
  CartInfo info;
  std::string title("  two ahead, \0 and \xFC\x80 inside  "sv);
  SplitCartTitle(title, info);
  std::string joined;
  title.resize(60, ' ');
  EXPECT_EQ(JoinCartTitle(info, joined), title);
}

TEST(CartTitlesTest, JoinedTitleIsTheResultAndTheArgument) {
  CartInfo info;
  SplitCartTitle("Evening news", info);
  std::string title = "something else that is far longer than the sixty characters of any title there is";
  EXPECT_EQ(JoinCartTitle(info, title), "Evening news" + std::string(48, ' '));
  EXPECT_EQ(title, "Evening news" + std::string(48, ' '));
}

TEST(CartTitlesTest, TitleTouchesNothingElseOfTheRecord) {
  CartInfo info;
  const std::string bytes(300, 'r');
  UnpackCartInfo(bytes, info);
  SplitCartTitle(std::string(100, 't'), info);
  const CartRecord record = PackCartInfo(info);
  EXPECT_EQ(std::string(record.data(), record.size()), std::string(60, 't') + std::string(240, 'r'));
}

class CartInPlayerTest : public test::WallFixture {
 protected:
  // A record in which every field says which it is.
  static std::string TellingRecord() {
    std::string record = FullCartRecord("title one           title two           title three         ", 60);
    record.replace(60, 202, std::string(202, 'r'));
    record.replace(290, 10, std::string(10, 'r'));
    test::PutFloat(record, test::kMarkStartAt, 1);
    test::PutFloat(record, test::kMarkEndAt, 2);
    test::PutFloat(record, test::kCountdownMarkAt, 3);
    test::PutFloat(record, test::kPlayStartAt, 5);
    test::PutFloat(record, test::kPlayEndAt, 30);
    test::PutFloat(record, test::kPlayLengthAt, 25);
    return record;
  }

  CartDetails slot_;
  std::string audio_ = "before";
};

TEST_F(CartInPlayerTest, SlotGetsTitlesTimesAndTheAudiosPath) {
  SetRecordBytes(7, TellingRecord());
  slot_.Text.fill('x');
  EXPECT_EQ(CartInfoToPlayer(7, audio_, slot_), 0);
  EXPECT_EQ(Text(slot_.Title1), "title one           ");
  EXPECT_EQ(Text(slot_.Title2), "title two           ");
  EXPECT_EQ(Text(slot_.Title3), "title three         ");
  EXPECT_EQ(slot_.MarkStart, 1);
  EXPECT_EQ(slot_.MarkEnd, 2);
  EXPECT_EQ(slot_.CountdownMark, 3);
  EXPECT_EQ(slot_.AudioLength, 60);
  EXPECT_EQ(slot_.PlayStart, 5);
  EXPECT_EQ(slot_.PlayEnd, 30);
  EXPECT_EQ(slot_.PlayLength, 25);
  EXPECT_EQ(Text(slot_.Text), std::string(40, ' '));
  EXPECT_EQ(audio_, wall_ / "ORV00007.WAV");
}

TEST_F(CartInPlayerTest, SlotGetsTheLinkedAudio) {
  AllowLinks();
  test::WriteWholeFile(CartFile(7, "FLK"), "/srv/elsewhere.wav\r\n");
  EXPECT_EQ(CartInfoToPlayer(7, audio_, slot_), 0);
  EXPECT_EQ(audio_, "/srv/elsewhere.wav");
}

TEST_F(CartInPlayerTest, EmptyUnreadableAndImpossibleCartsAnswerZeroAndTellByTheirLength) {
  for (const std::int32_t cart : {7, 2001, 0, -1, 10000}) {
    slot_.AudioLength = 99;
    slot_.Title1.fill('x');
    slot_.PlayEnd = 99;
    EXPECT_EQ(CartInfoToPlayer(cart, audio_, slot_), 0) << cart;
    EXPECT_EQ(slot_.AudioLength, -1) << cart;
    EXPECT_EQ(slot_.PlayEnd, 0) << cart;
    EXPECT_EQ(Text(slot_.Title1), kBlanks) << cart;
    EXPECT_EQ(audio_, CartAudioFileName(cart)) << cart;
  }
}

TEST_F(CartInPlayerTest, SlotIsWrittenOverTheBlankRecord) {
  SetRecordBytes(7, TellingRecord());
  CartInfoToPlayer(7, audio_, slot_);
  slot_.Text.fill('x');
  EXPECT_EQ(PlayerToCartInfo(8, slot_), 0);
  std::string expected = TellingRecord();
  expected.replace(60, 202, BlankCartRecord(), 60, 202);
  expected.replace(290, 10, BlankCartRecord(), 290, 10);
  EXPECT_EQ(RecordBytes(8), expected);
}

TEST_F(CartInPlayerTest, ReservedTextsAreZeroesWhateverTheBlankRecordHolds) {
  gBlankCartInfo.ReservedText.fill('x');
  gBlankCartInfo.ReservedTail.fill('x');
  SetRecordBytes(7, TellingRecord());
  CartInfoToPlayer(7, audio_, slot_);
  EXPECT_EQ(PlayerToCartInfo(8, slot_), 0);
  EXPECT_EQ(RecordBytes(8).substr(70, 142), std::string(142, '\0'));
  EXPECT_EQ(RecordBytes(8).substr(290), std::string(10, '\0'));
}

TEST_F(CartInPlayerTest, SlotWithoutAnEndOfPlayGetsTheWholeAudioOnDisk) {
  slot_.AudioLength = 60;
  slot_.PlayStart = 5;
  slot_.Title1.fill(' ');
  EXPECT_EQ(PlayerToCartInfo(7, slot_), 0);
  CartInfo info;
  EXPECT_EQ(ReadCartInfo(info, 7), 0);
  EXPECT_EQ(info.PlayStart, 0);
  EXPECT_EQ(info.PlayEnd, 60);
  EXPECT_EQ(info.PlayLength, 60);
  EXPECT_EQ(slot_.PlayStart, 5) << "the slot itself stays";
}

TEST_F(CartInPlayerTest, SlotsCartIsWrittenOnlyWithTheRight) {
  SetRecordBytes(7, TellingRecord());
  CartInfoToPlayer(7, audio_, slot_);
  InstallRule([](std::int32_t cart) { return cart == 7; });
  EXPECT_EQ(PlayerToCartInfo(8, slot_), -1);
  EXPECT_EQ(RecordBytes(8), BlankCartRecord());
  EXPECT_EQ(PlayerToCartInfo(7, slot_), 0);
  EXPECT_EQ(RecordBytes(7).substr(60, 8), BlankCartRecord().substr(60, 8));
}

TEST_F(CartInPlayerTest, FailedWriteOfASlotIsItsResult) {
  slot_.AudioLength = 60;
  EXPECT_EQ(PlayerToCartInfo(2001, slot_), platform::kBadFileNumber);
  EXPECT_EQ(PlayerToCartInfo(0, slot_), -1);
}

}  // namespace
}  // namespace vorda
