// Records of the audio wall, read and written, each way in turns with the bare calls of the system that it
// comes down to.
//
//     WallRecords WALL SCRATCH TURNS
//
// WALL holds a record of each cart from 1 to 9999, in the lists and in files of their own; none is empty, and
// all are as they were in the end. Fresh walls are made in SCRATCH.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "BenchWall.h"
#include "carts/Orvane_Audio_Routines.h"

namespace vorda::bench {
namespace {

constexpr std::int32_t kCartsPerList = 1000;
constexpr int kLists = 10;

// Where a cart's record lies, worked out without the server.
std::size_t ListOf(std::int32_t cart) {
  return static_cast<std::size_t>((cart - 1) / kCartsPerList);
}

off_t OffsetOf(std::int32_t cart) {
  return (cart - 1) % kCartsPerList * static_cast<off_t>(kCartRecordSize);
}

std::string ListPath(const std::string& directory, std::size_t list) {
  return directory + "/Carts" + std::to_string(list + 1) + ".lst";
}

std::size_t ListLength(std::size_t list) {
  const std::int32_t carts = list + 1 == kLists ? kCartsPerList - 1 : kCartsPerList;
  return static_cast<std::size_t>(carts) * kCartRecordSize;
}

// The wall as bare files.
struct BareWall {
  std::array<int, kLists> lists{};
  std::vector<std::string> listPaths;
  std::vector<std::string> cartPaths;  // of the carts' own files, from cart 1 on
};

BareWall OpenBareWall(const std::string& directory) {
  BareWall wall;
  for (std::size_t list = 0; list < kLists; ++list) {
    wall.listPaths.push_back(ListPath(directory, list));
    wall.lists[list] = ::open(wall.listPaths.back().c_str(), O_RDWR | O_CLOEXEC);
    Require(wall.lists[list] >= 0, "a list can be opened");
  }
  for (std::int32_t cart = 1; cart <= kLastCart; ++cart)
    wall.cartPaths.push_back(CartFileIn(directory, cart, "LST"));
  return wall;
}

void ReadAll() {
  int full = 0;
  for (std::int32_t cart = 1; cart <= kLastCart; ++cart) {
    CartInfo info;
    if (ReadCartInfo(info, cart) == 0 && !IsEmptyCart(info)) ++full;
  }
  Require(full == kLastCart, "every cart is read and full");
}

void ReadAllBare(const BareWall& wall) {
  int whole = 0;
  for (std::int32_t cart = 1; cart <= kLastCart; ++cart) {
    CartRecord record;
    if (::pread(wall.lists[ListOf(cart)], record.data(), record.size(), OffsetOf(cart)) == kCartRecordSize)
      ++whole;
  }
  Require(whole == kLastCart, "every record is read bare");
}

void ReadAllFiles() {
  gAudioWallSettings.UseIndividualCartListFiles = 1;
  ReadAll();
  gAudioWallSettings.UseIndividualCartListFiles = 0;
}

void ReadAllFilesBare(const BareWall& wall) {
  int whole = 0;
  for (const std::string& path : wall.cartPaths) {
    CartRecord record;
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) continue;
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (::read(file, record.data(), record.size()) == kCartRecordSize) ++whole;
    ::close(file);
  }
  Require(whole == kLastCart, "every cart's own file is read bare");
}

void FindNone() {
  Require(FindNextEmptyCart(1) == 0, "there is no empty cart");
}

std::vector<CartInfo> Records() {
  std::vector<CartInfo> records(kLastCart);
  for (std::int32_t cart = 1; cart <= kLastCart; ++cart)
    Require(ReadCartInfo(records[static_cast<std::size_t>(cart) - 1], cart) == 0, "a record can be read");
  return records;
}

void WriteAll(std::vector<CartInfo>& records) {
  int written = 0;
  for (std::int32_t cart = 1; cart <= kLastCart; ++cart) {
    if (WriteCartInfo(records[static_cast<std::size_t>(cart) - 1], cart, true) == 0) ++written;
  }
  Require(written == kLastCart, "every record is written");
}

void WriteAllBare(BareWall& wall, const std::vector<CartRecord>& records) {
  int written = 0;
  for (std::int32_t cart = 1; cart <= kLastCart; ++cart) {
    int& list = wall.lists[ListOf(cart)];
    const CartRecord& record = records[static_cast<std::size_t>(cart) - 1];
    if (::pwrite(list, record.data(), record.size(), OffsetOf(cart)) == kCartRecordSize) ++written;
    ::close(list);
    list = ::open(wall.listPaths[ListOf(cart)].c_str(), O_RDWR | O_CLOEXEC);
  }
  Require(written == kLastCart, "every record is written bare");
}

void WriteListsBare(const std::string& directory, const std::string& bytes) {
  for (std::size_t list = 0; list < kLists; ++list) {
    const int file =
        ::open(ListPath(directory, list).c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    const auto length = static_cast<ssize_t>(ListLength(list));
    Require(::write(file, bytes.data(), ListLength(list)) == length, "a list is written bare");
    ::close(file);
  }
}

// An empty directory, in which `make` makes ten lists.
Duration TimeOfLists(const std::string& directory, const std::function<void()>& make) {
  std::filesystem::create_directory(directory);
  const Duration lasted = Lasts(make);
  for (std::size_t list = 0; list < kLists; ++list)
    Require(std::filesystem::file_size(ListPath(directory, list)) == ListLength(list),
            "a list has its length");
  std::filesystem::remove_all(directory);
  return lasted;
}

void MeasureRecords(const std::string& directory, int turns, Samples& samples) {
  UseWall(directory);
  Require(ConnectAudioWall(0, true) == 0, "the wall can be connected");
  BareWall wall = OpenBareWall(directory);
  std::vector<CartInfo> records = Records();
  std::vector<CartRecord> bytes;
  bytes.reserve(records.size());
  for (const CartInfo& record : records) bytes.push_back(PackCartInfo(record));
  // The first turn isn't counted: it brings the files into the system's cache.
  for (int turn = 0; turn <= turns; ++turn) {
    const auto add = [&](const char* name, const std::function<void()>& work) {
      const Duration lasted = Lasts(work);
      if (turn > 0) samples.Add(name, lasted);
    };
    add("lists", [] { ReadAll(); });
    add("lists_bare", [&] { ReadAllBare(wall); });
    add("search", [] { FindNone(); });
    add("files", [] { ReadAllFiles(); });
    add("files_bare", [&] { ReadAllFilesBare(wall); });
    add("write", [&] { WriteAll(records); });
    add("write_bare", [&] { WriteAllBare(wall, bytes); });
  }
}

void MeasureConnecting(const std::string& scratch, int turns, Samples& samples) {
  const std::string bytes(ListLength(0), ' ');
  for (int turn = 0; turn < turns; ++turn) {
    const std::string fresh = scratch + "/fresh" + std::to_string(turn);
    const std::string bare = scratch + "/bare" + std::to_string(turn);
    UseWall(fresh);
    samples.Add("connect", TimeOfLists(fresh, [] {
                  Require(ConnectAudioWall(0, true) == 0, "a fresh wall can be connected");
                }));
    samples.Add("connect_bare", TimeOfLists(bare, [&] { WriteListsBare(bare, bytes); }));
  }
}

}  // namespace
}  // namespace vorda::bench

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const int turns = std::atoi(argv[3]);
  vorda::bench::Samples samples;
  vorda::bench::MeasureRecords(argv[1], turns, samples);
  vorda::bench::MeasureConnecting(argv[2], turns, samples);
  samples.Print();
}
