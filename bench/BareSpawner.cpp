// Starts a program on demand from a process of a given size: the baseline for the start of the story tool.
//
//     BareSpawner RESIDENT-BYTES PROGRAM
//
// For each byte on its standard input it starts the program and writes to its standard output the moment just
// before, eight bytes of nanoseconds of the monotonic clock.

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Moments.h"

extern char** environ;

namespace {

std::size_t ResidentBytes() {
  std::FILE* file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr) return 0;
  unsigned long pages = 0;
  unsigned long resident = 0;
  const bool read = std::fscanf(file, "%lu %lu", &pages, &resident) == 2;
  std::fclose(file);
  return read ? resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) : 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const std::size_t wanted = std::strtoull(argv[1], nullptr, 10);
  const std::size_t resident = ResidentBytes();
  const std::vector<char> ballast(wanted > resident ? wanted - resident : 0, 1);
  char* arguments[] = {argv[2], nullptr};
  for (char byte = 0; ::read(STDIN_FILENO, &byte, 1) == 1;) {
    pid_t process = 0;
    const std::int64_t before = vorda::bench::Now();
    if (::posix_spawn(&process, argv[2], nullptr, nullptr, arguments, environ) != 0) return 1;
    if (::write(STDOUT_FILENO, &before, sizeof before) != sizeof before) return 1;
    ::waitpid(process, nullptr, 0);
  }
  return ballast.size() > wanted ? 1 : 0;
}
