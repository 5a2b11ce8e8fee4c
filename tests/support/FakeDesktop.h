// What an operator and other programs would do, laid down by a test in advance.

#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "platform/Desktop.h"
#include "platform/MessageBox.h"
#include "platform/Process.h"

namespace vorda::test {

// A queue of the boxes that must come, with their answers. A box that was not expected fails the test, and so
// does one that was expected and never came.
class FakeBoxes {
 public:
  FakeBoxes();
  ~FakeBoxes();
  FakeBoxes(const FakeBoxes&) = delete;
  FakeBoxes& operator=(const FakeBoxes&) = delete;

  // The next box shows `text` and is answered by `answer`, after `meanwhile` has run behind it.
  void Expect(std::string text, platform::BoxAnswer answer = platform::BoxAnswer::Ok,
              std::function<void()> meanwhile = {});
  // The last box that came.
  const platform::BoxRequest& Last() const { return last_; }

 private:
  struct Expected {
    std::string text;
    platform::BoxAnswer answer;
    std::function<void()> meanwhile;
  };
  platform::BoxAnswer Answer(const platform::BoxRequest& request);

  std::deque<Expected> expected_;
  platform::BoxRequest last_;
  platform::ScopedHook<platform::BoxAnswer(const platform::BoxRequest&)> hook_;
};

// The same for folder pickers.
class FakeFolderPicker {
 public:
  FakeFolderPicker();
  ~FakeFolderPicker();
  FakeFolderPicker(const FakeFolderPicker&) = delete;
  FakeFolderPicker& operator=(const FakeFolderPicker&) = delete;

  void Expect(std::string title, std::string answer);
  // The last request that came.
  const platform::FolderRequest& Last() const { return last_; }

 private:
  std::deque<std::pair<std::string, std::string>> expected_;
  platform::FolderRequest last_;
  platform::ScopedHook<std::string(const platform::FolderRequest&)> hook_;
};

// Keeps the processes that were to be started, and starts none.
class FakeProcesses {
 public:
  FakeProcesses();

  // Whether a start succeeds; true at first.
  bool canStart = true;
  std::vector<platform::ProcessStart> started;
  // Runs at each start, before it is answered.
  std::function<void(const platform::ProcessStart&)> atStart;

 private:
  platform::ScopedHook<bool(const platform::ProcessStart&, platform::ProcessInformation&)> hook_;
};

}  // namespace vorda::test
