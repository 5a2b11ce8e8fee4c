// The wall maker of the simulator and the tests' own walls: whoever reads one has read the other.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "station/Program.h"
#include "support/TempDirectory.h"
#include "support/WallLists.h"

namespace vorda::test {
namespace {

TEST(WallMaker, ListsOfEmptyCartsAreThoseOfTheTests) {
  const TempDirectory directory;
  const std::string wall = directory / "wall";
  const std::string maker = std::filesystem::path(VORDA_DEMO).replace_filename("wall.py").string();
  ASSERT_EQ(RunToEnd({"python3", maker, wall, "--carts", "1", "--no-audio"}), 0);
  MakeWallLists(directory / "ours");
  EXPECT_EQ(JoinedNames(wall), JoinedNames(directory / "ours"));
  for (int part = 1; part <= 10; ++part) {
    // Of the first list only what comes behind the one cart.
    const std::size_t from = part == 1 ? 300 : 0;
    const std::string name = "/Carts" + std::to_string(part) + ".lst";
    const std::string made = ReadWholeFile(wall + name);
    const std::string ours = ReadWholeFile((directory / "ours") + name);
    EXPECT_EQ(made.size(), part == 10 ? 299700U : 300000U) << name;
    EXPECT_TRUE(made.substr(from) == ours.substr(from)) << name;
  }
}

}  // namespace
}  // namespace vorda::test
