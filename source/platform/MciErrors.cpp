#include "platform/MciErrors.h"

#include <algorithm>
#include <iterator>

namespace vorda::platform {

namespace {

struct ErrorRow {
  std::int32_t code;
  const char* text;
};

constexpr ErrorRow kErrors[] = {
    {kMciUnrecognizedKeyword, "The driver cannot recognize the specified command parameter."},
    {kMciUnrecognizedCommand, "The driver cannot recognize the specified command."},
    {kMciInvalidDeviceName, "The specified device is not open or is not recognized by MCI."},
    {kMciOutOfMemory,
     "There is not enough memory available for this task. Quit one or more applications to increase "
     "available memory, and then try again."},
    {kMciMissingCommandString, "No command was specified."},
    {kMciMissingStringArgument,
     "The specified command requires a character-string parameter. Please provide one."},
    {kMciMissingParameter, "The specified command requires a parameter. Please supply one."},
    {kMciFileNotFound, "Cannot find the specified file. Make sure the path and filename are correct."},
    {kMciCannotUseAll, "Cannot use 'all' as the device name with the specified command."},
    {kMciDuplicateAlias,
     "The specified alias is already being used in this application. Use a unique alias."},
    {kMciMissingDeviceName,
     "The specified command requires an alias, file, driver, or device name. Please supply one."},
    {kMciNoClosingQuote,
     "A closing double-quotation mark is missing from the parameter value. Please supply one."},
    {kMciDuplicateFlags, "A parameter or value was specified twice. Only specify it once."},
    {kMciInvalidFile,
     "The specified file cannot be played on the specified MCI device. The file may be corrupt, or not in "
     "the correct format."},
    {kMciExtraCharacters, "Cannot specify extra characters after a string enclosed in quotation marks."},
};

}  // namespace

std::string MciErrorText(std::int32_t code) {
  const auto* const found = std::find_if(std::begin(kErrors), std::end(kErrors),
                                         [code](const ErrorRow& row) { return row.code == code; });
  return found == std::end(kErrors) ? std::string() : found->text;
}

}  // namespace vorda::platform
