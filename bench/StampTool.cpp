// A story tool that says when it began: the first thing it does is to read the clock. The moment goes as
// eight bytes of nanoseconds to the datagram socket that VORDA_BENCH_SOCKET names. Removes its story, so that
// a long run leaves none behind.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Moments.h"

int main(int argc, char** argv) {
  const std::int64_t began = vorda::bench::Now();
  const char* path = std::getenv("VORDA_BENCH_SOCKET");
  sockaddr_un place{};
  place.sun_family = AF_UNIX;
  if (path == nullptr || std::strlen(path) >= sizeof place.sun_path) return 1;
  std::strcpy(place.sun_path, path);
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const ssize_t sent =
      ::sendto(socket, &began, sizeof began, 0, reinterpret_cast<const sockaddr*>(&place), sizeof place);
  if (argc > 1) {
    if (char* bar = std::strchr(argv[1], '|')) *bar = '\0';
    ::unlink(argv[1]);
  }
  return sent == sizeof began ? 0 : 1;
}
