// Carts deleted in a directory, once, by a process that has done nothing of the kind before; and the
// directory's entries read bare.
//
//     WallDeletes DIRECTORY
//
// It holds the lists of a wall. Carts 1 to 10 are put there, with audio, text, link and a record of their
// own, and deleted; what else lies there stays.

#include <dirent.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "BenchWall.h"
#include "carts/Orvane_Audio_Routines.h"

namespace vorda::bench {
namespace {

constexpr std::int32_t kDeleted = 10;
constexpr const char* kExtensions[] = {"WAV", "TXT", "FLK"};  // and the record, LST
constexpr int kFilesEach = 1 + static_cast<int>(std::size(kExtensions));

// Past the server, which might list the directory for it.
void PutCart(const std::string& directory, std::int32_t cart) {
  for (const char* extension : kExtensions)
    std::ofstream(CartFileIn(directory, cart, extension)) << "a file of the cart";
  CartInfo info = gBlankCartInfo;
  info.AudioLength = 1;
  const CartRecord record = PackCartInfo(info);
  std::ofstream(CartFileIn(directory, cart, "LST")).write(record.data(), kCartRecordSize);
}

void ConnectLists(const std::string& directory) {
  UseWall(directory);
  gAudioWallSettings.UseIndividualCartListFiles = 1;
  Require(std::filesystem::exists(directory + "/Carts1.lst"), "the list is there");
  Require(ConnectAudioWall(1, true) == 0, "the list can be opened");
}

int CountEntries(const std::string& directory) {
  int entries = 0;
  DIR* const open = ::opendir(directory.c_str());
  Require(open != nullptr, "the directory can be read");
  while (::readdir(open) != nullptr) ++entries;
  ::closedir(open);
  return entries;
}

Duration TimeOfDeletes(const std::string& directory) {
  ConnectLists(directory);
  for (std::int32_t cart = 1; cart <= kDeleted; ++cart) PutCart(directory, cart);
  const int before = CountEntries(directory);
  const Duration lasted = Lasts([] {
    for (std::int32_t cart = 1; cart <= kDeleted; ++cart)
      Require(DeleteCart(cart, true, true) == 0, "a cart is deleted");
  });
  const int after = CountEntries(directory);
  Require(before - after == kDeleted * kFilesEach, "the carts' files are gone, and no others");
  return lasted;
}

}  // namespace
}  // namespace vorda::bench

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const std::string directory = argv[1];
  vorda::bench::CountEntries(directory);  // brings it into the system's cache
  vorda::bench::Samples samples;
  samples.Add("deletes", vorda::bench::TimeOfDeletes(directory));
  samples.Add("scan", vorda::bench::Lasts([&] { vorda::bench::CountEntries(directory); }));
  samples.Print();
}
