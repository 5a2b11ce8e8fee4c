// The audio wall: a store of carts numbered 1 to 9999 that lies on disk and is shared with the playout
// product.
//
// A cart is every file named after it and one record. The wall is cut into parts of a thousand carts, each in
// a directory of its own choice, with one list of records a part. No lock is taken: of two stations that
// write the same record the later write stands. All of it runs on the interface thread.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "carts/AudioWallSettings.h"
#include "carts/CartRecordFormat.h"
#include "platform/Desktop.h"
#include "platform/Hook.h"

namespace vorda {

inline constexpr std::int32_t kLastCart = 9999;

// --- The wall's parts (AudioWall.cpp) ---

struct AudioWallPart {
  std::string Location;  // directory, without a trailing separator
  std::string ListFile;  // path of the part's cart list
  bool Connected = false;
  std::int32_t ListHandle = 0;  // file number of the open list; below 1 when none has been taken yet
};

// Numbered 1 to 11. No cart lies in part 11; it belongs to the settings that both products share.
inline constexpr std::int16_t kAudioWallParts = 11;
extern std::array<AudioWallPart, kAudioWallParts> gAudioWallParts;

// Opens the list of a part (1 to 11), or of parts 1 to 10 (`part` 0), and makes or fills up what is missing.
// Blank locations are told in a box and connect nothing. Unless `silent` the operator is asked before a list
// is made; without a directory for it a part counts as connected though its list isn't open. Result: 0 when
// all parts were walked through, -1 when the walk stopped (blank locations, Cancel).
std::int32_t ConnectAudioWall(std::int16_t part, bool silent);

// Closes the list of a part and opens it again, so that what was written stands on the shared disk. Failures
// are ignored. A part that never took a file number stays as it is.
void ReopenCartList(std::int16_t part);

// --- Names (CartNames.cpp) ---
// They touch no disk but for the link, and never ask whether a directory exists or is connected.

// The part of a cart: 1 for carts 1 to 1000 and so on, 10 up to 10000, 0 for cart 0, 11 for anything else.
std::int16_t CartLocationIndex(std::int32_t cart);

// The directory of a cart; that of part 11 for cart 0; "" outside 0 to 9999.
std::string CartDirectory(std::int32_t cart);

// The path of a cart's files up to their extension, directory\ORVnnnnn; "" outside 1 to 9999.
std::string CartFileStem(std::int32_t cart);

// The path of a cart's audio: the first line of its link, unchanged, where linking is allowed and there is
// one; otherwise stem + ".WAV". ".WAV" for cart 0, "" outside 0 to 9999.
std::string CartAudioFileName(std::int32_t cart);

// The path of a cart's text; "" outside 1 to 9999.
std::string CartTextFileName(std::int32_t cart);

// --- Records (CartRecords.cpp, CartTitles.cpp) ---

// The record of an empty cart. Stays as start-up left it: writers change their argument, so they get a copy.
extern CartInfo gBlankCartInfo;

// Fills gBlankCartInfo but for its two colours, and sets the counts of players to 0.
void InitBlankCartInfo();

// True when the record is an empty cart's.
bool IsEmptyCart(const CartInfo& info);

// Reads a cart's record, from its individual file where these are in use and it has one, from its part's list
// otherwise. `info` is always usable: an empty cart's on failure. Result: 0, -1 for a number out of range,
// otherwise a run-time error's number.
std::int16_t ReadCartInfo(CartInfo& info, std::int32_t cart);

// Writes a cart's record to the stores in use; an empty one removes the individual file. `trusted` leaves the
// check of rights out. `info` gets play times when it has none, and becomes an empty cart's when the
// individual file can't be written. Result: 0; -1 when refused or the individual file failed; otherwise the
// number of the list's error.
std::int32_t WriteCartInfo(CartInfo& info, std::int32_t cart, bool trusted);

// Spreads a title over the three title fields, 20 characters each; what is beyond 60 is lost.
void SplitCartTitle(std::string_view text, CartInfo& info);

// The three title fields with their blanks, 60 characters, as the result and in `text`.
std::string JoinCartTitle(const CartInfo& info, std::string& text);

// What a player's slot holds of its cart.
struct CartDetails {
  std::array<char, 20> Title1{}, Title2{}, Title3{};
  float MarkStart = 0, MarkEnd = 0, CountdownMark = 0, AudioLength = 0;
  float PlayStart = 0, PlayEnd = 0, PlayLength = 0;
  std::array<char, 40> Text{};
};

// Loads a cart's details into a slot, whose text is cleared, and its audio's path into `audioFile`. Result:
// 0, whatever the read gave; the slot's AudioLength tells.
std::int16_t CartInfoToPlayer(std::int32_t cart, std::string& audioFile, CartDetails& slot);

// Writes a slot's details as the record of a cart. Result as WriteCartInfo.
std::int32_t PlayerToCartInfo(std::int32_t cart, const CartDetails& slot);

// Whether the operator may change a cart. Everybody may, unless the station installs a rule.
bool UserMayUseCart(std::int32_t cart);
platform::Hook<bool(std::int32_t)>& UserMayUseCartHook();

// --- Whole carts (DeleteCart.cpp, CopyCart.cpp, MoveCart.cpp, CartSearch.cpp) ---
// There is no transaction: steps follow one another, failures are told and mostly leave the rest going on,
// and nothing is rolled back. `window` is what progress windows stand above.

// Deletes a cart's files and empties its record. With `deleteAudio` also the audio that a link names.
// `silent` leaves the reports out. Result: 0, -1 when refused, otherwise the run-time error's number.
std::int32_t DeleteCart(std::int32_t cart, bool deleteAudio, bool silent);

// Copies a cart's files and record over those of `to`, after a question when `to` has files, unless
// `noPrompt`. Result: 0, also when files failed and were told; -1 when refused or declined.
std::int32_t CopyCart(std::int32_t from, std::int32_t to, bool copyAudio, bool noPrompt,
                      platform::OwnerWindow window);

// Moves a cart to another number; one that is there is overwritten or swapped, as the operator answers.
// Result: 0, also when files failed and were told; -1 when refused, cancelled or given a bad pair of numbers;
// otherwise what a failed DeleteCart or CopyCart gave.
std::int32_t MoveCart(std::int32_t from, std::int32_t to, platform::OwnerWindow window);

// The first cart at or above `start` whose record is empty or can't be read; 0 when there is none.
std::int32_t FindNextEmptyCart(std::int32_t start);

// The cart at which the operator's own area begins, 0 = there is none. Nothing in this server sets it.
extern std::int32_t gLocalEditCart;

// --- Audio editor (CartAudioEdit.cpp) ---

// Opens a cart's audio in the configured editor and waits for its end; operator input waits, the feeds go on.
// A cart without audio gets an empty file first. Afterwards the record takes over the new length.
void EditCartAudio(std::int32_t cart);

}  // namespace vorda
