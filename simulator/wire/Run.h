// One run of the simulator, from the first byte to the summing up.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "wire/Arguments.h"
#include "wire/Sender.h"
#include "wire/Stories.h"

namespace vorda::simulator {

class Run {
 public:
  // The arguments, the sender and the plan outlive the run.
  Run(const Arguments& arguments, Sender& sender, Record& plan);

  // Plays the rounds that the arguments ask for.
  Outcome PlayStories(const std::vector<Story>& stories);
  // Plays a ready stream instead, as many times.
  Outcome PlayStream(const std::string& stream);

  // One line that sums up.
  std::string Summary() const;

 private:
  // What goes down the line: a story between its codes, or noise when `name` is empty.
  struct Piece {
    std::string name;
    std::string bytes;
  };

  std::vector<Piece> PlanRound(const std::vector<Story>& stories);
  bool MoreRounds() const { return arguments_.rounds == 0 || round_ < arguments_.rounds; }
  Outcome Play(const Piece& piece);
  Outcome PlayStory(const Piece& piece);

  const Arguments& arguments_;
  Sender& sender_;
  Record& plan_;
  NoiseMaker noise_;
  Instant began_;
  long round_ = 0;
  std::uint64_t story_ = 0;  // number of the story being played, over all rounds
  std::uint64_t whole_ = 0;  // stories that went down the line whole
  std::uint64_t leftOut_ = 0;
};

}  // namespace vorda::simulator
