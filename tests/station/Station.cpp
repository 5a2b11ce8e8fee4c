#include "station/Station.h"

#include <cstdlib>
#include <filesystem>

#include "support/EventLoop.h"
#include "support/Loopback.h"
#include "support/WallLists.h"

namespace vorda::test {

namespace fs = std::filesystem;

namespace {

// Copies the story and its argument into the folder "kept" beside itself; the argument's file comes last.
constexpr const char* kTool =
    "#!/bin/sh\n"
    "kept=${0%/*}/kept\n"
    "cp \"${1%%|*}\" \"$kept/story.$$\"\n"
    "printf '%s' \"$1\" > \"$kept/new.$$\"\n"
    "mv \"$kept/new.$$\" \"$kept/argument.$$\"\n";

}  // namespace

Station::Station() : ini_(WallKeys(Wall())) {
  MakeWallLists(Wall());
  com1 = std::make_unique<PseudoTerminal>(Com(1));
  com2 = std::make_unique<PseudoTerminal>(Com(2));
  fs::create_directories(root_ / "tools/kept");
  WriteWholeFile(root_ / "tools/ItemFile", kTool);
  fs::permissions(root_ / "tools/ItemFile", fs::perms::owner_all);
  WriteWholeFile(home_ / "platform.ini",
                 "[SerialPorts]\r\nCom1=" + Com(1) + "\r\nCom2=" + Com(2) + "\r\nCom3=" + (root_ / "none") +
                     "\r\nCom4=\r\n[StatusPort]\r\nAddress=" + OwnLoopbackAddress() +
                     "\r\n[Formats]\r\nShortDate=dd/MM/yyyy\r\n[Program]\r\nDirectory=" + (root_ / "tools") +
                     "\r\n");
}

void Station::AddFeed(int number, const std::string& keys, const std::string& configuration) {
  fs::create_directory(News(number));
  if (!configuration.empty()) WriteWholeFile(News(number) + "/vorda.ini", configuration);
  ini_ += "[WireFeed" + std::to_string(number) + "]\r\nNewsPath=" + News(number) + "\r\n" + keys;
  WriteIniAs("vdServer.INI");
}

void Station::WriteIniAs(const std::string& name) {
  WriteWholeFile(home_ / name, ini_);
}

void Station::Start(const std::vector<std::string>& arguments, Screen screen) {
  std::vector<std::string> environment;
  if (screen == Screen::Offscreen) environment.emplace_back("QT_QPA_PLATFORM=offscreen");
  StartWith(environment, {}, arguments);
}

void Station::StartWith(const std::vector<std::string>& environment, const std::vector<std::string>& before,
                        const std::vector<std::string>& arguments) {
  std::vector<std::string> command = before;
  const auto append = [&command](const std::vector<std::string>& words) {
    command.insert(command.end(), words.begin(), words.end());
  };
  append({"env", "-i", "--default-signal=PIPE,HUP,INT,TERM", "PATH=/usr/bin:/bin", "HOME=" + Home(),
          "XDG_RUNTIME_DIR=" + Home(), "VORDA_HOME=" + Home()});
  // What a build with sanitizers is to do is the test run's affair.
  for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS"})
    if (const char* value = std::getenv(name)) append({std::string(name) + "=" + value});
  append(environment);
  append({BuiltProgram("vdserver")});
  append(arguments);
  server_ = std::make_unique<Program>(command);
}

bool Station::Connect(StatusClient& client, int soundCard) {
  const auto connected = [&] {
    return !server_->Runs() || client.Connect(OwnLoopbackAddress(), 6960 + soundCard);
  };
  // The system takes a client before the server does; what is said until then isn't for it.
  return WaitUntil(connected, 20000) && client.WaitFor("Current Recording :");
}

std::vector<std::string> Station::StoryFiles(int number) const {
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(News(number)))
    if (entry.path().extension() == ".RA" + std::to_string(number)) files.push_back(entry.path().string());
  return files;
}

std::vector<Station::Story> Station::Stories() const {
  std::vector<Story> stories;
  for (const auto& entry : fs::directory_iterator(root_ / "tools/kept")) {
    if (entry.path().stem() != "argument") continue;
    const fs::path story = entry.path().parent_path() / ("story" + entry.path().extension().string());
    stories.push_back({ReadWholeFile(entry.path().string()), ReadWholeFile(story.string())});
  }
  return stories;
}

bool Station::WaitForStories(std::size_t count) {
  return WaitUntil([&] { return Stories().size() >= count; }, 20000);
}

}  // namespace vorda::test
