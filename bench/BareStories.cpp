// The least that has to be done for a number of stories: make a file, write it, close it, start the story
// tool on it, collect the tools that have ended. The baseline for stories at full speed.
//
//     BareStories FILE LENGTH DIRECTORY TOOL CONFIGURATION
//
// Like the server it does not wait for a tool before it goes on. Ends when the last tool has.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <string_view>

#include "StoryFile.h"

extern char** environ;

namespace {

bool Write(const std::string& path, std::string_view text) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const bool written = ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  return ::close(file) == 0 && written;
}

bool Start(char* tool, std::string argument) {
  char* arguments[] = {tool, argument.data(), nullptr};
  pid_t process = 0;
  return ::posix_spawn(&process, tool, nullptr, nullptr, arguments, environ) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 6) return 2;
  const vorda::bench::StoryFile stories(argv[1], argv[2]);
  const std::string directory = argv[3];
  for (std::size_t i = 0; i < stories.Count(); ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "/VOR%08X.RA1", static_cast<unsigned>(i));
    const std::string path = directory + name;
    if (!Write(path, stories.Text(i)) || !Start(argv[4], path + "|" + argv[5])) return 1;
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
  }
  while (::waitpid(-1, nullptr, 0) > 0) {
  }
  return 0;
}
