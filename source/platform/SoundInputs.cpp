#include "platform/SoundInputs.h"

#include <QMetaObject>
#include <QObject>

#include <algorithm>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

#include "platform/SoundServer.h"

namespace vorda::platform {
namespace {

using Names = std::vector<std::string>;
using Told = std::function<void(const Names&)>;

class Watch;

// Runs in the server's thread, or under its lock.
class InputList : public SoundServer::User {
 public:
  static InputList& Instance() {
    static auto& list = *new InputList;  // as the server, which it belongs to
    return list;
  }

  void Add(Watch& watch);
  void Remove(Watch& watch) { watches_.erase(&watch); }

  void TakeUp() override;
  void LetGo() override { subscribed_ = false; }

 private:
  struct Input {
    std::string name;
    bool monitor;
  };

  InputList() { SoundServer::Instance().Add(*this); }
  void Subscribe();
  void Ask();
  void Take(const pa_source_info* info, int end);

  bool subscribed_ = false;
  bool askAgain_ = false;  // the last question had no answer
  std::vector<Input> asked_;
  std::optional<Names> names_;
  std::set<Watch*> watches_;
};

class Watch : public SoundInputsWatch {
 public:
  explicit Watch(Told told) : told_(std::move(told)) {
    const SoundServer::Lock lock(SoundServer::Instance());
    InputList::Instance().Add(*this);
  }
  ~Watch() override {
    const SoundServer::Lock lock(SoundServer::Instance());
    InputList::Instance().Remove(*this);
  }

  // From any thread, under the lock.
  void Tell(const Names& names) {
    QMetaObject::invokeMethod(
        &receiver_, [told = told_, names] { told(names); }, Qt::QueuedConnection);
  }

 private:
  const Told told_;
  QObject receiver_;  // of the other thread's calls; those under way go with it
};

void InputList::Add(Watch& watch) {
  watches_.insert(&watch);
  if (names_) watch.Tell(*names_);
}

void InputList::TakeUp() {
  if (!std::exchange(subscribed_, true)) {
    Subscribe();
    Ask();
  } else if (askAgain_) {
    Ask();
  }
}

void InputList::Subscribe() {
  pa_context* const context = SoundServer::Instance().Context();
  pa_context_set_subscribe_callback(
      context,
      [](pa_context*, pa_subscription_event_type_t event, std::uint32_t, void* self) {
        if ((event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_CHANGE) return;
        static_cast<InputList*>(self)->Ask();
      },
      this);
  pa_operation* const subscribing =
      pa_context_subscribe(context, PA_SUBSCRIPTION_MASK_SOURCE, nullptr, nullptr);
  if (subscribing != nullptr) pa_operation_unref(subscribing);
}

void InputList::Ask() {
  askAgain_ = false;
  asked_.clear();
  pa_operation* const asking = pa_context_get_source_info_list(
      SoundServer::Instance().Context(),
      [](pa_context*, const pa_source_info* info, int end, void* self) {
        static_cast<InputList*>(self)->Take(info, end);
      },
      this);
  if (asking != nullptr) pa_operation_unref(asking);
}

void InputList::Take(const pa_source_info* info, int end) {
  if (end < 0) {
    askAgain_ = true;
    return SoundServer::Instance().TakeUpBehindFailure();
  }
  if (end == 0) {
    asked_.push_back({info->name, info->monitor_of_sink != PA_INVALID_INDEX});
    return;
  }
  // Two answers may run into one another when inputs change quickly.
  std::sort(asked_.begin(), asked_.end(), [](const Input& a, const Input& b) {
    return std::tie(a.monitor, a.name) < std::tie(b.monitor, b.name);
  });
  Names names;
  for (Input& input : asked_) {
    if (names.empty() || names.back() != input.name) names.push_back(std::move(input.name));
  }
  asked_.clear();
  names_ = std::move(names);
  for (Watch* watch : watches_) watch->Tell(*names_);
  SoundServer::Instance().TakeUp();
}

}  // namespace

std::unique_ptr<SoundInputsWatch> WatchSoundInputs(Told told) {
  return std::make_unique<Watch>(std::move(told));
}

}  // namespace vorda::platform
