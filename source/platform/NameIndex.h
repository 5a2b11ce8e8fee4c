// The names of a directory's entries, found without regard to case.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vorda::platform {

// Holds names as they stand on disk: UTF-8, or bytes of the code page that an older station left. What is
// asked for is ANSI. Entries that begin alike up to their first point lie together, so that neither a name
// nor a stem costs a walk over the whole directory.
class NameIndex {
 public:
  // For a name that is known not to be there.
  void AddNew(std::string_view nameOnDisk);
  void Add(std::string_view nameOnDisk);
  void Remove(std::string_view nameOnDisk);
  void Clear() { names_.clear(); }
  std::size_t size() const { return names_.size(); }

  // The name that equals `name`; of several the first in byte order; "" when there is none.
  std::string Match(std::string_view name) const;
  // The names that begin with `stem` and a point, in no order.
  std::vector<std::string> WithStem(std::string_view stem) const;

 private:
  using Names =
      std::unordered_multimap<std::uint32_t, std::string>;  // by what stands ahead of the first point
  Names::const_iterator Find(std::string_view nameOnDisk) const;

  Names names_;
};

// A name from the disk as ANSI text; the bytes themselves where the code page can't hold it.
std::string NameFromDisk(std::string_view nameOnDisk);

}  // namespace vorda::platform
