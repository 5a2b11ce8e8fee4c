#include "support/SoundServerProcess.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>

#include "platform/Descriptor.h"
#include "support/EventLoop.h"

namespace vorda::test {

namespace {

constexpr int kPatience = 30000;  // ms

// Whether it takes a connection and ends it for the nonsense that it is sent: by then nothing of this
// connection is left there.
bool Answers(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const platform::Descriptor probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (::connect(probe.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    return false;
  const std::string nonsense(64, '\xFF');
  char byte = 0;
  pollfd answer{probe.number(), POLLIN, 0};
  return ::send(probe.number(), nonsense.data(), nonsense.size(), MSG_NOSIGNAL) > 0 &&
         ::poll(&answer, 1, kPatience) == 1 && ::read(probe.number(), &byte, 1) <= 0;
}

}  // namespace

SoundServerProcess::SoundServerProcess(int outputs, SoundFormat format)
    : outputs_(outputs), format_(format) {}

// Nothing of a user's own server is read or touched. The socket comes last: by then the outputs are there.
// One that a killed test has left ends by itself.
bool SoundServerProcess::Start() {
  const std::string& home = directory_.path();
  std::vector<std::string> command = {"env",
                                      "-i",
                                      "PATH=/usr/bin:/bin",
                                      "HOME=" + home,
                                      "XDG_RUNTIME_DIR=" + home,
                                      "XDG_CONFIG_HOME=" + home,
                                      "pulseaudio",
                                      "-n",
                                      "--daemonize=no",
                                      "--use-pid-file=no",
                                      "--exit-idle-time=60",
                                      "--realtime=no",
                                      "--high-priority=no"};
  for (int output = 1; output <= outputs_; ++output)
    command.push_back("--load=module-null-sink " + OutputArguments(output));
  command.push_back("--load=module-native-protocol-unix auth-anonymous=1 auth-cookie-enabled=0 socket=" +
                    (directory_ / "socket"));
  server_ = std::make_unique<Program>(command);
  return WaitUntil([this] { return !server_->Runs() || Answers(directory_ / "socket"); }, kPatience) &&
         server_->Runs();
}

void SoundServerProcess::Kill() {
  server_->Signal(SIGKILL);
  server_->ExitCode();
}

void SoundServerProcess::Vanish() {
  server_->Signal(SIGSTOP);
  vanished_ = std::move(server_);
  ::unlink((directory_ / "socket").c_str());
}

std::vector<std::string> SoundServerProcess::Environment() const {
  return {"PULSE_SERVER=unix:" + (directory_ / "socket"), "PULSE_COOKIE=" + (directory_ / "cookie")};
}

std::string SoundServerProcess::Input(int output) {
  return "feed" + std::to_string(output) + ".monitor";
}

// Without rewinds the first block comes at once, and not up to two seconds late.
std::string SoundServerProcess::OutputArguments(int output) const {
  return "sink_name=feed" + std::to_string(output) + " format=s16le rate=" + std::to_string(format_.rate) +
         " channels=" + std::to_string(format_.channels) + " norewinds=1";
}

std::vector<std::string> SoundServerProcess::Client(const std::vector<std::string>& command) const {
  std::vector<std::string> words = {"env", "-i", "PATH=/usr/bin:/bin", "HOME=" + directory_.path()};
  for (const std::string& word : Environment()) words.push_back(word);
  words.insert(words.end(), command.begin(), command.end());
  return words;
}

bool SoundServerProcess::Unplug(int output) {
  Program list(Client({"pactl", "list", "short", "modules"}));
  if (list.ExitCode() != 0) return false;
  const std::string modules = list.output();
  const std::size_t place = modules.find("\tmodule-null-sink\t" + OutputArguments(output));
  if (place == std::string::npos) return false;
  const std::size_t line = modules.rfind('\n', place) + 1;  // 0 for the first one
  return RunToEnd(Client({"pactl", "unload-module", modules.substr(line, place - line)})) == 0;
}

bool SoundServerProcess::Plug(int output) {
  return RunToEnd(Client({"pactl", "load-module", "module-null-sink", OutputArguments(output)})) == 0;
}

std::unique_ptr<Program> SoundServerProcess::Play(int output, const Samples& samples) {
  const std::string file = directory_ / ("sound" + std::to_string(++played_));
  const std::string bytes = BytesOf(samples);
  WriteWholeFile(file, bytes);
  return std::make_unique<Program>(
      Client({"pacat", "--playback", "--raw", "--format=s16le", "--rate=" + std::to_string(format_.rate),
              "--channels=" + std::to_string(format_.channels), "--latency=" + std::to_string(bytes.size()),
              "--device=feed" + std::to_string(output), file}));
}

bool SoundServerProcess::Suspend(int output, bool suspended) {
  return RunToEnd(
             Client({"pactl", "suspend-sink", "feed" + std::to_string(output), suspended ? "1" : "0"})) == 0;
}

// The kernel's list has a line for each end that bears the socket's name, the one that listens among them.
int SoundServerProcess::Connections() const {
  const std::string ends = ReadWholeFile("/proc/net/unix");
  const std::string name = " " + (directory_ / "socket") + "\n";
  int count = -1;
  for (std::size_t place = ends.find(name); place != std::string::npos; place = ends.find(name, place + 1))
    ++count;
  return count;
}

int SoundServerProcess::Streams() const {
  Program list(Client({"pactl", "list", "short", "source-outputs"}));
  if (list.ExitCode() != 0) return -1;
  const std::string streams = list.output();
  return static_cast<int>(std::count(streams.begin(), streams.end(), '\n'));
}

}  // namespace vorda::test
