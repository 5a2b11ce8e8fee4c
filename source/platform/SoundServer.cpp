#include "platform/SoundServer.h"

#include <utility>

namespace vorda::platform {
namespace {

constexpr pa_usec_t kLookAgain = 500 * PA_USEC_PER_MSEC;
// Two of them and what is left of one are less than the half minute that the library gives a question.
constexpr std::chrono::milliseconds kPulse = std::chrono::seconds(8);
// Counted in pulses and not by the clock: a program that was itself held up finds the answer that came
// meanwhile ahead of the second one.
constexpr int kMostUnanswered = 2;

timeval In(pa_usec_t duration) {
  timeval moment;
  return *pa_timeval_add(pa_gettimeofday(&moment), duration);
}

}  // namespace

SoundServer& SoundServer::Instance() {
  static auto& server = *new SoundServer;  // its thread ends with the program
  return server;
}

SoundServer::SoundServer() : loop_(pa_threaded_mainloop_new()) {
  pa_threaded_mainloop_start(loop_);
  const Lock lock(*this);
  SetPulse(kPulse);
  Connect();
}

void SoundServer::Add(User& user) {
  users_.insert(&user);
  if (Ready()) user.TakeUp();
}

void SoundServer::Remove(User& user) {
  user.LetGo();
  users_.erase(&user);
}

void SoundServer::Connect() {
  context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), "Vorda Server");
  if (context_ == nullptr) return TakeUpLater();
  pa_context_set_state_callback(
      context_, [](pa_context*, void* self) { static_cast<SoundServer*>(self)->ContextChanged(); }, this);
  if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    LetGo();
    TakeUpLater();
  }
}

// The server takes away what belonged to a connection, and what it has still to make for it it never makes.
void SoundServer::LetGo() {
  for (User* user : users_) user->LetGo();
  connectAnew_ = false;
  unanswered_ = 0;
  if (context_ == nullptr) return;
  pa_context_set_state_callback(context_, nullptr, nullptr);
  pa_context_set_subscribe_callback(context_, nullptr, nullptr);
  pa_context_disconnect(context_);
  pa_context_unref(std::exchange(context_, nullptr));
}

void SoundServer::ContextChanged() {
  const pa_context_state_t state = pa_context_get_state(context_);
  if (state == PA_CONTEXT_READY) {
    TakeUp();
  } else if (!PA_CONTEXT_IS_GOOD(state)) {
    LetGo();
    TakeUpLater();
  }
}

void SoundServer::TakeUp() {
  for (User* user : users_) user->TakeUp();
}

void SoundServer::TakeUpLater() {
  if (lookAgain_ != nullptr) return;
  pa_mainloop_api* const api = pa_threaded_mainloop_get_api(loop_);
  const timeval when = In(kLookAgain);
  lookAgain_ = api->time_new(
      api, &when,
      [](pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
        static_cast<SoundServer*>(self)->LookAgain();
      },
      this);
}

// What the server was asked for and has not answered it may still make when it comes back to itself, and
// nobody would know of it.
void SoundServer::TakeUpBehindFailure() {
  if (context_ != nullptr && pa_context_errno(context_) == PA_ERR_TIMEOUT) connectAnew_ = true;
  TakeUpLater();
}

void SoundServer::LookAgain() {
  pa_threaded_mainloop_get_api(loop_)->time_free(std::exchange(lookAgain_, nullptr));
  if (connectAnew_) LetGo();
  if (context_ == nullptr) {
    Connect();
  } else if (Ready()) {
    TakeUp();
  }
}

// A server that hangs, or whose machine has gone from the network, breaks no connection: streams that only
// take in would wait for ever. Whether a stream delivers tells nothing, since an input may be suspended.
void SoundServer::FeelPulse() {
  const timeval next = In(pulse_);
  pa_threaded_mainloop_get_api(loop_)->time_restart(feelPulse_, &next);
  if (!Ready()) return;
  if (unanswered_ == kMostUnanswered) {
    LetGo();
    return Connect();
  }
  if (unanswered_++ > 0) return;
  pa_operation* const asking = pa_context_get_server_info(
      context_,
      [](pa_context*, const pa_server_info*, void* self) {
        static_cast<SoundServer*>(self)->unanswered_ = 0;
      },
      this);
  if (asking != nullptr) pa_operation_unref(asking);
}

void SoundServer::SetPulse(std::chrono::milliseconds pulse) {
  pa_mainloop_api* const api = pa_threaded_mainloop_get_api(loop_);
  pulse_ = static_cast<pa_usec_t>(pulse.count()) * PA_USEC_PER_MSEC;
  const timeval next = In(pulse_);
  if (feelPulse_ != nullptr) return api->time_restart(feelPulse_, &next);
  feelPulse_ = api->time_new(
      api, &next,
      [](pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
        static_cast<SoundServer*>(self)->FeelPulse();
      },
      this);
}

ScopedSoundServerPulse::ScopedSoundServerPulse(std::chrono::milliseconds pulse) {
  SoundServer& server = SoundServer::Instance();
  const SoundServer::Lock lock(server);
  server.SetPulse(pulse);
}

ScopedSoundServerPulse::~ScopedSoundServerPulse() {
  SoundServer& server = SoundServer::Instance();
  const SoundServer::Lock lock(server);
  server.SetPulse(kPulse);
}

}  // namespace vorda::platform
