#include "wire/Arguments.h"

#include <functional>
#include <limits>
#include <map>

#include "wire/Numbers.h"

namespace vorda::simulator {
namespace {

constexpr std::string_view kHelp =
    R"(vdwire plays wire copy down a serial line, as a wire service would send it.

Usage: vdwire (--port DEVICE | --pty LINK) [options] STORY...
       vdwire (--port DEVICE | --pty LINK) [options] --raw FILE

STORY is a file that holds one story, or a directory: its files are sent in the order of their names.
A file that brings its own SOH..ETX or SOH..EOT is sent with this line's codes instead.

The line
  --port DEVICE        a serial device, such as /dev/ttyUSB0 or a name in /dev/serial/by-id
  --pty LINK           no hardware: makes a pseudo-terminal and the symbolic link LINK to it, waits until
                       somebody has opened it, and takes the link away at the end
  --settings B,P,D,S   baud, parity, data bits, stop bits (default 9600,n,8,1)
  --pace N             bytes a second (default: what the settings give); 0 = as fast as the line takes them
  --chunk N            bytes a write (default 16, as a UART hands them over)

What is sent
  --framing CODES      soh-etx (default), soh-eot, or START:END as two decimal codes
  --gap N              milliseconds of silence ahead of each story but the first (default 0)
  --noise              between the stories, what real lines carry: line ends, NUL, SYN, BEL, DEL, blanks
  --seed N             another noise (default 1); the same number gives the same noise again
  --loop N             plays everything N times; 0 = for ever (default 1)
  --drop N             leaves out story N, to see whether a check notices
  --raw FILE           plays a ready stream byte for byte, its own codes included

When
  --on-enter           waits for a line on standard input before the first byte
  --stay               keeps the line up at the end, until it is interrupted or the reader has gone

What it tells
  --sent FILE          writes the bytes that went down the line
  --plan FILE          writes the bytes that were to go, the story of --drop included
  --verbose            one line a story
  --help               this text

Examples
  vdwire --port /dev/ttyUSB1 --settings 9600,n,8,1 --noise --loop 0 --verbose tests/data/wire/soh-etx
  vdwire --pty /tmp/line --framing soh-eot --pace 0 tests/data/wire/soh-eot

Interrupted (^C) it stops at once and sums up. Exit code: 0 all sent, 1 the line is gone or a file can't be
read or written, 2 wrong arguments, 130 interrupted before the end (an endless loop has none: 0).
)";

std::optional<Framing> ParseFraming(std::string_view text) {
  if (text == "soh-etx") return Framing{.start = 1, .end = 3};
  if (text == "soh-eot") return Framing{.start = 1, .end = 4};
  const std::vector<std::string_view> codes = SplitText(text, ':');
  if (codes.size() != 2) return std::nullopt;
  const std::optional<long> start = ParseNumber(codes[0], 0, 255);
  const std::optional<long> end = ParseNumber(codes[1], 0, 255);
  if (!start || !end) return std::nullopt;
  return Framing{.start = static_cast<unsigned char>(*start), .end = static_cast<unsigned char>(*end)};
}

using Store = std::function<bool(Arguments&, const std::string&)>;

Store Text(std::string Arguments::*member) {
  return [member](Arguments& arguments, const std::string& value) {
    arguments.*member = value;
    return !value.empty();
  };
}

template <typename Number>
Store Whole(Number Arguments::*member, long least, long most) {
  return [=](Arguments& arguments, const std::string& value) {
    const std::optional<long> number = ParseNumber(value, least, most);
    if (number) arguments.*member = static_cast<Number>(*number);
    return number.has_value();
  };
}

template <typename Value>
Store Parsed(Value Arguments::*member, std::optional<Value> (*parse)(std::string_view)) {
  return [=](Arguments& arguments, const std::string& value) {
    const std::optional<Value> parsed = parse(value);
    if (parsed) arguments.*member = *parsed;
    return parsed.has_value();
  };
}

bool StorePace(Arguments& arguments, const std::string& value) {
  const std::optional<long> pace = ParseNumber(value, 0, 1'000'000'000);
  if (pace) arguments.pace = static_cast<double>(*pace);
  return pace.has_value();
}

const std::map<std::string, Store, std::less<>>& Options() {
  constexpr long kMany = std::numeric_limits<int>::max();
  static const std::map<std::string, Store, std::less<>> options = {
      {"--port", Text(&Arguments::port)},
      {"--pty", Text(&Arguments::ptyLink)},
      {"--settings", Parsed(&Arguments::settings, ParseLineSettings)},
      {"--framing", Parsed(&Arguments::framing, ParseFraming)},
      {"--pace", StorePace},
      {"--gap", Whole(&Arguments::gapMilliseconds, 0, kMany)},
      {"--chunk", Whole(&Arguments::chunk, 1, 65536)},
      {"--loop", Whole(&Arguments::rounds, 0, kMany)},
      {"--drop", Whole(&Arguments::drop, 1, kMany)},
      {"--seed", Whole(&Arguments::seed, 0, kMany)},
      {"--sent", Text(&Arguments::sentFile)},
      {"--plan", Text(&Arguments::planFile)},
      {"--raw", Text(&Arguments::rawFile)},
  };
  return options;
}

const std::map<std::string, bool Arguments::*, std::less<>>& Switches() {
  static const std::map<std::string, bool Arguments::*, std::less<>> switches = {
      {"--noise", &Arguments::noise},     {"--on-enter", &Arguments::onEnter}, {"--stay", &Arguments::stay},
      {"--verbose", &Arguments::verbose}, {"--help", &Arguments::help},
  };
  return switches;
}

// What the options, each right by itself, don't say together; "" when they make sense.
std::string Contradiction(const Arguments& arguments) {
  if (arguments.help) return "";
  if (arguments.port.empty() == arguments.ptyLink.empty()) return "give one of --port and --pty";
  if (arguments.rawFile.empty() && arguments.stories.empty())
    return "nothing to send: give stories, or --raw FILE";
  if (!arguments.rawFile.empty() && !arguments.stories.empty()) return "give stories or --raw, not both";
  if (!arguments.rawFile.empty() && (arguments.drop > 0 || arguments.noise)) {
    return "--raw plays the stream as it is: --drop and --noise do not go with it";
  }
  return "";
}

}  // namespace

std::string_view HelpText() {
  return kHelp;
}

std::optional<Arguments> ParseArguments(const std::vector<std::string>& words, std::string& problem) {
  Arguments arguments;
  for (size_t at = 0; at < words.size(); ++at) {
    const std::string& word = words[at];
    if (const auto found = Switches().find(word); found != Switches().end()) {
      arguments.*found->second = true;
    } else if (const auto option = Options().find(word); option != Options().end()) {
      if (at + 1 == words.size()) {
        problem = word + " needs a value";
        return std::nullopt;
      }
      if (!option->second(arguments, words[++at])) {
        problem = word + " can't be \"" + words[at] + "\"";
        return std::nullopt;
      }
    } else if (word.starts_with("--")) {
      problem = "there is no " + word;
      return std::nullopt;
    } else {
      arguments.stories.push_back(word);
    }
  }
  problem = Contradiction(arguments);
  if (!problem.empty()) return std::nullopt;
  return arguments;
}

}  // namespace vorda::simulator
