// The program's command line, the tokens of a text, and the arguments that a started program gets.
//
// Input: where the tokens begin (two bytes), what parts them (one byte), the text; a NUL in it parts the
// program's own arguments.

#include <string>
#include <utility>
#include <vector>

#include "Target.h"
#include "platform/MessageBox.h"
#include "platform/Process.h"
#include "platform/Text.h"
#include "shell/GeneralFunctions.h"
#include "shell/ServerState.h"

namespace vorda::fuzz {
namespace {

using Texts = std::vector<std::string>;

Texts PartedAtNul(std::string_view text) {
  Texts parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\0'), text.size());
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

void TakeArguments(const Texts& arguments) {
  std::vector<const char*> pointers;
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  TakeCommandLine(static_cast<int>(pointers.size()), pointers.data());
  Require(platform::Trim(gCommandLine) == gCommandLine, "no blank at either end of the command line");
  Require(platform::UpperCase(gCommandLine) == gCommandLine, "the command line is in capitals");
}

void CheckIniName(const Texts& arguments) {
  int boxes = 0;
  const platform::ScopedHook<platform::BoxAnswer(const platform::BoxRequest&)> operators(
      platform::MessageBoxHook(), [&boxes](const platform::BoxRequest&) {
        ++boxes;
        return platform::BoxAnswer::Ok;
      });
  gIniFileName = "before";
  TakeArguments(arguments);
  const bool found = ResolveIniFileName();
  const std::size_t option = gCommandLine.find("/P");
  const bool named = option != std::string::npos;
  Require(boxes == (found ? 0 : 1), "the operator hears of a wrong form, and of nothing else");
  Require(found == (!named || gCommandLine.find(' ', option) != std::string::npos),
          "only an option without a blank behind it is wrong");
  if (!found) {
    Require(gIniFileName == "before", "a wrong form names no file");
  } else if (!named) {
    Require(gIniFileName == "vdServer.INI", "without the option it is the usual file");
  } else {
    Require(!gIniFileName.empty() && gIniFileName.find(' ') == std::string::npos, "the name is one word");
    const std::size_t blank = gCommandLine.find(' ', option);
    const std::size_t word = gCommandLine.find_first_not_of(' ', blank);
    Require(gCommandLine.compare(word, gIniFileName.size(), gIniFileName) == 0, "and the first one behind");
  }
}

// The token by the rule's own words, position by position, which count from 1.
struct Token {
  std::string text;
  std::int32_t endPosition;
};
Token PlainToken(std::string_view text, std::int32_t position, char delimiter, std::int32_t endPosition) {
  std::size_t at = static_cast<std::size_t>(std::max(position, 1));
  while (at <= text.size() && text[at - 1] == ' ') ++at;
  if (at > text.size()) return {"", endPosition};
  std::string token;
  for (; at <= text.size(); ++at) {
    if (text[at - 1] == delimiter) return {platform::Trim(token), static_cast<std::int32_t>(at)};
    token += text[at - 1];
  }
  return {platform::Trim(token), 0};
}

void CheckTokens(std::string_view text, std::int32_t position, char delimiter) {
  constexpr std::int32_t kUntouched = -7;
  // Goes on behind each token, as a caller does; every turn comes nearer to the end.
  for (;;) {
    std::int32_t end = kUntouched;
    const std::int32_t asked = position;
    const std::string token = GetToken(text, position, delimiter, end);
    const Token plain = PlainToken(text, asked, delimiter, kUntouched);
    Require(token == plain.text && end == plain.endPosition, "the token is the plain reader's");
    Require(position == std::max(asked, 1), "a position below 1 counts as 1, any other stays");
    if (end == 0 || end == kUntouched) return;
    Require(end >= position, "the end lies behind the position");
    position = end + 1;
  }
}

// One argument as the C run-time's reader takes it apart again.
std::string Quoted(const std::string& argument) {
  std::string quoted = "\"";
  std::size_t backslashes = 0;
  for (const char c : argument) {
    if (c == '"') quoted.append(backslashes + 1, '\\');
    backslashes = c == '\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, '\\') + '"';
}

std::string JoinedQuoted(const Texts& arguments) {
  std::string joined;
  for (const std::string& argument : arguments) joined += Quoted(argument) + " \t";
  return joined;
}

void CheckArguments(std::string_view text, const Texts& parts) {
  Require(platform::SplitArguments(JoinedQuoted(parts)) == parts,
          "arguments in quotation marks come through");
  const Texts split = platform::SplitArguments(text);
  Require(platform::SplitArguments(JoinedQuoted(split)) == split, "so do those that a text was split into");
  std::size_t length = 0;
  for (const std::string& argument : split) length += argument.size();
  Require(length <= text.size(), "nothing is made up");
  if (text.find_first_of("\"\\ \t") == std::string_view::npos) {
    Require(split == (text.empty() ? Texts{} : Texts{std::string(text)}), "a plain text is one argument");
  }
}

}  // namespace
}  // namespace vorda::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vorda::fuzz;
  Input input(bytes, size);
  const std::int16_t position = input.Short();
  const char delimiter = static_cast<char>(input.Byte());
  const std::string_view text = input.Rest();
  const Texts parts = PartedAtNul(text);
  CheckIniName(parts);
  CheckTokens(text, position, delimiter);
  CheckArguments(text, parts);
  return 0;
}
