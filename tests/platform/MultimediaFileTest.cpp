// Wave files as they are written: every byte, and what a failure leaves.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <cerrno>
#include <string>

#include "platform/FileFault.h"
#include "platform/Files.h"
#include "platform/MultimediaFile.h"
#include "support/TempDirectory.h"
#include "support/WaveBytes.h"

namespace vorda::platform {
namespace {

constexpr std::uint32_t kCreate = MMIO_CREATE | MMIO_WRITE;
constexpr std::int32_t kInvalidParameter = 11;
constexpr test::WaveHeader kStereo{1, 2, 22050, 88200, 4, 16};

class MultimediaFileTest : public ::testing::Test {
 protected:
  ~MultimediaFileTest() override {
    if (handle_ != 0) mmioClose(handle_, 0);
  }

  std::string Bytes() const { return test::ReadWholeFile(path_); }
  std::int32_t Write(const std::string& bytes) {
    return mmioWrite(handle_, bytes.data(), static_cast<std::int32_t>(bytes.size()));
  }
  std::uint64_t Place() const {
    MMIOINFO info;
    EXPECT_EQ(mmioGetInfo(handle_, &info, 0), 0);
    return info.lDiskOffset;
  }
  // A wave file up to where its samples begin.
  void Begin() {
    handle_ = mmioOpenA(path_, nullptr, kCreate);
    ASSERT_NE(handle_, 0);
    ASSERT_EQ(mmioSeek(handle_, 0, 0), 0);
    riff_.fccType = mmioStringToFOURCCA("WAVE");
    ASSERT_EQ(mmioCreateChunk(handle_, &riff_, MMIO_CREATERIFF), 0);
    MMCKINFO format;
    format.ckid = mmioStringToFOURCCA("fmt ");
    format.cksize = 16;
    ASSERT_EQ(mmioCreateChunk(handle_, &format, 0), 0);
    ASSERT_EQ(Write(test::FormatBytes(kStereo)), 16);
    ASSERT_EQ(mmioAscend(handle_, &format, 0), 0);
    data_.ckid = mmioStringToFOURCCA("data");
    ASSERT_EQ(mmioCreateChunk(handle_, &data_, 0), 0);
  }
  void End() {
    EXPECT_EQ(mmioAscend(handle_, &data_, 0), 0);
    EXPECT_EQ(mmioAscend(handle_, &riff_, 0), 0);
    EXPECT_EQ(mmioFlush(handle_, 0), 0);
    EXPECT_EQ(mmioClose(handle_, 0), 0);
    handle_ = 0;
  }
  static std::string Open(const std::string& samples) {
    return test::BareChunk("RIFF", 0, "WAVE") + test::FormatChunk(kStereo) +
           test::BareChunk("data", 0, samples);
  }
  static std::string Closed(const std::string& samples) {
    return test::Riff(test::FormatChunk(kStereo) + test::Chunk("data", samples));
  }

