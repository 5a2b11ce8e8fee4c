// The bytes of a cart record, worked out by hand: each field's place, kind and byte order, and that nothing
// gets lost on the way in and out.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "carts/CartRecordFormat.h"

namespace vorda {
namespace {

using namespace std::string_view_literals;

std::string Packed(const CartInfo& info) {
  const CartRecord record = PackCartInfo(info);
  return {record.data(), record.size()};
}

CartInfo Unpacked(std::string_view bytes) {
  CartInfo info;
  UnpackCartInfo(bytes, info);
  return info;
}

// A record as it comes back from a read, a change of hands and a write.
std::string ThereAndBack(std::string_view bytes) {
  const CartInfo read = Unpacked(bytes);
  CartInfo kept;
  kept = read;
  return Packed(kept);
}

template <std::size_t count>
void Set(std::array<char, count>& field, std::string_view text) {
  std::copy(text.begin(), text.end(), field.begin());
}
template <std::size_t count>
bool Holds(const std::array<char, count>& field, std::string_view text) {
  return std::string_view(field.data(), field.size()) == text;
}

struct Field {
  const char* name;
  std::size_t offset;
  std::string_view bytes;
  std::function<void(CartInfo&)> set;
  std::function<bool(const CartInfo&)> isSet;
};

std::vector<Field> TextFields() {
  static const std::string reserved = "[" + std::string(140, '#') + "]";
  return {
      {"Title1", 0, "the first twenty cha"sv, [](CartInfo& i) { Set(i.Title1, "the first twenty cha"); },
       [](const CartInfo& i) { return Holds(i.Title1, "the first twenty cha"); }},
      {"Title2", 20, "racters, then twenty"sv, [](CartInfo& i) { Set(i.Title2, "racters, then twenty"); },
       [](const CartInfo& i) { return Holds(i.Title2, "racters, then twenty"); }},
      {"Title3", 40, " more, and the last."sv, [](CartInfo& i) { Set(i.Title3, " more, and the last."); },
       [](const CartInfo& i) { return Holds(i.Title3, " more, and the last."); }},
      {"ReservedText", 70, reserved, [](CartInfo& i) { Set(i.ReservedText, reserved); },
       [](const CartInfo& i) { return Holds(i.ReservedText, reserved); }},
      {"ReservedTail", 290, "ten bytes!"sv, [](CartInfo& i) { Set(i.ReservedTail, "ten bytes!"); },
       [](const CartInfo& i) { return Holds(i.ReservedTail, "ten bytes!"); }},
  };
}

template <class Number>
Field NumberField(const char* name, std::size_t offset, std::string_view bytes, Number CartInfo::*member,
                  Number value) {
  return {name, offset, bytes, [=](CartInfo& info) { info.*member = value; },
          [=](const CartInfo& info) { return info.*member == value; }};
}

template <class Number>
Field ElementField(const char* name, std::size_t offset, std::string_view bytes,
                   std::array<Number, 5> CartInfo::*member, std::size_t element, Number value) {
  return {name, offset, bytes, [=](CartInfo& info) { (info.*member)[element] = value; },
          [=](const CartInfo& info) { return (info.*member)[element] == value; }};
}

std::vector<Field> NumberFields() {
  using I = CartInfo;
  constexpr auto kButtonFace = static_cast<std::int32_t>(0x8000000F);
  return {
      NumberField("BackColor", 60, "\x0F\x00\x00\x80"sv, &I::BackColor, kButtonFace),
      NumberField("ForeColor", 64, "\xC3\xB2\xA1\x00"sv, &I::ForeColor, 0x00A1B2C3),
      NumberField("SmallFlag", 68, "\xFE\xFF"sv, &I::SmallFlag, std::int16_t{-2}),
      ElementField("ReservedValues 1", 212, "\0\0\0\0\0\0\xF8\x3F"sv, &I::ReservedValues, 0, 1.5),
      ElementField("ReservedValues 2", 220, "\x9A\x99\x99\x99\x99\x99\xB9\x3F"sv, &I::ReservedValues, 1, 0.1),
      ElementField("ReservedValues 5", 244, "\0\0\0\0\0\0\0\xC0"sv, &I::ReservedValues, 4, -2.0),
      ElementField("ReservedNumbers 1", 252, "\x34\x12"sv, &I::ReservedNumbers, 0, std::int16_t{0x1234}),
      ElementField("ReservedNumbers 5", 260, "\xFF\x7F"sv, &I::ReservedNumbers, 4, std::int16_t{32767}),
      NumberField("MarkStart", 262, "\x00\x00\x80\x3F"sv, &I::MarkStart, 1.0F),
      NumberField("MarkEnd", 266, "\x00\x00\x20\x40"sv, &I::MarkEnd, 2.5F),
      NumberField("CountdownMark", 270, "\x00\x00\x24\x41"sv, &I::CountdownMark, 10.25F),
      NumberField("AudioLength", 274, "\x00\x00\x80\xBF"sv, &I::AudioLength, -1.0F),
      NumberField("PlayStart", 278, "\x00\x00\x00\x3F"sv, &I::PlayStart, 0.5F),
      NumberField("PlayEnd", 282, "\x00\x00\xF0\x41"sv, &I::PlayEnd, 30.0F),
      NumberField("PlayLength", 286, "\xCD\xCC\xCC\x3D"sv, &I::PlayLength, 0.1F),
  };
}

std::vector<Field> AllFields() {
  std::vector<Field> fields = TextFields();
  for (Field& field : NumberFields()) fields.push_back(std::move(field));
  return fields;
}

TEST(CartRecordFormatTest, EachFieldIsWrittenInItsPlaceAndNowhereElse) {
  for (const Field& field : AllFields()) {
    SCOPED_TRACE(field.name);
    CartInfo info{};
    field.set(info);
    std::string expected(300, '\0');
    expected.replace(field.offset, field.bytes.size(), field.bytes);
    EXPECT_EQ(Packed(info), expected);
  }
}

TEST(CartRecordFormatTest, EachFieldIsReadFromItsPlaceAndNowhereElse) {
  for (const Field& field : AllFields()) {
    std::string bytes(300, '\0');
    bytes.replace(field.offset, field.bytes.size(), field.bytes);
    const CartInfo info = Unpacked(bytes);
    for (const Field& other : AllFields())
      EXPECT_EQ(other.isSet(info), other.offset == field.offset)
          << field.name << " on disk, " << other.name << " in memory";
  }
}

// All fields at once, each with a value of its own.
TEST(CartRecordFormatTest, WholeRecordIsTheFieldsWithoutPadding) {
  CartInfo info{};
  std::string expected(300, '\0');
  for (const Field& field : AllFields()) {
    field.set(info);
    expected.replace(field.offset, field.bytes.size(), field.bytes);
  }
  EXPECT_EQ(Packed(info), expected);
}

TEST(CartRecordFormatTest, EveryByteValueSurvivesInEveryPlace) {
  for (int value = 0; value < 256; ++value) {
    const std::string same(300, static_cast<char>(value));
    ASSERT_EQ(ThereAndBack(same), same) << value;
    std::string running;
    for (int i = 0; i < 300; ++i) running += static_cast<char>(value + 7 * i);
    ASSERT_EQ(ThereAndBack(running), running) << value;
  }
}

TEST(CartRecordFormatTest, FloatsThatAreNoNumbersKeepTheirBits) {
  const std::string_view floats[] = {
      "\x00\x00\xC0\x7F"sv,  // quiet
      "\x01\x00\xC0\xFF"sv,  // quiet, negative, with a payload
      "\x01\x00\x80\x7F"sv,  // signalling
      "\xFF\xFF\xBF\xFF"sv,  // signalling, negative, every other bit set
      "\x00\x00\x80\x7F"sv,  // infinity
      "\x00\x00\x80\xFF"sv,
      "\x00\x00\x00\x80"sv,  // minus nothing
      "\x01\x00\x00\x00"sv,  // the smallest there is
      "\xFF\xFF\x7F\x7F"sv,  // the largest
      "\xFF\xFF\x7F\xFF"sv,
  };
  for (const std::string_view bits : floats) {
    std::string record(300, '\0');
    for (std::size_t offset = 262; offset < 290; offset += 4) record.replace(offset, bits.size(), bits);
    EXPECT_EQ(ThereAndBack(record), record);
  }
}

TEST(CartRecordFormatTest, DoublesThatAreNoNumbersKeepTheirBits) {
  const std::string_view doubles[] = {
      "\x00\x00\x00\x00\x00\x00\xF8\x7F"sv,  // quiet
      "\x01\x02\x03\x04\x05\x06\xF8\xFF"sv,  // quiet, negative, with a payload
      "\x01\x00\x00\x00\x00\x00\xF0\x7F"sv,  // signalling
      "\xFF\xFF\xFF\xFF\xFF\xFF\xF7\xFF"sv,  // signalling, negative, every other bit set
      "\x00\x00\x00\x00\x00\x00\xF0\x7F"sv,  // infinity
      "\x00\x00\x00\x00\x00\x00\xF0\xFF"sv,
      "\x01\x00\x00\x00\x00\x00\x00\x80"sv,  // the smallest there is, negative
      "\xFF\xFF\xFF\xFF\xFF\xFF\xEF\x7F"sv,  // the largest
  };
  for (const std::string_view bits : doubles) {
    std::string record(300, '\0');
    for (std::size_t offset = 212; offset < 252; offset += 8) record.replace(offset, bits.size(), bits);
    EXPECT_EQ(ThereAndBack(record), record);
  }
}

TEST(CartRecordFormatTest, TimesAreTakenForWhatTheyAre) {
  std::string record(300, '\0');
  record.replace(274, 4, "\xFF\xFF\x7F\xFF"sv);
  record.replace(278, 4, "\x00\x00\x80\xFF"sv);
  record.replace(282, 4, "\x00\x00\xC0\x7F"sv);
  const CartInfo info = Unpacked(record);
  EXPECT_EQ(info.AudioLength, std::numeric_limits<float>::lowest());
  EXPECT_EQ(info.PlayStart, -std::numeric_limits<float>::infinity());
  EXPECT_NE(info.PlayEnd, info.PlayEnd);
}

// Lengths at the edges of fields and in the middle of them, numbers included.
TEST(CartRecordFormatTest, WhatIsMissingAtTheEndKeepsItsValue) {
  const std::string held(300, 'h');
  const std::string read(300, 'r');
  for (const std::size_t length : {0U,   1U,   19U,  20U,  61U,  63U,  64U,  69U,  70U,  211U,
                                   215U, 252U, 261U, 275U, 277U, 278U, 289U, 290U, 299U, 300U}) {
    CartInfo info = Unpacked(held);
    UnpackCartInfo(std::string_view(read).substr(0, length), info);
    EXPECT_EQ(Packed(info), read.substr(0, length) + held.substr(length)) << length;
  }
}

TEST(CartRecordFormatTest, WhatLiesBehindTheRecordIsNotLookedAt) {
  const std::string record(300, 'r');
  EXPECT_EQ(ThereAndBack(record + "more"), record);
}

}  // namespace
}  // namespace vorda
