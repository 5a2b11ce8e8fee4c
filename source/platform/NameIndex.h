// The names of a directory's entries, found without regard to case.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vorda::platform {

// Holds names as they stand on disk: UTF-8, or bytes of the code page that an older station left. What is
// asked for is ANSI. Entries that begin alike up to their first point lie in one chain, so that neither a
// name nor a stem costs a walk over the whole directory. To take in a name costs little beside reading it
// from its directory: all names lie in one piece of memory, each behind the place of the next in its chain.
class NameIndex {
 public:
  // Makes room for the names of a directory that is so many bytes long: growing costs more than room that
  // stays unused.
  void Reserve(std::int64_t directoryLength);
  // For a name that is known not to be there. It ends with the text, or ahead of the first NUL in it.
  void AddNew(std::string_view nameOnDisk);
  void Add(std::string_view nameOnDisk);
  void Remove(std::string_view nameOnDisk);
  void Clear() { *this = {}; }
  std::size_t size() const { return names_; }

  // The name that equals `name`; of several the first in byte order; "" when there is none.
  std::string Match(std::string_view name) const;
  // The names that begin with `stem` and a point, in no order.
  std::vector<std::string> WithStem(std::string_view stem) const;

 private:
  using Place = std::uint32_t;  // of an entry in entries_

  std::string_view NameAt(Place place) const { return &entries_[place + sizeof(Place)]; }
  Place Next(Place place) const;
  void SetNext(Place place, Place next);
  std::size_t ChainOf(std::string_view name) const;
  Place FirstAlike(std::string_view name) const;
  void MakeChains(std::size_t count);
  void MakeRoom(std::size_t bytes);
  void DropRemoved();
  template <class Visitor>
  void VisitAll(Visitor&& visit) const;

  std::unique_ptr<char[]> entries_;  // the next entry's place, the name, NUL
  std::size_t used_ = 0;             // bytes of entries_
  std::size_t room_ = 0;
  std::vector<Place> chains_;  // the first entry of each; a power of two of them
  std::size_t names_ = 0;
  std::size_t removed_ = 0;  // names that still lie in entries_
};

// A name from the disk as ANSI text; the bytes themselves where the code page can't hold it.
std::string NameFromDisk(std::string_view nameOnDisk);

}  // namespace vorda::platform
