// A device of the sound server as a stream's source.

#include <pulse/pulseaudio.h>

#include <cstdint>
#include <span>
#include <utility>

#include "platform/SampleSource.h"
#include "platform/SoundServer.h"

namespace vorda::platform {
namespace {

constexpr int kFragmentsPerSecond = 20;

class ServerSource : public SampleSource, private SoundServer::User {
 public:
  ServerSource(std::string device, SampleIntake& intake) : device_(std::move(device)), intake_(intake) {
    SoundServer& server = SoundServer::Instance();
    const SoundServer::Lock lock(server);
    server.Add(*this);
  }
  ~ServerSource() override {
    SoundServer& server = SoundServer::Instance();
    const SoundServer::Lock lock(server);
    server.Remove(*this);
  }

 private:
  void TakeUp() override {
    if (stream_ == nullptr) Start();
  }
  void LetGo() override;
  void Start();
  void StreamChanged();
  void Read();

  const std::string device_;
  SampleIntake& intake_;
  pa_stream* stream_ = nullptr;
};

// Of a stream that was let go before the server had made it.
void EndOnceReady(pa_stream* stream, void*) {
  const pa_stream_state_t state = pa_stream_get_state(stream);
  if (state == PA_STREAM_READY) pa_stream_disconnect(stream);
  if (state == PA_STREAM_FAILED) SoundServer::Instance().TakeUpBehindFailure();
}

// Never waits, and never lets the server put another device in this one's place.
void ServerSource::Start() {
  const pa_sample_spec spec{PA_SAMPLE_S16LE, static_cast<std::uint32_t>(intake_.format().rate),
                            static_cast<std::uint8_t>(intake_.format().channels)};
  if (!pa_sample_spec_valid(&spec)) return;
  stream_ = pa_stream_new(SoundServer::Instance().Context(), "feed", &spec, nullptr);
  if (stream_ == nullptr) return SoundServer::Instance().TakeUpLater();
  pa_stream_set_state_callback(
      stream_, [](pa_stream*, void* self) { static_cast<ServerSource*>(self)->StreamChanged(); }, this);
  pa_stream_set_read_callback(
      stream_, [](pa_stream*, std::size_t, void* self) { static_cast<ServerSource*>(self)->Read(); }, this);
  constexpr auto kServersChoice = static_cast<std::uint32_t>(-1);
  const auto fragment = static_cast<std::uint32_t>(pa_bytes_per_second(&spec) / kFragmentsPerSecond);
  const pa_buffer_attr buffer{kServersChoice, kServersChoice, kServersChoice, kServersChoice, fragment};
  constexpr auto kFlags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
  if (pa_stream_connect_record(stream_, device_.c_str(), &buffer, kFlags) < 0) {
    LetGo();
    SoundServer::Instance().TakeUpLater();
  }
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
  SoundServer::Instance().TakeUpBehindFailure();
  LetGo();  // which has failures of its own
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

}  // namespace

std::unique_ptr<SampleSource> MakeServerSource(const std::string& device, SampleIntake& intake) {
  return std::make_unique<ServerSource>(device, intake);
}

}  // namespace vorda::platform
