#include "WireSections.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace vorda::bench {

WireSection LoadWireSection(char letter) {
  std::ifstream table(VORDA_WIRE_STREAM ".sections.tsv");
  for (std::string line; std::getline(table, line);) {
    if (!line.starts_with(std::string{letter, '\t'})) continue;
    std::istringstream fields(line.substr(2));
    std::streamoff offset = 0;
    std::size_t length = 0;
    WireSection section;
    fields >> offset >> length >> section.startChar >> section.endChar >> section.stories;
    section.bytes.resize(length);
    std::ifstream stream(VORDA_WIRE_STREAM ".raw", std::ios::binary);
    stream.seekg(offset);
    if (fields && stream.read(section.bytes.data(), static_cast<std::streamsize>(length))) return section;
  }
  std::fprintf(stderr, "section %c of %s can't be read\n", letter, VORDA_WIRE_STREAM);
  std::exit(1);
}

}  // namespace vorda::bench
