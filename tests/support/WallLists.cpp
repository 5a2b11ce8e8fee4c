#include "support/WallLists.h"

#include <cstddef>
#include <filesystem>
#include <string_view>

#include "support/TempDirectory.h"

namespace vorda::test {

namespace {

constexpr int kLists = 10;
constexpr int kLocations = 11;
constexpr std::size_t kRecords = 1000;
constexpr std::size_t kRecordsOfTheLast = 999;
constexpr std::size_t kRecordSize = 300;

}  // namespace

std::string BlankCartRecord() {
  using namespace std::string_view_literals;
  constexpr std::string_view kColours = "\x0F\x00\x00\x80\x12\x00\x00\x80"sv;
  constexpr std::string_view kMinusOne = "\x00\x00\x80\xBF"sv;
  std::string record(60, ' ');
  record += kColours;
  record.resize(kRecordSize, '\0');
  record.replace(274, kMinusOne.size(), kMinusOne);  // the length of the audio
  record.replace(286, kMinusOne.size(), kMinusOne);  // and of its play
  return record;
}

void MakeWallLists(const std::string& directory) {
  std::filesystem::create_directories(directory);
  const std::string blank = BlankCartRecord();
  std::string list;
  list.reserve(kRecords * kRecordSize);
  for (std::size_t record = 0; record < kRecords; ++record) list += blank;
  for (int part = 1; part <= kLists; ++part) {
    if (part == kLists) list.resize(kRecordsOfTheLast * kRecordSize);
    WriteWholeFile(directory + "/Carts" + std::to_string(part) + ".lst", list);
  }
}

std::string WallKeys(const std::string& directory) {
  std::string keys = "[FileLocations]\r\n";
  for (int part = 1; part <= kLocations; ++part)
    keys += "Carts" + std::to_string(part) + "=" + directory + "\r\n";
  return keys;
}

}  // namespace vorda::test
