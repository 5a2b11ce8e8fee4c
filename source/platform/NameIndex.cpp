#include "platform/NameIndex.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/Text.h"

namespace vorda::platform {
namespace {

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kFewestChains = 32;
constexpr char kRemoved = '/';  // in place of a name's first character: none begins with it

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

// A hash of the characters ahead of a name's first point, without their case. Those beyond ASCII are left
// out: the name then needs no conversion.
class StemHash {
 public:
  void Take(char c) {
    constexpr unsigned kWithoutCase = 0xDF;
    if (IsAscii(c)) bits_ = std::rotl(bits_, 5) ^ (static_cast<unsigned char>(c) & kWithoutCase);
  }
  // Every bit has its part in the upper half.
  std::size_t Value() const { return (bits_ * 0x9E3779B97F4A7C15u) >> 32; }

 private:
  std::uint64_t bits_ = 0;
};

bool BeginsWithStem(std::string_view ansi, std::string_view stem) {
  return ansi.size() > stem.size() && ansi[stem.size()] == '.' && SameText(ansi.substr(0, stem.size()), stem);
}

}  // namespace

std::string NameFromDisk(std::string_view nameOnDisk) {
  std::string ansi;
  const bool plain = std::all_of(nameOnDisk.begin(), nameOnDisk.end(), IsAscii);
  if (!plain && FromUtf8(nameOnDisk, ansi)) return ansi;
  return std::string(nameOnDisk);
}

NameIndex::Place NameIndex::Next(Place place) const {
  Place next;
  std::memcpy(&next, &entries_[place], sizeof next);
  return next;
}

void NameIndex::SetNext(Place place, Place next) {
  std::memcpy(&entries_[place], &next, sizeof next);
}

std::size_t NameIndex::ChainOf(std::string_view name) const {
  StemHash hash;
  for (const char c : name.substr(0, name.find('.'))) hash.Take(c);
  return hash.Value() & (chains_.size() - 1);
}

NameIndex::Place NameIndex::FirstAlike(std::string_view name) const {
  return chains_.empty() ? kNone : chains_[ChainOf(name)];
}

template <class Visitor>
void NameIndex::VisitAll(Visitor&& visit) const {
  for (std::size_t at = 0; at < used_;) {
    const auto place = static_cast<Place>(at);
    const std::string_view name = NameAt(place);
    if (name.front() != kRemoved) visit(place, name);
    at += sizeof(Place) + name.size() + 1;
  }
}

void NameIndex::MakeChains(std::size_t count) {
  chains_.assign(std::max(std::bit_ceil(count), kFewestChains), kNone);
  VisitAll([this](Place place, std::string_view name) {
    SetNext(place, std::exchange(chains_[ChainOf(name)], place));
  });
}

void NameIndex::MakeRoom(std::size_t bytes) {
  if (room_ - used_ >= bytes) return;
  room_ = std::max(2 * room_, used_ + bytes);
  auto entries = std::make_unique_for_overwrite<char[]>(room_);
  std::copy_n(entries_.get(), used_, entries.get());
  entries_ = std::move(entries);
}

void NameIndex::Reserve(std::int64_t directoryLength) {
  constexpr std::int64_t kMost = std::int64_t{8} << 20;
  constexpr std::size_t kChainEach = 64;  // so that a chain has about two entries
  const auto length = static_cast<std::size_t>(std::clamp<std::int64_t>(directoryLength, 0, kMost));
  MakeRoom(length);
  MakeChains(length / kChainEach);
}

// Names that come and go for months must not pile up.
void NameIndex::DropRemoved() {
  NameIndex kept;
  VisitAll([&kept](Place, std::string_view name) { kept.AddNew(name); });
  *this = std::move(kept);
}

// In one walk over the name, for the sake of directories with tens of thousands of them.
void NameIndex::AddNew(std::string_view nameOnDisk) {
  constexpr std::size_t kLongChain = 2;
  constexpr std::size_t kGrowth = 4;
  if (names_ >= kLongChain * chains_.size()) MakeChains(kGrowth * chains_.size());
  MakeRoom(sizeof(Place) + nameOnDisk.size() + 1);
  const char* from = nameOnDisk.data();
  const char* const end = from + nameOnDisk.size();
  char* to = &entries_[used_ + sizeof(Place)];
  StemHash hash;
  for (; from != end && *from != '\0' && *from != '.'; ++from) {
    hash.Take(*from);
    *to++ = *from;
  }
  while (from != end && *from != '\0') *to++ = *from++;
  *to++ = '\0';
  const auto place = static_cast<Place>(used_);
  SetNext(place, std::exchange(chains_[hash.Value() & (chains_.size() - 1)], place));
  used_ = static_cast<std::size_t>(to - entries_.get());
  ++names_;
}

void NameIndex::Add(std::string_view nameOnDisk) {
  Remove(nameOnDisk);
  AddNew(nameOnDisk);
}

void NameIndex::Remove(std::string_view nameOnDisk) {
  constexpr std::size_t kSpare = 64;
  Place before = kNone;
  for (Place at = FirstAlike(nameOnDisk); at != kNone; before = std::exchange(at, Next(at))) {
    if (NameAt(at) != nameOnDisk) continue;
    if (before == kNone) {
      chains_[ChainOf(nameOnDisk)] = Next(at);
    } else {
      SetNext(before, Next(at));
    }
    entries_[at + sizeof(Place)] = kRemoved;
    --names_;
    if (++removed_ > names_ + kSpare) DropRemoved();
    return;
  }
}

std::string NameIndex::Match(std::string_view name) const {
  std::string_view first;
  for (Place at = FirstAlike(name); at != kNone; at = Next(at)) {
    const std::string_view held = NameAt(at);
    const bool earlier = first.empty() || held < first;
    if (earlier && SameText(NameFromDisk(held), name)) first = held;
  }
  return std::string(first);
}

std::vector<std::string> NameIndex::WithStem(std::string_view stem) const {
  std::vector<std::string> names;
  for (Place at = FirstAlike(stem); at != kNone; at = Next(at)) {
    const std::string_view held = NameAt(at);
    if (BeginsWithStem(NameFromDisk(held), stem)) names.emplace_back(held);
  }
  return names;
}

}  // namespace vorda::platform
