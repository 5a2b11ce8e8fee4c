// Files of records, shared with other programs: any place is read and written in one call of the system, and
// no lock is taken.
//
// Numbers are those of Files.h, which also closes them. Paths are configured ones.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vorda::platform {

// Opens the file for reading and writing under `number`, and makes it when it is missing; its directory isn't
// made. A file that may only be read is opened for that. Result: 0 or a run-time error's number (52 for a
// number below 1, 55 when the number is open already).
int OpenForRandom(int number, std::string_view configured);

// Closes what is open under `number`, which brings it to the disk that others read, and opens `configured`
// under it again, as OpenForRandom does.
int ReopenForRandom(int number, std::string_view configured);

// Reads as much of `bytes` as the file holds from `offset` on; `count` gets how much that was. Result: 0 or a
// run-time error's number (52 when no file is open under `number`).
int ReadFromFile(int number, std::int64_t offset, std::span<char> bytes, std::size_t& count);

// Writes the bytes at `offset` in one call. Result as above; 61 when the disk took only a part.
int WriteToFileAt(int number, std::int64_t offset, std::string_view bytes);

// The length of the file that is open under `number`; -1 when none is.
std::int64_t OpenFileLength(int number);

}  // namespace vorda::platform
