// vdwire: plays wire copy down a serial line, for tests, for the demo, and to try a line at a station.

#include <poll.h>
#include <unistd.h>

#include <iostream>

#include "wire/Arguments.h"
#include "wire/Interrupt.h"
#include "wire/Line.h"
#include "wire/Run.h"
#include "wire/Sender.h"
#include "wire/Stories.h"

namespace vorda::simulator {
namespace {

enum ExitCode { kAllSent = 0, kFailed = 1, kWrongArguments = 2, kInterrupted = 130 };

int Fail(const std::string& problem, ExitCode code = kFailed) {
  std::cerr << "vdwire: " << problem << std::endl;
  return code;
}

// Waits for the end of a line on standard input; its end counts as an interrupt, since nobody can say "go"
// any more.
Outcome AwaitEnter() {
  for (char byte = 0; byte != '\n';) {
    pollfd input = {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    if (!Wait(&input, 1, std::chrono::steady_clock::now() + std::chrono::hours(1))) {
      if (Interrupted()) return Outcome::Interrupted;
      continue;
    }
    if (::read(STDIN_FILENO, &byte, 1) != 1) return Outcome::Interrupted;
  }
  return Outcome::Done;
}

Outcome AwaitStart(const Arguments& arguments, Sender& sender) {
  if (arguments.verbose && !arguments.ptyLink.empty()) {
    std::cout << "waiting for a reader of " << arguments.ptyLink << std::endl;
  }
  if (const Outcome outcome = sender.AwaitReader(); outcome != Outcome::Done) return outcome;
  if (!arguments.onEnter) return Outcome::Done;
  if (arguments.verbose) std::cout << "press Enter to begin" << std::endl;
  return AwaitEnter();
}

int ExitCodeOf(Outcome outcome, const Arguments& arguments) {
  switch (outcome) {
    case Outcome::Done:
      return kAllSent;
    case Outcome::Interrupted:
      return arguments.rounds == 0 ? kAllSent : kInterrupted;
    case Outcome::LineGone:
      return Fail("the line is gone: nobody reads it any more, or the device was taken away");
    case Outcome::RecordFailed:
      return Fail("a file that tells what is sent can't be written");
  }
  return kFailed;
}

int Play(const Arguments& arguments, const std::vector<Story>& stories, const std::string& stream,
         Line& line) {
  std::string problem;
  Record sent;
  Record plan;
  if (!arguments.sentFile.empty() && !sent.Open(arguments.sentFile, problem)) return Fail(problem);
  if (!arguments.planFile.empty() && !plan.Open(arguments.planFile, problem)) return Fail(problem);
  Sender sender(line, sent, arguments.pace.value_or(BytesPerSecond(arguments.settings)), arguments.chunk);
  Outcome outcome = AwaitStart(arguments, sender);
  Run run(arguments, sender, plan);
  if (outcome == Outcome::Done) outcome = stories.empty() ? run.PlayStream(stream) : run.PlayStories(stories);
  if (outcome == Outcome::Done) outcome = sender.Drain();
  std::cout << run.Summary() << std::endl;
  if (outcome == Outcome::Done && arguments.stay) sender.Stay();
  return ExitCodeOf(outcome, arguments);
}

int Main(const std::vector<std::string>& words) {
  std::string problem;
  const std::optional<Arguments> arguments = ParseArguments(words, problem);
  if (!arguments) return Fail(problem + "; vdwire --help tells more", kWrongArguments);
  if (arguments->help) {
    std::cout << HelpText();
    return kAllSent;
  }
  std::optional<std::vector<Story>> stories = std::vector<Story>();
  std::optional<std::string> stream = "";
  if (arguments->rawFile.empty()) {
    stories = ReadStories(arguments->stories, problem);
  } else {
    stream = ReadFileBytes(arguments->rawFile, problem);
  }
  if (!stories || !stream) return Fail(problem);
  if (arguments->rounds > 0 && arguments->drop > stories->size() * static_cast<size_t>(arguments->rounds)) {
    return Fail("there is no story " + std::to_string(arguments->drop) + " to leave out", kWrongArguments);
  }
  CatchInterrupts();
  const std::unique_ptr<Line> line = arguments->ptyLink.empty()
                                         ? OpenDevice(arguments->port, arguments->settings, problem)
                                         : MakePseudoTerminal(arguments->ptyLink, problem);
  if (!line) return Fail(problem);
  return Play(*arguments, *stories, *stream, *line);
}

}  // namespace
}  // namespace vorda::simulator

int main(int argc, char** argv) {
  return vorda::simulator::Main({argv + 1, argv + argc});
}
