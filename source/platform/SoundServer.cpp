#include "platform/SoundServer.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

#include "platform/SampleSource.h"

namespace vorda::platform {
namespace {

constexpr pa_usec_t kLookAgain = 500 * PA_USEC_PER_MSEC;
constexpr int kFragmentsPerSecond = 20;

class ServerSource;

// All but the constructor and Watch runs in the server's thread, or under its lock.
class SoundServer {
 public:
  static SoundServer& Instance() {
    static auto& server = *new SoundServer;  // its thread ends with the program
    return server;
  }

  void Watch(std::function<void(const std::vector<std::string>&)> told);
  void Add(ServerSource& source);
  void Remove(ServerSource& source);
  pa_context* Context() const { return context_; }
  bool Ready() const { return context_ != nullptr && pa_context_get_state(context_) == PA_CONTEXT_READY; }
  void LookAgainLater();

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

 private:
  struct Input {
    std::string name;
    bool monitor;
  };

  SoundServer();
  void Connect();
  void LetGo();
  void ContextChanged();
  void AskForInputs();
  void TakeInput(const pa_source_info* info, int end);
  void Tell();
  void StartSources();

  pa_threaded_mainloop* loop_;
  pa_context* context_ = nullptr;
  pa_time_event* lookAgain_ = nullptr;
  std::set<ServerSource*> sources_;
  std::vector<Input> asked_;
  bool askAgain_ = false;  // the last question had no answer
  std::vector<std::string> inputs_;
  std::function<void(const std::vector<std::string>&)> told_;
};

// One device's stream.
class ServerSource : public SampleSource {
 public:
  ServerSource(std::string device, SampleIntake& intake) : device_(std::move(device)), intake_(intake) {
    SoundServer& server = SoundServer::Instance();
    const SoundServer::Lock lock(server);
    server.Add(*this);
  }
  ~ServerSource() override {
    SoundServer& server = SoundServer::Instance();
    const SoundServer::Lock lock(server);
    LetGo();
    server.Remove(*this);
  }

  void Start();
  void LetGo();
  bool Started() const { return stream_ != nullptr; }

 private:
  void StreamChanged();
  void Read();

  const std::string device_;
  SampleIntake& intake_;
  pa_stream* stream_ = nullptr;
};

void EndOnceReady(pa_stream* stream, void*) {
  if (pa_stream_get_state(stream) == PA_STREAM_READY) pa_stream_disconnect(stream);
}

// Never waits, and never lets the server put another device in this one's place.
void ServerSource::Start() {
  const pa_sample_spec spec{PA_SAMPLE_S16LE, static_cast<std::uint32_t>(intake_.format().rate),
                            static_cast<std::uint8_t>(intake_.format().channels)};
  if (!pa_sample_spec_valid(&spec)) return;
  stream_ = pa_stream_new(SoundServer::Instance().Context(), "feed", &spec, nullptr);
  if (stream_ == nullptr) return;
  pa_stream_set_state_callback(
      stream_, [](pa_stream*, void* self) { static_cast<ServerSource*>(self)->StreamChanged(); }, this);
  pa_stream_set_read_callback(
      stream_, [](pa_stream*, std::size_t, void* self) { static_cast<ServerSource*>(self)->Read(); }, this);
  constexpr auto kServersChoice = static_cast<std::uint32_t>(-1);
  const auto fragment = static_cast<std::uint32_t>(pa_bytes_per_second(&spec) / kFragmentsPerSecond);
  const pa_buffer_attr buffer{kServersChoice, kServersChoice, kServersChoice, kServersChoice, fragment};
  constexpr auto kFlags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
  if (pa_stream_connect_record(stream_, device_.c_str(), &buffer, kFlags) < 0) LetGo();
}

void ServerSource::LetGo() {
  intake_.SetRunning(false);
  if (stream_ == nullptr) return;
  pa_stream_set_read_callback(stream_, nullptr, nullptr);
  if (pa_stream_get_state(stream_) == PA_STREAM_CREATING) {
    // It can't be ended before the server has made it; until then the connection keeps it.
    pa_stream_set_state_callback(stream_, EndOnceReady, nullptr);
  } else {
    pa_stream_set_state_callback(stream_, nullptr, nullptr);
    pa_stream_disconnect(stream_);
  }
  pa_stream_unref(std::exchange(stream_, nullptr));
}

void ServerSource::StreamChanged() {
  const pa_stream_state_t state = pa_stream_get_state(stream_);
  if (state == PA_STREAM_READY) intake_.SetRunning(true);
  if (PA_STREAM_IS_GOOD(state)) return;
  LetGo();
  SoundServer::Instance().LookAgainLater();
}

void ServerSource::Read() {
  const void* bytes = nullptr;
  std::size_t length = 0;
  while (pa_stream_readable_size(stream_) > 0 && pa_stream_peek(stream_, &bytes, &length) == 0 &&
         length > 0) {
    const std::size_t count = length / sizeof(std::int16_t);
    if (bytes != nullptr) {
      intake_.Put(std::span(static_cast<const std::int16_t*>(bytes), count));
    } else {
      // A hole in the server's buffer keeps its place in time.
      intake_.Put(SampleBlock(count));
    }
    pa_stream_drop(stream_);
  }
}

SoundServer::SoundServer() : loop_(pa_threaded_mainloop_new()) {
  pa_threaded_mainloop_start(loop_);
  const Lock lock(*this);
  Connect();
}

void SoundServer::Watch(std::function<void(const std::vector<std::string>&)> told) {
  const Lock lock(*this);
  told_ = std::move(told);
  if (!inputs_.empty()) Tell();
}

void SoundServer::Add(ServerSource& source) {
  sources_.insert(&source);
  if (Ready()) source.Start();
  if (!source.Started()) LookAgainLater();
}

void SoundServer::Remove(ServerSource& source) {
  sources_.erase(&source);
}

void SoundServer::Connect() {
  context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), "Vorda Server");
  if (context_ == nullptr) return LookAgainLater();
  pa_context_set_state_callback(
      context_, [](pa_context*, void* self) { static_cast<SoundServer*>(self)->ContextChanged(); }, this);
  if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    LetGo();
    LookAgainLater();
  }
}

