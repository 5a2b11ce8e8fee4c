#include "carts/AudioWallSettings.h"

#include <cmath>
#include <limits>
#include <optional>
#include <variant>

#include "carts/Orvane_Audio_Routines.h"
#include "platform/NumericValue.h"
#include "platform/ProfileFile.h"
#include "platform/RunTimeError.h"
#include "platform/WaveDevices.h"

namespace vorda {

AudioWallSettings gAudioWallSettings;
std::array<CartPlayerStatus, kCartPlayers> gCartPlayerStatus;
std::int16_t gSelectedPlayerCount = 0;
std::int16_t gPlayerCount = 0;
std::int16_t gUsablePlayerCount = 0;
std::string gAudioEditor;

namespace {

using S = AudioWallSettings;

// A number that the file holds as text: read as far as it is a number.
template <class Number>
struct TextNumber {
  Number S::*member;
};

using SettingMember = std::variant<std::int16_t S::*, std::int32_t S::*, std::string S::*, TextNumber<float>,
                                   TextNumber<std::int32_t>, TextNumber<std::int16_t>>;

struct SettingKey {
  const char* section;
  const char* name;
  SettingMember member;
  std::int32_t defaultNumber = 0;
  const char* defaultText = "";
};

constexpr std::int32_t kButtonFace = static_cast<std::int32_t>(0x8000000F);
constexpr std::int32_t kButtonText = static_cast<std::int32_t>(0x80000012);
constexpr std::int16_t kMostRecordPlayers = 6;

// Each in the order in which it is read.
const SettingKey kKeysAheadOfLocations[] = {
    {"CartPlayers", "BasicFireButtons", &S::BasicFireButtons},
    {"Carts", "KeyboardClose", &S::KeyboardClose},
    {"Carts", "MouseClose", &S::MouseClose, 1},
};

const SettingKey kKeysBehindLocations[] = {
    {"Audio", "MaintainLegacyCartList", &S::MaintainLegacyCartList, 1},
    {"Audio", "UseIndividualCartListFiles", &S::UseIndividualCartListFiles},
    {"Audio", "SelectedCartMode", &S::SelectedCartMode, 1},
    {"Audio", "SelectedCartColor", &S::SelectedCartColor, 0xC00000},
    {"Audio", "SelectedCartColorText", &S::SelectedCartColorText, 0xFFFFFF},
    {"Audio", "CartPlayedRecentColor", &S::CartPlayedRecentColor, 255},
    {"Audio", "ShowTimesBarInColor", &S::ShowTimesBarInColor, 1},
    {"Audio", "TimesBarColor", &S::TimesBarColor, 0xC00000},
    {"Audio", "TimesBarColorText", &S::TimesBarColorText, 0xFFFFFF},
    {"Audio", "CartNumberColor", &S::CartNumberColor, 255},
    {"Audio", "EmptyCartNumberColor", &S::EmptyCartNumberColor, 0x9A9A9A},
    {"Audio", "EmptyCartBackColor", &S::EmptyCartBackColor, kButtonFace},
    {"Audio", "EmptyCartForeColor", &S::EmptyCartForeColor, kButtonText},
    {"Audio", "CartFontBold", &S::CartFontBold},
    {"Audio", "CartFontSize", &S::CartFontSize, 8},
    {"Audio", "DisplayCartTimeHours", &S::DisplayCartTimeHours},
    {"Audio", "CartFontName", &S::CartFontName, 0, "MS Sans Serif"},
    {"Audio", "GeneralVolume", &S::GeneralVolume, 80},
    {"Audio", "SweptVolume", &S::SweptVolume, 100},
    {"Audio", "FadeFire", TextNumber<float>{&S::FadeFire}, 0, "0.4"},
    {"Audio", "PlayCartsInstantly", &S::PlayCartsInstantly, 1},
    {"Audio", "ForceRecordPlayerLocking", &S::ForceRecordPlayerLocking},
    {"Audio", "DisplayRecordingInLastPlayer", &S::DisplayRecordingInLastPlayer},
    {"Audio", "AllowAudioFileLinking", &S::AllowAudioFileLinking},
    {"Carts", "HighlightPlayedCarts", &S::HighlightPlayedCarts},
    {"Carts", "HighlightPLayedCartsInterval", &S::HighlightPLayedCartsInterval},
    {"Audio", "KHz", TextNumber<std::int32_t>{&S::KHz}, 0, "44100"},
    {"Audio", "Channels", TextNumber<std::int16_t>{&S::Channels}, 0, "1"},
};

template <class Number>
Number NumberOrStop(double value) {
  const double rounded = std::is_floating_point_v<Number> ? value : std::nearbyint(value);
  // A float holds less than a double does, an integer less than either.
  if (!(std::abs(rounded) <= static_cast<double>(std::numeric_limits<Number>::max())) &&
      rounded != static_cast<double>(std::numeric_limits<Number>::lowest())) {
    platform::StopWithRuntimeError(platform::kOverflow);
  }
  return static_cast<Number>(rounded);
}

// Reads a key into the member of whichever kind it has.
struct SettingReader {
  const SettingKey& key;
  const std::string& file;

