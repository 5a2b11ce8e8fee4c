// The settings of the audio wall, shared with the playout product and read once at start.
// docs/formats/server-ini.md lists them. Most are held for the shared record's sake and no behaviour of this
// server hangs on them.

#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace vorda {

// The fields' names are those of the keys.
struct AudioWallSettings {
  // [CartPlayers]
  std::int16_t Instant = 0;
  std::int16_t Record = 0;
  std::int16_t BasicFireButtons = 0;
  // [Carts]
  std::int16_t KeyboardClose = 0;
  std::int16_t MouseClose = 0;
  std::int16_t HighlightPlayedCarts = 0;
  std::int32_t HighlightPLayedCartsInterval = 0;
  // [Audio]
  std::int16_t MaintainLegacyCartList = 0;      // records are written to the parts' lists
  std::int16_t UseIndividualCartListFiles = 0;  // records are written to the carts' own files, and read there
  std::int16_t SelectedCartMode = 0;
  std::int32_t SelectedCartColor = 0;
  std::int32_t SelectedCartColorText = 0;
  std::int32_t CartPlayedRecentColor = 0;
  std::int16_t ShowTimesBarInColor = 0;
  std::int32_t TimesBarColor = 0;
  std::int32_t TimesBarColorText = 0;
  std::int32_t CartNumberColor = 0;
  std::int32_t EmptyCartNumberColor = 0;
  std::int32_t EmptyCartBackColor = 0;
  std::int32_t EmptyCartForeColor = 0;
  std::int16_t CartFontBold = 0;
  std::int16_t CartFontSize = 0;
  std::int16_t DisplayCartTimeHours = 0;
  std::string CartFontName;
  std::int16_t GeneralVolume = 0;
  std::int16_t SweptVolume = 0;
  float FadeFire = 0;
  std::int16_t PlayCartsInstantly = 0;
  std::int16_t ForceRecordPlayerLocking = 0;
  std::int16_t DisplayRecordingInLastPlayer = 0;
  std::int16_t AllowAudioFileLinking = 0;
  std::int32_t KHz = 0;  // hertz, despite its name
  std::int16_t Channels = 0;
};
extern AudioWallSettings gAudioWallSettings;

struct CartPlayerStatus {
  std::int16_t PlayerStatus = 0;
  std::int16_t Sequence = 0;  // the player's place among those of status 1, 0 = none
  std::int32_t BackColor = 0;
  std::int32_t ForeColor = 0;
};
inline constexpr int kCartPlayers = 6;
extern std::array<CartPlayerStatus, kCartPlayers> gCartPlayerStatus;

extern std::int16_t gSelectedPlayerCount;  // players of status 1
extern std::int16_t gPlayerCount;          // players of any status but 0
extern std::int16_t gUsablePlayerCount;    // the same count, for the function keys

// The program that opens a cart's audio; "" = none.
extern std::string gAudioEditor;

// Reads all of it, and the locations of gAudioWallParts and the colours of gBlankCartInfo. A number that
// doesn't fit its field stops the program (Overflow).
void ReadAudioWallSettings(const std::string& iniFile);

}  // namespace vorda
