// An audio wall of a test's own: one directory, or two, with lists of empty carts that are connected.
//
// What a test gives and looks at goes past the server: records by their bytes in the lists, files by the
// directory.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/Desktop.h"
#include "platform/FileFault.h"
#include "platform/Files.h"
#include "platform/RunTimeError.h"
#include "platform/ScopedVariable.h"
#include "support/FakeDesktop.h"
#include "support/TempDirectory.h"
#include "support/WallLists.h"
#include "support/WaveBytes.h"

namespace vorda::test {

inline constexpr std::size_t kRecordBytes = 300;

// The bytes of a record by their places.
inline constexpr std::size_t kMarkStartAt = 262, kMarkEndAt = 266, kCountdownMarkAt = 270,
                             kAudioLengthAt = 274, kPlayStartAt = 278, kPlayEndAt = 282, kPlayLengthAt = 286;

inline void PutFloat(std::string& record, std::size_t place, float seconds) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &seconds, sizeof bits);
  record.replace(place, sizeof bits, Number(bits, sizeof bits));
}

// An empty cart as a list holds it once a server has written it: a new list's has 0 for the end of play.
inline std::string EmptiedCartRecord() {
  std::string record = BlankCartRecord();
  PutFloat(record, kPlayEndAt, -1);
  return record;
}

// A cart of so many seconds that plays from its beginning to its end.
inline std::string FullCartRecord(std::string_view title, float seconds) {
  std::string record = BlankCartRecord();
  record.replace(0, title.size(), title);
  for (const std::size_t place : {kCountdownMarkAt, kAudioLengthAt, kPlayEndAt, kPlayLengthAt})
    PutFloat(record, place, seconds);
  return record;
}

// The text of a report of a failed step.
inline std::string ProblemText(const std::string& what, int error) {
  return "There was a problem " + what + " and the error's description was reported as : \n\"" +
         platform::ErrorText(error) + "\" (" + std::to_string(error) + ")";
}

class WallFixture : public ::testing::Test {
 protected:
  // All parts in one directory; parts 1 and 2 (carts 1 to 2000) are connected. The settings are those of a
  // station without an INI file: records in the lists alone, no links.
  WallFixture() {
    gAudioWallSettings = {};
    gAudioWallSettings.MaintainLegacyCartList = 1;
    gBlankCartInfo.BackColor = static_cast<std::int32_t>(0x8000000F);
    gBlankCartInfo.ForeColor = static_cast<std::int32_t>(0x80000012);
    InitBlankCartInfo();
    for (AudioWallPart& part : gAudioWallParts) part = {wall_.path(), {}, false, 0};
    Connect(1);
    Connect(2);
  }
  ~WallFixture() override {
    platform::CloseAllFiles();
    gAudioWallParts = {};
    gAudioWallSettings = {};
    gBlankCartInfo = {};
    platform::SetPointer(platform::Pointer::Default);
    platform::SetCurrentError(platform::kNoError);
  }

  // Connects a part, and makes its list when there is none yet.
  void Connect(std::int16_t part) { ASSERT_EQ(ConnectAudioWall(part, true), 0); }
  // Puts a part into another directory, with a list of its own there.
  void MovePart(std::int16_t part, const std::string& directory) {
    gAudioWallParts[static_cast<std::size_t>(part) - 1].Location = directory;
    Connect(part);
  }
  // From now on carts 1001 to 2000 lie in a directory of their own, far_.
  void SplitWall() {
    MovePart(2, far_.path());
    std::filesystem::remove(wall_ / "Carts2.lst");
  }
  // Carts have their own record files from now on, beside the lists.
  static void UseIndividualFiles() { gAudioWallSettings.UseIndividualCartListFiles = 1; }
  static void AllowLinks() { gAudioWallSettings.AllowAudioFileLinking = 1; }

  // The path of a cart's file; the extension in the case given.
  static std::string CartFile(std::int32_t cart, std::string_view extension) {
    char name[32];
    std::snprintf(name, sizeof name, "/ORV%05d.", cart);
    return DirectoryOf(cart) + name + std::string(extension);
  }
  static std::string DirectoryOf(std::int32_t cart) { return Part(cart).Location; }

  // What GiveCart writes into a file of a cart.
  static std::string ContentOf(std::int32_t cart, std::string_view extension) {
    return "cart " + std::to_string(cart) + " " + std::string(extension);
  }
  static void GiveFile(std::int32_t cart, std::string_view extension) {
    WriteWholeFile(CartFile(cart, extension), ContentOf(cart, extension));
  }
  static void GiveFiles(std::int32_t cart, const std::vector<std::string>& extensions) {
    for (const std::string& extension : extensions) GiveFile(cart, extension);
  }
  // A cart with a record in its list and with files.
  static void GiveCart(std::int32_t cart, std::string_view title, float seconds,
                       const std::vector<std::string>& extensions = {"WAV"}) {
    SetRecordBytes(cart, FullCartRecord(title, seconds));
    GiveFiles(cart, extensions);
  }

  // A cart's 300 bytes in its list; fewer where it ends.
  static std::string RecordBytes(std::int32_t cart) {
    std::ifstream list(ListFileOf(cart), std::ios::binary);
    std::string record(kRecordBytes, '\0');
    list.seekg(static_cast<std::streamoff>(OffsetOf(cart)));
    list.read(record.data(), static_cast<std::streamsize>(record.size()));
    record.resize(static_cast<std::size_t>(list.gcount()));
    return record;
  }
  static void SetRecordBytes(std::int32_t cart, std::string_view bytes) {
    std::fstream list(ListFileOf(cart), std::ios::binary | std::ios::in | std::ios::out);
    ASSERT_TRUE(list.is_open()) << ListFileOf(cart);
    list.seekp(static_cast<std::streamoff>(OffsetOf(cart)));
    list.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  static std::string ListFileOf(std::int32_t cart) {
    return DirectoryOf(cart) + "/Carts" + std::to_string((cart - 1) / 1000 + 1) + ".lst";
  }

  using Names = std::vector<std::string>;
  // The names in a directory, sorted, the lists left out.
  static Names FilesIn(const std::string& directory) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
      const std::string name = entry.path().filename().string();
      if (!name.starts_with("Carts")) names.insert(name);
    }
    return {names.begin(), names.end()};
  }

  // Lets operators change only carts that `rule` allows, until the test ends.
  void InstallRule(std::function<bool(std::int32_t)> rule) { rule_.emplace(UserMayUseCartHook(), rule); }

  TempDirectory wall_;
  TempDirectory far_;
  TempDirectory home_;  // the server's own directory
  ScopedVariable homeVariable_{"VORDA_HOME", home_.path().c_str()};
  FakeBoxes boxes_;
  std::optional<platform::ScopedHook<bool(std::int32_t)>> rule_;

 private:
  static const AudioWallPart& Part(std::int32_t cart) {
    return gAudioWallParts[static_cast<std::size_t>((cart - 1) / 1000)];
  }
  static std::size_t OffsetOf(std::int32_t cart) {
    return static_cast<std::size_t>((cart - 1) % 1000) * kRecordBytes;
  }
};

}  // namespace vorda::test
