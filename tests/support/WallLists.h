// An audio wall of empty carts: what a server has to find so that it starts without a question.

#pragma once

#include <string>

namespace vorda::test {

// The 300 bytes that stand in a list for an empty cart.
std::string BlankCartRecord();

// Writes Carts1.lst to Carts10.lst, full of blank records, into the directory; makes it if it isn't there.
void MakeWallLists(const std::string& directory);

// The section of a server INI by which all parts of the wall lie in the directory, with its line ends.
std::string WallKeys(const std::string& directory);

}  // namespace vorda::test
