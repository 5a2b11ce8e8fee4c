// The error numbers of the media control commands and their texts.

#pragma once

#include <cstdint>
#include <string>

namespace vorda::platform {

enum MciError : std::int32_t {
  kMciUnrecognizedKeyword = 259,
  kMciUnrecognizedCommand = 261,
  kMciInvalidDeviceName = 263,
  kMciOutOfMemory = 264,
  kMciMissingCommandString = 267,
  kMciMissingStringArgument = 269,
  kMciMissingParameter = 273,
  kMciFileNotFound = 275,
  kMciCannotUseAll = 279,
  kMciDuplicateAlias = 289,
  kMciMissingDeviceName = 292,
  kMciNoClosingQuote = 294,
  kMciDuplicateFlags = 295,
  kMciInvalidFile = 296,
  kMciExtraCharacters = 305,
};

// The text of an error; "" for a number that no command answers with.
std::string MciErrorText(std::int32_t code);

}  // namespace vorda::platform
