#include "carts/CartRecordFormat.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vorda {
namespace {

// The fields in their order on disk. Writing and reading both go through this one list.
template <class Info, class Visitor>
void VisitFields(Info& info, Visitor&& visit) {
  visit(info.Title1);
  visit(info.Title2);
  visit(info.Title3);
  visit(info.BackColor);
  visit(info.ForeColor);
  visit(info.SmallFlag);
  visit(info.ReservedText);
  visit(info.ReservedValues);
  visit(info.ReservedNumbers);
  visit(info.MarkStart);
  visit(info.MarkEnd);
  visit(info.CountdownMark);
  visit(info.AudioLength);
  visit(info.PlayStart);
  visit(info.PlayEnd);
  visit(info.PlayLength);
  visit(info.ReservedTail);
}

// Moves the bytes of one number between memory and disk, whose numbers begin with their lowest byte. A number
// is never taken for anything but its bytes, so that a NaN keeps them all.
template <class Number>
void CopyNumber(void* to, const void* from) {
  std::memcpy(to, from, sizeof(Number));
  if constexpr (std::endian::native == std::endian::big) {
    auto* const bytes = static_cast<char*>(to);
    std::reverse(bytes, bytes + sizeof(Number));
  }
}

struct Writer {
  char* place;

  template <class Number>
  void operator()(const Number& number) {
    CopyNumber<Number>(place, &number);
    place += sizeof(Number);
  }
  template <class Element, std::size_t count>
  void operator()(const std::array<Element, count>& elements) {
    for (const Element& element : elements) (*this)(element);
  }
};

struct Reader {
  const char* place;

  template <class Number>
  void operator()(Number& number) {
    CopyNumber<Number>(&number, place);
    place += sizeof(Number);
  }
  template <class Element, std::size_t count>
  void operator()(std::array<Element, count>& elements) {
    for (Element& element : elements) (*this)(element);
  }
};

constexpr std::size_t kTextBytes = 3 * 20 + 142 + 10;
constexpr std::size_t kNumberBytes = 2 * 4 + 2 + 5 * 8 + 5 * 2 + 7 * 4;
static_assert(kTextBytes + kNumberBytes == kCartRecordSize);

}  // namespace

CartRecord PackCartInfo(const CartInfo& info) {
  CartRecord record;
  VisitFields(info, Writer{record.data()});
  return record;
}

void UnpackCartInfo(std::span<const char> bytes, CartInfo& info) {
  if (bytes.size() >= kCartRecordSize) {
    VisitFields(info, Reader{bytes.data()});
    return;
  }
  CartRecord record = PackCartInfo(info);
  std::copy(bytes.begin(), bytes.end(), record.begin());
  VisitFields(info, Reader{record.data()});
}

}  // namespace vorda
