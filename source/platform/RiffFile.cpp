#include "platform/RiffFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <string_view>

#include "platform/Descriptor.h"
#include "platform/FileFault.h"

namespace vorda::platform {

namespace {

constexpr std::size_t kIdBytes = 4;
constexpr std::size_t kFileHeaderBytes = 12;
constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::size_t kShortestFormat = 14;
constexpr std::size_t kExtensibleFormat = 40;
constexpr std::size_t kSubFormatAt = 24;
// Real files have some dozens. More is noise that was taken for chunks.
constexpr int kMostChunks = 1000;
// The size of a chunk whose writer didn't know it, or keeps it in the ds64 chunk.
constexpr std::uint32_t kSizeElsewhere = 0xFFFFFFFF;

enum Coding : std::uint16_t { kPcm = 1, kFloat = 3, kALaw = 6, kMuLaw = 7, kExtensible = 0xFFFE };

// What follows the tag in a sub-format that stands for a tag.
constexpr std::string_view kTagSubFormat("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14);

// Chunks that are met in wave files: what tells a chunk from the middle of one.
constexpr std::string_view kKnownChunks[] = {"fmt ", "data", "fact", "LIST", "JUNK", "bext", "cue ",
                                             "PEAK", "PAD ", "id3 ", "iXML", "cart", "smpl", "inst",
                                             "levl", "mext", "FLLR", "DISP", "plst", "_PMX"};

// A number, the low byte first; bytes behind the end count as 0.
std::uint64_t NumberAt(std::string_view bytes, std::size_t offset, std::size_t width) {
  std::uint64_t number = 0;
  for (std::size_t i = width; i-- > 0;) {
    const std::size_t at = offset + i;
    number = number << 8U | (at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U);
  }
  return number;
}

std::uint16_t ShortAt(std::string_view bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(NumberAt(bytes, offset, 2));
}

std::uint32_t LongAt(std::string_view bytes, std::size_t offset) {
  return static_cast<std::uint32_t>(NumberAt(bytes, offset, 4));
}

bool IsKnownChunk(std::string_view id) {
  return std::find(std::begin(kKnownChunks), std::end(kKnownChunks), id) != std::end(kKnownChunks);
}

RiffFormat FormatOf(std::string_view chunk) {
  RiffFormat format;
  format.wFormatTag = ShortAt(chunk, 0);
  format.nChannels = ShortAt(chunk, 2);
  format.nSamplesPerSec = LongAt(chunk, 4);
  format.nAvgBytesPerSec = LongAt(chunk, 8);
  format.nBlockAlign = ShortAt(chunk, 12);
  format.wBitsPerSample = ShortAt(chunk, 14);
  format.coding = format.wFormatTag;
  if (format.wFormatTag == kExtensible) {
    const bool isTag =
        chunk.size() >= kExtensibleFormat && chunk.substr(kSubFormatAt + 2).starts_with(kTagSubFormat);
    format.coding = isTag ? ShortAt(chunk, kSubFormatAt) : std::uint16_t{0};
  }
  return format;
}

// Formats in which each block is one sample of each channel.
bool IsPlainSamples(const RiffFormat& format) {
  switch (format.coding) {
    case kPcm:
    case kFloat:
    case kALaw:
    case kMuLaw:
      return true;
    default:
      return false;
  }
}

// `count` things at `perSecond`, in whole milliseconds; 0 when nothing comes per second.
std::uint64_t Milliseconds(std::uint64_t count, std::uint32_t perSecond) {
  if (perSecond == 0) return 0;
  return count / perSecond * 1000 + count % perSecond * 1000 / perSecond;
}

// The chunks of one file, from its front on, until all that matters has been seen.
class RiffReader {
 public:
  RiffReader(int file, const std::string& path, std::uint64_t size) : file_(file), path_(path), size_(size) {}

  // As ReadRiffWave.
  int Read(RiffWave& wave);

 private:
  std::string At(std::uint64_t offset, std::uint64_t length);
  bool SeenAll() const;
  void TakeChunk(std::string_view id, std::uint64_t begin, std::uint64_t size);
  std::uint64_t NextChunk(std::uint64_t end, bool odd);
  bool TellsSampleCount() const;
  std::uint64_t Length() const;

  int file_;
  const std::string& path_;
  std::uint64_t size_;
  int systemError_ = 0;
  std::optional<RiffFormat> format_;
  std::optional<std::uint32_t> sampleCount_;  // the fact chunk's
  std::uint64_t longDataSize_ = kSizeElsewhere;
  std::uint64_t dataBegin_ = 0;
  std::uint64_t dataBytes_ = 0;
  bool cutShort_ = false;
};

// The bytes there, fewer at the file's end.
std::string RiffReader::At(std::uint64_t offset, std::uint64_t length) {
  std::string bytes(offset < size_ ? std::min(length, size_ - offset) : 0, '\0');
  std::size_t done = 0;
  systemError_ = systemError_ != 0 ? systemError_ : FileFault(FileOperation::Read, path_);
  while (done < bytes.size() && systemError_ == 0) {
    const ssize_t count =
        ::pread(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) systemError_ = errno;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return bytes;
}

bool RiffReader::SeenAll() const {
  return format_ && dataBegin_ > 0 && (IsPlainSamples(*format_) || sampleCount_);
}

int RiffReader::Read(RiffWave& wave) {
  const std::string header = At(0, kFileHeaderBytes);
  const std::string kind = header.substr(0, kIdBytes);
  const bool isWave = (kind == "RIFF" || kind == "RF64" || kind == "BW64") && header.ends_with("WAVE");
  std::uint64_t position = kFileHeaderBytes;
  for (int chunks = 0; isWave && chunks < kMostChunks && !SeenAll(); ++chunks) {
    const std::string chunk = At(position, kChunkHeaderBytes);
    if (chunk.size() < kChunkHeaderBytes) break;
    const std::string id = chunk.substr(0, kIdBytes);
    std::uint64_t size = LongAt(chunk, kIdBytes);
    if (id == "data" && size == kSizeElsewhere) size = longDataSize_;
    position += kChunkHeaderBytes;
    TakeChunk(id, position, size);
    position = NextChunk(position + std::min(size, size_ - position), size % 2 != 0);
  }
  if (systemError_ != 0) return systemError_;
  if (!format_) return kNotAWave;
  wave = {*format_, dataBegin_, dataBytes_, Length()};
  return 0;
}

// The first of each kind counts. No more is read of a chunk than is used, whatever its size says.
void RiffReader::TakeChunk(std::string_view id, std::uint64_t begin, std::uint64_t size) {
  if (id == "fmt " && !format_) {
    const std::string chunk = At(begin, std::min<std::uint64_t>(size, kExtensibleFormat));
    if (chunk.size() >= kShortestFormat) format_ = FormatOf(chunk);
  } else if (id == "fact" && !sampleCount_ && size >= 4) {
    sampleCount_ = LongAt(At(begin, 4), 0);
  } else if (id == "ds64" && size >= 16) {
    longDataSize_ = NumberAt(At(begin, 16), 8, 8);
  } else if (id == "data" && dataBegin_ == 0) {
    dataBegin_ = begin;
    dataBytes_ = std::min(size, size_ - begin);
    cutShort_ = dataBytes_ < size;
  }
}

// Where the chunk behind one that ends at `end` begins. Chunks are padded to even; some writers forget.
std::uint64_t RiffReader::NextChunk(std::uint64_t end, bool odd) {
  return odd && !IsKnownChunk(At(end, kIdBytes)) ? end + 1 : end;
}

// Whether the fact chunk can be believed: writers leave it at 0 or at its highest value, count bytes, or put
// in a length that they then didn't reach. A bit rate that changes keeps within some multiple of its average.
bool RiffReader::TellsSampleCount() const {
  constexpr double kMostTimes = 4;
  constexpr double kSlack = 1;  // seconds
  const std::uint32_t samples = sampleCount_.value_or(0);
  if (samples == 0 || samples == kSizeElsewhere || cutShort_) return false;
  if (format_->nAvgBytesPerSec == 0) return true;
  const double told = static_cast<double>(samples) / format_->nSamplesPerSec;
  const double likely = static_cast<double>(dataBytes_) / format_->nAvgBytesPerSec;
  return told <= likely * kMostTimes + kSlack && likely <= told * kMostTimes + kSlack;
}

std::uint64_t RiffReader::Length() const {
  const RiffFormat& format = *format_;
  if (dataBytes_ == 0 || format.nChannels == 0 || format.nSamplesPerSec == 0) return 0;
  if (!IsPlainSamples(format)) {
    return TellsSampleCount() ? Milliseconds(*sampleCount_, format.nSamplesPerSec)
                              : Milliseconds(dataBytes_, format.nAvgBytesPerSec);
  }
  return format.nBlockAlign == 0 ? 0 : Milliseconds(dataBytes_ / format.nBlockAlign, format.nSamplesPerSec);
}

}  // namespace

int ReadRiffWave(const std::string& path, RiffWave& wave) {
  wave = {};
  const Descriptor file = OpenFile(path, O_RDONLY | O_NONBLOCK);
  if (!file.isOpen()) return errno;
  if (const int fault = FileFault(FileOperation::Stat, path); fault != 0) return fault;
  struct stat status {};
  if (::fstat(file.number(), &status) != 0) return errno;
  if (!S_ISREG(status.st_mode)) return kNotAWave;
  return RiffReader(file.number(), path, static_cast<std::uint64_t>(status.st_size)).Read(wave);
}

}  // namespace vorda::platform
