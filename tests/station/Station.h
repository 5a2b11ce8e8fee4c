// A station for the real program: its home with the INI files, pseudo-terminals as serial ports, news
// directories, an audio wall of empty carts, and a story tool that keeps what it is given.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "station/Program.h"
#include "support/PseudoTerminal.h"
#include "support/StatusClient.h"
#include "support/TempDirectory.h"

namespace vorda::test {

class Station {
 public:
  enum class Screen { Offscreen, None };

  // Ports 1 and 2 are lines, port 3 has no device behind it, port 4 no name.
  Station();

  // Adds feed `number` to the server INI; `keys` are further lines of its section, with their line ends. The
  // news directory has a feed configuration file unless `configuration` is "".
  void AddFeed(int number, const std::string& keys,
               const std::string& configuration = "[General]\r\nName=Wire\r\n");
  // Writes the server INI under another name, in the home.
  void WriteIniAs(const std::string& name);

  // Starts the server.
  void Start(const std::vector<std::string>& arguments = {}, Screen screen = Screen::Offscreen);
  // Starts it with further words "NAME=value" in its environment, by the command `before` if there is one.
  void StartWith(const std::vector<std::string>& environment, const std::vector<std::string>& before = {},
                 const std::vector<std::string>& arguments = {});
  // Connects to a feed's status port, waiting until it listens and has said its block; false when it never
  // does.
  bool Connect(StatusClient& client, int soundCard = 0);

  std::string Home() const { return home_.path(); }
  std::string News(int number) const { return root_ / ("news" + std::to_string(number)); }
  // The directory of the audio wall, which every INI that AddFeed and WriteIniAs write names.
  std::string Wall() const { return root_ / "wall"; }
  // The path of port 1's or 2's device.
  std::string Com(int number) const { return root_ / ("com" + std::to_string(number)); }
  // The full names of the story files that lie in a news directory.
  std::vector<std::string> StoryFiles(int number) const;

  // What the story tool was started with and the story that it found, in no order.
  struct Story {
    std::string argument;
    std::string text;
  };
  std::vector<Story> Stories() const;
  bool WaitForStories(std::size_t count);

  Program& Server() { return *server_; }

  // The far ends of the lines at ports 1 and 2.
  std::unique_ptr<PseudoTerminal> com1;
  std::unique_ptr<PseudoTerminal> com2;

 private:
  TempDirectory root_;
  TempDirectory home_;
  std::string ini_;
  std::unique_ptr<Program> server_;
};

}  // namespace vorda::test
