#include "platform/MessageBox.h"

#include <cstdio>
#include <cstdlib>

namespace vorda::platform {

Hook<BoxAnswer(const BoxRequest&)>& MessageBoxHook() {
  static Hook<BoxAnswer(const BoxRequest&)> hook([](const BoxRequest& request) -> BoxAnswer {
    std::fprintf(stderr, "A message box without a desktop: %s\n", request.text.c_str());
    std::abort();
  });
  return hook;
}

BoxAnswer ShowMessageBox(const BoxRequest& request) {
  return MessageBoxHook()(request);
}

void ShowMessageBox(const std::string& text, BoxIcon icon) {
  ShowMessageBox(BoxRequest{text, icon});
}

BoxAnswer RefusalOf(BoxButtons buttons) {
  switch (buttons) {
    case BoxButtons::Ok:
      return BoxAnswer::Ok;
    case BoxButtons::YesNo:
      return BoxAnswer::No;
    default:
      return BoxAnswer::Cancel;
  }
}

}  // namespace vorda::platform