  test::TempDirectory directory_;
  const std::string path_ = directory_ / "cut.wav";
  MmioHandle handle_ = 0;
  MMCKINFO riff_;
  MMCKINFO data_;
};

TEST_F(MultimediaFileTest, EveryByteOfAClosedFile) {
  Begin();
  EXPECT_EQ(Write("\x01\x02\x03\x04"), 4);
  End();
  using namespace std::string_view_literals;
  EXPECT_EQ(Bytes(),
            "RIFF\x28\0\0\0WAVEfmt \x10\0\0\0"
            "\x01\0\x02\0\x22\x56\0\0\x88\x58\x01\0\x04\0\x10\0"
            "data\x04\0\0\0\x01\x02\x03\x04"sv);
}

TEST_F(MultimediaFileTest, SizesAreZeroUntilAscended) {
  Begin();
  EXPECT_EQ(Bytes(), Open(""));
  Write("abcd");
  EXPECT_EQ(Bytes(), Open("abcd"));
  mmioAscend(handle_, &data_, 0);
  EXPECT_EQ(test::Number(4, 4), Bytes().substr(40, 4));
  EXPECT_EQ(test::Number(0, 4), Bytes().substr(4, 4));
  mmioAscend(handle_, &riff_, 0);
  EXPECT_EQ(Bytes(), Closed("abcd"));
}

TEST_F(MultimediaFileTest, OddDataIsPaddedAndItsSizeIsNot) {
  Begin();
  Write("abc");
  End();
  EXPECT_EQ(Bytes(), Closed("abc"));
  EXPECT_EQ(Bytes().size(), 44U + 4);
}

TEST_F(MultimediaFileTest, NoSamplesMakeAFileOf44Bytes) {
  Begin();
  End();
  EXPECT_EQ(Bytes(), Closed(""));
  EXPECT_EQ(Bytes().size(), 44U);
}

TEST_F(MultimediaFileTest, EachBlockIsInTheFileAtOnce) {
  Begin();
  std::string written;
  for (const std::string block : {"one", "two and", "three"}) {
    Write(block);
    written += block;
    EXPECT_EQ(Bytes(), Open(written));
  }
}

TEST_F(MultimediaFileTest, InformationTellsThePlace) {
  Begin();
  EXPECT_EQ(Place(), 44U);
  Write("abc");
  EXPECT_EQ(Place(), 47U);
}

TEST_F(MultimediaFileTest, BlockThatFailsIsLostWholeAndNothingShifts) {
  Begin();
  Write("first.");
  {
    const ScopedFileFault fault(FileOperation::Write, ENOSPC, 1, 1, "cut.wav");
    EXPECT_EQ(Write("second"), -1);
  }
  EXPECT_EQ(Place(), 50U);
  EXPECT_EQ(Write("third."), 6);
  End();
  EXPECT_EQ(Bytes(), Closed("first.third."));
}

// A disk that takes the first part of a block and no more.
TEST_F(MultimediaFileTest, BlockThatTheDiskTakesHalfLeavesNothingBehindTheEnd) {
  Begin();
  Write("first.");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  auto* const handler = ::signal(SIGXFSZ, SIG_IGN);
  const rlimit full{53, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
  EXPECT_EQ(Write("second"), -1);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  ::signal(SIGXFSZ, handler);
  EXPECT_EQ(Bytes(), Open("first."));
  EXPECT_EQ(Write("third."), 6);
  End();
  EXPECT_EQ(Bytes(), Closed("first.third."));
}

TEST_F(MultimediaFileTest, SizeThatCouldNotBeWrittenIsWrittenByTheNextAscent) {
  Begin();
  Write("abcd");
  {
    const ScopedFileFault fault(FileOperation::Write, EIO, 1, 1, "cut.wav");
    EXPECT_EQ(mmioAscend(handle_, &data_, 0), MMIOERR_CANNOTWRITE);
  }
  EXPECT_EQ(Bytes(), Open("abcd"));
  EXPECT_EQ(Place(), 48U);
  End();
  EXPECT_EQ(Bytes(), Closed("abcd"));
}

TEST_F(MultimediaFileTest, PadThatCouldNotBeWrittenIsAFailure) {
  Begin();
  Write("abc");
  {
    const ScopedFileFault fault(FileOperation::Write, EIO, 1, 1, "cut.wav");
    EXPECT_EQ(mmioAscend(handle_, &data_, 0), MMIOERR_CANNOTWRITE);
  }
  End();
  EXPECT_EQ(Bytes(), Closed("abc"));
}

TEST_F(MultimediaFileTest, ChunkThatCouldNotBeWrittenIsAFailure) {
  handle_ = mmioOpenA(path_, nullptr, kCreate);
  const ScopedFileFault fault(FileOperation::Write, EIO, 1, 1, "cut.wav");
  EXPECT_EQ(mmioCreateChunk(handle_, &riff_, MMIO_CREATERIFF), MMIOERR_CANNOTWRITE);
}

TEST_F(MultimediaFileTest, NullHandleIsAnInvalidParameter) {
  MMIOINFO info;
  EXPECT_EQ(mmioSeek(0, 0, 0), -1);
  EXPECT_EQ(mmioCreateChunk(0, &riff_, MMIO_CREATERIFF), kInvalidParameter);
  EXPECT_EQ(mmioWrite(0, "x", 1), -1);
  EXPECT_EQ(mmioAscend(0, &riff_, 0), kInvalidParameter);
  EXPECT_EQ(mmioGetInfo(0, &info, 0), kInvalidParameter);
  EXPECT_EQ(mmioFlush(0, 0), kInvalidParameter);
  EXPECT_EQ(mmioClose(0, 0), kInvalidParameter);
}

TEST_F(MultimediaFileTest, ClosedHandleIsOneThatWasNeverOpened) {
  Begin();
  const MmioHandle handle = handle_;
  End();
  EXPECT_EQ(mmioWrite(handle, "x", 1), -1);
  EXPECT_EQ(mmioClose(handle, 0), kInvalidParameter);
  EXPECT_EQ(Bytes(), Closed(""));
}

TEST_F(MultimediaFileTest, SecondAscentOutOfAChunkFailsAndChangesNothing) {
  Begin();
  Write("abcd");
  EXPECT_EQ(mmioAscend(handle_, &data_, 0), 0);
  EXPECT_EQ(mmioAscend(handle_, &data_, 0), kInvalidParameter);
  EXPECT_EQ(mmioAscend(handle_, &riff_, 0), 0);
  EXPECT_EQ(mmioAscend(handle_, &riff_, 0), kInvalidParameter);
  EXPECT_EQ(Bytes(), Closed("abcd"));
}

TEST_F(MultimediaFileTest, ChunkThatWasNeverMadeCannotBeAscended) {
  Begin();
  MMCKINFO never;
  EXPECT_EQ(mmioAscend(handle_, &never, 0), kInvalidParameter);
}

TEST_F(MultimediaFileTest, FileThatIsThereIsEmptiedFirst) {
  test::WriteWholeFile(path_, std::string(1000, 'x'));
  Begin();
  EXPECT_EQ(Bytes(), Open(""));
}

TEST_F(MultimediaFileTest, MissingDirectoryGivesNoHandle) {
  EXPECT_EQ(mmioOpenA(directory_ / "none/cut.wav", nullptr, kCreate), 0);
  EXPECT_EQ(mmioOpenA("", nullptr, kCreate), 0);
  EXPECT_EQ(mmioOpenA("Q:\\cut.wav", nullptr, kCreate), 0);
  EXPECT_EQ(mmioOpenA(directory_.path(), nullptr, kCreate), 0);
  const ScopedFileFault fault(FileOperation::Open, EMFILE);
  EXPECT_EQ(mmioOpenA(path_, nullptr, kCreate), 0);
}

TEST_F(MultimediaFileTest, TwoFilesDoNotMix) {
  Begin();
  const std::string other = directory_ / "other.wav";
  const MmioHandle second = mmioOpenA(other, nullptr, kCreate);
  EXPECT_NE(second, handle_);
  EXPECT_EQ(mmioWrite(second, "other", 5), 5);
  Write("abcd");
  EXPECT_EQ(mmioClose(second, 0), 0);
  End();
  EXPECT_EQ(Bytes(), Closed("abcd"));
  EXPECT_EQ(test::ReadWholeFile(other), "other");
}

TEST_F(MultimediaFileTest, HandleIsNoOtherOpenFilesNumber) {
  const int number = FreeFileNumber();
  Begin();
  EXPECT_NE(handle_, number);
  EXPECT_NE(FreeFileNumber(), handle_);
}

TEST(FourCharacterCodeTest, FirstCharacterIsTheLowByteAndBlanksFillUp) {
  EXPECT_EQ(mmioStringToFOURCCA("WAVE"), 0x45564157U);
  EXPECT_EQ(mmioStringToFOURCCA("fmt"), 0x20746D66U);
  EXPECT_EQ(mmioStringToFOURCCA("a\xFF longer"), 0x6C20FF61U);
}

}  // namespace
}  // namespace vorda::platform
