// The server INI: which feeds exist, and the feed windows that it makes.

#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "config/Vorda_Common_API.h"
#include "feed/frmWireFeed.h"

namespace vorda {

// The feed windows, that of feed n in slot n-1; empty until the feed is made. They live for the whole run.
extern std::array<std::unique_ptr<frmWireFeed>, kFeedCount>& gFeedForms;
// The feed windows shown so far.
extern std::int16_t gFeedFormCount;

// The window in the slot of feed `number` (1 to 4), made when the slot is empty.
frmWireFeed& FeedForm(std::int16_t number);

// Reads the server INI, makes and shows a window for each configured feed, and asks for a news directory when
// feed 1 has none. Result: 0 when feed 1 is configured; -1 when it is not or the command line is invalid: the
// program then closes.
std::int32_t ReadServerConfig();

}  // namespace vorda
