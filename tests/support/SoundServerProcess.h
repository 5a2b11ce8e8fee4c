// A sound server of a test's own: outputs that lead nowhere, in real time, and their monitors as inputs.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/MarkedSound.h"
#include "support/Program.h"
#include "support/TempDirectory.h"

namespace vorda::test {

// What the outputs take; what is played in it comes out of the monitors bit by bit.
struct SoundFormat {
  int channels = 1;
  int rate = 8000;  // hertz
};

class SoundServerProcess {
 public:
  // Doesn't start it yet. It has this many outputs, counted from 1, whenever it starts.
  explicit SoundServerProcess(int outputs, SoundFormat format = {});

  // Starts it, and waits until it answers; false when it never does.
  bool Start();
  // Ends it without a word to its clients, and waits for its end.
  void Kill();
  void Signal(int signal) { server_->Signal(signal); }
  // Leaves its clients as a machine does that is gone from the network: no answers, and no end of their
  // connections. It can then be started again under the same name.
  void Vanish();

  // What a client has to have in its environment, "NAME=value" each.
  std::vector<std::string> Environment() const;
  // The name of an output's monitor.
  static std::string Input(int output);

  // Takes an output and its monitor away, and puts them back; false when the server refuses. A player there
  // has to have ended: the server would move it to another output.
  bool Unplug(int output);
  bool Plug(int output);

  // Plays samples at an output, all of them handed to the server ahead of the first. Its end with 0 is the
  // end of the sound.
  std::unique_ptr<Program> Play(int output, const Samples& samples);
  // How many streams take sound in; -1 when the server doesn't answer.
  int Streams() const;
  // How many connections there are, of those that it has taken or is yet to take; also while it hangs.
  int Connections() const;
  // Has an output and its monitor stand still, or lets them on; false when the server refuses.
  bool Suspend(int output, bool suspended);
  std::string log() const { return server_ ? server_->output() : std::string(); }

 private:
  std::vector<std::string> Client(const std::vector<std::string>& command) const;
  std::string OutputArguments(int output) const;

  const int outputs_;
  const SoundFormat format_;
  TempDirectory directory_;
  std::unique_ptr<Program> server_;
  std::unique_ptr<Program> vanished_;
  int played_ = 0;
};

}  // namespace vorda::test