void SoundServer::LetGo() {
  for (ServerSource* source : sources_) source->LetGo();
  if (context_ == nullptr) return;
  pa_context_set_state_callback(context_, nullptr, nullptr);
  pa_context_set_subscribe_callback(context_, nullptr, nullptr);
  pa_context_disconnect(context_);
  pa_context_unref(std::exchange(context_, nullptr));
}

void SoundServer::ContextChanged() {
  const pa_context_state_t state = pa_context_get_state(context_);
  if (state == PA_CONTEXT_READY) {
    pa_context_set_subscribe_callback(
        context_,
        [](pa_context*, pa_subscription_event_type_t event, std::uint32_t, void* self) {
          if ((event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_CHANGE) return;
          static_cast<SoundServer*>(self)->AskForInputs();
        },
        this);
    pa_operation* const subscribing =
        pa_context_subscribe(context_, PA_SUBSCRIPTION_MASK_SOURCE, nullptr, nullptr);
    if (subscribing != nullptr) pa_operation_unref(subscribing);
    AskForInputs();
  } else if (!PA_CONTEXT_IS_GOOD(state)) {
    LetGo();
    LookAgainLater();
  }
}

void SoundServer::AskForInputs() {
  asked_.clear();
  pa_operation* const asking = pa_context_get_source_info_list(
      context_,
      [](pa_context*, const pa_source_info* info, int end, void* self) {
        static_cast<SoundServer*>(self)->TakeInput(info, end);
      },
      this);
  if (asking != nullptr) pa_operation_unref(asking);
}

void SoundServer::TakeInput(const pa_source_info* info, int end) {
  if (end < 0) {
    askAgain_ = true;
    return LookAgainLater();
  }
  if (end == 0) {
    asked_.push_back({info->name, info->monitor_of_sink != PA_INVALID_INDEX});
    return;
  }
  // Two answers may run into one another when inputs change quickly.
  std::sort(asked_.begin(), asked_.end(), [](const Input& a, const Input& b) {
    return std::tie(a.monitor, a.name) < std::tie(b.monitor, b.name);
  });
  inputs_.clear();
  for (Input& input : asked_) {
    if (inputs_.empty() || inputs_.back() != input.name) inputs_.push_back(std::move(input.name));
  }
  asked_.clear();
  Tell();
  StartSources();
}

void SoundServer::Tell() {
  if (!told_ || QCoreApplication::instance() == nullptr) return;
  QMetaObject::invokeMethod(
      QCoreApplication::instance(), [told = told_, names = inputs_] { told(names); }, Qt::QueuedConnection);
}

void SoundServer::StartSources() {
  for (ServerSource* source : sources_) {
    if (!source->Started()) source->Start();
  }
}

void SoundServer::LookAgainLater() {
  if (lookAgain_ != nullptr) return;
  pa_mainloop_api* const api = pa_threaded_mainloop_get_api(loop_);
  timeval when;
  pa_timeval_add(pa_gettimeofday(&when), kLookAgain);
  lookAgain_ = api->time_new(
      api, &when,
      [](pa_mainloop_api* loop, pa_time_event* event, const timeval*, void* self) {
        auto& server = *static_cast<SoundServer*>(self);
        loop->time_free(event);
        server.lookAgain_ = nullptr;
        if (server.context_ == nullptr) {
          server.Connect();
        } else if (server.Ready()) {
          if (std::exchange(server.askAgain_, false)) server.AskForInputs();
          server.StartSources();
        }
      },
      this);
}

}  // namespace

void WatchSoundInputs(std::function<void(const std::vector<std::string>&)> told) {
  SoundServer::Instance().Watch(std::move(told));
}

std::unique_ptr<SampleSource> MakeServerSource(const std::string& device, SampleIntake& intake) {
  return std::make_unique<ServerSource>(device, intake);
}

}  // namespace vorda::platform
