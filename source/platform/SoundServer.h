// The program's one connection to the sound server. It runs in a thread of its own and comes back by itself
// when the server was away, or hung.

#pragma once

#include <pulse/pulseaudio.h>

#include <chrono>
#include <set>

namespace vorda::platform {

// All but Instance and the lock runs in the server's thread, or under its lock.
class SoundServer {
 public:
  // Who has something of the server's for as long as the connection stands.
  class User {
   public:
    virtual ~User() = default;
    // There is a connection: what is still missing can be asked for.
    virtual void TakeUp() = 0;
    // The connection is about to go, and all that was had through it.
    virtual void LetGo() = 0;
  };

  // The thread's lock for as long as it lives.
  class Lock {
   public:
    explicit Lock(SoundServer& server) : loop_(server.loop_) { pa_threaded_mainloop_lock(loop_); }
    ~Lock() { pa_threaded_mainloop_unlock(loop_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    pa_threaded_mainloop* loop_;
  };

  // Connects with the first call.
  static SoundServer& Instance();

  void Add(User& user);
  // Lets the user's things go.
  void Remove(User& user);
  // Null, or good for questions only when Ready.
  pa_context* Context() const { return context_; }
  bool Ready() const { return context_ != nullptr && pa_context_get_state(context_) == PA_CONTEXT_READY; }
  // Has all users take up what they miss, now or in half a second.
  void TakeUp();
  void TakeUpLater();
  // As TakeUpLater, right behind a question that failed: when for want of an answer, on a new connection.
  void TakeUpBehindFailure();

 private:
  friend class ScopedSoundServerPulse;

  SoundServer();
  void Connect();
  void LetGo();
  void ContextChanged();
  void LookAgain();
  void FeelPulse();
  void SetPulse(std::chrono::milliseconds pulse);

  pa_threaded_mainloop* loop_;
  pa_context* context_ = nullptr;
  pa_time_event* lookAgain_ = nullptr;
  pa_time_event* feelPulse_ = nullptr;
  pa_usec_t pulse_;
  int unanswered_ = 0;  // pulses since the open question
  bool connectAnew_ = false;
  std::set<User*> users_;
};

// How often the server is asked whether it is there, for as long as this lives; otherwise every eight
// seconds. One that lets two pulses go by without an answer loses its connection.
class ScopedSoundServerPulse {
 public:
  explicit ScopedSoundServerPulse(std::chrono::milliseconds pulse);
  ~ScopedSoundServerPulse();
  ScopedSoundServerPulse(const ScopedSoundServerPulse&) = delete;
  ScopedSoundServerPulse& operator=(const ScopedSoundServerPulse&) = delete;
};

}  // namespace vorda::platform
