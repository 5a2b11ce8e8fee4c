#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>

#include "platform/FileFault.h"
#include "platform/RunTimeError.h"
#include "platform/SmallFiles.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

using test::WriteWholeFile;

constexpr int kEver = std::numeric_limits<int>::max();

class SmallFileTest : public ::testing::Test {
 protected:
  struct Start {
    int error;
    std::string bytes;
    bool operator==(const Start&) const = default;
  };
  static Start Read(const std::string& path, std::size_t most = 5) {
    std::string bytes(most, '?');
    std::size_t count = 77;
    const int error = ReadFileStart(path, bytes, count);
    return {error, bytes.substr(0, count)};
  }
  std::string FirstLineOf(std::string_view bytes) {
    WriteWholeFile(path_, bytes);
    return ReadFirstLine(path_);
  }

  test::TempDirectory directory_;
  const std::string path_ = directory_ / "ORV00005.FLK";
};

TEST_F(SmallFileTest, AsMuchAsThereIs) {
  WriteWholeFile(path_, "0123456789");
  EXPECT_EQ(Read(path_, 5), (Start{0, "01234"}));
  EXPECT_EQ(Read(path_, 20), (Start{0, "0123456789"}));
  EXPECT_EQ(Read(directory_ / "orv00005.flk", 3), (Start{0, "012"}));
}

TEST_F(SmallFileTest, NothingToReadIsNoError) {
  WriteWholeFile(directory_ / "empty", "");
  for (const std::string& path : {directory_ / "missing", directory_ / "none/missing", directory_ / "empty",
                                  directory_.path(), std::string("\\x"), std::string("Q:\\x"), std::string()})
    EXPECT_EQ(Read(path), (Start{0, ""})) << path;
}

TEST_F(SmallFileTest, PipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(Read(path_), (Start{0, ""}));
}

TEST_F(SmallFileTest, OneThatCannotBeReadIsAnError) {
  WriteWholeFile(path_, "0123456789");
  {
    const ScopedFileFault refused(FileOperation::Open, EACCES, 1, kEver);
    EXPECT_EQ(Read(path_), (Start{kPermissionDenied, ""}));
    EXPECT_EQ(ReadFirstLine(path_), "");
  }
  const ScopedFileFault broken(FileOperation::Read, EIO);
  EXPECT_EQ(Read(path_), (Start{kDeviceIoError, ""}));
}

TEST_F(SmallFileTest, RightCaseIsOpenedWithoutALookAtTheDirectory) {
  WriteWholeFile(path_, "x");
  const ScopedFileFault looks(FileOperation::Stat, ENOENT, 1, kEver);
  EXPECT_EQ(Read(path_), (Start{0, "x"}));
  EXPECT_EQ(looks.calls(), 0);
}

TEST_F(SmallFileTest, FirstLineEndsAtCrOrLfOrTheFilesEnd) {
  EXPECT_EQ(FirstLineOf("D:\\A B.WAV\r\nsecond"), "D:\\A B.WAV");
  EXPECT_EQ(FirstLineOf("/srv/x.wav\nsecond"), "/srv/x.wav");
  EXPECT_EQ(FirstLineOf(" blanks stay "), " blanks stay ");
  EXPECT_EQ(FirstLineOf("\r\nsecond"), "");
  EXPECT_EQ(FirstLineOf(""), "");
}

}  // namespace
}  // namespace vorda::platform
