// A server that is killed between any two steps of a whole-cart operation.
//
// There is no recovery: what the steps left stands. It must be readable for every station, and nothing but
// the files and records of the operation may differ.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "platform/FileFault.h"
#include "support/MoveFixture.h"
#include "support/ScenarioEnd.h"

namespace vorda {
namespace {

using platform::BoxAnswer;
using ::testing::AnyOf;

using Operation = std::function<void()>;

// Runs the operation in a child of its own, which dies ahead of its nth file step. False when it came to its
// end before that.
bool DiesAtStep(int nth, const Operation& operation) {
  const pid_t child = ::fork();
  if (child == 0) {
    int taken = 0;
    const platform::ScopedFileFault death([&](platform::FileOperation, std::string_view) {
      if (++taken == nth) ::kill(::getpid(), SIGKILL);
      return 0;
    });
    operation();
    test::EndScenario();
  }
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  if (WIFSIGNALED(status)) {
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    return true;
  }
  EXPECT_EQ(WEXITSTATUS(status), test::kScenarioHeld);
  return false;
}

// All carts have audio and a text. Beside the two of the operation lies what is none of its business.
class CartKillTest : public test::MoveFixture {
 protected:
  // Kills an operation on cart 5 and another one at each of its steps, each time on a wall of its own. The
  // audio of the carts in `kept` must then stand somewhere, whole. Carts from 1001 on have another directory.
  void KillAtEachStep(std::int32_t other, const Names& kept, const Operation& operation) {
    constexpr int kFewestSteps = 5;
    constexpr int kMostSteps = 500;
    int step = 1;
    for (bool died = true; died; ++step) {
      ASSERT_LT(step, kMostSteps);
      SCOPED_TRACE("killed at step " + std::to_string(step));
      MakeWall(step);
      const Files before = AllFiles();
      died = DiesAtStep(step, [&] {
        ConnectBoth();
        operation();
      });
      ExpectReadable(other);
      ExpectWholeFiles(before, kept);
      for (const std::int32_t cart : {5, other}) SetRecordBytes(cart, RecordOf(cart));
      EXPECT_TRUE(BesideThem(other, AllFiles()) == BesideThem(other, before));
      if (HasFailure()) return;
      std::filesystem::remove_all(home_ / std::to_string(step));
    }
    EXPECT_GT(step, kFewestSteps);
  }
  // Operators who answer a move's question.
  void Answer(std::int32_t to, BoxAnswer answer) { ExpectQuestion(5, to, answer); }

  static inline const std::string kAudioOf5 = ContentOf(5, "WAV");
  static inline const std::string kAudioOf6 = ContentOf(6, "WAV");

 private:
  // The contents of files by their paths.
  using Files = std::map<std::string, std::string>;

  void MakeWall(int step) {
    const std::string wall = home_ / std::to_string(step);
    for (std::size_t part = 0; part < 2; ++part) {
      const std::string number = std::to_string(part + 1);
      gAudioWallParts[part].Location = wall + "/" + number;
      std::filesystem::create_directories(gAudioWallParts[part].Location);
      const std::string list = "Carts" + number + ".lst";
      std::filesystem::copy_file(wall_ / list, gAudioWallParts[part].Location + "/" + list);
    }
    for (const std::int32_t cart : {5, 6, 7, 1005, 1007}) {
      SetRecordBytes(cart, RecordOf(cart));
      GiveFiles(cart, {"TXT", "WAV"});
      if (gAudioWallSettings.UseIndividualCartListFiles != 0)
        test::WriteWholeFile(CartFile(cart, "LST"), RecordOf(cart));
    }
    test::WriteWholeFile(DirectoryOf(5) + "/notes.txt", "none of a cart");
  }
  static std::string RecordOf(std::int32_t cart) {
    return MarkedRecord("Cart " + std::to_string(cart), 30, static_cast<char>(cart));
  }
  void ConnectBoth() {
    Connect(1);
    Connect(2);
  }
  static Files AllFiles() {
    Files files;
    for (const std::int32_t cart : {5, 1005}) {
      for (const auto& entry : std::filesystem::directory_iterator(DirectoryOf(cart)))
        files[entry.path()] = test::ReadWholeFile(entry.path());
    }
    return files;
  }

