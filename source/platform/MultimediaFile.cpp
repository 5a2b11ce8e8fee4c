#include "platform/MultimediaFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <map>
#include <utility>

#include "platform/Descriptor.h"
#include "platform/Files.h"
#include "platform/LittleEndian.h"
#include "platform/NativePath.h"
#include "platform/OpenFiles.h"
#include "platform/WaveErrors.h"

namespace vorda::platform {
namespace {

constexpr std::uint32_t kChunkHeader = 8;

// The file's present place is kept here and not asked of the system: one call less for each block.
struct MultimediaFile {
  Descriptor file;
  std::string path;
  std::uint64_t place = 0;
  std::uint64_t end = 0;  // of what was written whole
};

std::map<MmioHandle, MultimediaFile>& Files() {
  static std::map<MmioHandle, MultimediaFile> files;
  return files;
}

MultimediaFile* Find(MmioHandle handle) {
  const auto found = Files().find(handle);
  return found == Files().end() ? nullptr : &found->second;
}

std::int32_t Go(MultimediaFile& file, std::uint64_t place) {
  if (::lseek(file.file.number(), static_cast<off_t>(place), SEEK_SET) < 0) return MMIOERR_CANNOTSEEK;
  file.place = place;
  return 0;
}

// All of the bytes or none: half a block would shift every sample behind it, or lie behind the last one.
std::int32_t Put(MultimediaFile& file, std::string_view bytes) {
  if (WriteAll(file.file, bytes, file.path) != 0) {
    // Should this fail as well, what is there is written over by the next block.
    [[maybe_unused]] const int cut = ::ftruncate(file.file.number(), static_cast<off_t>(file.end));
    Go(file, file.place);
    return MMIOERR_CANNOTWRITE;
  }
  file.place += bytes.size();
  file.end = std::max(file.end, file.place);
  return 0;
}

std::int32_t PutNumber(MultimediaFile& file, std::uint32_t number) {
  std::string bytes;
  AppendLittleEndian(bytes, number, 4);
  return Put(file, bytes);
}

// A size beyond 32 bits reads as the largest there is: players then take what the file holds.
std::uint32_t SizeField(std::uint64_t size) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(size, std::numeric_limits<std::uint32_t>::max()));
}

std::int32_t PutSize(MultimediaFile& file, const MMCKINFO& chunk, std::uint32_t size) {
  const std::uint64_t end = file.place;
  if (const std::int32_t error = Go(file, chunk.dwDataOffset - 4); error != 0) return error;
  const std::int32_t error = PutNumber(file, size);
  const std::int32_t back = Go(file, end);
  return error != 0 ? error : back;
}

}  // namespace

std::uint32_t mmioStringToFOURCCA(std::string_view text) {
  std::uint32_t code = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const char c = i < text.size() ? text[i] : ' ';
    code |= static_cast<std::uint32_t>(static_cast<unsigned char>(c)) << (8 * i);
  }
  return code;
}

MmioHandle mmioOpenA(const std::string& path, MMIOINFO*, std::uint32_t) {
  const std::string native = NativePath(path);
  if (native.empty()) return 0;
  Descriptor file = OpenFile(native, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file.isOpen()) {
    FailedWithErrno(errno);
    return 0;
  }
  const MmioHandle handle = FreeFileNumber();
  Files()[handle] = {std::move(file), native};
  return handle;
}

std::int64_t mmioSeek(MmioHandle handle, std::int64_t offset, int origin) {
  MultimediaFile* const file = Find(handle);
  if (file == nullptr || offset < 0 || origin != SEEK_SET) return -1;
  return Go(*file, static_cast<std::uint64_t>(offset)) == 0 ? offset : -1;
}

std::int32_t mmioCreateChunk(MmioHandle handle, MMCKINFO* chunk, std::uint32_t flags) {
  MultimediaFile* const file = Find(handle);
  if (file == nullptr) return kMmsysInvalidParameter;
  const bool riff = (flags & MMIO_CREATERIFF) != 0;
  if (riff) chunk->ckid = mmioStringToFOURCCA("RIFF");
  chunk->dwDataOffset = SizeField(file->place + kChunkHeader);
  chunk->dwFlags = MMIO_DIRTY;
  if (const std::int32_t error = PutNumber(*file, chunk->ckid); error != 0) return error;
  if (const std::int32_t error = PutNumber(*file, chunk->cksize); error != 0) return error;
  return riff ? PutNumber(*file, chunk->fccType) : 0;
}

std::int32_t mmioWrite(MmioHandle handle, const char* bytes, std::int32_t length) {
  MultimediaFile* const file = Find(handle);
  if (file == nullptr || length < 0) return -1;
  return Put(*file, {bytes, static_cast<std::size_t>(length)}) == 0 ? length : -1;
}

std::int32_t mmioAscend(MmioHandle handle, MMCKINFO* chunk, std::uint32_t) {
  MultimediaFile* const file = Find(handle);
  if (file == nullptr || (chunk->dwFlags & MMIO_DIRTY) == 0) return kMmsysInvalidParameter;
  const std::uint32_t size = SizeField(file->place - chunk->dwDataOffset);
  if (file->place % 2 != 0) {
    if (const std::int32_t error = Put(*file, std::string_view("\0", 1)); error != 0) return error;
  }
  if (size != chunk->cksize) {
    if (const std::int32_t error = PutSize(*file, *chunk, size); error != 0) return error;
  }
  chunk->cksize = size;
  chunk->dwFlags &= ~MMIO_DIRTY;
  return 0;
}

std::int32_t mmioGetInfo(MmioHandle handle, MMIOINFO* info, std::uint32_t) {
  const MultimediaFile* const file = Find(handle);
  if (file == nullptr) return kMmsysInvalidParameter;
  info->dwFlags = MMIO_WRITE | MMIO_CREATE;
  info->lDiskOffset = file->place;
  return 0;
}

// Nothing is held back.
std::int32_t mmioFlush(MmioHandle handle, std::uint32_t) {
  return Find(handle) == nullptr ? kMmsysInvalidParameter : 0;
}

std::int32_t mmioClose(MmioHandle handle, std::uint32_t) {
  MultimediaFile* const file = Find(handle);
  if (file == nullptr) return kMmsysInvalidParameter;
  const bool closed = file->file.Close();
  Files().erase(handle);
  return closed ? 0 : MMIOERR_CANNOTWRITE;
}

}  // namespace vorda::platform
