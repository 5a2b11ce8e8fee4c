// Failures of the file system on demand, so that every error path can be reached in a test, as root too.
//
// The code that calls the operating system asks FileFault first. Outside tests no fault is installed and the
// question costs a comparison. Any thread may ask; faults are installed and lifted by one thread, innermost
// last.

#pragma once

#include <string>
#include <string_view>

namespace vorda::platform {

enum class FileOperation { Open, Write, Sync, Rename, Remove, Stat };

// The errno with which this call of the operation is to fail, 0 when it isn't. Counts the call. `path` is
// what the call names; "" where only a descriptor is at hand.
int FileFault(FileOperation operation, std::string_view path);

// Makes operations fail for as long as it lives: the `nth` one from now (1 = the next), and the `times - 1`
// behind it; of those only whose path holds `pathPart`. Several may be in force at once; each counts for
// itself.
class ScopedFileFault {
 public:
  ScopedFileFault(FileOperation operation, int systemError, int nth = 1, int times = 1,
                  std::string pathPart = {});
  ~ScopedFileFault();
  ScopedFileFault(const ScopedFileFault&) = delete;
  ScopedFileFault& operator=(const ScopedFileFault&) = delete;

  // How often the operation was called so far, the failed calls included.
  int calls() const;

 private:
  friend int FileFault(FileOperation operation, std::string_view path);
  bool TakeCall(FileOperation operation, std::string_view path);

  FileOperation operation_;
  int systemError_;
  int first_;
  int times_;
  std::string pathPart_;
  int calls_ = 0;
  ScopedFileFault* outer_;
};

}  // namespace vorda::platform
