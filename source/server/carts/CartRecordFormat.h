// The cart record: 300 bytes that every program of the wall reads and writes. docs/formats/cart-records.md
// tells what each field means.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vorda {

// Texts are ANSI, padded with blanks, without terminator or length. The reserved fields belong to the playout
// product: they are carried, never read.
struct CartInfo {
  std::array<char, 20> Title1{};
  std::array<char, 20> Title2{};
  std::array<char, 20> Title3{};
  std::int32_t BackColor = 0;  // 0x00BBGGRR, or 0x80000000 and a system colour's index
  std::int32_t ForeColor = 0;
  std::int16_t SmallFlag = 0;
  std::array<char, 142> ReservedText{};
  std::array<double, 5> ReservedValues{};
  std::array<std::int16_t, 5> ReservedNumbers{};
  // Seconds from the start of the audio.
  float MarkStart = 0;
  float MarkEnd = 0;
  float CountdownMark = 0;
  float AudioLength = 0;  // exactly -1 = an empty cart
  float PlayStart = 0;
  float PlayEnd = 0;
  float PlayLength = 0;
  std::array<char, 10> ReservedTail{};
};

inline constexpr std::size_t kCartRecordSize = 300;
using CartRecord = std::array<char, kCartRecordSize>;

// The bytes of a record: little-endian, without padding.
CartRecord PackCartInfo(const CartInfo& info);

// Takes the record over that `bytes` begin. What lies behind their end keeps its value in `info`.
void UnpackCartInfo(std::span<const char> bytes, CartInfo& info);

}  // namespace vorda
