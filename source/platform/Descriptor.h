// An open file of the operating system, closed with its owner.

#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace vorda::platform {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { Close(); }

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

  // Closes now. False when the system reports a failure, which may be one of an earlier write; true when
  // nothing was open.
  bool Close();

 private:
  int number_ = -1;
};

// Opens a native path; no child process inherits it, no terminal becomes the program's. A file that is made
// has mode 0666 less the umask, or `mode`. Not open on failure; errno says why.
Descriptor OpenFile(const std::string& path, int flags, unsigned mode = 0666);

// Writes all of the bytes where the file stands, in as many pieces as the system takes. 0 or an errno; what
// was taken before a failure stays written. `path` is what a fault on demand may name.
int WriteAll(const Descriptor& file, std::string_view bytes, std::string_view path = {});

}  // namespace vorda::platform
