// What the operator is asked and told when a file is copied or moved, and where it then stands.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "platform/FileFault.h"
#include "platform/RunTimeError.h"
#include "platform/ShellOperation.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"

namespace vorda::test {
namespace {

using platform::BoxAnswer;
using platform::RunShellOperation;
using platform::ShellOperation;

class ShellOperationTest : public ::testing::Test {
 protected:
  ShellOperationTest() { WriteWholeFile(source_, "new"); }
  ~ShellOperationTest() override { platform::SetCurrentError(0); }

  ShellOperation Copying() const { return {source_, destination_, "Copying Cart Audio"}; }
  std::string ReplaceQuestion() const {
    return "There is a file already:\n" + destination_ + "\nDo you want to replace it?";
  }

  TempDirectory directory_;
  const std::string source_ = directory_ / "from.wav";
  const std::string destination_ = directory_ / "to.wav";
  FakeBoxes boxes_;
};

TEST_F(ShellOperationTest, CopiesWithoutAWord) {
  EXPECT_EQ(RunShellOperation(Copying()), 0);
  EXPECT_EQ(ReadWholeFile(destination_), "new");
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav to.wav");
}

TEST_F(ShellOperationTest, MovesWithoutAWord) {
  ShellOperation moving = Copying();
  moving.move = true;
  EXPECT_EQ(RunShellOperation(moving), 0);
  EXPECT_EQ(JoinedNames(directory_.path()), "to.wav");
}

TEST_F(ShellOperationTest, FindsNamesInAnyCase) {
  EXPECT_EQ(RunShellOperation({directory_ / "FROM.WAV", destination_, ""}), 0);
  EXPECT_EQ(ReadWholeFile(destination_), "new");
}

TEST_F(ShellOperationTest, FolderTakesTheSourcesName) {
  ASSERT_EQ(::mkdir((directory_ / "wall").c_str(), 0755), 0);
  EXPECT_EQ(RunShellOperation({source_, directory_ / "wall", ""}), 0);
  EXPECT_EQ(JoinedNames(directory_ / "wall"), "from.wav");
}

TEST_F(ShellOperationTest, ReplacesOnlyWhenTheOperatorAgrees) {
  WriteWholeFile(destination_, "old");
  boxes_.Expect(ReplaceQuestion(), BoxAnswer::No);
  EXPECT_EQ(RunShellOperation(Copying()), 0);
  EXPECT_EQ(ReadWholeFile(destination_), "old");
  EXPECT_EQ(boxes_.Last().defaultAnswer, BoxAnswer::No);
  boxes_.Expect(ReplaceQuestion(), BoxAnswer::Yes);
  EXPECT_EQ(RunShellOperation(Copying()), 0);
  EXPECT_EQ(ReadWholeFile(destination_), "new");
}

TEST_F(ShellOperationTest, ReplacesUnaskedWithoutConfirmation) {
  WriteWholeFile(destination_, "old");
  ShellOperation copying = Copying();
  copying.confirm = false;
  EXPECT_EQ(RunShellOperation(copying), 0);
  EXPECT_EQ(ReadWholeFile(destination_), "new");
}

TEST_F(ShellOperationTest, FileThatComesUpBehindTheQuestionStays) {
  const platform::ScopedHook meanwhile(
      platform::CopyProgressHook(),
      [this](platform::FileCopy& copy, const ShellOperation&) { copy.Result(); });
  // The name is taken between the look and the copy's end.
  const platform::ScopedFileFault taken(platform::FileOperation::Rename, EEXIST);
  boxes_.Expect("Cannot copy " + source_ + "\nto " + destination_ + "\n\nFile already exists");
  EXPECT_EQ(RunShellOperation(Copying()), platform::kFileAlreadyExists);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav");
}

TEST_F(ShellOperationTest, MissingFolderIsMadeWhenTheOperatorAgrees) {
  ShellOperation copying = Copying();
  copying.destination = directory_ / "a/b/to.wav";
  const std::string question =
      "The folder of " + copying.destination + "\ndoes not exist. Do you want to make it?";
  boxes_.Expect(question, BoxAnswer::No);
  EXPECT_EQ(RunShellOperation(copying), platform::kCopyCancelled);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav");
  boxes_.Expect(question, BoxAnswer::Yes);
  EXPECT_EQ(RunShellOperation(copying), 0);
  EXPECT_EQ(ReadWholeFile(copying.destination), "new");
}

TEST_F(ShellOperationTest, MissingFolderIsMadeUnaskedWithoutConfirmation) {
  ShellOperation copying = Copying();
  copying.destination = directory_ / "a/to.wav";
  copying.confirm = false;
  EXPECT_EQ(RunShellOperation(copying), 0);
  EXPECT_EQ(ReadWholeFile(copying.destination), "new");
}

TEST_F(ShellOperationTest, FolderThatCantBeMadeIsTold) {
  ShellOperation copying = Copying();
  copying.destination = source_ + "/to.wav";
  copying.confirm = false;
  boxes_.Expect("Cannot copy " + source_ + "\nto " + copying.destination + "\n\nPath not found");
  EXPECT_EQ(RunShellOperation(copying), platform::kPathNotFound);
  EXPECT_EQ(platform::CurrentError(), platform::kNoError);
}

TEST_F(ShellOperationTest, FailureIsToldWithItsReason) {
  const platform::ScopedFileFault full(platform::FileOperation::Write, ENOSPC);
  boxes_.Expect("Cannot copy " + source_ + "\nto " + destination_ + "\n\nDisk full");
  EXPECT_EQ(RunShellOperation(Copying()), platform::kDiskFull);
  EXPECT_EQ(boxes_.Last().icon, platform::BoxIcon::Critical);
  EXPECT_EQ(boxes_.Last().title, "Copying Cart Audio");
  EXPECT_EQ(platform::CurrentError(), platform::kNoError);
}

// No thread can be had: nobody has told the operator yet, so the caller has to.
TEST_F(ShellOperationTest, CopyThatCannotEvenBeginIsAnErrorOfTheCaller) {
  const platform::ScopedFileFault busy(platform::FileOperation::BeginCopy, EAGAIN);
  EXPECT_EQ(RunShellOperation(Copying()), platform::kOutOfMemory);
  EXPECT_EQ(platform::CurrentError(), platform::kOutOfMemory);
}

struct Refused {
  const char* source;
  const char* destination;
  const char* words;
  int result;
};
void PrintTo(const Refused& row, std::ostream* out) {
  *out << row.source << " to " << row.destination;
}
class RefusedOperationTest : public ShellOperationTest, public ::testing::WithParamInterface<Refused> {};

TEST_P(RefusedOperationTest, IsToldAndChangesNothing) {
  const Refused& row = GetParam();
  ASSERT_EQ(::mkdir((directory_ / "wall").c_str(), 0755), 0);
  const auto full = [this](std::string path) {
    return path.front() == '~' ? directory_ / path.substr(1) : path;
  };
  const std::string source = full(row.source);
  const std::string destination = full(row.destination);
  boxes_.Expect("Cannot move " + source + "\nto " + destination + "\n\n" + row.words);
  EXPECT_EQ(RunShellOperation({source, destination, "", nullptr, true}), row.result);
  EXPECT_EQ(JoinedNames(directory_.path()), "from.wav wall");
  EXPECT_EQ(JoinedNames(directory_ / "wall"), "");
}

constexpr Refused kRefused[] = {
    {"~none.wav", "~to.wav", "File not found", platform::kFileNotFound},
    {"~wall", "~to", "Path/File access error", platform::kPathFileAccessError},
    {"~from.wav", "~from.wav", "Source and destination are the same file.", platform::kPathFileAccessError},
    {"~from.wav", "~FROM.WAV", "Source and destination are the same file.", platform::kPathFileAccessError},
    {"Q:\\from.wav", "~to.wav", "Path not found", platform::kPathNotFound},
    {"~from.wav", "Q:\\to.wav", "Path not found", platform::kPathNotFound},
};
INSTANTIATE_TEST_SUITE_P(Rows, RefusedOperationTest, ::testing::ValuesIn(kRefused));

}  // namespace
}  // namespace vorda::test
