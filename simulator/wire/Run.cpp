#include "wire/Run.h"

#include <cstdio>
#include <iostream>

namespace vorda::simulator {

Run::Run(const Arguments& arguments, Sender& sender, Record& plan)
    : arguments_(arguments),
      sender_(sender),
      plan_(plan),
      noise_(arguments.seed, arguments.framing),
      began_(std::chrono::steady_clock::now()) {}

std::vector<Run::Piece> Run::PlanRound(const std::vector<Story>& stories) {
  std::vector<Piece> pieces;
  for (const Story& story : stories) {
    if (arguments_.noise) pieces.push_back({.name = "", .bytes = noise_.Next()});
    pieces.push_back({.name = story.name, .bytes = FramedStory(story, arguments_.framing)});
  }
  if (arguments_.noise) pieces.push_back({.name = "", .bytes = noise_.Next()});
  return pieces;
}

Outcome Run::PlayStories(const std::vector<Story>& stories) {
  for (; MoreRounds(); ++round_) {
    // The whole round is planned before its first byte goes, so that the plan is right even when the line
    // breaks.
    const std::vector<Piece> pieces = PlanRound(stories);
    for (const Piece& piece : pieces) {
      if (!plan_.Append(piece.bytes)) return Outcome::RecordFailed;
    }
    for (const Piece& piece : pieces) {
      if (const Outcome outcome = Play(piece); outcome != Outcome::Done) return outcome;
    }
  }
  return Outcome::Done;
}

Outcome Run::Play(const Piece& piece) {
  if (piece.name.empty()) return sender_.Send(piece.bytes);
  ++story_;
  if (story_ == arguments_.drop) {
    ++leftOut_;
    if (arguments_.verbose) std::cout << "story " << story_ << ": left out, " << piece.name << std::endl;
    return Outcome::Done;
  }
  return PlayStory(piece);
}

Outcome Run::PlayStory(const Piece& piece) {
  if (story_ > 1 && arguments_.gapMilliseconds > 0) {
    const Outcome outcome = sender_.Pause(std::chrono::milliseconds(arguments_.gapMilliseconds));
    if (outcome != Outcome::Done) return outcome;
  }
  const Outcome outcome = sender_.Send(piece.bytes);
  if (outcome != Outcome::Done) return outcome;
  ++whole_;
  if (arguments_.verbose) {
    std::cout << "story " << story_ << ": " << piece.bytes.size() << " bytes, " << piece.name << std::endl;
  }
  return Outcome::Done;
}

Outcome Run::PlayStream(const std::string& stream) {
  for (; MoreRounds(); ++round_) {
    if (!plan_.Append(stream)) return Outcome::RecordFailed;
    if (const Outcome outcome = sender_.Send(stream); outcome != Outcome::Done) return outcome;
  }
  return Outcome::Done;
}

std::string Run::Summary() const {
  const std::chrono::duration<double> length = std::chrono::steady_clock::now() - began_;
  char figures[160] = "";
  std::snprintf(figures, sizeof(figures), "%llu bytes in %.1f s, %.0f bytes a second",
                static_cast<unsigned long long>(sender_.sent()), length.count(),
                static_cast<double>(sender_.sent()) / length.count());
  std::string summary = arguments_.rawFile.empty() ? std::to_string(whole_) + " stories, " : std::string();
  summary += figures;
  if (leftOut_ > 0) summary += "; " + std::to_string(leftOut_) + " left out";
  return summary;
}

}  // namespace vorda::simulator
