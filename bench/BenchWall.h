// What the programs that measure the audio wall have in common.

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vorda::bench {

// Settings of a station without an INI file, with all of the wall's parts in one directory; none is
// connected. Lists that an earlier directory had open are closed.
void UseWall(const std::string& directory);

// The path of a cart's file in a directory.
std::string CartFileIn(const std::string& directory, std::int32_t cart, const char* extension);

// Ends the program with a message unless it holds: what was not done right is not worth measuring.
void Require(bool holds, const char* what);

// Nanoseconds that something takes.
struct Duration {
  std::int64_t processor;  // of this thread, what the system does for it included; waiting is not
  std::int64_t elapsed;
};
Duration Lasts(const std::function<void()>& work);

// What was measured in turns, by name.
class Samples {
 public:
  void Add(const std::string& name, Duration lasted);
  // As JSON: for each name a list of numbers, and one of the elapsed times.
  void Print() const;

 private:
  std::map<std::string, std::vector<std::int64_t>> samples_;
};

}  // namespace vorda::bench
