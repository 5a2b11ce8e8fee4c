// A story tool that does next to nothing: it says which story it was given. The story's file name goes, as
// one line, into the pipe that VORDA_BENCH_PIPE names. The story stays, so that it can be looked at
// afterwards.

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

int main(int argc, char** argv) {
  const char* path = std::getenv("VORDA_BENCH_PIPE");
  if (argc < 2 || path == nullptr) return 1;
  std::string_view story = argv[1];
  const std::size_t bar = story.find('|');
  if (bar == std::string_view::npos) return 1;
  // The bar's place takes the line's end.
  argv[1][bar] = '\n';
  story = story.substr(0, bar + 1);
  story.remove_prefix(story.rfind('/') + 1);
  // Nobody may be left to read: then the tool must not wait. Otherwise it has to, for room in the pipe.
  const int pipe = ::open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (pipe < 0 || ::fcntl(pipe, F_SETFL, 0) != 0) return 1;
  return ::write(pipe, story.data(), story.size()) == static_cast<ssize_t>(story.size()) ? 0 : 1;
}
