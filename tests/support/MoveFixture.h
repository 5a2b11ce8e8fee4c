// A wall with carts to move and swap.

#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/WallFixture.h"

namespace vorda::test {

class MoveFixture : public WallFixture {
 protected:
  static constexpr int kOutOfMemory = 7;
  static constexpr int kFileNotFound = 53;
  static constexpr int kFileAlreadyExists = 58;
  static constexpr int kPermissionDenied = 70;
  static constexpr int kPathNotFound = 76;

  static std::int32_t Move(std::int32_t from, std::int32_t to) { return MoveCart(from, to, nullptr); }

  static std::string Question(std::int32_t from, std::int32_t to) {
    return "There is already something in cart " + std::to_string(to) +
           ", Do you want to overwrite it?\n(If you choose NO, it will be swapped with cart " +
           std::to_string(from) + ")";
  }
  void ExpectQuestion(std::int32_t from, std::int32_t to, platform::BoxAnswer answer,
                      std::function<void()> meanwhile = {}) {
    boxes_.Expect(Question(from, to), answer, std::move(meanwhile));
  }
  void ExpectTold(const std::string& what, int error, std::function<void()> meanwhile = {}) {
    boxes_.Expect(ProblemText(what, error), platform::BoxAnswer::Ok, std::move(meanwhile));
  }

  // What a move leaves behind in a directory: an empty file of a temporary name.
  static Names LeftBehindIn(const std::string& directory) {
    Names names = FilesIn(directory);
    std::erase_if(names, [](const std::string& name) { return !IsTemporary(name); });
    return names;
  }
  // The files of carts in a directory.
  static Names CartFilesIn(const std::string& directory) {
    Names names = FilesIn(directory);
    std::erase_if(names, IsTemporary);
    return names;
  }
  static std::string Content(std::int32_t cart, std::string_view extension) {
    return ReadWholeFile(CartFile(cart, extension));
  }
  // A record whose every byte that nobody reads holds something, numbers that are none among it.
  static std::string MarkedRecord(std::string_view title, float seconds, char mark) {
    std::string record = FullCartRecord(title, seconds);
    for (std::size_t place = 68; place < kMarkStartAt; ++place)
      record[place] = static_cast<char>(mark + static_cast<char>(place));
    record.replace(212, 8, "\x01\x02\x03\x04\x05\x06\xF0\x7F");
    record.replace(kMarkStartAt, 4, "\x01\x02\x80\x7F");
    record.replace(290, 10, 10, mark);
    return record;
  }

 private:
  static bool IsTemporary(const std::string& name) {
    return name.starts_with("VOR") && name.ends_with(".TMP");
  }
};

}  // namespace vorda::test
