#include "support/FakeDesktop.h"

#include <gtest/gtest.h>

#include <utility>

namespace vorda::test {

FakeBoxes::FakeBoxes()
    : hook_(platform::MessageBoxHook(),
            [this](const platform::BoxRequest& request) { return Answer(request); }) {}

FakeBoxes::~FakeBoxes() {
  for (const Expected& box : expected_) ADD_FAILURE() << "This box never came: " << box.text;
}

void FakeBoxes::Expect(std::string text, platform::BoxAnswer answer, std::function<void()> meanwhile) {
  expected_.push_back({std::move(text), answer, std::move(meanwhile)});
}

platform::BoxAnswer FakeBoxes::Answer(const platform::BoxRequest& request) {
  last_ = request;
  if (expected_.empty()) {
    ADD_FAILURE() << "An unexpected box: " << request.text;
    return platform::RefusalOf(request.buttons);
  }
  const Expected box = std::move(expected_.front());
  expected_.pop_front();
  EXPECT_EQ(request.text, box.text);
  if (box.meanwhile) box.meanwhile();
  return box.answer;
}

FakeFolderPicker::FakeFolderPicker()
    : hook_(platform::FolderPickerHook(), [this](const platform::FolderRequest& request) -> std::string {
        last_ = request;
        if (expected_.empty()) {
          ADD_FAILURE() << "An unexpected folder picker: " << request.title;
          return {};
        }
        const auto [title, answer] = std::move(expected_.front());
        expected_.pop_front();
        EXPECT_EQ(request.title, title);
        return answer;
      }) {}

FakeFolderPicker::~FakeFolderPicker() {
  for (const auto& [title, answer] : expected_) ADD_FAILURE() << "This folder picker never came: " << title;
}

void FakeFolderPicker::Expect(std::string title, std::string answer) {
  expected_.emplace_back(std::move(title), std::move(answer));
}

FakeProcesses::FakeProcesses()
    : hook_(platform::ProcessHook(),
            [this](const platform::ProcessStart& start, platform::ProcessInformation& information) {
              started.push_back(start);
              if (atStart) atStart(start);
              if (canStart) information.processId = static_cast<std::int64_t>(started.size());
              return canStart;
            }) {}

}  // namespace vorda::test