  void operator()(std::int16_t S::*member) const {
    const auto defaultShort = static_cast<std::int16_t>(key.defaultNumber);
    gAudioWallSettings.*member = platform::ReadProfileShort(key.section, key.name, defaultShort, file);
  }
  void operator()(std::int32_t S::*member) const {
    gAudioWallSettings.*member = platform::ReadProfileInteger(key.section, key.name, key.defaultNumber, file);
  }
  void operator()(std::string S::*member) const { gAudioWallSettings.*member = Text(); }
  template <class Number>
  void operator()(TextNumber<Number> number) const {
    gAudioWallSettings.*number.member = NumberOrStop<Number>(platform::NumericValue(Text()));
  }
  std::string Text() const {
    return platform::ReadProfileString(key.section, key.name, key.defaultText, file);
  }
};

void ReadKeys(std::span<const SettingKey> keys, const std::string& file) {
  for (const SettingKey& key : keys) std::visit(SettingReader{key, file}, key.member);
}

void ReadPlayerStatus(const std::string& file) {
  constexpr std::array<std::int32_t, kCartPlayers> kForeColors = {255,      65280, 0xFFA0A0,
                                                                  0xFFFFFF, 65535, 0xFFFFFF};
  for (std::size_t i = 0; i < kForeColors.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    CartPlayerStatus& player = gCartPlayerStatus[i];
    player.PlayerStatus = platform::ReadProfileShort("CartPlayers", "PlayerStatus" + number, 0, file);
    player.Sequence = player.PlayerStatus == 1 ? ++gSelectedPlayerCount : std::int16_t{0};
    if (player.PlayerStatus != 0) gUsablePlayerCount = ++gPlayerCount;
    player.BackColor = platform::ReadProfileInteger("CartPlayers", "BackColor" + number, 0, file);
    player.ForeColor =
        platform::ReadProfileInteger("CartPlayers", "ForeColor" + number, kForeColors[i], file);
  }
}

void ReadPlayerKeys(const std::string& file) {
  S& settings = gAudioWallSettings;
  settings.Instant = platform::ReadProfileShort("CartPlayers", "Instant", 1, file);
  settings.Record = platform::ReadProfileShort("CartPlayers", "Record", platform::WaveInDeviceCount(), file);
  settings.Record = std::min(settings.Record, kMostRecordPlayers);
}

void ReadLocations(const std::string& file) {
  for (std::size_t i = 0; i < gAudioWallParts.size(); ++i) {
    gAudioWallParts[i].Location =
        platform::ReadProfileString("FileLocations", "Carts" + std::to_string(i + 1), "", file);
  }
  // The newer key wins, the older one is its default.
  gAudioEditor = platform::ReadProfileString("FileLocations", "SampleEditor", gAudioEditor, file);
  gAudioEditor = platform::ReadProfileString("FileLocations", "AudioEditor", gAudioEditor, file);
}

}  // namespace

void ReadAudioWallSettings(const std::string& iniFile) {
  InitBlankCartInfo();
  ReadPlayerStatus(iniFile);
  ReadPlayerKeys(iniFile);
  ReadKeys(kKeysAheadOfLocations, iniFile);
  ReadLocations(iniFile);
  ReadKeys(kKeysBehindLocations, iniFile);
  gBlankCartInfo.BackColor = gAudioWallSettings.EmptyCartBackColor;
  gBlankCartInfo.ForeColor = gAudioWallSettings.EmptyCartForeColor;
}

}  // namespace vorda
