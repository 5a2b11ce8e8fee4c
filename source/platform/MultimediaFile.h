// Chunked multimedia files, written without a buffer: what was written is in the file at once.
//
// Stands in for the multimedia file functions, with their names, flags and results, as far as a wave file
// takes them. Handles are file numbers, 0 = none. Results other than a handle or a count are 0 or an error's
// number. For the interface thread only.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorda::platform {

using MmioHandle = std::int32_t;

// Names as the platform has them.
struct MMCKINFO {
  std::uint32_t ckid = 0;
  std::uint32_t cksize = 0;  // bytes behind the chunk's own header
  std::uint32_t fccType = 0;
  std::uint32_t dwDataOffset = 0;  // where those begin
  std::uint32_t dwFlags = 0;
};
struct MMIOINFO {
  std::uint32_t dwFlags = 0;
  std::uint64_t lDiskOffset = 0;  // the present place in the file
};

inline constexpr std::uint32_t MMIO_WRITE = 0x1;
inline constexpr std::uint32_t MMIO_CREATE = 0x1000;
inline constexpr std::uint32_t MMIO_DIRTY = 0x10000000;
inline constexpr std::uint32_t MMIO_CREATERIFF = 0x20;

inline constexpr std::int32_t MMIOERR_CANNOTWRITE = 262;
inline constexpr std::int32_t MMIOERR_CANNOTSEEK = 263;

// Four characters as a chunk's name, filled up with blanks.
std::uint32_t mmioStringToFOURCCA(std::string_view text);

// Makes or empties a file (configured path) for writing. Result: the handle, 0 on failure.
MmioHandle mmioOpenA(const std::string& path, MMIOINFO* info, std::uint32_t flags);

// Goes to `offset` from the front (`origin` 0). Result: the place, -1 on failure.
std::int64_t mmioSeek(MmioHandle handle, std::int64_t offset, int origin);

// Writes a chunk's header at the present place: a RIFF chunk of type `fccType` with the flag MMIO_CREATERIFF,
// otherwise one named `ckid`. Its size is put right by mmioAscend.
std::int32_t mmioCreateChunk(MmioHandle handle, MMCKINFO* chunk, std::uint32_t flags);

// Writes bytes at the present place. Result: their count; -1 on failure, and the place is what it was before.
std::int32_t mmioWrite(MmioHandle handle, const char* bytes, std::int32_t length);

// Goes to the chunk's end, fills it up to an even length, and puts its size right.
std::int32_t mmioAscend(MmioHandle handle, MMCKINFO* chunk, std::uint32_t flags);

std::int32_t mmioGetInfo(MmioHandle handle, MMIOINFO* info, std::uint32_t flags);
std::int32_t mmioFlush(MmioHandle handle, std::uint32_t flags);
std::int32_t mmioClose(MmioHandle handle, std::uint32_t flags);

}  // namespace vorda::platform