  // The lists are whole, and each of the two carts holds one of the records that the operation may give it.
  void ExpectReadable(std::int32_t other) {
    constexpr std::size_t kListBytes = 1000 * test::kRecordBytes;
    for (const std::int32_t cart : {1, 1001})
      EXPECT_EQ(std::filesystem::file_size(ListFileOf(cart)), kListBytes);
    for (const std::int32_t cart : {5, other})
      EXPECT_THAT(RecordBytes(cart), AnyOf(RecordOf(5), RecordOf(other), test::EmptiedCartRecord()));
    ConnectBoth();
    CartInfo info;
    for (const std::int32_t cart : {1, 5, 6, 7, 1000, 1001, 1005, 1007, 2000})
      EXPECT_EQ(ReadCartInfo(info, cart), 0) << cart;
  }

  // No cart's file holds a part of something, and the audio is there under whatever name.
  static void ExpectWholeFiles(const Files& before, const Names& kept) {
    std::set<std::string> contents;
    for (const auto& [path, content] : before) contents.insert(content);
    std::set<std::string> found;
    for (const auto& [path, content] : AllFiles()) {
      found.insert(content);
      // An empty record file counts as none.
      const bool mayBeEmpty = path.ends_with(".TMP") || path.ends_with(".LST");
      const bool whole = contents.contains(content) || (mayBeEmpty && content.empty());
      if (path.find("/ORV") != std::string::npos) {
        EXPECT_TRUE(whole) << path;
      }
    }
    for (const std::string& audio : kept) EXPECT_TRUE(found.contains(audio)) << audio;
  }

  static Files BesideThem(std::int32_t other, Files files) {
    std::erase_if(files, [&](const auto& entry) {
      const std::string& path = entry.first;
      return path.starts_with(CartFile(5, "")) || path.starts_with(CartFile(other, "")) ||
             path.find("/VOR") != std::string::npos || path.find("/.vorda-copy-") != std::string::npos;
    });
    return files;
  }
};

TEST_F(CartKillTest, Delete) {
  KillAtEachStep(5, {kAudioOf6}, [] { DeleteCart(5, true, false); });
}

TEST_F(CartKillTest, CopyOverACart) {
  KillAtEachStep(6, {kAudioOf5}, [] { CopyCart(5, 6, true, true, nullptr); });
}

TEST_F(CartKillTest, MoveOverACartWithinADirectory) {
  KillAtEachStep(6, {kAudioOf5}, [this] {
    Answer(6, BoxAnswer::Yes);
    Move(5, 6);
  });
}

TEST_F(CartKillTest, MoveOverACartAcrossDirectories) {
  KillAtEachStep(1005, {kAudioOf5}, [this] {
    Answer(1005, BoxAnswer::Yes);
    Move(5, 1005);
  });
}

TEST_F(CartKillTest, SwapWithinADirectory) {
  KillAtEachStep(6, {kAudioOf5, kAudioOf6}, [this] {
    Answer(6, BoxAnswer::No);
    Move(5, 6);
  });
}

TEST_F(CartKillTest, SwapAcrossDirectories) {
  KillAtEachStep(1005, {kAudioOf5}, [this] {
    Answer(1005, BoxAnswer::No);
    ExpectTold("renaming the file of the cart to be swapped: ORV01005.TXT", kFileNotFound);
    Move(5, 1005);
  });
}

TEST_F(CartKillTest, MoveWithIndividualFiles) {
  UseIndividualFiles();
  KillAtEachStep(6, {kAudioOf5}, [this] {
    Answer(6, BoxAnswer::Yes);
    ExpectTold("removing the information file for cart 5", kFileNotFound);
    Move(5, 6);
  });
}

}  // namespace
}  // namespace vorda
