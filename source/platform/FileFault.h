// Failures of the file system on demand, so that every error path can be reached in a test, as root too.
//
// The code that calls the operating system asks FileFault first. Outside tests no fault is installed and the
// question costs a comparison. Any thread may ask; faults are installed and lifted by one thread, innermost
// last.

#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace vorda::platform {

enum class FileOperation { Open, Read, Write, Sync, Rename, Remove, Stat, Watch, BeginCopy };

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
  // Asks `fault` ahead of every operation: the errno with which it is to fail, 0 when it isn't. One thread at
  // a time asks, and `fault` calls nothing that asks again.
  using Question = std::function<int(FileOperation operation, std::string_view path)>;
  explicit ScopedFileFault(Question fault);
  ~ScopedFileFault();
  ScopedFileFault(const ScopedFileFault&) = delete;
  ScopedFileFault& operator=(const ScopedFileFault&) = delete;

  // How often the operation, or any with a question, was called so far, the failed calls included.
  int calls() const;

 private:
  friend int FileFault(FileOperation operation, std::string_view path);
  // The errno for this call, 0 for none.
  int TakeCall(FileOperation operation, std::string_view path);

  Question fault_;
  FileOperation operation_{};
  int systemError_ = 0;
  int first_ = 0;
  int times_ = 0;
  std::string pathPart_;
  int calls_ = 0;
  ScopedFileFault* outer_;
};

}  // namespace vorda::platform
