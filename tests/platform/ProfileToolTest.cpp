// Other programs that know no lock and write the same INI file at the same moment: by a new file in its
// place, and in place.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "OtherProcess.h"
#include "platform/Descriptor.h"
#include "platform/FileFault.h"
#include "platform/FileStamp.h"
#include "platform/ProfileFile.h"
#include "platform/ProfileStore.h"
#include "platform/ProfileText.h"
#include "support/EventLoop.h"
#include "support/TempDirectory.h"

namespace vorda::platform {
namespace {

constexpr int kEver = std::numeric_limits<int>::max();

enum class Way { NewFile, InPlace };
void PrintTo(Way way, std::ostream* out) {
  *out << (way == Way::NewFile ? "new file" : "in place");
}

// A tool that writes in place doesn't empty the file here: how long it may stay so is a matter of the
// machine.
void RewriteAsATool(Way way, const std::string& file, std::string_view bytes) {
  if (way == Way::NewFile) {
    test::WriteWholeFile(file + ".tool", bytes);
    std::filesystem::rename(file + ".tool", file);
    return;
  }
  const Descriptor opened = OpenFile(file, O_WRONLY);
  ASSERT_EQ(::pwrite(opened.number(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  ASSERT_EQ(::ftruncate(opened.number(), static_cast<off_t>(bytes.size())), 0);
}

class ProfileToolTest : public ::testing::TestWithParam<Way> {
 protected:
  // Sets [Feed] Name to "new"; `atLook` is what a tool does at the n-th look at the file.
  bool SetName(const std::function<void(int look)>& atLook) {
    int looks = 0;
    return ChangeProfile(file_, [&](const std::string& bytes) {
      atLook(++looks);
      return ProfileText(bytes).WithValue("Feed", "Name", "new");
    });
  }
  std::string Bytes() const { return test::ReadWholeFile(file_); }

  test::TempDirectory directory_;
  std::string file_ = directory_ / "vorda.ini";
};

// Of the same length, so that within one tick of the file system's clock only the contents tell.
TEST_P(ProfileToolTest, ChangeBetweenOurReadingAndWritingIsKept) {
  ASSERT_TRUE(WriteProfileString("Feed", "Tool", "1", file_));
  EXPECT_TRUE(SetName([this](int look) {
    if (look == 1) RewriteAsATool(GetParam(), file_, "[Feed]\r\nTool=2\r\n");
  }));
  EXPECT_EQ(Bytes(), "[Feed]\r\nTool=2\r\nName=new\r\n");
  EXPECT_EQ(test::JoinedNames(directory_.path()), "vorda.ini");
}

TEST_P(ProfileToolTest, ChangesWithoutEndAreNeverOverwritten) {
  test::WriteWholeFile(file_, "[Feed]\r\nTool=0\r\n");
  std::string last;
  EXPECT_FALSE(SetName([&](int look) {
    last = "[Feed]\r\nTool=" + std::to_string(look) + "\r\n";
    RewriteAsATool(GetParam(), file_, last);
  }));
  EXPECT_EQ(Bytes(), last);
  EXPECT_EQ(test::JoinedNames(directory_.path()), "vorda.ini");
}

// Rewrites the file once for each change of [Feed] Name, from what it has read, until Done is there.
bool RewriteUntilDone(Way way, const std::string& file) {
  std::string answered;
  for (int count = 1;;) {
    const ProfileText text(test::ReadWholeFile(file));
    if (text.Value("Feed", "Done")) return true;
    const std::string name(text.Value("Feed", "Name").value_or(""));
    if (name == answered) {
      ::sched_yield();
      continue;
    }
    answered = name;
    const std::optional<std::string> bytes = text.WithValue("Tool", "Count", std::to_string(count++));
    if (!bytes) return false;
    RewriteAsATool(way, file, *bytes);
  }
}

// The tool may lose what we wrote while it held its own copy; we lose nothing of what stood before.
TEST_P(ProfileToolTest, OurWritesLoseNothingBesideAToolThatRewritesTheFile) {
  constexpr int kKeys = 20;
  constexpr int kWrites = 40;
  std::string keys = "[Keys]\r\n";
  for (int i = 0; i < kKeys; ++i) keys += "Key" + std::to_string(i) + "=value " + std::to_string(i) + "\r\n";
  test::WriteWholeFile(file_, keys + "[Tool]\r\n[Feed]\r\nName=0\r\n[End]\r\nMark=last\r\n");
  test::OtherProcess tool([this] { return RewriteUntilDone(GetParam(), file_); });
  for (int i = 1; i <= kWrites; ++i) {
    ASSERT_TRUE(WriteProfileString("Feed", "Name", std::to_string(i), file_)) << i;
    if (GetParam() == Way::InPlace) continue;
    const std::string bytes = Bytes();
    ASSERT_TRUE(bytes.starts_with(keys) && bytes.ends_with("[End]\r\nMark=last\r\n")) << bytes;
  }
  // The tool may have taken Done away again, with a copy that it had read before.
  ASSERT_TRUE(test::WaitUntil(
      [&] { return WriteProfileString("Feed", "Done", "1", file_) && tool.HasEnded(); }, 20000));
  EXPECT_TRUE(tool.Succeeded());
  const std::string bytes = Bytes();
  EXPECT_TRUE(bytes.starts_with(keys) && bytes.ends_with("[End]\r\nMark=last\r\n")) << bytes;
  EXPECT_NE(ReadProfileInteger("Tool", "Count", 0, file_), 0);
  EXPECT_EQ(test::JoinedNames(directory_.path()), "vorda.ini");
}

INSTANTIATE_TEST_SUITE_P(Ways, ProfileToolTest, ::testing::Values(Way::NewFile, Way::InPlace));

using ProfileHalfFileTest = ProfileToolTest;

// However long ago: what is left of a file between a tool's opening and its writing says nothing. Tried again
// on a machine so busy that all patience is over before the tool has gone on.
TEST_F(ProfileHalfFileTest, EmptiedFileIsWaitedFor) {
  const auto isWaitedFor = [this] {
    test::WriteWholeFile(file_, "");
    EXPECT_TRUE(test::WaitUntil([this] { return IsSettled(StampOf(file_).value()); }));
    EXPECT_TRUE(SetName([this](int look) {
      if (look == 2) test::WriteWholeFile(file_, "[Feed]\r\nTool=1\r\n");
    }));
    return Bytes() == "[Feed]\r\nTool=1\r\nName=new\r\n";
  };
  EXPECT_TRUE(test::WaitUntil(isWaitedFor));
}

// Holds when the look comes within the tick of the tool's change, which takes a few tries on a busy machine.
TEST_F(ProfileHalfFileTest, FileChangedJustNowIsWaitedFor) {
  const auto isWaitedFor = [this] {
    test::WriteWholeFile(file_, "[Keys]\r\nA=1\r\n");
    const ScopedFileFault writes(FileOperation::Write, EIO, kEver, 1, ".vorda-ini-");
    EXPECT_TRUE(SetName([this](int look) {
      if (look == 2) test::WriteWholeFile(file_, "[Keys]\r\nA=1\r\nB=2\r\n");
    }));
    return writes.calls() == 1 && Bytes() == "[Keys]\r\nA=1\r\nB=2\r\n[Feed]\r\nName=new\r\n";
  };
  EXPECT_TRUE(test::WaitUntil(isWaitedFor));
}

// What nobody completes is taken as it is.
TEST_F(ProfileHalfFileTest, EmptyFileIsWrittenInTheEnd) {
  test::WriteWholeFile(file_, "");
  EXPECT_TRUE(SetName([](int) {}));
  EXPECT_EQ(Bytes(), "[Feed]\r\nName=new\r\n");
}

}  // namespace
}  // namespace vorda::platform
