// Wave files put together byte by byte, whole ones and those that careless writers leave.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorda::test {

// A number, the low byte first, with zeros behind it where it is to be wider than any.
inline std::string Number(std::uint64_t number, int width) {
  std::string bytes;
  for (; width > 0; --width, number >>= 8) bytes += static_cast<char>(number);
  return bytes;
}

// A chunk that says it has `size` bytes and has those of `body`, without a pad.
inline std::string BareChunk(std::string_view id, std::uint32_t size, std::string_view body) {
  return std::string(id).append(Number(size, 4)).append(body);
}

inline std::string Chunk(std::string_view id, std::string_view body) {
  return BareChunk(id, static_cast<std::uint32_t>(body.size()), body).append(body.size() % 2, '\0');
}

struct WaveHeader {
  std::uint16_t tag = 1;
  std::uint16_t channels = 1;
  std::uint32_t rate = 8000;
  std::uint32_t bytesPerSecond = 16000;
  std::uint16_t blockAlign = 2;
  std::uint16_t bits = 16;
};

// The 16 bytes that every format chunk begins with.
inline std::string FormatBytes(const WaveHeader& header) {
  return Number(header.tag, 2) + Number(header.channels, 2) + Number(header.rate, 4) +
         Number(header.bytesPerSecond, 4) + Number(header.blockAlign, 2) + Number(header.bits, 2);
}

// The 40 bytes of an extensible one, whose sub-format begins with `coding`.
inline std::string ExtensibleBytes(WaveHeader header, std::uint16_t coding) {
  using namespace std::string_view_literals;
  header.tag = 0xFFFE;
  return FormatBytes(header) + Number(22, 2) + Number(header.bits, 2) + Number(0, 4) + Number(coding, 2) +
         std::string("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71"sv);
}

inline std::string Riff(std::string_view chunks, std::string_view id = "RIFF") {
  return BareChunk(id, static_cast<std::uint32_t>(chunks.size() + 4), "WAVE").append(chunks);
}

inline std::string FormatChunk(const WaveHeader& header = {}) {
  return Chunk("fmt ", FormatBytes(header));
}

// Silence of so many bytes.
inline std::string Sound(std::size_t bytes) {
  return std::string(bytes, '\0');
}

// A plain wave: format and data.
inline std::string Wave(const WaveHeader& header, std::size_t bytes) {
  return Riff(FormatChunk(header) + Chunk("data", Sound(bytes)));
}

inline constexpr WaveHeader kCdMono{1, 1, 44100, 88200, 2, 16};
inline constexpr WaveHeader kAdpcm{2, 1, 22050, 11155, 512, 4};
inline constexpr WaveHeader kGsm{0x31, 1, 8000, 1625, 65, 0};
inline constexpr WaveHeader kMp2{0x50, 2, 48000, 32000, 768, 0};
inline constexpr WaveHeader kMp3{0x55, 2, 44100, 16000, 1, 0};

}  // namespace vorda::test
