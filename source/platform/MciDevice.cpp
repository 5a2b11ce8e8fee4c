#include "platform/MciDevice.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>
#include <span>
#include <utility>
#include <vector>

#include "platform/MciErrors.h"
#include "platform/NativePath.h"
#include "platform/RiffFile.h"
#include "platform/Text.h"

namespace vorda::platform {

namespace {

struct Device {
  RiffWave wave;
};

std::map<std::string, Device>& OpenDevices() {
  static std::map<std::string, Device> devices;  // by name in capitals
  return devices;
}

struct Word {
  std::string text;
  bool quoted = false;  // then it is never a keyword
};

bool Is(const Word& word, std::string_view keyword) {
  return !word.quoted && SameText(word.text, keyword);
}

struct Request {
  Word device;
  std::map<std::string, std::string> parameters;  // by keyword in capitals

  bool IsForAll() const { return Is(device, "all"); }
  bool Has(const std::string& keyword) const { return parameters.contains(keyword); }
  std::string Text(const std::string& keyword, const std::string& fallback) const {
    const auto parameter = parameters.find(keyword);
    return parameter == parameters.end() ? fallback : parameter->second;
  }
};

struct Keyword {
  const char* word;
  bool takesText = false;
};

struct Command {
  const char* word;
  std::span<const Keyword> keywords;  // besides those that every command knows
  std::int32_t (*run)(const Request& request, std::string& reply);
};

std::int32_t ErrorOfFile(int result) {
  switch (result) {
    case 0:
      return 0;
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
      return kMciFileNotFound;
    case ENOMEM:
    case EMFILE:
    case ENFILE:
      return kMciOutOfMemory;
    default:
      return kMciInvalidFile;
  }
}

std::int32_t Open(const Request& request, std::string& /*reply*/) {
  const std::string name = UpperCase(request.Text("ALIAS", request.device.text));
  if (request.IsForAll() || name == "ALL") return kMciCannotUseAll;
  if (!SameText(request.Text("TYPE", "waveaudio"), "waveaudio")) return kMciInvalidDeviceName;
  if (OpenDevices().contains(name)) return kMciDuplicateAlias;
  Device device;
  const int result = ReadRiffWave(NativePath(request.device.text), device.wave);
  if (result == 0) OpenDevices().emplace(name, device);
  return ErrorOfFile(result);
}

std::int32_t Status(const Request& request, std::string& reply) {
  if (request.IsForAll()) return kMciCannotUseAll;
  const auto device = OpenDevices().find(UpperCase(request.device.text));
  if (device == OpenDevices().end()) return kMciInvalidDeviceName;
  if (!request.Has("LENGTH")) return kMciMissingParameter;
  reply = std::to_string(device->second.wave.milliseconds);
  return 0;
}

std::int32_t Close(const Request& request, std::string& /*reply*/) {
  if (request.IsForAll()) {
    OpenDevices().clear();
    return 0;
  }
  return OpenDevices().erase(UpperCase(request.device.text)) > 0 ? 0 : kMciInvalidDeviceName;
}

constexpr Keyword kEveryCommand[] = {{"WAIT"}, {"NOTIFY"}};
constexpr Keyword kOpenKeywords[] = {{"ALIAS", true}, {"TYPE", true}};
constexpr Keyword kStatusKeywords[] = {{"LENGTH"}};

constexpr Command kCommands[] = {
    {"OPEN", kOpenKeywords, Open},
    {"STATUS", kStatusKeywords, Status},
    {"CLOSE", {}, Close},
};

// Result: 0 or an error's number.
std::int32_t SplitWords(std::string_view command, std::vector<Word>& words) {
  constexpr char kQuote = '"';
  for (;;) {
    command.remove_prefix(std::min(command.find_first_not_of(' '), command.size()));
    if (command.empty()) return 0;
    const bool quoted = command.front() == kQuote;
    if (quoted) command.remove_prefix(1);
    const std::size_t end = command.find(quoted ? kQuote : ' ');
    if (quoted && end == std::string_view::npos) return kMciNoClosingQuote;
    words.push_back({std::string(command.substr(0, end)), quoted});
    command.remove_prefix(std::min(end, command.size()));
    if (quoted) command.remove_prefix(1);
    if (quoted && !command.empty() && command.front() != ' ') return kMciExtraCharacters;
  }
}

const Keyword* FindKeyword(std::span<const Keyword> keywords, const Word& word) {
  const auto found = std::find_if(keywords.begin(), keywords.end(),
                                  [&word](const Keyword& keyword) { return Is(word, keyword.word); });
  return found == keywords.end() ? nullptr : &*found;
}

// Takes the words behind the device. Result: 0 or an error's number.
std::int32_t TakeParameters(const Command& command, std::span<const Word> words, Request& request) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const Keyword* keyword = FindKeyword(command.keywords, words[i]);
    if (keyword == nullptr) keyword = FindKeyword(kEveryCommand, words[i]);
    if (keyword == nullptr) return kMciUnrecognizedKeyword;
    if (request.Has(keyword->word)) return kMciDuplicateFlags;
    std::string text;
    if (keyword->takesText) {
      if (i + 1 == words.size() || words[i + 1].text.empty()) return kMciMissingStringArgument;
      text = words[++i].text;
    }
    request.parameters.emplace(keyword->word, std::move(text));
  }
  return 0;
}

}  // namespace

std::int32_t MciSendString(std::string_view command, std::string* reply) {
  std::string ignored;
  std::string& answer = reply == nullptr ? ignored : *reply;
  answer.clear();
  std::vector<Word> words;
  if (const std::int32_t error = SplitWords(command, words); error != 0) return error;
  if (words.empty()) return kMciMissingCommandString;
  const auto* const found =
      std::find_if(std::begin(kCommands), std::end(kCommands),
                   [&words](const Command& known) { return Is(words.front(), known.word); });
  if (found == std::end(kCommands)) return kMciUnrecognizedCommand;
  if (words.size() < 2 || words[1].text.empty()) return kMciMissingDeviceName;
  Request request;
  request.device = words[1];
  const std::int32_t error = TakeParameters(*found, std::span(words).subspan(2), request);
  return error != 0 ? error : found->run(request, answer);
}

}  // namespace vorda::platform
